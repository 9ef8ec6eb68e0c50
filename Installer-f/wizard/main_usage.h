// The installer's own command-line options: their description, and whether a run wants a window.
#pragma once

#include <string>

// Paragraphs for the usage text.
std::string wizard_usage();

// Whether the command line asks for a run without a window, of the wizard or of the master builder;
// and whether it is one of the wizard. REQUIRES: the command line is read.
bool wizard_without_window();
bool wizard_unattended();

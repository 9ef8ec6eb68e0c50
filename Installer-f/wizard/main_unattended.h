// The run without a display: the edition's own pages from the start page to the last, with the
// answers taken from the command line and Next pressed as a user would press it.
//
// Main thread only.
#pragma once

#include "Installer-f/wizard/main_unattended_answers.h"

// Reads the answers from the command line, which it first looks over, and takes the user's place at
// the wizard, which ends when the pages are at their end, wait for an answer that is not there, or
// make no progress. Returns 0, or the exit status for a bad answer, with a message on standard
// error.
int unattended_begin(int argc, const char* const* argv);

// The exit status once the loop has ended.
int unattended_end();

// What a run without a display says at its end: the figures, why it has failed, what is missing.
// Main thread.
#pragma once

#include <string>

#include "Installer-f/wizard/main_wizard.h"

// Modified files, by the standing answer.
struct end_figures {
  int kept = 0, overwritten = 0;
};

// What an update did, a figure a line.
void end_say_summary(const end_figures& figures);
void end_say_modified(const end_figures& figures);  // of a new copy, where there were any

// Why the run gives up: `why` as a sentence, then each mirror's last answer; or, where nothing has
// failed, what is being waited for, and what the page says.
void end_tell_given_up(page_function page, const wizard_screen& screen, const std::string& why);
void end_tell_missing();     // every file that no mirror has; nothing where there is none
void end_tell_failure();     // the same, and before it a file here that could not be written
bool end_is_disk_trouble();  // the last failure was such a file, which no waiting helps

// The object that ends every run for a script; `status` is an unattended_result.
void end_report(int status, const end_figures& figures);

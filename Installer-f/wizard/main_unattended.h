// The run without a display: the edition's own pages from the start page to the last, with the
// answers taken from the command line and Next pressed as a user would press it.
//
// Main thread only.
#pragma once

#include <string>

#include "Installer-f/wizard/main_wizard.h"

extern int unattended_on;  // 1 when this run was started with --unattended

// What was pressed in a frame.
struct wizard_press {
  bool quit = false, options = false, back = false, next = false;
  int extra = -1;  // index of an extra button
};

// How an unattended run ends; the program's exit status.
enum unattended_result : int {
  unattended_done = 0,      // the last page offers its start button
  unattended_failed = 1,    // a failure page, or a fatal alert
  unattended_refused = 2,   // an answer is missing or was refused
  unattended_given_up = 3,  // no progress for too long, or interrupted
};

// Reads the answers from the command line. Returns 0, or the exit status for a bad one, with a
// message on standard error.
int unattended_begin();

// Looks at what `page` made of this frame and decides what to press; ends the run when the pages
// are at their end, wait for an answer that is not there, or make no progress.
wizard_press unattended_press(page_function page, int first_time, const wizard_screen& screen,
                              int result);

// The exit status once the loop has ended.
int unattended_end();

// The standing answer to a question about a modified file: a modified_answer.
int unattended_modified(const std::string& location, int gone);
// The standing answer to a question whether to go on after an error: to go on. Says so.
int unattended_abort(const std::string& question);

// The run without a display: the edition's own pages from the start page to the last, with the
// answers taken from the command line and Next pressed as a user would press it.
//
// Main thread only.
#pragma once

// How an unattended run ends; the program's exit status.
enum unattended_result : int {
  unattended_done = 0,      // the last page offers its start button
  unattended_failed = 1,    // a failure page, or a fatal alert
  unattended_refused = 2,   // an answer is missing or was refused
  unattended_given_up = 3,  // no progress for too long, or interrupted
};

// Reads the answers from the command line and takes the user's place at the wizard, which ends when
// the pages are at their end, wait for an answer that is not there, or make no progress. Returns 0,
// or the exit status for a bad answer, with a message on standard error.
int unattended_begin();

// The exit status once the loop has ended.
int unattended_end();

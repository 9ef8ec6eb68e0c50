// The answers of a run without a display: what its command line says to the pages' questions.
//
// Main thread.
#pragma once

#include <string>

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"

// How an unattended run ends; the program's exit status.
enum unattended_result : int {
  unattended_done = 0,      // the last page offers its start button
  unattended_failed = 1,    // a failure page, or a fatal alert
  unattended_refused = 2,   // an answer is missing or was refused
  unattended_given_up = 3,  // no progress for too long, or interrupted
  unattended_busy = 4,      // another program is at work on the copy
  unattended_would = 10,    // --check: there is something to do
};

enum disc_task { task_install, task_scenery, task_repair };

struct answer_set {
  bool accept_eula = false;
  bool check = false;           // tell what would be done, and do nothing
  bool allow_unsigned = false;  // use a disc that is not signed, where it would have to be
  std::string dest;             // parent folder of a new copy, trailing "/"; empty for the default
  std::string name;             // of a new copy; empty for the default
  std::string copy;             // the copy to work on, trailing "/"
  int on_modified = answer_keep;
  float give_up_after = 300;      // seconds without any progress
  disc_task task = task_install;  // what to do with the discs
  bool sectors_given = false;
  int sectors[sector_count] = {};
};
extern answer_set answers;  // written by unattended_read_answers, read by pages and the run

// Reads the flags. Returns 0, or unattended_refused for a bad one, after saying why.
int unattended_read_answers();

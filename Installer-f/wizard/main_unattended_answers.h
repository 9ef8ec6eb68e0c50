// The answers of a run without a display: what its command line says to the pages' questions.
//
// Main thread.
#pragma once

#include <string>

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd.h"
#include "Installer-f/wizard/main_wizard.h"

struct answer_set {
  bool accept_eula = false;
  std::string dest;  // parent folder of a new copy, trailing "/"; empty for the default
  std::string name;  // of a new copy; empty for the default
  std::string copy;  // the copy to work on, trailing "/"
  int on_modified = answer_keep;
  float give_up_after = 300;              // seconds without any progress
  page_function flow = dvd_pick_install;  // what to do with the discs
  bool sectors_given = false;
  int sectors[sector_count] = {};
};
extern answer_set answers;  // written by unattended_read_answers, read by the run

// Reads the flags. Returns 0, or unattended_refused for a bad one, after saying why.
int unattended_read_answers();

// Each puts the answers into its page's choices; false when they are refused, after saying why.
bool answer_eula();
bool answer_demo_dest();
bool answer_dvd_dest();
bool answer_copy();
bool answer_dvd_start();
bool answer_sectors();

// The first page of the flow that the disc's menu is to lead to.
page_function wanted_flow();

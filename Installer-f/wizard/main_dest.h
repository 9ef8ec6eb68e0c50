// The two pages that every flow which creates a new copy has: the licence, and the choice of a
// folder. One body each, with the differences as data.
#pragma once

#include <string>

#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_translate.h"

struct eula_flow {
  page_function back;
  page_function next;  // open only once the licence is accepted
  int* accepted;
};
int eula_page(const eula_flow& flow, wizard_screen& screen);

// What a page that creates a new copy lets the user choose. Kept while the user goes back and
// forth.
struct new_copy_choice {
  std::string parent_dir;      // folder to create the copy in, trailing "/"
  std::string install_folder;  // name of the copy's folder
  std::string desktop_f;       // the desktop folder
  std::string proposed;        // the name that the page proposes
  int named = 0;               // it has been filled in once; an empty one is the user's
  int changed = 0;             // the sizes must be worked out anew
  int goes_on = 0;             // the folder is there: an installation that was interrupted
  int scanned = 0;             // files of such a folder handed to the verification so far
  int is_scanned = 0;          //   and all of them done
};
struct new_copy_flow {
  page_function back;
  page_function next;
  UTL_text name_suffix;  // put behind the release's name, translated; null for none
  UTL_text prompt;       // of the folder picker
  UTL_text enough_text;  // disk space
  UTL_text short_text;
  bool space_decides;  // too little space shuts Next
  bool may_go_on;      // an installation that was interrupted is taken up again
};
// One frame of the page that picks parent folder and name. Leaves dest_dir_path. Returns 0.
int pick_new_copy(const new_copy_flow& flow, new_copy_choice& choice, wizard_screen& screen);
// The choice by the answers of a run without a display. Returns empty: the page judges it.
std::string give_new_copy(new_copy_choice& choice);

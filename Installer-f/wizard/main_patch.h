// The two pages that the web flows share, each one body with the differences as data: the check of
// the servers, and the transfer.
#pragma once

#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_translate.h"

// What differs between the flows on the page that contacts the servers.
struct check_flow {
  UTL_text title;
  page_function back;
  UTL_text contacting;   // while the server list is awaited
  UTL_text downloading;  // before the mirror's name
  UTL_text processing;   // while the manifest is read
};

// One frame of the check page. Fills `screen`; returns 1 once the manifest is loaded, 0 before.
int check_servers(const check_flow& flow, int first_time, wizard_screen& screen);

// What differs between the flows on the transfer page.
struct patch_flow {
  page_function back;  // where Back and a refusal lead
  page_function done;
  int* is_running;    // set while the job lives, also while the page is left; null for a flow in
                      // which every visit starts anew
  float* done_ratio;  // smoothed fraction of the job done, 0 to 1
  bool is_new_copy = false;  // the copy is put on the list before anything is made, so that what is
                             // interrupted can be found and healed
};

// One frame of the transfer page: up to 0.02 seconds of work. Its result is the page's.
int run_patch(const patch_flow& flow, int first_time, wizard_screen& screen);

// Kilobytes moved so far and the average speed, for whoever shows them.
struct patch_figures {
  double done_kb;       // compressed, finished and in flight
  float kb_per_second;  // since the transfer began
  float seconds_left;
  int streams;  // live streams
};
patch_figures patch_progress();

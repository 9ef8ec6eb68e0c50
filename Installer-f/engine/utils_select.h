// Selection: turns the manifest and what verification found into two flags per file, fetch it or
// delete it. A file in the state of any release is the program's own and is replaced silently; a
// file in no known state is the user's and is never touched without a question.
//
// Main thread only, after checksum_directory has returned 1.
#pragma once

#include <cstdint>
#include <string>

struct file_version_struct;

extern int32_t g_want_sim;     // 1 when files that are not global scenery take part
extern int32_t g_want_global;  // 1 when tiles of global scenery take part

// Full install or update (1, 1), repair (1, 0), scenery (0, 1).
void set_install_filter(int want_sim, int want_global);

// 1 if sim_info[history].versions[version] is for this run: its kind takes part and its platform is
// the target's.
int want_this_f(int history, int version);

// Whether the tile's 10-degree sector is one that the user wants. REQUIRES: is_global.
bool sector_is_selected(const file_version_struct& tile);

void scenery_take_all();      // selects every sector that the manifest offers
void scenery_from_install();  // selects the sectors that have a tile on disk

// Sets need_fetch, need_delete and progress_start of every current version. Returns 1, or 0 when
// the user cancelled the installation at a question: the flags of the files after that one are
// clear, and the caller must not go on to the transfer.
int choose_files();

// Files on disk that the release has dropped and that choose_files would delete without a question.
int dropped_files_left();

// Puts the question about a file that the user seems to have changed; select_alert, unless a run
// brings answers of its own.
extern int (*ask_about_modified)(const std::string& location, int gone);

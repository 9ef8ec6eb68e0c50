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

void scenery_take_all();  // selects every sector that the manifest offers
// Selects the sectors that have a tile on disk, or the folder that is theirs alone: one whose tiles
// have been lost is not one that nobody wanted.
void scenery_from_install();

// Sets need_fetch, need_delete and progress_start of every current version. False when the user
// cancelled the installation at a question: the flags of the files after that one are clear, and
// the caller must not go on to the transfer.
bool choose_files();

// Files on disk that the release has dropped and that choose_files would delete without a question.
int dropped_files_left();

// --- questions -----------------------------------------------------------------------------------

// What to do with a file that the user seems to have changed.
enum modified_answer : int {
  answer_overwrite = 1,  // also deletes, when the release has dropped the file
  answer_keep = 2,
  answer_cancel_install = 3,    // also when the question cannot be put
  answer_overwrite_folder = 4,  // this, and every such file of its folder
  answer_keep_folder = 5,
};

// What the engine asks of whoever runs it, and how: the wizard installs its own at start. Each call
// blocks until there is an answer.
struct engine_questions {
  // A modified_answer about the file at the full path `location`; `gone` non-zero when it is to be
  // deleted. Until one is installed the user's file is kept.
  int (*modified)(const std::string& location, int gone);
  // An answer that was given already, so that there is no question; 0 for none. May be null.
  int (*given)(const std::string& location);
};
extern engine_questions engine_ask;

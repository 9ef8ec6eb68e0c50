// The manifest in memory: every file that any release ever shipped, each version with its size and
// signature. The grammar of the text is in docs/manifest.md.
//
// read_directory fills the table; the passes after it write only their own fields of the current
// versions. Main thread, except that the verification and unpack tasks write the current versions
// of the histories they were handed, while nobody resizes the table.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "Installer-f/engine/utils_manifest_table.h"

extern manifest_table sim_info;              // the loaded manifest, in file order
extern std::set<std::string> deleted_files;  // folders that lost a file and may be empty now
extern std::map<std::string, int32_t, std::less<>> sim_info_index;  // path to index; builder only

enum directory_outcome : int {
  directory_foreign = 0,  // it is no manifest of ours, or lists no file; the table is empty
  directory_refused = 2,  // it is one of ours in a newer format: see new_format
  directory_loaded = 3,
};

// Replaces sim_info by the manifest at `path`, and with it the sectors on offer, the two has_ flags
// and the (zeroed) totals in stg. A file that is missing, empty or unreadable, names a folder as a
// file, or is larger than any manifest can be is a fatal alert. A line is left out, with a warning
// in the log, whose installed location would lie outside the destination or whose signature is
// none. `message` says what the manifest is read for; the reader itself shows nothing.
directory_outcome read_directory(const std::string& path, const std::string& message);

// 1 if `path` names a tile of global scenery, else 0.
int is_global_scenery_f(std::string_view path);

// The 10-degree sector of a tile named for its south-west corner, such as "+34-118.dsf". Returns 1
// and fills both, or 0 and leaves them when the name gives no sector.
int find_sector(int32_t& lon_index, int32_t& lat_index, std::string_view path);

// How the current version of sim_info[index] is packed on a disc: ".7z" for a global tile, else
// ".zip". On a server everything is ".zip".
const char* suffix_for_file(int index);

// Tells the user that this installer is too old for the file at `path`, opens the page that offers
// a new one, and asks the program to end.
void new_format(const std::string& path);

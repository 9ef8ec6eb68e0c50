// The rules of the source tree: which places it must have, which files of it belong on a master,
// and whose platform they are. Nothing here reads the tree but is_good_file, which looks at a file.
// Main thread.
#pragma once

#include <string>
#include <string_view>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"

// --- platforms ----------------------------------------------------------------------------------
// The four platform folders in the root of the source tree.
inline constexpr std::string_view ALL_str = "All", APL_str = "Macintosh", WIN_str = "Windows",
                                  LIN_str = "Linux";

// The manifest's platform codes. A file of the neutral folder that only Linux wants has a code of
// its own.
enum platform_code : int {
  platform_all = 0,
  platform_apl = 1,
  platform_win = 2,
  platform_lin = 3,
  platform_all_lin = 6,
};

// The platform code of a file, from its path below the source root; -1 if its first folder is none
// of the four.
int platform_of(const std::string& relative);

// Turns a path relative to the source tree, or one of a manifest, into the key that finds the
// file's history: the platform's word in place of the first component. A code without a word leaves
// the path with its leading "/". False, and the path as it was, if it has no "/" at all.
bool chop_platform(std::string& path, int os);

// --- named places -------------------------------------------------------------------------------
enum named_place : int {
  place_all,           // "All/"
  place_apl,           // "Macintosh/"
  place_win,           // "Windows/"
  place_lin,           // "Linux/"
  place_instructions,  // the rest lies below "All/"
  place_weapons,
  place_airfoils,
  place_aircraft,
  place_resources,
  place_output,
  place_custom,
  place_global,
  place_plugins,
  place_red_terrain,  // must be there for Earth scenery only
  place_orbit,        // the same
  place_menus,        // a file
  place_texts,        // a file
  place_sibling,      // a file of a sibling product, which may never reach a master
  place_pfc,          // these aircraft are installed by other means
  place_earth_overlays,
  place_earth_terrain,
  place_mars,
  place_moon,
  place_count
};

// The place's full path: below bld.src_fold as it was when place_names was called.
const std::string& place_path(named_place place);
// Whether the walk has passed it. Never cleared: what one tree of a program start has shown is
// known for the next.
bool place_found(named_place place);

// Derives the paths from bld.src_fold.
void place_names();
// Marks the place at `path`, if there is one of that kind, as passed.
void note_place(const std::string& path, bool is_folder);
// Faults: a place that the install type needs and that was not passed, or the sibling's file, which
// was.
void check_places();

// --- files --------------------------------------------------------------------------------------
// Whether a file of the source tree belongs on the master of this install type. `path` is full, so
// that the named places can be recognised in it. `check_contents` non-zero also looks at the file,
// and refuses an empty one and, with a warning, what cannot be read; a link is good at any length.
// `seen`, if not null, then receives what the look told: bytes, date, mode, and whether it is a
// link.
bool is_good_file(const std::string& path, int is_folder, int check_contents,
                  source_file* seen = nullptr);

// The scenery that a path belongs to, as an install_type; install_base: none.
int scenery_of(const std::string& path);

// A part of a path that may not be there, with what the makers say about it.
struct forbidden_part {
  const char* part;
  const char* complaint;
  fault_kind kind;
};
// The first such part in `path`; null if there is none. Some are looked for in files only.
const forbidden_part* forbidden_in(std::string_view path, bool is_folder);

// Whether the neutral folder may hold the folder `name` (without "/").
bool may_lie_in_all(const std::string& name);

// What the walk or the filter would find in `path` wherever it lies, or null: a source tree below
// such a folder would be refused file by file, or lose every file without a word.
const char* path_trouble(const std::string& path);

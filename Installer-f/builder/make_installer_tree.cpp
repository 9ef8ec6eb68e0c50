// The rules of the source tree: named places, forbidden and dropped parts of paths, platforms.
//
// Main thread. The table of places is this file's own: its paths are derived from bld.src_fold, its
// marks are set by the walk.

#include "Installer-f/builder/make_installer_tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_say.h"
#include "corekit/base/hl_string.h"

namespace {

enum place_need { need_always, need_earth, need_no };

struct place_record {
  const char* below;  // the path below the source root
  bool is_folder;
  place_need need;
  const char* missing;  // what the alert calls it
  std::string path;     // the full path
  bool found = false;   // the walk has passed it
};

// In the order of `named_place`, in which missing ones are reported. The Linux folder's odd name
// and the tabs are old habits of the makers, who know the alerts by them. The last four folders
// have no "/" at their end, since they are looked for inside paths; so the walk, which compares
// whole folders, passes them without a match.
place_record places[] = {
    {"All/", true, need_always, "!found_all_fold", {}},
    {"Macintosh/", true, need_always, "!found_apl_fold", {}},
    {"Windows/", true, need_always, "!found_win_fold", {}},
    {"Linux/", true, need_always, "!found_X86_fold", {}},
    {"All/Instructions/", true, need_always, "!found_ins_fold", {}},
    {"All/Weapons/", true, need_always, "!found_wpn_fold", {}},
    {"All/Airfoils/", true, need_always, "!found_afl_fold", {}},
    {"All/Aircraft/", true, need_always, "!found_acf_fold", {}},
    {"All/Resources/", true, need_always, "!found_res_fold", {}},
    {"All/Output/", true, need_always, "!found_out_fold", {}},
    {"All/Custom Scenery/", true, need_always, "!found_cus_fold", {}},
    {"All/Global Scenery/", true, need_always, "!found_glo_fold", {}},
    {"All/Resources/plugins/", true, need_always, "!found_plug\t ", {}},
    {"All/Resources/default scenery/900 red terrain/", true, need_earth, "!found_redt\t ", {}},
    {"All/Resources/bitmaps/Earth Orbit Textures/", true, need_earth, "!found_orbt\t ", {}},
    {"All/Resources/menus/English/Skyvane.txt", false, need_always, "!found_men_file", {}},
    {"All/Resources/text/English/Skyvane.txt", false, need_always, "!found_tex_file", {}},
    {"All/Resources/bitmaps/sibling/cockpit_com.png", false, need_no, "", {}},
    {"All/install_pfc Aircraft/", true, need_no, "", {}},
    {"All/Global Scenery/-global overlays-", true, need_no, "", {}},
    {"All/Global Scenery/-global terrain-", true, need_no, "", {}},
    {"All/Custom Scenery/DSF 900 Mars World-Wide", true, need_no, "", {}},
    {"All/Custom Scenery/DSF 900 Moon World-Wide", true, need_no, "", {}},
};
static_assert(std::size(places) == place_count);

// What may lie in the neutral folder.
constexpr std::string_view all_folders[] = {
    "Aircraft",  "Airfoils", "Instructions",   "Output",        "install_pfc Aircraft",
    "Resources", "Weapons",  "Custom Scenery", "Global Scenery"};

// The test for a copy is blunt on purpose: a leftover copy of a file must not ship.
constexpr forbidden_part forbidden_anywhere[] = {
    // The directory separators of the other platforms.
    {":", "found a  : in the path!", fault_separator},
    {"\\", "found a \\ in the path!", fault_separator},
    // They end a line of the manifest, and the file's name with it.
    {"\n", "found a LINE END in the path! That is two lines in the manifest!", fault_line_end},
    {"\r", "found a LINE END in the path! That is two lines in the manifest!", fault_line_end},
};
constexpr forbidden_part forbidden_in_files[] = {
    {"copy", "found a copy file!", fault_copy},
    {".cpp", "found a .cpp file!", fault_source_code},
    {".CPP", "found a .CPP file!", fault_source_code},
};

// Parts of a path that drop the file without a word.
constexpr const char* dropped_parts[] = {".7z",       "Thumbs.db",    "work.", "._",
                                         ".DS_Store", ".sandboxinfo", ".xSYM"};
constexpr std::string_view dropped_endings[] = {".ovw", ".ac"};
constexpr std::string_view dropped_files[] = {"serverlist.txt", "Skyvane Pilot.txt"};
constexpr std::string_view dropped_user_endings[] = {".prf", ".fms", ".sit", ".mov", ".bak"};

// Binaries of one platform that live in the neutral plug-in folder. The Linux ones have a code of
// their own, not that of the Linux folder: they are wanted by Linux and yet lie under "All/".
struct plugin_platform {
  const char* part;
  platform_code os;
};
constexpr plugin_platform plugin_platforms[] = {
    {"All/Resources/plugins/KVLM.shlb", platform_apl},
    {"All/Resources/plugins/KVWidgets.shlb", platform_apl},
    {"All/Resources/plugins/KVLM.framework/KVLM", platform_apl},
    {"All/Resources/plugins/KVWidgets.framework/KVWidgets", platform_apl},
    {"All/Resources/plugins/PluginAdminMac.kvl", platform_apl},
    {"All/Resources/plugins/KVLM.dll", platform_win},
    {"All/Resources/plugins/KVWidgets.dll", platform_win},
    {"All/Resources/plugins/PluginAdminWin.kvl", platform_win},
    {"All/Resources/plugins/KVLM.so", platform_all_lin},
    {"All/Resources/plugins/KVWidgets.so", platform_all_lin},
    {"All/Resources/plugins/PluginAdminLin.kvl", platform_all_lin},
};

// Whether the install type ships such a path.
bool is_of_type(const std::string& path) {
  const int scenery = scenery_of(path);
  switch (bld.fog_fals) {
    case install_base:
      return scenery == install_base && !str_holds(path, place_path(place_orbit)) &&
             !str_holds(path, place_path(place_red_terrain));
    case install_earth:
      return scenery == install_base || scenery == install_earth;
    case install_mars:
    case install_moon:
      return scenery == bld.fog_fals;
    default:
      break;
  }
  builder_fatal("I can not tell what type of install this is!", "", "", "", at_build_tree_type);
}

// Whether there is anything in the file to ship.
bool has_content(const std::string& path, source_file* seen) {
  struct stat info;
  const bool found = lstat(path.c_str(), &info) == 0;
  const bool is_link = found && S_ISLNK(info.st_mode);
  // Not being able to read a file is no reason to ship without it unnoticed.
  if (!is_link && (!found || !S_ISREG(info.st_mode) ||
                   faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0)) {
    builder_warning("left out, as it cannot be read: " + path);
    return false;
  }
  if (seen) {
    seen->bytes = info.st_size;
    seen->modified = info.st_mtim;
    seen->mode = info.st_mode;
    seen->is_link = is_link;
  }
  return is_link || info.st_size > 0;
}

}  // namespace

int platform_of(const std::string& relative) {
  const std::string_view first = std::string_view(relative).substr(0, relative.find('/'));
  if (first == APL_str) return platform_apl;
  if (first == WIN_str) return platform_win;
  if (first == LIN_str) return platform_lin;
  if (first != ALL_str) return -1;
  for (const plugin_platform& row : plugin_platforms)
    if (str_holds(relative, row.part)) return row.os;
  return platform_all;
}

bool chop_platform(std::string& path, int os) {
  const size_t slash = path.find('/');
  if (slash == std::string::npos) return false;
  const char* word = "";
  switch (os) {
    case platform_all:
      word = "ALL_os";
      break;
    case platform_apl:
      word = "APL_os";
      break;
    case platform_win:
      word = "IBM_os";
      break;
    case platform_lin:
      word = "LIN_os";
      break;
    default:
      break;  // the plug-ins of one platform keep their key apart from all others
  }
  path.replace(0, slash, word);
  return true;
}

const std::string& place_path(named_place place) {
  return places[place].path;
}

bool place_found(named_place place) {
  return places[place].found;
}

void place_names() {
  for (place_record& place : places)
    place.path = bld.src_fold + place.below;
}

void note_place(const std::string& path, bool is_folder) {
  for (place_record& place : places)
    if (place.is_folder == is_folder && path == place.path) place.found = true;
}

void check_places() {
  for (const place_record& place : places) {
    const bool needed =
        place.need == need_always || (place.need == need_earth && bld.fog_fals == install_earth);
    if (!needed || place.found) continue;
    add_fault(fault_missing, {"YOU IDIOT!", place.missing, place.path}, place.path,
              place.is_folder ? "folder" : "file");
  }
  if (place_found(place_sibling)) {
    add_fault(fault_sibling, {" found_com_file", place_path(place_sibling)},
              place_path(place_sibling));
  }
}

const forbidden_part* forbidden_in(std::string_view path, bool is_folder) {
  for (const forbidden_part& rule : forbidden_anywhere)
    if (str_holds(path, rule.part)) return &rule;
  if (is_folder) return nullptr;
  for (const forbidden_part& rule : forbidden_in_files)
    if (str_holds(path, rule.part)) return &rule;
  return nullptr;
}

bool may_lie_in_all(const std::string& name) {
  return std::ranges::find(all_folders, name) != std::end(all_folders);
}

int scenery_of(const std::string& path) {
  constexpr struct {
    named_place place;
    install_type type;
  } rows[] = {{place_earth_overlays, install_earth},
              {place_earth_terrain, install_earth},
              {place_mars, install_mars},
              {place_moon, install_moon}};
  for (const auto& row : rows)
    if (str_holds(path, place_path(row.place))) return row.type;
  return install_base;
}

bool is_good_file(const std::string& path, int is_folder, int check_contents, source_file* seen) {
  const auto held = [&path](std::string_view part) { return str_holds(path, part); };
  const auto ending = [&path](std::string_view end) { return path.ends_with(end); };
  if (std::ranges::any_of(dropped_parts, held)) return false;
  if (std::ranges::any_of(dropped_endings, ending)) return false;
  if (std::ranges::any_of(dropped_files, held)) return false;
  if (std::ranges::any_of(dropped_user_endings, ending)) return false;
  if (held(".dsf.txt")) return false;
  if (held(place_path(place_pfc))) return false;  // these aircraft are installed by other means
  if (!is_of_type(path)) return false;
  // Last, as it alone asks the disk.
  return is_folder || !check_contents || has_content(path, seen);
}

const char* path_trouble(const std::string& path) {
  if (const forbidden_part* const rule = forbidden_in(path, false)) return rule->part;
  for (const char* part : dropped_parts)
    if (str_holds(path, part)) return part;
  for (const std::string_view part : dropped_files)
    if (str_holds(path, part)) return part.data();  // all literals, so terminated
  return str_holds(path, ".dsf.txt") ? ".dsf.txt" : nullptr;
}

// The walk over the makers' source tree.
//
// pref_level lists a folder, holds every item against the tree's rules, asks is_good_file about
// each file, and descends. The first broken rule ends the build: a wrong file on a master reaches
// every customer.
//
// Main thread. Writes comp_files, comp_paths, the two counters, the found_* flags and dst_folder.

#include "Installer-f/builder/make_installer_scan.h"

#include <algorithm>
#include <string_view>

#include "Installer-f/builder/make_installer.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/xmap.h"

const std::string ALL_str = "All", APL_str = "Macintosh", WIN_str = "Windows", LIN_str = "Linux";

std::string str_all_fold, str_apl_fold, str_win_fold, str_LIN_fold;
std::string str_ins_fold, str_wpn_fold, str_afl_fold, str_acf_fold, str_pfc_fold;
std::string str_res_fold, str_out_fold, str_cus_fold, str_glo_fold, str_plug;
std::string str_redt, str_orbt, str_erth1, str_erth2, str_mars, str_moon;
std::string str_men_file, str_tex_file, str_com_file;

int found_all_fold, found_apl_fold, found_win_fold, found_LIN_fold;
int found_ins_fold, found_wpn_fold, found_afl_fold, found_acf_fold, found_pfc_fold;
int found_res_fold, found_out_fold, found_cus_fold, found_glo_fold, found_plug;
int found_redt, found_orbt, found_erth1, found_erth2, found_mars, found_moon;
int found_men_file, found_tex_file, found_com_file;

std::vector<std::string> comp_files;
std::set<std::string> comp_paths;
int num_files_rec;
int num_files_use;
std::string dst_folder;

namespace {

enum place_kind { place_folder, place_file };
enum place_need { need_always, need_earth, need_never };

struct named_place {
  const char* path;  // below the source root
  std::string* str;
  int* found;
  place_kind kind;
  place_need need;
  const char* missing;  // what the alert calls it
};

// In the order in which missing ones are reported. The Linux folder's odd name and the tabs are old
// habits of the makers, who know the alerts by them. The last four folders have no "/" at their
// end, since they are looked for inside paths; so the walk, which compares whole folders, passes
// them without a match.
const named_place named_places[] = {
    {"All/", &str_all_fold, &found_all_fold, place_folder, need_always, "!found_all_fold"},
    {"Macintosh/", &str_apl_fold, &found_apl_fold, place_folder, need_always, "!found_apl_fold"},
    {"Windows/", &str_win_fold, &found_win_fold, place_folder, need_always, "!found_win_fold"},
    {"Linux/", &str_LIN_fold, &found_LIN_fold, place_folder, need_always, "!found_X86_fold"},
    {"All/Instructions/", &str_ins_fold, &found_ins_fold, place_folder, need_always,
     "!found_ins_fold"},
    {"All/Weapons/", &str_wpn_fold, &found_wpn_fold, place_folder, need_always, "!found_wpn_fold"},
    {"All/Airfoils/", &str_afl_fold, &found_afl_fold, place_folder, need_always, "!found_afl_fold"},
    {"All/Aircraft/", &str_acf_fold, &found_acf_fold, place_folder, need_always, "!found_acf_fold"},
    {"All/Resources/", &str_res_fold, &found_res_fold, place_folder, need_always,
     "!found_res_fold"},
    {"All/Output/", &str_out_fold, &found_out_fold, place_folder, need_always, "!found_out_fold"},
    {"All/Custom Scenery/", &str_cus_fold, &found_cus_fold, place_folder, need_always,
     "!found_cus_fold"},
    {"All/Global Scenery/", &str_glo_fold, &found_glo_fold, place_folder, need_always,
     "!found_glo_fold"},
    {"All/Resources/plugins/", &str_plug, &found_plug, place_folder, need_always, "!found_plug\t "},
    {"All/Resources/default scenery/900 red terrain/", &str_redt, &found_redt, place_folder,
     need_earth, "!found_redt\t "},
    {"All/Resources/bitmaps/Earth Orbit Textures/", &str_orbt, &found_orbt, place_folder,
     need_earth, "!found_orbt\t "},
    {"All/Resources/menus/English/Skyvane.txt", &str_men_file, &found_men_file, place_file,
     need_always, "!found_men_file"},
    {"All/Resources/text/English/Skyvane.txt", &str_tex_file, &found_tex_file, place_file,
     need_always, "!found_tex_file"},
    {"All/Resources/bitmaps/sibling/cockpit_com.png", &str_com_file, &found_com_file, place_file,
     need_never, ""},
    {"All/install_pfc Aircraft/", &str_pfc_fold, &found_pfc_fold, place_folder, need_never, ""},
    {"All/Global Scenery/-global overlays-", &str_erth1, &found_erth1, place_folder, need_never,
     ""},
    {"All/Global Scenery/-global terrain-", &str_erth2, &found_erth2, place_folder, need_never, ""},
    {"All/Custom Scenery/DSF 900 Mars World-Wide", &str_mars, &found_mars, place_folder, need_never,
     ""},
    {"All/Custom Scenery/DSF 900 Moon World-Wide", &str_moon, &found_moon, place_folder, need_never,
     ""},
};

// What may lie in the neutral folder.
constexpr std::string_view all_folders[] = {
    "Aircraft/",  "Airfoils/", "Instructions/",   "Output/",        "install_pfc Aircraft/",
    "Resources/", "Weapons/",  "Custom Scenery/", "Global Scenery/"};

// Parts of a path that end the build. The test for a copy is blunt on purpose: a leftover copy of
// a file must not ship.
struct forbidden_part {
  const char* part;
  const char* complaint;
};
constexpr forbidden_part forbidden_anywhere[] = {
    // The directory separators of the other platforms.
    {":", "found a  : in the path!"},
    {"\\", "found a \\ in the path!"},
    // They end a line of the manifest, and the file's name with it.
    {"\n", "found a LINE END in the path! That is two lines in the manifest!"},
    {"\r", "found a LINE END in the path! That is two lines in the manifest!"},
};
constexpr forbidden_part forbidden_in_files[] = {
    {"copy", "found a copy file!"},
    {".cpp", "found a .cpp file!"},
    {".CPP", "found a .CPP file!"},
};

// Parts of a path that drop the file without a word.
constexpr const char* dropped_parts[] = {".7z",       "Thumbs.db",    "work.", "._",
                                         ".DS_Store", ".sandboxinfo", ".xSYM"};
constexpr std::string_view dropped_endings[] = {".ovw", ".ac"};
constexpr std::string_view dropped_files[] = {"serverlist.txt", "Skyvane Pilot.txt"};
constexpr std::string_view dropped_user_endings[] = {".prf", ".fms", ".sit", ".mov", ".bak"};

constexpr int discs_with_folders = 3;  // a tree that needs more fails at its first file there
constexpr int walk_progress_step = 500;

bool ends_in(std::string_view path, std::string_view ending) {
  return path.ends_with(ending);
}

void note_place(const std::string& path, place_kind kind) {
  for (const named_place& place : named_places)
    if (place.kind == kind && path == *place.str) *place.found = 1;
}

void show_walk_progress(const std::string& path) {
  builder_progress(num_files_rec,
                   str_format("reg: %d: total files recursed: %d. will compress: %d.", reg,
                              num_files_rec, num_files_use),
                   path);
  if (builder_quit_pressed()) builder_fatal("You hit Q dumbass!", "", "", "", 101);
}

void check_name(const std::string& name, const std::string& path) {
  if (!name.empty() && name.back() == ' ') {
    builder_fatal("YOU IDIOT!", "You tried to include a file or directory with a space at the end!",
                  "The people behind one system throw a fit at that, while the people behind the "
                  "other would not even blink!",
                  path, 102);
  }
  for (const forbidden_part& rule : forbidden_anywhere)
    if (str_holds(path, rule.part)) builder_fatal("YOU IDIOT!", rule.complaint, path, "", 103);
}

// The web client escapes blanks and nothing else, so such a name asks a server for another file.
void warn_of_web_name(const std::string& name, const std::string& path) {
  if (name.find_first_of("%?#") != std::string::npos)
    builder_warning("the web cannot fetch a name with '%', '?' or '#' in it: " + path);
}

// The folders that the file needs on each disc, innermost first. A folder that is there already
// came with all those above it, so the climb stops at the first of these.
void add_comp_paths(const std::string& relative) {
  for (int disk = 0; disk < discs_with_folders; ++disk) {
    std::string folder(path_folder(dest_dvd(disk) + sim_name + "/" + relative));
    while (folder.size() >= dst_fold_base.size() && comp_paths.insert(folder).second) {
      folder.pop_back();
      folder.resize(path_folder(folder).size());
    }
  }
}

void walk_file(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, place_file);
  for (const forbidden_part& rule : forbidden_in_files)
    if (str_holds(path, rule.part)) builder_fatal("YOU IDIOT!", rule.complaint, path, "", 104);
  if (dir == str_all_fold) {
    builder_fatal("YOU IDIOT!",
                  "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!",
                  path, "", 105);
  }

  ++num_files_rec;
  if (is_good_file(path, 0, 1)) {
    if (str_holds(dir, "/All/Resources/preferences/")) {
      builder_fatal("YOU IGNORANT SLUT!", "I found this preferences file!",
                    "And is_good_file says I should keep it!!!!", path, 106);
    }
    // Whoever reads the manifest skips the blanks before a name, and so would miss the file.
    if (name.front() == ' ' || name.front() == '\t') {
      builder_fatal("YOU IDIOT!", "You tried to include a file with a space at the start!",
                    "The manifest eats that space, and then nobody ever finds the file again!",
                    path, 107);
    }
    warn_of_web_name(name, path);
    ++num_files_use;
    comp_files.push_back(path);
    add_comp_paths(path.substr(src_fold.size()));
  }
  if (num_files_rec % walk_progress_step == 0) show_walk_progress(path);
}

void walk_folder(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, place_folder);
  if (dir == str_all_fold && std::ranges::find(all_folders, name + "/") == std::end(all_folders)) {
    builder_fatal("What the hell is THIS doing in here!?!?!?", name + "/", path, dir, 108);
  }
  warn_of_web_name(name, path);
  pref_level(path);
}

}  // namespace

void place_names() {
  for (const named_place& place : named_places)
    *place.str = src_fold + place.path;
}

void check_places() {
  for (const named_place& place : named_places) {
    const bool needed =
        place.need == need_always || (place.need == need_earth && fog_fals == install_earth);
    if (needed && *place.found == 0)
      builder_fatal("YOU IDIOT!", place.missing, *place.str, "", 109);
  }
  if (found_com_file) builder_fatal(" found_com_file", str_com_file, "", "", 110);
}

void pref_level(const std::string& dir) {
  std::vector<std::string> names;
  std::vector<int> is_folder;
  const int count = opensave_getitems(dir, 0, names, is_folder);
  for (int i = 0; i < count; ++i) {
    const std::string path = dir + names[i] + (is_folder[i] ? "/" : "");
    check_name(names[i], path);
    if (is_folder[i]) {
      walk_folder(dir, names[i], path);
    } else {
      walk_file(dir, names[i], path);
    }
  }
}

bool is_good_file(const std::string& path, int is_folder, int check_contents) {
  if (!is_folder && check_contents && !is_sim_link(path.c_str(), nullptr)) {
    const xmap_class content(path);
    // Not being able to read a file is no reason to ship without it unnoticed.
    if (content.file_start == nullptr) builder_warning("left out, as it cannot be read: " + path);
    if (content.file_start == nullptr || content.cursor == content.file_end) return false;
  }

  const auto held = [&path](std::string_view part) { return str_holds(path, part); };
  const auto ending = [&path](std::string_view end) { return ends_in(path, end); };
  if (std::ranges::any_of(dropped_parts, held)) return false;
  if (std::ranges::any_of(dropped_endings, ending)) return false;
  if (std::ranges::any_of(dropped_files, held)) return false;
  if (std::ranges::any_of(dropped_user_endings, ending)) return false;
  if (held(".dsf.txt")) return false;
  if (held(str_pfc_fold)) return false;  // these aircraft are installed by other means

  const bool earth = held(str_erth1) || held(str_erth2);
  const bool mars = held(str_mars);
  const bool moon = held(str_moon);
  const bool scenery = earth || mars || moon;
  switch (fog_fals) {
    case install_base:
      return !scenery && !held(str_orbt) && !held(str_redt);
    case install_earth:
      return !scenery || earth;
    case install_mars:
      return mars;
    case install_moon:
      return moon;
    default:
      break;
  }
  builder_fatal("I can not tell what type of install this is!", "", "", "", 111);
}

const char* path_trouble(const std::string& path) {
  for (const forbidden_part& rule : forbidden_anywhere)
    if (str_holds(path, rule.part)) return rule.part;
  for (const forbidden_part& rule : forbidden_in_files)
    if (str_holds(path, rule.part)) return rule.part;
  for (const char* part : dropped_parts)
    if (str_holds(path, part)) return part;
  for (const std::string_view part : dropped_files)
    if (str_holds(path, part)) return part.data();  // all literals, so terminated
  return str_holds(path, ".dsf.txt") ? ".dsf.txt" : nullptr;
}

void chop_platform(std::string& path, int os) {
  const size_t slash = path.find('/');
  if (slash == std::string::npos) builder_fatal("Could not find the dir char!", path, "", "", 112);
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
}

std::string dest_dvd(int disk) {
  return dst_fold_base + str_format("disk_%d/", disk);
}

void set_dest_dvd(int disk) {
  dst_folder = dest_dvd(disk);
}

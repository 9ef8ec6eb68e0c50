// The walk over the makers' source tree.
//
// pref_level lists a folder, holds every item against the tree's rules, asks is_good_file about
// each file, and descends. The first broken rule ends the build: a wrong file on a master reaches
// every customer.
//
// Main thread. Writes what bld has found, and the marks of the named places.

#include "Installer-f/builder/make_installer_scan.h"

#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr int discs_with_folders = 3;  // a tree that needs more fails at its first file there
constexpr int walk_progress_step = 500;

void show_walk_progress(const std::string& path) {
  builder_progress(bld.num_files_rec,
                   str_format("reg: %d: total files recursed: %d. will compress: %d.", bld.reg,
                              bld.num_files_rec, bld.num_files_use),
                   path);
}

void check_name(const std::string& name, const std::string& path) {
  if (!name.empty() && name.back() == ' ') {
    builder_fatal("YOU IDIOT!", "You tried to include a file or directory with a space at the end!",
                  "The people behind one system throw a fit at that, while the people behind the "
                  "other would not even blink!",
                  path, 102);
  }
  if (const forbidden_part* const rule = forbidden_in(path, true))
    builder_fatal("YOU IDIOT!", rule->complaint, path, "", 103);
}

// The folders that the file needs on each disc, innermost first. A folder that is there already
// came with all those above it, so the climb stops at the first of these.
void add_comp_paths(const std::string& relative) {
  for (int disk = 0; disk < discs_with_folders; ++disk) {
    std::string folder(path_folder(dest_dvd(disk) + bld.sim_name + "/" + relative));
    while (folder.size() >= bld.dst_fold_base.size() && bld.comp_paths.insert(folder).second) {
      folder.pop_back();
      folder.resize(path_folder(folder).size());
    }
  }
}

void walk_file(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, false);
  if (const forbidden_part* const rule = forbidden_in(path, false))
    builder_fatal("YOU IDIOT!", rule->complaint, path, "", 104);
  if (dir == place_path(place_all)) {
    builder_fatal("YOU IDIOT!",
                  "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!",
                  path, "", 105);
  }

  ++bld.num_files_rec;
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
    ++bld.num_files_use;
    bld.comp_files.push_back(path);
    add_comp_paths(path.substr(bld.src_fold.size()));
  }
  if (bld.num_files_rec % walk_progress_step == 0) show_walk_progress(path);
}

void walk_folder(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, true);
  if (dir == place_path(place_all) && !may_lie_in_all(name)) {
    builder_fatal("What the hell is THIS doing in here!?!?!?", name + "/", path, dir, 108);
  }
  pref_level(path);
}

}  // namespace

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

// The walk over the makers' source tree.
//
// pref_level lists a folder, holds every item against the tree's rules, asks is_good_file about
// each file, and descends. What breaks a rule becomes a fault, and the walk goes on: the makers get
// all of them at once, and nothing has been written yet. check_tree then looks at the whole.
//
// Main thread. Writes what bld has found, the marks of the named places, and faults.

#include "Installer-f/builder/make_installer_scan.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_stop.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_pack.h"

namespace {

constexpr int walk_progress_step = 500;
constexpr std::string_view archive_suffix = ".zip";

// The path up to the end of the part of it that holds `word`: what has to be renamed.
std::string up_to_part(const std::string& path, const char* word) {
  const size_t at = path.find(word, bld.src_fold.size());
  if (at == std::string::npos) return path;
  return path.substr(0, path.find('/', at));
}

void add_forbidden(const forbidden_part& rule, const std::string& path) {
  add_fault(rule.kind, {"YOU IDIOT!", rule.complaint, path}, up_to_part(path, rule.part));
}

void check_name(const std::string& name, const std::string& path) {
  if (!name.empty() && name.back() == ' ') {
    add_fault(fault_blank_end,
              {"YOU IDIOT!", "You tried to include a file or directory with a space at the end!",
               "The people behind one system throw a fit at that, while the people behind the "
               "other would not even blink!",
               path},
              path);
  }
  if (const forbidden_part* const rule = forbidden_in(path, true)) add_forbidden(*rule, path);
}

// The folders that the file needs on each disc, innermost first. A folder that is there already
// came with all those above it, so the climb stops at the first of these.
void add_comp_paths(const std::string& relative) {
  const std::string_view below = path_folder(relative);
  // Files come folder by folder.
  if (!bld.comp_files.empty() && path_folder(bld.comp_files.back().relative) == below) return;
  for (int disk = 0; disk < discs_with_folders; ++disk) {
    std::string folder = dest_dvd(disk) + bld.sim_name + "/" + std::string(below);
    while (folder.size() >= bld.dst_fold_base.size() && bld.comp_paths.insert(folder).second) {
      folder.pop_back();
      folder.resize(path_folder(folder).size());
    }
  }
}

// The volume of a folder, or of the nearest one above it that exists.
dev_t volume_of(std::string folder) {
  struct stat info;
  while (stat(folder.c_str(), &info) != 0) {
    if (folder.size() <= 1) return 0;
    folder.pop_back();
    folder.resize(path_folder(folder).size());
  }
  return info.st_dev;
}

// An archive that was made by hand is linked into the master.
void note_by_hand(source_file& file, const std::string& path) {
  const std::string by_hand = path + ".7z";
  struct stat info;
  if (stat(by_hand.c_str(), &info) != 0 || S_ISDIR(info.st_mode)) return;
  file.by_hand = info.st_size;
  if (volume_of(bld.dst_fold_base) != info.st_dev && !bld.check_only) {
    add_fault(fault_volume, {"ERROR: could not make hard link!", by_hand, bld.dst_fold_base},
              by_hand);
  }
}

void check_program(source_file& file, const std::string& path) {
  if (!path.starts_with(place_path(place_win)) || !str_holds(path, ".exe")) return;
  file.is_program = true;
  const int code = check_large_address_aware(path);
  if (code == 0) return;
  const char* const why =
      code == ENOEXEC ? "it has no header of a Windows program" : error_str(code);
  add_fault(fault_program,
            {"Oops! We could not make a windows exe file large-address-aware!",
             str_format("error# %f", static_cast<double>(code)), path},
            path, why);
}

void check_sizes(const source_file& file, const std::string& path) {
  // The manifest's reader has the same limit, and drops what is longer.
  for (const std::string& one :
       {path, archive_stem(file, discs_with_folders - 1) + std::string(archive_suffix)}) {
    if (one.size() <= path_limit) continue;
    add_fault(fault_too_long, {"String too long!", one}, path,
              one == path ? "this one" : "that of its archive, " + one + ",");
    break;
  }
  if (file.is_link && file.bytes >= static_cast<int64_t>(path_limit))
    add_fault(fault_link, {"YOU IDIOT!", "found a link that goes on and on!", path}, path);
  if (file.by_hand < 0 && !file.is_link && file.bytes > zip_packer::most_bytes)
    add_fault(fault_too_large, {"I could not zip a file!", path, error_str(EFBIG)}, path);
}

void keep_file(const std::string& dir, const std::string& name, const std::string& path,
               source_file& file) {
  if (str_holds(dir, "/All/Resources/preferences/")) {
    add_fault(fault_preferences,
              {"YOU IGNORANT SLUT!", "I found this preferences file!",
               "And is_good_file says I should keep it!!!!", path},
              path);
  }
  if (name.front() == ' ' || name.front() == '\t') {
    add_fault(fault_blank_start,
              {"YOU IDIOT!", "You tried to include a file with a space at the start!",
               "The manifest eats that space, and then nobody ever finds the file again!", path},
              path);
  }
  file.relative = path.substr(bld.src_fold.size());
  file.os = platform_of(file.relative);
  if (file.os < 0) {
    add_fault(fault_platform,
              {"WHAT THE FUCK? I CAN'T TELL WHAT TYPE OF FILE THIS IS!", file.relative},
              path.substr(0, path.find('/', bld.src_fold.size())));
  }
  note_by_hand(file, path);
  check_program(file, path);
  check_sizes(file, path);

  ++bld.num_files_use;
  bld.bytes_use += file.bytes;
  if (!file.is_link) bld.newest = std::max(bld.newest, file.modified.tv_sec);
  add_comp_paths(file.relative);
  bld.comp_files.push_back(std::move(file));
}

void show_walk_progress(const std::string& path) {
  builder_progress(bld.num_files_rec,
                   str_format("reg: %d: total files recursed: %d. will compress: %d.", bld.reg,
                              bld.num_files_rec, bld.num_files_use),
                   path);
}

void walk_file(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, false);
  if (const forbidden_part* const rule = forbidden_in(path, false)) add_forbidden(*rule, path);
  if (dir == place_path(place_all)) {
    add_fault(fault_in_all,
              {"YOU IDIOT!",
               "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!", path},
              path);
  }

  ++bld.num_files_rec;
  source_file file;
  if (is_good_file(path, 0, 1, &file)) keep_file(dir, name, path, file);
  if (bld.num_files_rec % walk_progress_step == 0) show_walk_progress(path);
}

void walk_folder(const std::string& dir, const std::string& name, const std::string& path) {
  note_place(path, true);
  if (dir == place_path(place_all) && !may_lie_in_all(name)) {
    add_fault(fault_foreign, {"What the hell is THIS doing in here!?!?!?", name + "/", path, dir},
              path);
  }
  pref_level(path);
}

// --- the whole tree -----------------------------------------------------------------------------

// A file's archive may bear the name of a folder beside it.
void check_archive_places() {
  for (const source_file& file : bld.comp_files) {
    const std::string archive = archive_stem(file, 0) + std::string(archive_suffix);
    if (file.by_hand >= 0 || bld.comp_paths.count(archive + "/") == 0) continue;
    const std::string path = source_path(file);
    add_fault(fault_archive_place, {"I could not zip a file!", path, archive, error_str(EISDIR)},
              path, path + std::string(archive_suffix) + "/");
  }
}

// Each type is built for the sake of some files; without any of them it was the wrong tree, or the
// wrong type.
void check_type() {
  constexpr struct {
    named_place place;
    const char* what;
  } kinds[] = {{place_all, "the base product"},
               {place_earth_terrain, "Earth scenery"},
               {place_mars, "Mars scenery"},
               {place_moon, "Moon scenery"}};
  for (const source_file& file : bld.comp_files) {
    if (bld.fog_fals == install_base || scenery_of(source_path(file)) == bld.fog_fals) return;
  }
  const auto& kind = kinds[bld.fog_fals];
  std::string place = place_path(kind.place);
  if (!place.ends_with('/')) place += ".../";
  add_fault(fault_no_kind, {str_format("There is no %s in this tree!", kind.what)}, place,
            str_format("--type=%d builds %s, and no file of it is there", bld.fog_fals, kind.what));
}

// Archives whose size is known before they are made break the discs no earlier than all of them
// will; so more discs than there can be by these alone is certain.
void check_discs() {
  float on_disc = 0, in_all = 0;
  int discs = 1;
  for (const source_file& file : bld.comp_files) {
    if (on_disc > bld.disc_limit_kb) {
      on_disc = 0;
      ++discs;
    }
    old_archive old;
    if (file.by_hand < 0) find_reuse(file, old);
    const int64_t known_kb = (file.by_hand < 0 ? old.bytes : file.by_hand) / 1000;
    on_disc += static_cast<float>(known_kb);
    in_all += static_cast<float>(known_kb);
  }
  const float room = bld.disc_limit_kb * static_cast<float>(discs_with_folders);
  const auto plain_kb = bld.bytes_use / 1000;
  const auto plain = static_cast<float>(plain_kb);
  if (discs <= discs_with_folders && plain > room && in_all < room) {
    builder_warning(str_format(
        "%.0f MB of files are to fit %d discs of %.0f MB: unless they compress to that, the build "
        "will end when the last one is full",
        static_cast<double>(plain / 1000), discs_with_folders,
        static_cast<double>(bld.disc_limit_kb / 1000)));
  }
  if (discs <= discs_with_folders) return;
  add_fault(fault_discs, {"This tree needs more discs than there can be!"}, bld.src_fold,
            str_format("the archives made already, %.0f MB, fill %d discs of %.0f MB, and a master "
                       "has %d",
                       static_cast<double>(in_all / 1000), discs,
                       static_cast<double>(bld.disc_limit_kb / 1000), discs_with_folders));
}

}  // namespace

void pref_level(const std::string& dir) {
  std::vector<std::string> names;
  std::vector<int> is_folder;
  int failed = 0;
  const int count = opensave_getitems(dir, 0, names, is_folder, &failed);
  if (failed == 0 && faccessat(AT_FDCWD, dir.c_str(), X_OK, AT_EACCESS) != 0) failed = errno;
  // A file that is not seen would count as gone, and be deleted at the users'.
  if (failed != 0) {
    const char* const why = error_str(failed);
    add_fault(fault_folder, {"I could not read a folder!", dir, why}, dir, why);
  }
  for (int i = 0; i < count && !builder_stopped(); ++i) {
    const std::string path = dir + names[i] + (is_folder[i] ? "/" : "");
    check_name(names[i], path);
    if (is_folder[i]) {
      walk_folder(dir, names[i], path);
    } else {
      walk_file(dir, names[i], path);
    }
  }
}

void check_tree() {
  check_places();
  check_archive_places();
  check_type();
  check_discs();
}

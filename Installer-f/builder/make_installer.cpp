// The build: which tree the install type asks for, and the order of the steps that make it.
//
// sub_install reads the old manifest and walks the source tree; if anything is wrong, it tells all
// of that and has written nothing. Then it makes the master's folders, compresses the files while
// the new manifest is written, adds the files that have gone, and packs the manifest. A build that
// fails or is ended takes away what it has made.
//
// Main thread. Writes bld, g_case_sensitive and APP.given_up.

#include "Installer-f/builder/make_installer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_close.h"
#include "Installer-f/builder/make_installer_comp.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_history.h"
#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_scan.h"
#include "Installer-f/builder/make_installer_stop.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_app.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/io_zip_pack.h"

namespace {

constexpr int manifest_version = 900;

// What this build has made so far, and takes away again unless the master gets whole.
struct made_record {
  bool base = false;   // bld.dst_fold_base
  bool discs = false;  // its disc folders, and what is in them
} made;

void drop_master() {
  // A thread that is at work when a failure ends the program may put one more file into a folder
  // that is being removed, but none into one that has gone.
  constexpr int most_tries = 3;
  for (int disk = 0; made.discs && disk < discs_with_folders; ++disk) {
    for (int tries = 0; tries < most_tries && PLT_remove_tree(dest_dvd(disk)) != 0; ++tries) {
    }
  }
  if (made.discs) delete_file(bld.dst_fold_base + build_record_name);
  if (made.base) rmdir(bld.dst_fold_base.c_str());
  made = {};
}

// --- folders ------------------------------------------------------------------------------------

void add_output_fault(const char* complaint, const std::string& path, const std::string& why,
                      const std::string& detail) {
  add_fault(fault_output,
            {complaint, "THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!", path, why},
            path, detail);
}

// A master is never built over another, nor over what a longer one left on its later discs.
void check_master_folders() {
  for (int disk = 0; disk < discs_with_folders; ++disk) {
    const std::string folder = dest_dvd(disk);
    if (!file_exists(folder.substr(0, folder.size() - 1)) && !dir_exists(folder)) continue;
    add_output_fault("Could not make the dst_folder!", folder, error_str(EEXIST),
                     "it is there already, and no master is built over another");
  }
}

bool make_master_folder(const std::string& path, const char* complaint) {
  const int code = make_folder(path);
  if (code == 0) return true;
  add_output_fault(complaint, path, error_str(code),
                   std::string("it cannot be made: ") + error_str(code));
  return false;
}

// The sorted set has every folder behind the one that holds it.
bool make_tree_folders() {
  if (!dir_exists(bld.dst_fold_base)) {
    if (!make_master_folder(bld.dst_fold_base, "Could not make the dst_folder!")) return false;
    made.base = true;
  }
  made.discs = true;
  set_dest_dvd(0);
  if (!make_master_folder(bld.dst_folder, "Could not make the dst_folder!") ||
      !make_master_folder(bld.dst_folder + bld.sim_name + "/",
                          "Could not make the target_folder!")) {
    return false;
  }
  for (const std::string& folder : bld.comp_paths) {
    const int code = make_folder(folder);
    if (show_make_dir_err(code) == 0) continue;
    add_fault(fault_build, {"Could not make a folder of the master!", folder, error_str(code)},
              folder, std::string("the folder cannot be made: ") + error_str(code));
    return false;
  }
  return true;
}

// --- the steps of a master ----------------------------------------------------------------------

// Windows programs get two gigabytes and no more unless their header says that they can cope.
bool patch_programs() {
  for (source_file& file : bld.comp_files) {
    if (!file.is_program) continue;
    const std::string path = source_path(file);
    const int code = make_file_large_address_aware(path);
    struct stat info;
    if (code == 0 && lstat(path.c_str(), &info) == 0) {
      file.modified = info.st_mtim;
      continue;
    }
    add_fault(fault_program,
              {"Oops! We could not make a windows exe file large-address-aware!", path}, path,
              error_str(code));
    return false;
  }
  return true;
}

// Closes `ouf`. Half a file on a master would be worse than none.
bool close_output(const std::string& path) {
  const int code = ouf_close();
  if (code == 0) return true;
  add_fault(
      fault_build,
      {"I could not write all of this file!",
       "Half a file on a master is worse than none. Is the volume full?", path, error_str(code)},
      path, std::string("it could not be written whole: ") + error_str(code));
  return false;
}

bool open_output(const std::string& path, const char* complaint) {
  if (ouf_open(path, ouf_text, manifest_version, "no-copyright-string")) return true;
  add_fault(fault_build, {complaint, path}, path, "it could not be written");
  return false;
}

// By which an installer knows the disc whose root is `folder`.
bool write_disc_label(const std::string& folder) {
  const std::string path = folder + "dvd_version.txt";
  if (!open_output(path, "I could not write the disc label!")) return false;
  ouf << "DVD\n\nVERSION " << bld.sim_name << '\n';
  return close_output(path);
}

// With the date of the newest file in it and not of this hour: the same tree gives the same master.
bool pack_manifest(const std::string& manifest) {
  const std::string zip = manifest + ".zip";
  zip_packer packer;
  zip_packed packed;
  packer.newest = std::min(newest_date(), bld.newest);
  chmod(manifest.c_str(), 0644);
  const int zip_code = packer.pack(manifest, zip, packed);
  const int delete_code = zip_code == 0 ? delete_file(manifest) : 0;
  if (zip_code == 0 && delete_code == 0) return true;
  const char* const why = error_str(zip_code ? zip_code : delete_code);
  if (zip_code) {
    add_fault(fault_build, {"zip!=0", manifest, zip, why}, zip,
              std::string("the manifest cannot be packed: ") + why);
  } else {
    add_fault(fault_build, {"del!=0", manifest, why}, manifest,
              std::string("what has been packed cannot be deleted: ") + why);
  }
  return false;
}

bool save_record() {
  const int code = write_record();
  if (code != 0) {
    builder_warning("there will be no --reuse of this build, whose record could not be written: " +
                    bld.dst_fold_base + build_record_name + " (" + error_str(code) + ")");
    delete_file(bld.dst_fold_base + build_record_name);
  }
  return true;
}

bool make_master() {
  if (!patch_programs() || !make_tree_folders()) return false;
  const std::string first_disc = bld.dst_folder;
  const std::string manifest = first_disc + bld.sim_name + "/directory.txt";
  if (!open_output(manifest, "I could not write the manifest!")) return false;
  start_lines();
  const bool packed = comp_files();
  if (packed) write_deleted_files();
  return close_output(manifest) && packed && write_disc_label(first_disc) &&
         pack_manifest(manifest) && save_record();
}

// What a tree has been found to hold, forgotten.
void start_tree() {
  bld.comp_files.clear();
  bld.comp_paths.clear();
  bld.num_files_rec = 0;
  bld.num_files_use = 0;
  bld.bytes_use = 0;
  bld.newest = 0;
  clear_faults();
  builder_clear_warnings();
  start_comp();
}

// What ended the build early, told.
int end_early() {
  const int number = builder_stop_signal();
  if (number > 0) {
    builder_notice(std::string("Ended by a signal") +
                   (bld.check_only ? "." : ": no part of a master is left."));
    return build_by_signal + number;
  }
  if (number == 0) add_fault(fault_quit, {"You hit Q dumbass!"}, bld.src_fold);
  tell_faults();
  return build_failed;
}

int build_region(int region) {
  bld.reg = region;
  bld.sim_name = bld.build_name[region];
  return sub_install();
}

}  // namespace

int sub_install() {
  // What ships must match to the letter, whatever the file system here would forgive.
  g_case_sensitive = 0;
  place_names();
  start_tree();
  if (bld.fog_fals != install_base) bld.old_dir_path.clear();
  load_history();

  made = {};
  APP.given_up = drop_master;
  const builder_stop_watch watch;
  if (!bld.check_only) check_master_folders();
  pref_level(bld.src_fold);
  if (!builder_stopped()) check_tree();
  bool whole = fault_count() == 0 && !builder_stopped();
  if (whole) note_installed_places();
  if (whole && !bld.check_only) whole = make_master() && !builder_stopped();
  builder_progress_end();
  if (!whole) {
    drop_master();
    return end_early();
  }
  if (!bld.check_only) warn_of_archive_kinds();
  return build_done;
}

int build_install() {
  int status = build_failed;
  switch (bld.fog_fals) {
    case install_base:
    case install_earth:
      status = build_region(0);
      break;
    case install_mars:
      status = build_region(1);
      break;
    case install_moon:
      status = build_region(2);
      break;
    default:
      builder_fatal("I can not tell what type of install this is!", "", "", "", at_build_type);
  }
  if (status == build_done) close_build();
  made = {};  // until all has been said, what ends the program takes the master away
  return status;
}

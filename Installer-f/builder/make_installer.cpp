// The build: which tree the install type asks for, and the order of the steps that make it.
//
// sub_install reads the old manifest, makes the master's folders, walks the source tree, compresses
// what it found while the new manifest is written, adds the files that have gone, and packs the
// manifest. A single pass: an interrupted one leaves a partial master, which the next run refuses
// until it is removed by hand.
//
// Main thread. Writes the globals of make_installer.h that name the tree, and g_case_sensitive.

#include "Installer-f/builder/make_installer.h"

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_comp.h"
#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_scan.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/io_zip.h"

namespace {

constexpr int manifest_version = 900;

void make_master_folder(const std::string& path, const char* complaint) {
  const int code = make_folder(path);
  if (code == 0) return;
  builder_fatal(complaint, "THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!", path,
                error_str(code), 301);
}

// A master is never built over another, nor over what a longer one left on its later discs.
void make_master_folders(const std::string& target_folder) {
  for (int disk = 1; disk <= 2; ++disk) {
    if (dir_exists(dest_dvd(disk))) {
      builder_fatal("Could not make the dst_folder!", "THE FOLDER ALREADY EXISTS!", dest_dvd(disk),
                    "", 302);
    }
  }
  make_master_folder(bld.dst_folder, "Could not make the dst_folder!");
  make_master_folder(target_folder, "Could not make the target_folder!");
}

// The sorted set has every folder behind the one that holds it.
void make_tree_folders() {
  for (const std::string& folder : bld.comp_paths) {
    const int code = make_folder(folder);
    if (show_make_dir_err(code) != 0)
      builder_fatal("Could not make a folder of the master!", folder, error_str(code), "", 303);
  }
}

void pack_manifest(const std::string& manifest, const std::string& zip) {
  const int zip_code = file_to_zip(manifest, zip);
  if (zip_code != 0) builder_fatal("zip!=0", manifest, zip, error_str(zip_code), 304);
  const int delete_code = delete_file(manifest);
  if (delete_code != 0) builder_fatal("del!=0", manifest, error_str(delete_code), "", 305);
}

void build_region(int region) {
  bld.reg = region;
  bld.sim_name = bld.build_name[region];
  sub_install();
}

}  // namespace

void sub_install() {
  // What ships must match to the letter, whatever the file system here would forgive.
  g_case_sensitive = 0;
  place_names();

  set_dest_dvd(0);
  const std::string first_disc = bld.dst_folder;
  const std::string target_folder = first_disc + bld.sim_name + "/";
  const std::string manifest = target_folder + "directory.txt";

  start_comp();
  bld.num_files_rec = 0;
  bld.num_files_use = 0;
  bld.comp_paths.clear();
  bld.comp_files.clear();

  if (bld.fog_fals != install_base) bld.old_dir_path.clear();
  load_history();

  make_master_folders(target_folder);
  if (!ouf_open(manifest, ouf_text, manifest_version, "no-copyright-string"))
    builder_fatal("I could not write the manifest!", manifest, "", "", 306);
  ouf << "INSTALLER\n\n";

  pref_level(bld.src_fold);
  check_places();
  note_installed_places();

  set_dest_dvd(bld.dvd_now);
  make_tree_folders();
  for (const std::string& path : bld.comp_files)
    comp_file(path);
  write_deleted_files();
  close_output(manifest);
  write_disc_label(first_disc);
  pack_manifest(manifest, manifest + ".zip");

  warn_of_archive_kinds();
  builder_notice(str_format("%s: %d files, %.6f GB compressed, %d disc(s).", bld.sim_name.c_str(),
                            bld.num_files_com, static_cast<double>(bld.zip_size_ins),
                            bld.dvd_now + 1));
}

void build_install() {
  switch (bld.fog_fals) {
    case install_base:
    case install_earth:
      build_region(0);
      break;
    case install_mars:
      build_region(1);
      break;
    case install_moon:
      build_region(2);
      break;
    default:
      builder_fatal("I can not tell what type of install this is!", "", "", "", 307);
  }
  builder_alert("OK compression is done. Checklist if doing net:",
                "Get the version string and version number from hl_types into the serverlist.txt "
                "file in the internet folder, and bring that to the web server.",
                "Upload the -NET uploads- folder stuff.",
                "Extract directory.txt.zip to the next previous directory file for use next time.",
                308);
}

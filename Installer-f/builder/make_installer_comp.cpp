// One source file into its archive, and every line of the manifest.
//
// comp_file works in this order: find the file's platform and history, make the archive (or link
// one that was made by hand), measure and sign the source, write what older releases shipped and
// then the present version, break to the next disc when this one is full. write_deleted_files then
// does what only the history knows of.
//
// Main thread. Writes the disc's state, dst_folder, sim_info (read anew, and its not-seen marks),
// sim_info_index and `ouf`.

#include "Installer-f/builder/make_installer_comp.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_verify.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/io_zip.h"

namespace {

constexpr int comp_progress_step = 20;

// Sizes are whole units of 1,000 bytes, in the manifest and in the totals.
float size_kb(int64_t bytes) {
  return static_cast<float>(bytes / 1000);
}

// A link weighs what it says, as its signature is that of what it says: it may point to a folder or
// to nothing, which have no size.
int64_t source_size(const std::string& path) {
  std::string target;
  if (!is_sim_link(path.c_str(), &target)) return APL_file_size(path);
  // No more than that is read of a link, so it may have been cut, and would ship so.
  if (target.size() >= path_limit)
    builder_fatal("YOU IDIOT!", "found a link that goes on and on!", path, "", 216);
  return static_cast<int64_t>(target.size());
}

void write_dir_line(std::string_view folder) {
  if (folder == bld.prev_dir) return;
  bld.prev_dir = folder;
  ouf << "\nDIR " << folder << '\n';
}

void write_file_line(int os, int version, float zip_kb, float raw_kb, std::string_view sig,
                     std::string_view name) {
  ouf << "FILE 0 " << os << ' ' << version << ' ' << static_cast<int64_t>(zip_kb) << ' '
      << static_cast<int64_t>(raw_kb) << ' ' << sig << ' ' << name << '\n';
}

void write_old_version(const file_version_struct& old) {
  const std::string_view name = path_leaf(old.path);
  if (name.empty()) {
    builder_fatal("0-size filename!", "Now how am I supposed to deal with this?",
                  "This is in the OLD file list.", std::string(old.path), 202);
  }
  write_file_line(old.os, old.version, old.zip_kb, old.raw_kb, old.sig_want, name);
}

// Makes the archive of `path` beside `target`, which is the archive's path without its suffix, and
// returns the archive's path.
std::string make_archive(const std::string& path, const std::string& target) {
  // Compressed by hand beforehand, since the standard tool does better on it than zip. A link costs
  // neither time nor space; it is made to the file itself where the makers have a symbolic link.
  const std::string by_hand = path + ".7z";
  if (file_exists(by_hand)) {
    const std::string archive = target + ".7z";
    if (linkat(AT_FDCWD, by_hand.c_str(), AT_FDCWD, archive.c_str(), AT_SYMLINK_FOLLOW) != 0) {
      const int code = errno;
      builder_fatal("ERROR: could not make hard link!", by_hand, archive, error_str(code), 203);
    }
    return archive;
  }
  const std::string archive = target + ".zip";
  const int code = file_to_zip(path, archive);
  if (code != 0) builder_fatal("I could not zip a file!", path, archive, error_str(code), 204);
  return archive;
}

// What older releases shipped of this file. The state that ships now is left out here, as it
// follows with the present number, and so is an old "GONE": the file is back.
void write_history(const std::string& relative, int os, std::string_view sig) {
  std::string key = relative;
  chop_platform(key, os);
  const auto found = sim_info_index.find(key);
  if (found == sim_info_index.end()) return;
  file_history_struct& history = sim_info[static_cast<size_t>(found->second)];
  for (const file_version_struct& old : history.versions)
    if (old.sig_want != sig && old.sig_want != sig_gone) write_old_version(old);
  history.not_seen = 0;
}

// The break falls behind the file that crossed the limit.
void break_disc() {
  if (bld.zip_size_dvd <= bld.disc_limit_kb) return;
  bld.zip_size_dvd = 0;
  ++bld.dvd_now;
  ouf << "DISK " << bld.dvd_now << '\n';
  set_dest_dvd(bld.dvd_now);
}

}  // namespace

void start_comp() {
  bld.zip_size_ins = 0;
  bld.zip_size_dvd = 0;
  bld.dvd_now = 0;
  bld.num_files_com = 0;
  bld.prev_dir = "---";
  sim_info.clear();
  sim_info_index.clear();
}

void load_history() {
  if (bld.old_dir_path.empty()) return;
  const int result =
      file_exists(bld.old_dir_path)
          ? read_directory(bld.old_dir_path, "Scanning old directory text file to get change log!")
          : 0;
  if (result == 0) {
    builder_fatal(
        "I could not read the old directory!",
        "This means that this installer will not delete old files (needed even for the Skyvane / "
        "USA scenery install).",
        "It also means I will forget to fix this, and release without an old directory, and think "
        "that older versions of stuff is all user-modified cause I don't recognize it!",
        "So fix this.", 205);
  }
  if (result == 2) {
    // The reader has complained already. The build goes on, as it always did.
    builder_warning("the previous manifest was refused, so this release starts without a history");
  }

  for (size_t i = 0; i < sim_info.size(); ++i) {
    file_history_struct& history = sim_info[i];
    const file_version_struct& first = history.versions.front();
    std::string key(first.path);
    chop_platform(key, first.os);
    if (!sim_info_index.emplace(std::move(key), static_cast<int32_t>(i)).second) {
      builder_fatal("WARNING: you appear to have a file TWICE in an old directory file.",
                    std::string(first.path), "", "", 206);
    }
    history.not_seen = 1;
    for (const file_version_struct& old : history.versions) {
      if (old.version != bld.release_version) continue;
      builder_fatal("You idiot! I already have a version:",
                    str_format("version_number %f", static_cast<double>(old.version)),
                    "in file " + std::string(old.path), "", 207);
    }
  }
}

void comp_file(const std::string& path) {
  const std::string relative = path.substr(bld.src_fold.size());
  const std::string_view name = path_leaf(relative);

  // Windows programs get two gigabytes and no more unless their header says that they can cope.
  if (path.starts_with(place_path(place_win)) && str_holds(path, ".exe")) {
    const int code = make_file_large_address_aware(path);
    if (code != 0) {
      builder_fatal("Oops! We could not make a windows exe file large-address-aware!",
                    str_format("error# %f", static_cast<double>(code)), path, "", 208);
    }
  }

  const std::string archive = make_archive(path, bld.dst_folder + bld.sim_name + "/" + relative);
  note_archive_kind(relative, archive.ends_with(".7z"));
  const int64_t zip_bytes = APL_file_size(archive);
  if (zip_bytes < 0) builder_fatal("ERROR: could not get file size!", archive, "", "", 209);
  const int64_t raw_bytes = source_size(path);
  if (raw_bytes < 0) builder_fatal("ERROR: could not get src file size!", path, "", "", 210);
  const float zip_kb = size_kb(zip_bytes);
  const float raw_kb = size_kb(raw_bytes);
  bld.zip_size_dvd += zip_kb;
  bld.zip_size_ins += zip_kb * 0.001f * 0.001f;

  // A word in place of what cannot be computed keeps the line's fields in their places.
  std::string sig(sig_none);
  if (calc_file_md5(path, sig) != 0) builder_alert("Could not MD5 file!", path, "", "", 211);

  write_dir_line(path_folder(relative));
  const int os = platform_of(relative);
  write_history(relative, os, sig);
  if (name.empty()) {
    builder_fatal("0-size filename!", "Now how am I supposed to deal with this?",
                  "This is in the NEW file loop", relative, 212);
  }
  write_file_line(os, bld.release_version, zip_kb, raw_kb, sig, name);
  break_disc();

  ++bld.num_files_com;
  if (bld.num_files_com % comp_progress_step == 0) {
    builder_progress(bld.num_files_com,
                     str_format("reg: %d: total files to compress: %d. now doing: %d.", bld.reg,
                                bld.num_files_use, bld.num_files_com),
                     path);
  }
}

void write_deleted_files() {
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& last = history.current();
    if (!history.not_seen || !is_good_file(bld.src_fold + std::string(last.path), 0, 0)) continue;
    write_dir_line(path_folder(last.path));
    for (const file_version_struct& old : history.versions)
      write_old_version(old);
    if (last.sig_want != sig_gone)
      write_file_line(last.os, bld.release_version, 0, 0, sig_gone, path_leaf(last.path));
    warn_if_still_shipped(last.path, last.os);
  }
}

void write_disc_label(const std::string& folder) {
  const std::string path = folder + "dvd_version.txt";
  if (!ouf_open(path, ouf_text, 900, "no-copyright-string"))
    builder_fatal("I could not write the disc label!", path, "", "", 214);
  ouf << "DVD\n\nVERSION " << bld.sim_name << '\n';
  close_output(path);
}

void close_output(const std::string& path) {
  const int code = ouf_close();
  if (code == 0) return;
  builder_fatal("I could not write all of this file!",
                "Half a file on a master is worse than none. Is the volume full?", path,
                error_str(code), 215);
}

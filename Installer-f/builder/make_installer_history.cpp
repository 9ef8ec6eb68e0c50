// Reading the previous manifest, and every line of the new one.
//
// A file keeps its whole history for ever: installers need the old signatures to know old copies.
// Main thread. Writes sim_info (read anew, and its not-seen marks), sim_info_index, bld.prev_dir
// and `ouf`.

#include "Installer-f/builder/make_installer_history.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "Installer-f/engine/utils_manifest.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

namespace {

// An upper limit to what a manifest unpacks to; half a million files make some 50 MB.
constexpr uint64_t most_manifest_bytes = 1u << 30;

void add_history_fault(const std::string& detail) {
  add_fault(
      fault_history,
      {"I could not read the old directory!",
       "This means that this installer will not delete old files (needed even for the Skyvane / "
       "USA scenery install).",
       "It also means I will forget to fix this, and release without an old directory, and think "
       "that older versions of stuff is all user-modified cause I don't recognize it!",
       "So fix this."},
      bld.old_dir_path, detail);
}

bool begins_with_pk(const std::string& path) {
  const io_handle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  char head[4];
  return file && read(file.get(), head, sizeof head) == sizeof head &&
         std::string_view(head, sizeof head) == "PK\3\4";
}

// Unpacks the manifest of a zip into `text`, a file of its own. False after a fault.
bool unpack_manifest(const std::string& zip, const std::string& text) {
  const io_handle from(open(zip.c_str(), O_RDONLY | O_CLOEXEC));
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  single_file content;
  if (!from || io_load_archive(from.get(), most_manifest_bytes, bytes, size) != single_ok ||
      io_read_single(bytes, size, most_manifest_bytes, content) != single_ok || content.is_link) {
    add_history_fault("it is a damaged zip, or one that holds something else than one manifest");
    return false;
  }
  io_handle to(open(text.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  int code = to ? io_write_all(to.get(), content.bytes, content.size) : errno;
  if (code == 0) code = to.close();
  if (code == 0) return true;
  add_history_fault(std::string("it cannot be unpacked to ") + text + ": " + error_str(code));
  return false;
}

// The reader would tell a user to get a newer installer, and go on.
bool has_manifest_header(const std::string& path) {
  constexpr int versions[] = {840, 900, 0};
  xmap_class map(path);
  return map.file_start && map.check_file(ouf_text, versions, "INSTALLER", nullptr) != 0;
}

bool read_old_manifest() {
  const std::string& path = bld.old_dir_path;
  if (!file_exists(path)) {
    add_history_fault("there is no such file");
    return false;
  }
  std::string text = path;
  const bool zipped = begins_with_pk(path);
  if (zipped) {
    if (get_OS_abs_path(os_dir_temp, text) != 0) text = bld.src_fold;
    text += "previous directory.txt";
    if (!unpack_manifest(path, text)) return false;
  }
  const bool is_ours = has_manifest_header(text);
  if (!is_ours) {
    add_history_fault(
        "it is no manifest of ours, which begins with \"I\", \"900 version\" and \"INSTALLER\"");
  } else {
    read_directory(text, "Scanning old directory text file to get change log!");
  }
  if (zipped) delete_file(text);
  return is_ours;
}

// Enters a history by the key of its file. False if that is there already.
bool enter(size_t index) {
  const file_version_struct& first = sim_info[index].versions.front();
  std::string key(first.path);
  if (!chop_platform(key, first.os)) {
    add_fault(fault_history, {"Could not find the dir char!", key}, bld.old_dir_path,
              "it lists a file outside all folders, " + key);
    return true;
  }
  return sim_info_index.emplace(std::move(key), static_cast<int32_t>(index)).second;
}

void check_release(const file_history_struct& history) {
  for (const file_version_struct& old : history.versions) {
    if (old.version != bld.release_version) continue;
    add_fault(fault_release,
              {"You idiot! I already have a version:",
               str_format("version_number %f", static_cast<double>(old.version)),
               "in file " + std::string(old.path)},
              bld.old_dir_path, std::to_string(bld.release_version));
  }
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
  write_file_line(old.os, old.version, old.zip_kb, old.raw_kb, old.sig_want.text(),
                  path_leaf(old.path));
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
    if (old.sig_want != file_sig(sig) && old.sig_want != sig_gone) write_old_version(old);
  history.not_seen = 0;
}

}  // namespace

void load_history() {
  sim_info.clear();
  sim_info_index.clear();
  if (bld.old_dir_path.empty() || !read_old_manifest()) return;
  for (size_t i = 0; i < sim_info.size(); ++i) {
    if (!enter(i)) {
      const std::string path(sim_info[i].versions.front().path);
      add_fault(fault_twice,
                {"WARNING: you appear to have a file TWICE in an old directory file.", path},
                bld.old_dir_path + ", " + path);
    }
    sim_info[i].not_seen = 1;
    check_release(sim_info[i]);
  }
}

void start_lines() {
  ouf << "INSTALLER\n\n";
  bld.prev_dir = "---";
}

void write_versions(const std::string& relative, int os, const std::string& sig, float zip_kb,
                    float raw_kb) {
  write_dir_line(path_folder(relative));
  write_history(relative, os, sig);
  write_file_line(os, bld.release_version, zip_kb, raw_kb, sig, path_leaf(relative));
}

void write_disc_line(int disk) {
  ouf << "DISK " << disk << '\n';
}

void write_deleted_files() {
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& last = history.current();
    if (!history.not_seen || !is_good_file(bld.src_fold + std::string(last.path), 0, 0)) continue;
    write_dir_line(path_folder(last.path));
    for (const file_version_struct& old : history.versions)
      write_old_version(old);
    if (last.sig_want != sig_gone) {
      write_file_line(last.os, bld.release_version, 0, 0, sig_gone.text(), path_leaf(last.path));
      ++bld.num_files_gone;
    }
    warn_if_still_shipped(last.path, last.os);
  }
}

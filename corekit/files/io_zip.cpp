// Zip archives, read. minizip knows the container; libdeflate does the unpacking, since every entry
// is one whole buffer and it takes half the time of zlib.
//
// The archive is loaded into memory, and each entry is dispatched by its name and mode to a folder,
// a fork, a link or a plain file. Any thread; writes sErrFile, sErrLine and the log.

#include "corekit/files/io_zip.h"

#include <minizip/unzip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_zip";

// --- reading -------------------------------------------------------------------------------------

// Attributes of 0 leave the default permissions and the present time. Failures are passed over: a
// disk that keeps neither is no reason to refuse the file.
void set_attributes(int fd, const unz_file_info& info) {
  if (info.external_fa == 0) return;
  // An archive of a system without Unix modes has none to give; its files stay readable.
  const mode_t mode = mode_t(info.external_fa >> 16);
  if (mode != 0) fchmod(fd, mode & 0777);
  const time_t when = zip_entry_time(info);
  const timespec times[2] = {{when, 0}, {when, 0}};
  if (when != time_t(-1)) futimens(fd, times);
}

int unzip_file(const zip_reader& zip, const std::string& path, const unz_file_info& info) {
  zip_room room;
  zip_bytes bytes;
  if (int err = zip_read_entry(zip, info, room, bytes)) return err;
  io_handle file;
  if (int err = zip_create_file(path, file)) return err;
  const int write_err = io_write_all(file.get(), bytes.data, bytes.size);
  set_attributes(file.get(), info);
  const int close_err = file.close();
  return io_fail(write_err != 0 ? write_err : close_err, source_name, 200);
}

// The entry that is current, under the name `name`, below the prefix `folder`.
int unzip_entry(zip_reader& zip, const unz_file_info& info, const std::string& folder,
                const std::string& name) {
  const bool is_fork = name.starts_with(zip_fork_prefix);
  const bool is_folder = name.ends_with('/');
  if (is_fork && is_folder) return 0;

  std::string path;
  if (int err = zip_place(folder, name, path)) return err;
  if (is_fork) {
    // Behind the prefix and its "/" stands the name that the fork's file would have.
    const size_t leaf = std::min(name.size(), zip_fork_prefix.size() + 1);
    return unzip_resource_fork(&zip, folder + name.substr(leaf), info);
  }
  if (is_folder) {
    const int err = mkdir(path.c_str(), 0755) == 0 ? 0 : errno;
    return show_make_dir_err(err) ? io_fail(err, source_name, 210) : 0;
  }
  const unsigned mode = unsigned(info.external_fa >> 16);
  if ((mode & 0xA000) == 0xA000) return unzip_symlink(&zip, path, info);
  return unzip_file(zip, path, info);
}

int unzip_all(zip_reader& zip, const std::string& zip_path, const std::string& folder,
              std::string* name, bool use_name) {
  // The packed bytes of honest entries do not overlap, so that all of them fit the archive; if they
  // must not, a small archive cannot unpack its bytes over and over.
  uint64_t unclaimed = zip.archive.size;
  bool first = true;
  int err = unzGoToFirstFile(zip.file);
  if (err != UNZ_OK) io_fail(err, source_name, 230);
  while (err == UNZ_OK) {
    unz_file_info info = {};
    std::string stored;
    if ((err = zip_entry_info(zip, info, stored)) != UNZ_OK) break;
    const std::string as = first && use_name ? *name : stored;
    if (first && name) *name = stored;
    first = false;

    if (info.compressed_size > unclaimed) {
      err = io_fail(zip_cannot_read, source_name, 231);
    } else {
      unclaimed -= info.compressed_size;
      err = unzip_entry(zip, info, folder, as);
    }
    if (err != 0) {
      zip_log("Zip to file failed with error " + std::to_string(err) + ". file = " + sErrFile +
              " line = " + std::to_string(sErrLine) + ". inFile=" + zip_path +
              ".\nUNZIP zip_to_file failed with err=" + std::to_string(err) + "\n");
      break;
    }
    err = unzGoToNextFile(zip.file);
    if (err == UNZ_END_OF_LIST_OF_FILE) return 0;
    if (err != UNZ_OK) io_fail(err, source_name, 232);
  }
  return err;
}

}  // namespace

int zip_to_file(const std::string& zip_path, const std::string& out_folder, std::string* name,
                int use_name) {
  const std::string path = app_path + zip_path;
  zip_room room;
  zip_bytes bytes;
  const int load_err = zip_load(path, room, bytes);
  if (load_err == zip_no_memory) return load_err;
  zip_reader zip(bytes);
  if (load_err != 0 || !zip.file) {
    zip_log(
        "OK I am about to report that I could not open a zip file for extraction!\n"
        "That incoming file is " +
        path + "\nIn c-form, it is " + path + "\nThe size is " + std::to_string(path.size()) +
        "\n");
    return io_fail(zip_cannot_open, source_name, 290);
  }
  const int err = unzip_all(zip, path, app_path + out_folder, name, use_name && name);
  if (err != 0) zip_log("Zip to file failed with error err = " + std::to_string(err) + "\n");
  return err;
}

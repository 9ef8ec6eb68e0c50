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

constexpr std::string_view fork_prefix = "__MACOSX";

// --- minizip's view of an archive in memory ------------------------------------------------------

struct memory_stream {
  const zip_bytes* bytes;
  uint64_t at = 0;
  bool fell_short = false;
};

voidpf stream_open(voidpf opaque, const void*, int) {
  return opaque;
}

uLong stream_read(voidpf, voidpf stream, void* buffer, uLong wanted) {
  auto& s = *static_cast<memory_stream*>(stream);
  const uLong count = std::min<uLong>(wanted, s.bytes->size - s.at);
  if (count > 0) memcpy(buffer, s.bytes->data + s.at, count);
  s.at += count;
  s.fell_short = count < wanted;
  return count;
}

uLong stream_write(voidpf, voidpf, const void*, uLong) {
  return 0;
}

ZPOS64_T stream_tell(voidpf, voidpf stream) {
  return static_cast<memory_stream*>(stream)->at;
}

// `offset` may be a negative number in unsigned form: the sum wraps to the place that is meant.
long stream_seek(voidpf, voidpf stream, ZPOS64_T offset, int origin) {
  auto& s = *static_cast<memory_stream*>(stream);
  uint64_t to = offset;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) to += s.at;
  if (origin == ZLIB_FILEFUNC_SEEK_END) to += s.bytes->size;
  if (to > s.bytes->size) return -1;
  s.at = to;
  return 0;
}

int stream_close(voidpf, voidpf) {
  return 0;
}

// minizip asks after a read that fell short, and would else take what is missing for zeros.
int stream_error(voidpf, voidpf stream) {
  return static_cast<memory_stream*>(stream)->fell_short;
}

// The stream must live as long as the handle.
unzFile open_in_memory(memory_stream& stream) {
  zlib_filefunc64_def calls = {};
  calls.zopen64_file = stream_open;
  calls.zread_file = stream_read;
  calls.zwrite_file = stream_write;
  calls.ztell64_file = stream_tell;
  calls.zseek64_file = stream_seek;
  calls.zclose_file = stream_close;
  calls.zerror_file = stream_error;
  calls.opaque = &stream;
  return unzOpen2_64("", &calls);
}

// --- reading -------------------------------------------------------------------------------------

// The entry's date as local time; -1 if there is no such time. mktime carries fields that are out
// of range, which a damaged date holds, over into the next.
time_t entry_time(const tm_unz& date) {
  tm t = {};
  t.tm_sec = int(date.tm_sec);
  t.tm_min = int(date.tm_min);
  t.tm_hour = int(date.tm_hour);
  t.tm_mday = int(date.tm_mday);
  t.tm_mon = int(date.tm_mon);
  t.tm_year = int(date.tm_year) - 1900;
  t.tm_isdst = -1;
  return mktime(&t);
}

// Attributes of 0 leave the default permissions and the present time. Failures are passed over: a
// disk that keeps neither is no reason to refuse the file.
void set_attributes(int fd, const unz_file_info& info) {
  if (info.external_fa == 0) return;
  // An archive of a system without Unix modes has none to give; its files stay readable.
  const mode_t mode = mode_t(info.external_fa >> 16);
  if (mode != 0) fchmod(fd, mode & 0777);
  const time_t when = entry_time(info.tmu_date);
  const timespec times[2] = {{when, 0}, {when, 0}};
  if (when != time_t(-1)) futimens(fd, times);
}

int unzip_file(const zip_reader& zip, const std::string& path, const unz_file_info& info) {
  zip_bytes bytes;
  if (int err = zip_read_entry(zip, info, bytes)) return err;
  int fd = -1;
  if (int err = zip_create_file(path, fd)) return err;
  const int write_err = zip_write_file(fd, bytes);
  set_attributes(fd, info);
  const int close_err = zip_close_file(fd);
  return write_err != 0 ? write_err : close_err;
}

// The entry that is current, under the name `name`, below the prefix `folder`.
int unzip_entry(zip_reader& zip, const unz_file_info& info, const std::string& folder,
                const std::string& name) {
  const bool is_fork = name.starts_with(fork_prefix);
  const bool is_folder = name.ends_with('/');
  if (is_fork && is_folder) return 0;

  std::string path;
  if (int err = zip_place(folder, name, path)) return err;
  if (is_fork) {
    // Behind the prefix and its "/" stands the name that the fork's file would have.
    const size_t leaf = std::min(name.size(), fork_prefix.size() + 1);
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

// The info and the stored name of the current entry.
int entry_info(unzFile file, unz_file_info& info, std::string& name) {
  char stored[257] = {};
  const int err =
      unzGetCurrentFileInfo(file, &info, stored, sizeof stored - 1, nullptr, 0, nullptr, 0);
  if (err != UNZ_OK) {
    zip_log("unzGetCurrentFileInfo err != UNZ_OK! err=" + std::to_string(err) + "\n");
    return io_fail(err, source_name, 220);
  }
  // Names of more than 256 bytes arrive cut; they keep one byte too many, to be refused for length.
  name.assign(stored, std::min<size_t>(info.size_filename, sizeof stored));
  return 0;
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
    if ((err = entry_info(zip.file, info, stored)) != UNZ_OK) break;
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
  zip_reader zip;
  const int load_err = zip_load(path, zip.archive);
  if (load_err == zip_no_memory) return load_err;
  memory_stream stream{&zip.archive};
  if (load_err == 0) zip.file = open_in_memory(stream);
  if (!zip.file) {
    zip_log(
        "OK I am about to report that I could not open a zip file for extraction!\n"
        "That incoming file is " +
        path + "\nIn c-form, it is " + path + "\nThe size is " + std::to_string(path.size()) +
        "\n");
    return io_fail(zip_cannot_open, source_name, 290);
  }
  const int err = unzip_all(zip, path, app_path + out_folder, name, use_name && name);
  unzClose(zip.file);
  if (err != 0) zip_log("Zip to file failed with error err = " + std::to_string(err) + "\n");
  return err;
}

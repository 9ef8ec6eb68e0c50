// What the readers of both archive formats share; see io_zip_parts.h.
//
// Any thread; no state but the lock of the log lines.

#include "corekit/files/io_zip_parts.h"

#include <fcntl.h>
#include <libdeflate.h>
#include <minizip/unzip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr char source_name[] = "Files/io_zip_parts";

constexpr size_t entry_name_limit = 256;

// Deflate's densest: a match of 258 bytes in two bits. The tail covers a last part of a byte.
constexpr uint64_t deflate_ratio = 1032;

// Linux moves at most this much in one call.
constexpr size_t io_step = 0x7FFFF000;

bool climbs(std::string_view path) {
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    if (part == "..") return true;
    path.remove_prefix(std::min(path.size(), part.size() + 1));
  }
  return false;
}

bool is_link(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode);
}

// Why an entry must not be written to `path`, whose first `chosen` characters are the caller's own
// folders; null if it may.
const char* refusal(std::string_view name, const std::string& path, size_t chosen) {
  if (name.empty()) return "it has no name";
  if (name.size() > entry_name_limit) return "its name is too long";
  if (path.size() > path_limit) return "its path is too long";
  if (name.front() == '/') return "its name is absolute";
  // ":" and "\" part folders on other systems of the family, and no reader here opens such a path.
  if (name.find_first_of(std::string_view("\\:\0", 3)) != std::string_view::npos) {
    return "its name holds a character that no file of ours has";
  }
  // Asked of the joined path: a prefix that ends in "." and a name that begins with one make "..".
  if (climbs(std::string_view(path).substr(chosen))) return "its name leads out of the folder";
  for (size_t slash = path.find('/', chosen); slash != std::string::npos && slash + 1 < path.size();
       slash = path.find('/', slash + 1)) {
    if (is_link(path.substr(0, slash))) return "its name leads through a symbolic link";
  }
  return nullptr;
}

// For the log: no control characters, which a hostile name could forge lines with.
std::string printable(std::string_view text) {
  std::string out(text);
  std::replace_if(
      out.begin(), out.end(), [](unsigned char c) { return c < 32 || c == 127; }, '?');
  return out;
}

int inflate_entry(const zip_bytes& packed, zip_bytes& out) {
  const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> engine(
      libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  out.own.reset(static_cast<unsigned char*>(malloc(out.size + 1)));
  if (!engine || !out.own) return io_fail(zip_no_memory, source_name, 110);
  // Without a place for the actual size, yielding less than `out.size` is a failure.
  if (libdeflate_deflate_decompress(engine.get(), packed.data, packed.size, out.own.get(), out.size,
                                    nullptr) != LIBDEFLATE_SUCCESS) {
    return io_fail(zip_cannot_read, source_name, 111);
  }
  out.data = out.own.get();
  return 0;
}

}  // namespace

void zip_log(const std::string& text) {
  static std::mutex one_at_a_time;
  const std::lock_guard<std::mutex> lock(one_at_a_time);
  xer << text;
  xer.flush();
}

int zip_load(const std::string& path, zip_bytes& out) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return io_fail(errno, source_name, 120);
  int err = 0;
  struct stat st;
  if (fstat(fd, &st) != 0) {
    err = errno;
  } else if (!S_ISREG(st.st_mode)) {
    err = S_ISDIR(st.st_mode) ? EISDIR : zip_source_unread;
  } else {
    out.own.reset(static_cast<unsigned char*>(malloc(size_t(st.st_size) + 1)));
    if (!out.own) err = zip_no_memory;
  }
  // A file that shrinks meanwhile counts as what was there; the format's own checks then find it.
  const size_t wanted = err == 0 ? size_t(st.st_size) : 0;
  out.data = out.own.get();
  out.size = 0;
  while (err == 0 && out.size < wanted) {
    const ssize_t got = read(fd, out.own.get() + out.size, std::min(wanted - out.size, io_step));
    if (got > 0) {
      out.size += size_t(got);
    } else if (got == 0) {
      break;
    } else if (errno != EINTR) {
      err = errno;
    }
  }
  close(fd);
  return io_fail(err, source_name, 121);
}

int zip_place(const std::string& folder, std::string_view name, std::string& path) {
  path = folder;
  path += name;
  const char* why = refusal(name, path, path_folder(folder).size());
  if (!why) return 0;
  zip_log("WARNING: entry '" + printable(name.substr(0, entry_name_limit)) +
          "' of an archive is refused: " + why + ".\n");
  return io_fail(zip_cannot_read, source_name, 130);
}

int zip_create_file(const std::string& path, int& fd) {
  // A read-only or linked old file must not be written through. If it cannot be deleted, the open
  // tells why, or succeeds in place.
  unlink(path.c_str());
  fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666);
  return fd < 0 ? io_fail(errno, source_name, 140) : 0;
}

int zip_write_file(int fd, const zip_bytes& bytes) {
  for (size_t done = 0; done < bytes.size;) {
    const ssize_t put = write(fd, bytes.data + done, std::min(bytes.size - done, io_step));
    if (put >= 0) {
      done += size_t(put);
    } else if (errno != EINTR) {
      return io_fail(errno, source_name, 141);
    }
  }
  return 0;
}

int zip_close_file(int fd) {
  return close(fd) == 0 || errno == EINTR ? 0 : io_fail(errno, source_name, 142);
}

int zip_read_entry(const zip_reader& zip, const unz_file_info_s& info, zip_bytes& out) {
  const uint64_t packed_size = info.compressed_size;
  const uint64_t size = info.uncompressed_size;
  const bool deflated = info.compression_method == Z_DEFLATED;
  if (packed_size > zip_size_limit || size > zip_size_limit) {
    return io_fail(zip_too_large, source_name, 150);
  }
  const bool encrypted = (info.flag & 1) != 0;
  if (encrypted || (!deflated && info.compression_method != 0) ||
      (deflated ? size > packed_size * deflate_ratio + deflate_ratio : size != packed_size)) {
    return io_fail(zip_cannot_read, source_name, 151);
  }

  // Opened raw, for the check of the local header against the table of contents and for the place
  // of the bytes; these are taken straight from memory.
  int method = 0;
  if (int err = unzOpenCurrentFile2(zip.file, &method, nullptr, 1)) {
    return io_fail(err, source_name, 152);
  }
  const uint64_t start = unzGetCurrentFileZStreamPos64(zip.file);
  unzCloseCurrentFile(zip.file);
  if (start > zip.archive.size || packed_size > zip.archive.size - start) {
    return io_fail(zip_cannot_read, source_name, 153);
  }
  zip_bytes packed;
  packed.data = zip.archive.data + start;
  packed.size = packed_size;

  out.size = size;
  out.data = packed.data;
  // Some writers mark an empty file as deflated and give it no bytes at all.
  if (deflated && size > 0) {
    if (int err = inflate_entry(packed, out)) return err;
  }
  if (libdeflate_crc32(0, out.data, out.size) != info.crc) {
    return io_fail(zip_cannot_read, source_name, 154);
  }
  return 0;
}

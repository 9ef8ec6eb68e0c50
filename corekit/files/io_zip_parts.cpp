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

int inflate_entry(const zip_bytes& packed, zip_room& room, zip_bytes& out) {
  thread_local const std::unique_ptr<libdeflate_decompressor,
                                     decltype(&libdeflate_free_decompressor)>
      engine(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  unsigned char* const memory = room.need(out.size);
  if (!engine || !memory) return io_fail(zip_no_memory, source_name, 110);
  // Without a place for the actual size, yielding less than `out.size` is a failure.
  if (libdeflate_deflate_decompress(engine.get(), packed.data, packed.size, memory, out.size,
                                    nullptr) != LIBDEFLATE_SUCCESS) {
    return io_fail(zip_cannot_read, source_name, 111);
  }
  out.data = memory;
  return 0;
}

// 0, or why the entry is not to be unpacked, whatever its bytes are.
int entry_fault(const unz_file_info_s& info) {
  const uint64_t packed = info.compressed_size, size = info.uncompressed_size;
  const bool deflated = info.compression_method == Z_DEFLATED;
  const bool encrypted = (info.flag & 1) != 0;
  if (packed > zip_size_limit || size > zip_size_limit) {
    return io_fail(zip_too_large, source_name, 150);
  }
  if (encrypted || (!deflated && info.compression_method != 0) ||
      (deflated ? size > packed * deflate_ratio + deflate_ratio : size != packed)) {
    return io_fail(zip_cannot_read, source_name, 151);
  }
  return 0;
}

}  // namespace

void zip_log(const std::string& text) {
  static std::mutex one_at_a_time;
  const std::lock_guard<std::mutex> lock(one_at_a_time);
  xer << text;
  xer.flush();
}

unsigned char* zip_room::need(size_t size) {
  constexpr size_t least = 256 * 1024, kept_for_good = 32u << 20;
  const bool too_large = size_ > kept_for_good && size <= kept_for_good;
  if (memory_ && size <= size_ && !too_large) return memory_.get();
  size_ = std::max(size, least);
  memory_.reset();  // first, so that both are never there at once
  memory_.reset(static_cast<unsigned char*>(malloc(size_)));
  if (!memory_) size_ = 0;
  return memory_.get();
}

unsigned char* zip_room::grow(size_t size, size_t kept) {
  if (memory_ && size <= size_) return memory_.get();
  if (kept == 0) return need(size);
  auto* const grown = static_cast<unsigned char*>(realloc(memory_.get(), size));
  if (!grown) return nullptr;
  (void)memory_.release();
  memory_.reset(grown);
  size_ = size;
  return grown;
}

int zip_load(int fd, uint64_t most, zip_room& room, zip_bytes& out) {
  out = {};
  struct stat st;
  if (fstat(fd, &st) != 0) return io_fail(errno, source_name, 120);
  if (!S_ISREG(st.st_mode)) {
    return io_fail(S_ISDIR(st.st_mode) ? EISDIR : int(zip_source_unread), source_name, 121);
  }
  if (uint64_t(st.st_size) > most) return io_fail(zip_too_large, source_name, 122);
  unsigned char* const memory = room.need(size_t(st.st_size));
  if (!memory) return io_fail(zip_no_memory, source_name, 123);
  // A file that shrinks meanwhile counts as what was there; the format's own checks then find it.
  out.data = memory;
  return io_fail(io_read_all(fd, memory, size_t(st.st_size), out.size), source_name, 124);
}

int zip_load(const std::string& path, zip_room& room, zip_bytes& out) {
  const io_handle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return file ? zip_load(file.get(), UINT64_MAX, room, out) : io_fail(errno, source_name, 125);
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

int zip_create_file(const std::string& path, io_handle& file) {
  // A read-only or linked old file must not be written through. If it cannot be deleted, the open
  // tells why, or succeeds in place.
  unlink(path.c_str());
  file = io_handle(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0666));
  return file ? 0 : io_fail(errno, source_name, 140);
}

int zip_read_entry(const zip_reader& zip, const unz_file_info_s& info, zip_room& room,
                   zip_bytes& out) {
  if (const int err = entry_fault(info)) return err;
  // Opened raw, for the check of the local header against the table of contents and for the place
  // of the bytes; these are taken straight from memory.
  int method = 0;
  if (int err = unzOpenCurrentFile2(zip.file, &method, nullptr, 1)) {
    return io_fail(err, source_name, 152);
  }
  const uint64_t start = unzGetCurrentFileZStreamPos64(zip.file);
  unzCloseCurrentFile(zip.file);
  if (start > zip.archive.size || info.compressed_size > zip.archive.size - start) {
    return io_fail(zip_cannot_read, source_name, 153);
  }
  return zip_unpack_entry(info, {zip.archive.data + start, info.compressed_size}, room, out);
}

int zip_unpack_entry(const unz_file_info_s& info, const zip_bytes& packed, zip_room& room,
                     zip_bytes& out) {
  if (const int err = entry_fault(info)) return err;
  out.size = info.uncompressed_size;
  out.data = packed.data;
  // Some writers mark an empty file as deflated and give it no bytes at all.
  if (info.compression_method == Z_DEFLATED && out.size > 0) {
    if (int err = inflate_entry(packed, room, out)) return err;
  }
  if (libdeflate_crc32(0, out.data, out.size) != info.crc) {
    return io_fail(zip_cannot_read, source_name, 154);
  }
  return 0;
}

// What the readers of both archive formats share: the archive in memory, the gate that every
// entry's name passes, and the file that takes its bytes. Private to io_zip*.cpp and io_7z.cpp.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

struct unz_file_info_s;

// The layer's codes. error_str has a message for each of them.
enum zip_code : int {
  zip_no_memory = 12,
  zip_too_large = 27,
  zip_name_too_long = 63,
  zip_cannot_open = 20001,
  zip_cannot_read = 20002,  // damaged, or hostile: the log tells which
  zip_cannot_create = 20003,
  zip_cannot_write = 20004,
  zip_source_unread = 20006,
  zip_bad_fork = 20012,
};

// An entry's size must fit the format's 32 bits, whose last value means that it stands elsewhere.
inline constexpr uint64_t zip_size_limit = 0xFFFFFFFEu;

struct zip_free {
  void operator()(unsigned char* memory) const { free(memory); }
};
// Memory of malloc: not cleared, and null instead of an exception when there is none.
using zip_memory = std::unique_ptr<unsigned char, zip_free>;

struct zip_bytes {
  const unsigned char* data = nullptr;  // in `own`, or in the archive that is being read
  size_t size = 0;
  zip_memory own;
};

// A zip archive that is being read.
struct zip_reader {
  void* file = nullptr;  // unzFile, over `archive`
  zip_bytes archive;     // the whole of it
};

// Writes `text` to the log in one piece, as several unpackers may fail at once, and flushes.
void zip_log(const std::string& text);

// Reads a whole file into memory. 0, 12, 21 for a folder, 20006 for another thing that is no plain
// file, or errno.
int zip_load(const std::string& path, zip_bytes& out);

// Builds `path`, where the entry `name` goes below the prefix `folder`, if it may go there; else
// logs the reason and returns 20002. `folder` is the caller's and trusted, its links included; the
// name may not be absolute, climb by "..", hold a separator of any system but "/", or lead through
// a symbolic link. To be asked right before the writing, as earlier entries make links.
int zip_place(const std::string& folder, std::string_view name, std::string& path);

// Deletes what is at `path` and creates a new file there, never through a link. 0 or errno.
int zip_create_file(const std::string& path, int& fd);
// All of the bytes. 0 or errno.
int zip_write_file(int fd, const zip_bytes& bytes);
// 0 or errno, as some file systems tell of a full disk only here.
int zip_close_file(int fd);

// The current entry, unpacked and compared with its CRC. Allocates no more than the packed bytes
// can yield. 0, 12, 20002, 27, or minizip's code.
int zip_read_entry(const zip_reader& zip, const unz_file_info_s& info, zip_bytes& out);

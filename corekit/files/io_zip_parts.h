// What the readers of both archive formats share: the archive in memory, the gate that every
// entry's name passes, and the file that takes its bytes. Private to io_zip*, io_7z and io_single.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"

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

// What the names of fork entries begin with.
inline constexpr std::string_view zip_fork_prefix = "__MACOSX";

// An entry's size must fit the format's 32 bits, whose last value means that it stands elsewhere.
inline constexpr uint64_t zip_size_limit = 0xFFFFFFFEu;

struct zip_free {
  void operator()(unsigned char* memory) const { free(memory); }
};
// Memory of malloc: not cleared, and null instead of an exception when there is none.
using zip_memory = std::unique_ptr<unsigned char, zip_free>;

struct zip_bytes {
  const unsigned char* data = nullptr;
  size_t size = 0;
};

// Memory that is used again from one archive to the next.
class zip_room {
 public:
  // At least `size` bytes, whose content is not kept; null if there are none. What has grown large
  // is given back when little is wanted.
  unsigned char* need(size_t size);
  // The same with the first `kept` bytes as they were.
  unsigned char* grow(size_t size, size_t kept);

 private:
  zip_memory memory_;
  size_t size_ = 0;
};

// A zip archive in memory, opened for reading. The bytes must stand as long.
class zip_reader {
 public:
  explicit zip_reader(const zip_bytes& bytes);
  ~zip_reader();
  zip_reader(const zip_reader&) = delete;
  zip_reader& operator=(const zip_reader&) = delete;

  void* file = nullptr;  // unzFile; null if this is no zip archive
  zip_bytes archive;
  uint64_t at = 0;          // minizip's place in it
  bool fell_short = false;  // its last read
};

// Writes `text` to the log in one piece, as several unpackers may fail at once, and flushes.
void zip_log(const std::string& text);

// Reads a whole file into `room`. 0, 12, 21 for a folder, 20006 for another thing that is no plain
// file, or errno; 27 for more than `most` bytes.
int zip_load(const std::string& path, zip_room& room, zip_bytes& out);
int zip_load(int fd, uint64_t most, zip_room& room, zip_bytes& out);

// Builds `path`, where the entry `name` goes below the prefix `folder`, if it may go there; else
// logs the reason and returns 20002. `folder` is the caller's and trusted, its links included; the
// name may not be absolute, climb by "..", hold a separator of any system but "/", or lead through
// a symbolic link. To be asked right before the writing, as earlier entries make links.
int zip_place(const std::string& folder, std::string_view name, std::string& path);

// Deletes what is at `path` and creates a new file there, never through a link. 0 or errno.
int zip_create_file(const std::string& path, io_handle& file);

// The info and the stored name of the current entry. Names of more than 256 bytes arrive cut to
// 257, to be refused for their length. 0 or minizip's code, which is logged.
int zip_entry_info(const zip_reader& zip, unz_file_info_s& info, std::string& name);
// The entry's date as local time; -1 if there is no such time.
time_t zip_entry_time(const unz_file_info_s& info);

// The current entry, unpacked into `room` (or, if it is not packed, as it lies in the archive) and
// compared with its CRC. Takes no more memory than the packed bytes can yield. 0, 12, 20002, 27, or
// minizip's code.
int zip_read_entry(const zip_reader& zip, const unz_file_info_s& info, zip_room& room,
                   zip_bytes& out);

// The same with the entry's packed bytes in hand, which are all there.
int zip_unpack_entry(const unz_file_info_s& info, const zip_bytes& packed, zip_room& room,
                     zip_bytes& out);

// Whether a fork entry's block begins as one must.
bool zip_fork_is_sound(const zip_bytes& block);

// --- the one file of an archive ------------------------------------------------------------------

inline constexpr size_t single_entries = 2;  // the file, and its fork

// `name` is where the entry's name stays.
single_outcome single_from_zip(const zip_bytes& archive, uint64_t most, zip_room& room,
                               single_file& file, std::string& name);
single_outcome single_from_7z(const zip_bytes& archive, uint64_t most, zip_room& room,
                              single_file& file, std::string& name);

// Whether there is a file, and the fork (if any) is its.
bool single_names_match(std::string_view file, std::string_view fork);
single_outcome single_of_code(int code);  // of this layer

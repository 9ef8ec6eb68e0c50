// Packing, for whoever packs one file after the other: memory and engine are kept from file to
// file, and the plain bytes can be looked at on their way.
//
// io_zip.h says what an archive of ours holds. The same file gives the same archive, byte for byte,
// on every run; its date is stored as local time, so the time zone has a part in it.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <string>

// A local time in the form in which an archive stores it: years from 1980 to 2107, seconds in twos.
uint32_t zip_date(time_t when);

// What was packed.
struct zip_packed {
  int64_t plain_bytes = 0;    // of the file, or of a link's target
  int64_t archive_bytes = 0;  // of the whole archive
  timespec modified = {};     // of the source
  mode_t mode = 0;            // of the source, its kind included
  uint32_t date = 0;          // of the entry, as zip_date gives it
  bool changed = false;       // beside 20006: the file was written to while it was being read
};

// Any thread, one at a time.
class zip_packer {
 public:
  zip_packer();
  ~zip_packer();
  zip_packer(const zip_packer&) = delete;
  zip_packer& operator=(const zip_packer&) = delete;

  // Packs the file or symbolic link at `path` into a new archive at `zip_path`, replacing what is
  // there; neither path gets app_path in front. Codes as file_to_zip, and 125 when it was told to
  // stop. After a failure the archive is incomplete or missing.
  int pack(const std::string& path, const std::string& zip_path, zip_packed& packed);

  // Called with the plain bytes (of a link: its target) in order, in one piece or more; null: no.
  void (*look)(void* with, const void* bytes, size_t size) = nullptr;
  void* look_with = nullptr;

  // A later date of a source is stored as this one.
  time_t newest = std::numeric_limits<time_t>::max();

  // Looked at between pieces of work; null: never stops.
  const std::atomic<bool>* stop = nullptr;

  // The largest file that there is an archive for.
  static constexpr int64_t most_bytes = 0xFFFFFFFE;

  // A file up to this size is packed in memory, in one piece; a larger one is streamed, at half the
  // speed and with memory that does not grow. The two give different bytes.
  static constexpr uint64_t whole_limit = 64u << 20;

 private:
  struct engine;
  std::unique_ptr<engine> engine_;
};

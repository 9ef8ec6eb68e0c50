// Archives of a few small files that belong together: a manifest, and what vouches for it. Any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "corekit/files/io_single.h"

struct set_entry {
  std::string_view name;
  uint64_t most = 0;      // reading: bytes that it may have
  bool is_there = false;  // reading: found
  std::string bytes = {};
};

// Reads the entries that are named from a zip archive. It is none of ours (single_other_file) if
// one is missing, or is there twice, or anything else is there.
single_outcome io_read_set(const unsigned char* archive, size_t size, std::span<set_entry> entries);

// Writes a new archive at `path` with these entries in this order, each of mode 0644 and with this
// date, as a zip has it. 0 or a code for error_str; after a failure there is none.
int io_write_set(const std::string& path, std::span<const set_entry> entries, uint32_t date);

// The headers of an archive with one entry, from what is known of it.
//
//   local header, name | packed bytes | table of contents: one row, name | end record
//
// All numbers are little-endian (PKWARE's APPNOTE.TXT, 4.3.7, 4.3.12, 4.3.16). Private to
// io_zip_pack.cpp and io_single_read.cpp. No state; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// What the headers say of the entry.
struct entry_facts {
  std::string_view name;
  uint16_t method = 0;
  uint32_t date = 0x00200000;  // in the format's form; this is none
  uint32_t crc = 0;
  uint32_t packed_size = 0;
  uint32_t plain_size = 0;
  uint32_t attributes = 0;
};

// The bytes before the packed ones, and behind them.
size_t head_size(const entry_facts& entry);
size_t tail_size(const entry_facts& entry);

// Write them, each with all facts known.
void put_head(unsigned char* at, const entry_facts& entry);
void put_tail(unsigned char* at, const entry_facts& entry);

// The way back, where the archive is byte for byte what these two make around the packed bytes, as
// nearly all are that a mirror or a disc holds. False for any other, which may be sound as well.
// The name stays in the archive.
bool take_apart(const unsigned char* archive, size_t size, entry_facts& entry);

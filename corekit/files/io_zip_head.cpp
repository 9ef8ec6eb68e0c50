// The headers of an archive; see io_zip_head.h. No state.

#include "corekit/files/io_zip_head.h"

#include <cstring>

namespace {

constexpr size_t local_header_size = 30;
constexpr size_t table_row_size = 46;
constexpr size_t end_record_size = 22;

void put16(unsigned char*& at, uint32_t value) {
  *at++ = static_cast<unsigned char>(value);
  *at++ = static_cast<unsigned char>(value >> 8);
}

void put32(unsigned char*& at, uint32_t value) {
  put16(at, value);
  put16(at, value >> 16);
}

uint32_t get16(const unsigned char* at) {
  return at[0] | uint32_t{at[1]} << 8;
}

uint32_t get32(const unsigned char* at) {
  return get16(at) | get16(at + 2) << 16;
}

void put_name(unsigned char*& at, std::string_view name) {
  std::memcpy(at, name.data(), name.size());
  at += name.size();
}

// What both headers have in common, from the flags to the length of the (missing) extra field.
void put_common(unsigned char*& at, const entry_facts& entry) {
  put16(at, 20);  // version needed
  put16(at, 0);   // flags
  put16(at, entry.method);
  put32(at, entry.date);
  put32(at, entry.crc);
  put32(at, entry.packed_size);
  put32(at, entry.plain_size);
  put16(at, static_cast<uint32_t>(entry.name.size()));
  put16(at, 0);
}

}  // namespace

size_t head_size(const entry_facts& entry) {
  return local_header_size + entry.name.size();
}

size_t tail_size(const entry_facts& entry) {
  return table_row_size + entry.name.size() + end_record_size;
}

void put_head(unsigned char* at, const entry_facts& entry) {
  put32(at, 0x04034b50);
  put_common(at, entry);
  put_name(at, entry.name);
}

void put_tail(unsigned char* at, const entry_facts& entry) {
  put32(at, 0x02014b50);
  put16(at, (3u << 8) | 20);  // made by Unix: else other unpackers disregard the mode
  put_common(at, entry);
  for (int i = 0; i < 3; ++i)
    put16(at, 0);  // comment, number of the disc, internal attributes
  put32(at, entry.attributes);
  put32(at, 0);  // where the entry begins
  put_name(at, entry.name);

  put32(at, 0x06054b50);
  put32(at, 0);  // this disc, and that of the table
  put16(at, 1);  // rows here
  put16(at, 1);  // and in all
  put32(at, static_cast<uint32_t>(table_row_size + entry.name.size()));
  put32(at, static_cast<uint32_t>(head_size(entry) + entry.packed_size));
  put16(at, 0);
}

// Where the fields stand, if this is one; that it is, is seen when all is made anew from them.
bool take_apart(const unsigned char* archive, size_t size, entry_facts& entry) {
  constexpr size_t longest_name = 256;
  if (size < local_header_size + table_row_size + end_record_size) return false;
  const size_t name_size = get16(archive + 26);
  if (name_size > longest_name || name_size > size - local_header_size) return false;
  entry.name = {reinterpret_cast<const char*>(archive + local_header_size), name_size};
  entry.method = static_cast<uint16_t>(get16(archive + 8));
  entry.date = get32(archive + 10);
  entry.crc = get32(archive + 14);
  entry.packed_size = get32(archive + 18);
  entry.plain_size = get32(archive + 22);
  const size_t head = head_size(entry), tail = tail_size(entry);
  if (size < head + tail || size - head - tail != entry.packed_size) return false;
  const unsigned char* const row = archive + size - tail;
  entry.attributes = get32(row + 38);

  unsigned char made[table_row_size + longest_name + end_record_size];
  put_head(made, entry);
  if (std::memcmp(made, archive, head) != 0) return false;
  put_tail(made, entry);
  return std::memcmp(made, row, tail) == 0;
}

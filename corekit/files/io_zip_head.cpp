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

// The head of a 7z archive; see io_7z_head.h.
//
// Steps: the fixed header tells where the table of contents is; if that is packed, its own little
// table is checked and liblzma unpacks it; every count in it is held against the bytes that are
// left to describe what it counts. Any thread; no state.

#include "corekit/files/io_7z_head.h"

#include <lzma.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr size_t fixed_header = 32;
constexpr uint64_t most_head = 1u << 20;
constexpr uint64_t most_dictionary = 256u << 20;
constexpr uint64_t most_coders = 4;

enum property : unsigned {
  at_end = 0x00,
  header = 0x01,
  archive_properties = 0x02,
  main_streams = 0x04,
  files = 0x05,
  pack_info = 0x06,
  unpack_info = 0x07,
  substreams = 0x08,
  sizes = 0x09,
  digests = 0x0A,
  folder = 0x0B,
  unpack_sizes = 0x0C,
  stream_counts = 0x0D,
  packed_header = 0x17,
};

// Methods, by their ids' bytes as one number.
constexpr uint64_t method_copy = 0, method_lzma = 0x030101, method_lzma2 = 0x21,
                   method_ppmd = 0x030401;

// A walk over bytes that stops for good at the first fault.
struct head_walk {
  const unsigned char* at;
  const unsigned char* end;
  size_t most_entries;
  claims_7z verdict = claims_fine;

  size_t left() const { return static_cast<size_t>(end - at); }
  bool fine() const { return verdict == claims_fine; }
  void stop(claims_7z why) {
    if (fine()) verdict = why;
    at = end;
  }
  unsigned byte() {
    if (at == end) {
      stop(claims_damaged);
      return 0;
    }
    return *at++;
  }
  // The format's number: the ones at the top of the first byte count the bytes that follow.
  uint64_t number() {
    const unsigned first = byte();
    uint64_t value = 0;
    for (unsigned i = 0, mask = 0x80; i < 8; ++i, mask >>= 1) {
      if (!(first & mask)) return value | uint64_t(first & (mask - 1)) << (8 * i);
      value |= uint64_t(byte()) << (8 * i);
    }
    return value;
  }
  // A count of things each of which takes up at least a byte of what follows.
  uint64_t count() {
    const uint64_t value = number();
    if (value > left()) stop(claims_too_large);
    return fine() ? value : 0;
  }
  // The same of things of which each entry has at most so many.
  uint64_t count_for_entries(uint64_t each) {
    const uint64_t value = count();
    if (value > each * most_entries) stop(claims_too_large);
    return fine() ? value : 0;
  }
  void skip(uint64_t bytes) {
    if (bytes > left()) {
      stop(claims_damaged);
    } else {
      at += bytes;
    }
  }
};

uint32_t little_32(const unsigned char* at) {
  return at[0] | at[1] << 8 | at[2] << 16 | uint32_t{at[3]} << 24;
}
uint64_t little_64(const unsigned char* at) {
  return little_32(at) | uint64_t{little_32(at + 4)} << 32;
}

// --- streams -------------------------------------------------------------------------------------

struct coder_7z {
  uint64_t method = 0;
  const unsigned char* properties = nullptr;
  uint64_t properties_size = 0;
};
struct folder_7z {
  std::vector<coder_7z> coders;
  uint64_t outputs = 0;
  uint64_t unpacked = 0;  // bytes of the largest output
  bool has_digest = false;
};
struct streams_7z {
  uint64_t pack_position = 0;
  std::vector<uint64_t> pack_sizes;
  std::vector<folder_7z> folders;
};

// Memory that a coder asks for at once.
uint64_t coder_memory(const coder_7z& coder) {
  if ((coder.method == method_lzma || coder.method == method_ppmd) && coder.properties_size >= 5) {
    return little_32(coder.properties + 1);
  }
  if (coder.method == method_lzma2 && coder.properties_size >= 1) {
    const unsigned bits = coder.properties[0];
    return bits > 40 ? UINT64_MAX : uint64_t(2 | (bits & 1)) << (bits / 2 + 11);
  }
  return 0;
}

void read_coder(head_walk& walk, folder_7z& out, uint64_t& inputs) {
  const unsigned flags = walk.byte();
  if (flags & 0x80) walk.stop(claims_damaged);
  coder_7z coder;
  for (unsigned i = flags & 0x0F; i > 0; --i)
    coder.method = coder.method << 8 | walk.byte();
  const bool is_complex = flags & 0x10;
  const uint64_t ins = is_complex ? walk.count() : 1, outs = is_complex ? walk.count() : 1;
  if (ins > most_coders || outs > most_coders) walk.stop(claims_too_large);
  inputs += ins;
  out.outputs += outs;
  if (flags & 0x20) {
    coder.properties_size = walk.number();
    coder.properties = walk.at;
    walk.skip(coder.properties_size);
  }
  if (walk.fine() && coder_memory(coder) > most_dictionary) walk.stop(claims_too_large);
  if (walk.fine()) out.coders.push_back(coder);
}

void read_folder(head_walk& walk, folder_7z& out) {
  const uint64_t coders = walk.count();
  if (coders == 0) walk.stop(claims_damaged);
  if (coders > most_coders) walk.stop(claims_too_large);
  uint64_t inputs = 0;
  for (uint64_t i = 0; i < coders && walk.fine(); ++i)
    read_coder(walk, out, inputs);
  if (!walk.fine() || out.outputs == 0 || inputs + 1 < out.outputs)
    return walk.stop(claims_damaged);
  const uint64_t pairs = out.outputs - 1;
  for (uint64_t i = 0; i < 2 * pairs; ++i)
    walk.number();
  const uint64_t packed = inputs - pairs;
  for (uint64_t i = 0; packed > 1 && i < packed; ++i)
    walk.number();
}

// A list of checksums: for all, or for those of a bit vector. Which have one goes to `has`.
void skip_digests(head_walk& walk, std::vector<bool>& has) {
  const bool all = walk.byte() != 0;
  uint64_t defined = 0;
  unsigned bits = 0xFF;
  for (size_t i = 0; i < has.size() && walk.fine(); ++i) {
    if (!all && i % 8 == 0) bits = walk.byte();
    has[i] = bits >> (7 - i % 8) & 1;
    defined += has[i];
  }
  walk.skip(4 * defined);
}

void read_pack_info(head_walk& walk, streams_7z& out) {
  out.pack_position = walk.number();
  const uint64_t count = walk.count_for_entries(most_coders);
  for (unsigned what; walk.fine() && (what = walk.byte()) != at_end;) {
    if (what == sizes) {
      for (uint64_t i = 0; i < count && walk.fine(); ++i)
        out.pack_sizes.push_back(walk.number());
    } else if (what == digests) {
      std::vector<bool> has(count);
      skip_digests(walk, has);
    } else {
      walk.stop(claims_damaged);
    }
  }
}

void read_unpack_info(head_walk& walk, streams_7z& out) {
  if (walk.byte() != folder) return walk.stop(claims_damaged);
  const uint64_t count = walk.count_for_entries(1);
  if (walk.byte() != 0) return walk.stop(claims_damaged);  // kept elsewhere: nobody does that
  for (uint64_t i = 0; i < count && walk.fine(); ++i)
    read_folder(walk, out.folders.emplace_back());
  if (walk.byte() != unpack_sizes) return walk.stop(claims_damaged);
  for (folder_7z& each : out.folders)
    for (uint64_t i = 0; i < each.outputs && walk.fine(); ++i)
      each.unpacked = std::max(each.unpacked, walk.number());
  for (unsigned what; walk.fine() && (what = walk.byte()) != at_end;) {
    if (what != digests) return walk.stop(claims_damaged);
    std::vector<bool> has(count);
    skip_digests(walk, has);
    for (size_t i = 0; i < has.size(); ++i)
      out.folders[i].has_digest = has[i];
  }
}

// How many files share a folder's output. Their sizes and checksums follow, up to the end mark;
// they are the reader's business, as are those of the files: their number is what counts.
void read_substreams(head_walk& walk, const streams_7z& streams, uint64_t& total) {
  total = streams.folders.size();
  unsigned what = walk.byte();
  std::vector<uint64_t> counts(streams.folders.size(), 1);
  if (what == stream_counts) {
    total = 0;
    for (uint64_t& count : counts)
      total += count = walk.count_for_entries(1);
    what = walk.byte();
  }
  if (total > walk.most_entries) walk.stop(claims_too_large);
  if (!walk.fine()) return;
  if (what == sizes) {
    for (const uint64_t count : counts)
      for (uint64_t i = 1; i < count && walk.fine(); ++i)
        walk.number();
    what = walk.byte();
  }
  if (what == digests) {
    size_t missing = 0;  // a folder's own is that of its only file
    for (size_t i = 0; i < counts.size(); ++i)
      missing += counts[i] == 1 && streams.folders[i].has_digest ? 0 : counts[i];
    std::vector<bool> has(missing);
    skip_digests(walk, has);
    what = walk.byte();
  }
  if (what != at_end) walk.stop(claims_damaged);
}

void read_streams(head_walk& walk, streams_7z& out, uint64_t& files_with_content) {
  for (unsigned what; walk.fine() && (what = walk.byte()) != at_end;) {
    switch (what) {
      case pack_info:
        read_pack_info(walk, out);
        break;
      case unpack_info:
        read_unpack_info(walk, out);
        files_with_content = out.folders.size();
        break;
      case substreams:
        read_substreams(walk, out, files_with_content);
        break;
      default:
        walk.stop(claims_damaged);
    }
  }
}

// --- the table of contents -----------------------------------------------------------------------

// Unpacks a packed table. Its coder is LZMA with every packer there is.
claims_7z unpack_head(const unsigned char* archive, size_t size, const streams_7z& streams,
                      std::vector<unsigned char>& out) {
  if (streams.folders.size() != 1 || streams.pack_sizes.size() != 1 ||
      streams.folders[0].coders.size() != 1) {
    return claims_damaged;
  }
  const coder_7z& coder = streams.folders[0].coders[0];
  const uint64_t unpacked = streams.folders[0].unpacked, packed = streams.pack_sizes[0];
  if (unpacked > most_head) return claims_too_large;
  if (streams.pack_position > size - fixed_header ||
      packed > size - fixed_header - streams.pack_position) {
    return claims_damaged;
  }
  const unsigned char* const from = archive + fixed_header + streams.pack_position;
  if (coder.method == method_copy) {
    out.assign(from, from + packed);
    return claims_fine;
  }
  lzma_filter filters[2] = {{LZMA_FILTER_LZMA1, nullptr}, {LZMA_VLI_UNKNOWN, nullptr}};
  if (coder.method == method_lzma2)
    filters[0].id = LZMA_FILTER_LZMA2;
  else if (coder.method != method_lzma)
    return claims_damaged;
  if (lzma_properties_decode(filters, nullptr, coder.properties, coder.properties_size) !=
      LZMA_OK) {
    return claims_damaged;
  }
  auto* const options = static_cast<lzma_options_lzma*>(filters[0].options);
  // No more of the dictionary can be looked at than there is of the table.
  options->dict_size = uint32_t(std::clamp<uint64_t>(unpacked, LZMA_DICT_SIZE_MIN, most_head));
  out.resize(unpacked);
  lzma_stream stream = LZMA_STREAM_INIT;
  if (lzma_raw_decoder(&stream, filters) == LZMA_OK) {
    stream.next_in = from;
    stream.avail_in = packed;
    stream.next_out = out.data();
    stream.avail_out = out.size();
    while (stream.avail_out > 0 && lzma_code(&stream, LZMA_RUN) == LZMA_OK) {
    }
  }
  const bool whole = stream.next_out == out.data() + out.size();
  lzma_end(&stream);
  free(filters[0].options);
  return whole ? claims_fine : claims_damaged;  // its sum is the reader's business
}

claims_7z read_table(head_walk walk) {
  unsigned what = walk.byte();
  if (what == archive_properties) {
    while (walk.fine() && walk.byte() != at_end)
      walk.skip(walk.number());
    what = walk.byte();
  }
  streams_7z streams;
  uint64_t with_content = 0;
  if (what == main_streams) {
    read_streams(walk, streams, with_content);
    what = walk.byte();
  }
  if (!walk.fine()) return walk.verdict;
  if (what == at_end) return claims_empty;
  if (what != files) return claims_damaged;
  const uint64_t entries = walk.count_for_entries(1);
  if (!walk.fine()) return walk.verdict;
  if (entries == 0) return claims_empty;
  return with_content > entries ? claims_damaged : claims_fine;
}

}  // namespace

claims_7z io_7z_claims(const unsigned char* archive, size_t size, size_t most_entries) {
  constexpr unsigned char magic[6] = {'7', 'z', 0xBC, 0xAF, 0x27, 0x1C};
  if (size < fixed_header || memcmp(archive, magic, sizeof magic) != 0) return claims_damaged;
  const uint64_t offset = little_64(archive + 12), length = little_64(archive + 20);
  if (length == 0) return claims_empty;
  if (offset > size - fixed_header || length > size - fixed_header - offset) return claims_damaged;
  if (length > most_head) return claims_too_large;

  const unsigned char* const table = archive + fixed_header + offset;
  head_walk walk{table, table + length, most_entries};
  const unsigned kind = walk.byte();
  if (kind == header) return read_table(walk);
  if (kind != packed_header) return claims_damaged;
  streams_7z streams;
  uint64_t unused = 0;
  read_streams(walk, streams, unused);
  if (!walk.fine()) return walk.verdict;
  std::vector<unsigned char> unpacked;
  if (const claims_7z verdict = unpack_head(archive, size, streams, unpacked)) return verdict;
  head_walk inner{unpacked.data(), unpacked.data() + unpacked.size(), most_entries};
  return inner.byte() == header ? read_table(inner) : claims_damaged;
}

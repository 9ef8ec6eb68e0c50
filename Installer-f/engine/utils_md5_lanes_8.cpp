// MD5 in 8 lanes, two vectors of four, by what every processor of this kind has. No globals.

#include <cstdint>
#include <cstring>

#include "Installer-f/engine/utils_md5_lanes_int.h"

#define MD5_TARGET  // nothing to ask for

namespace {

using word_lanes = uint32_t __attribute__((vector_size(16)));

inline word_lanes load_pieces(const uint8_t* const* at, size_t offset) {
  word_lanes words;
  std::memcpy(&words, *at + offset, sizeof words);
  return words;
}

}  // namespace

#include "Installer-f/engine/utils_md5_lanes_kernel.h"

void MD5_half_of_8(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<false>(lanes, blocks);
}

void MD5_all_of_8(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<true>(lanes, blocks);
}

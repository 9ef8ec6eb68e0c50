// MD5 in 16 lanes, two vectors of eight, by AVX2. Run only where the processor has it. No globals.

#include "Installer-f/engine/utils_md5_lanes_int.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstdint>

#define MD5_TARGET [[gnu::target("avx2")]]

namespace {

using word_lanes = uint32_t __attribute__((vector_size(32)));

MD5_TARGET [[gnu::always_inline]] inline word_lanes load_pieces(const uint8_t* const* at,
                                                                size_t offset) {
  const auto piece = [](const uint8_t* bytes) { return reinterpret_cast<const __m128i_u*>(bytes); };
  return reinterpret_cast<word_lanes>(
      _mm256_loadu2_m128i(piece(at[4] + offset), piece(at[0] + offset)));
}

}  // namespace

#include "Installer-f/engine/utils_md5_lanes_kernel.h"

void MD5_half_of_16(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<false>(lanes, blocks);
}

void MD5_all_of_16(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<true>(lanes, blocks);
}

#endif

// MD5 in 32 lanes, two vectors of sixteen, by AVX-512 Foundation, whose one instruction for any
// function of three words is each round's function. Run only where the processor has it. No
// globals.

#include "Installer-f/engine/utils_md5_lanes_int.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <cstdint>

#define MD5_TARGET [[gnu::target("avx512f")]]
#define MD5_HAS_TABLES

namespace {

using word_lanes = uint32_t __attribute__((vector_size(64)));

template <int table>
MD5_TARGET [[gnu::always_inline]] inline word_lanes by_table(word_lanes b, word_lanes c,
                                                             word_lanes d) {
  return reinterpret_cast<word_lanes>(
      _mm512_ternarylogic_epi32(reinterpret_cast<__m512i>(b), reinterpret_cast<__m512i>(c),
                                reinterpret_cast<__m512i>(d), table));
}

MD5_TARGET [[gnu::always_inline]] inline __m128i load_piece(const uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i_u*>(bytes));
}

// By masked broadcasts, which spare the port that turns the words on their side.
MD5_TARGET [[gnu::always_inline]] inline word_lanes load_pieces(const uint8_t* const* at,
                                                                size_t offset) {
  __m512i words = _mm512_castsi128_si512(load_piece(at[0] + offset));
  words = _mm512_mask_broadcast_i32x4(words, 0x00f0, load_piece(at[4] + offset));
  words = _mm512_mask_broadcast_i32x4(words, 0x0f00, load_piece(at[8] + offset));
  words = _mm512_mask_broadcast_i32x4(words, 0xf000, load_piece(at[12] + offset));
  return reinterpret_cast<word_lanes>(words);
}

}  // namespace

#include "Installer-f/engine/utils_md5_lanes_kernel.h"

void MD5_half_of_32(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<false>(lanes, blocks);
}

void MD5_all_of_32(MD5_lanes& lanes, size_t blocks) {
  digest_vectors<true>(lanes, blocks);
}

#endif

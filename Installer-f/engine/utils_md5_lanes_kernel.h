// The inner loop of the lanes, compiled for each instruction set: a source file that is about one
// of them includes this after it has defined
//   MD5_TARGET           the attribute that lets a function use it
//   word_lanes           a vector of 32-bit words, a whole number of 16-byte pieces
//   load_pieces          16 bytes of every fourth stream, as the pieces of one vector
// and, where there is one instruction for any function of three words, MD5_HAS_TABLES and
//   by_table             that function, by its table: bit 4b + 2c + d is its value
// Everything here is the including file's own, so that no code for one set is taken for another's.
#pragma once

#include <cstring>
#include <utility>

#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_md5_lanes.h"
#include "Installer-f/engine/utils_md5_steps.h"

#define MD5_INLINE MD5_TARGET [[gnu::always_inline]] inline

namespace {

constexpr int vector_lanes = sizeof(word_lanes) / sizeof(uint32_t);

// A sum as it stands. A compiler that may order additions as it likes puts the one that has to wait
// first, and half the speed is gone.
MD5_INLINE word_lanes settled(word_lanes sum) {
#if defined(__x86_64__)
  asm("" : "+v"(sum));
#endif
  return sum;
}

// The rounds' functions, added to what else the step sums up. `b` is what the step before has made,
// so all that does not need it comes first.
#if defined(MD5_HAS_TABLES)
MD5_INLINE word_lanes plus_f(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + by_table<0xca>(b, c, d);
}
MD5_INLINE word_lanes plus_g(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + by_table<0xe4>(b, c, d);
}
MD5_INLINE word_lanes plus_h(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + by_table<0x96>(b, c, d);
}
MD5_INLINE word_lanes plus_i(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + by_table<0x39>(b, c, d);
}
#else
MD5_INLINE word_lanes plus_f(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + (d ^ (b & (c ^ d)));
}
// Each bit from one of two words: the halves share none, so they may be added one by one.
MD5_INLINE word_lanes plus_g(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum + (c & ~d)) + (b & d);
}
MD5_INLINE word_lanes plus_h(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + (b ^ (c ^ d));
}
MD5_INLINE word_lanes plus_i(word_lanes sum, word_lanes b, word_lanes c, word_lanes d) {
  return settled(sum) + (c ^ (b | ~d));
}
#endif

template <int turn>
MD5_INLINE word_lanes turned(word_lanes words) {
  return (words << turn) | (words >> (32 - turn));
}

// Words of two vectors in turn, or two and two, from the low or the high half of each piece.
template <typename sequence>
struct interleave;
template <int... lane>
struct interleave<std::integer_sequence<int, lane...>> {
  MD5_INLINE static word_lanes low(word_lanes x, word_lanes y) {
    return __builtin_shufflevector(x, y, (lane / 4 * 4 + lane % 4 / 2 + lane % 2 * size)...);
  }
  MD5_INLINE static word_lanes high(word_lanes x, word_lanes y) {
    return __builtin_shufflevector(x, y, (lane / 4 * 4 + lane % 4 / 2 + 2 + lane % 2 * size)...);
  }
  MD5_INLINE static word_lanes low_pairs(word_lanes x, word_lanes y) {
    return __builtin_shufflevector(x, y, (lane / 4 * 4 + lane % 2 + lane % 4 / 2 * size)...);
  }
  MD5_INLINE static word_lanes high_pairs(word_lanes x, word_lanes y) {
    return __builtin_shufflevector(x, y, (lane / 4 * 4 + lane % 2 + 2 + lane % 4 / 2 * size)...);
  }
  static constexpr int size = vector_lanes;  // where the words of `y` begin
};
using words_of_two = interleave<std::make_integer_sequence<int, vector_lanes>>;

// Four words of each stream: rows of four are turned on their side in each piece.
MD5_INLINE void load_words(word_lanes* words, const uint8_t* const* at, size_t offset) {
  using two = words_of_two;
  const word_lanes row_0 = load_pieces(at, offset), row_1 = load_pieces(at + 1, offset);
  const word_lanes row_2 = load_pieces(at + 2, offset), row_3 = load_pieces(at + 3, offset);
  const word_lanes low_01 = two::low(row_0, row_1), high_01 = two::high(row_0, row_1);
  const word_lanes low_23 = two::low(row_2, row_3), high_23 = two::high(row_2, row_3);
  words[0] = two::low_pairs(low_01, low_23);
  words[1] = two::high_pairs(low_01, low_23);
  words[2] = two::low_pairs(high_01, high_23);
  words[3] = two::high_pairs(high_01, high_23);
}

// One vector of streams: their digests, and word i of each one's block in words[i].
struct stream_vector {
  word_lanes a, b, c, d;
  word_lanes words[16];

  MD5_INLINE void load_chain(const MD5_lanes& lanes, int first) {
    std::memcpy(&a, lanes.chain[0] + first, sizeof a);
    std::memcpy(&b, lanes.chain[1] + first, sizeof b);
    std::memcpy(&c, lanes.chain[2] + first, sizeof c);
    std::memcpy(&d, lanes.chain[3] + first, sizeof d);
  }
  MD5_INLINE void store_chain(MD5_lanes& lanes, int first) const {
    std::memcpy(lanes.chain[0] + first, &a, sizeof a);
    std::memcpy(lanes.chain[1] + first, &b, sizeof b);
    std::memcpy(lanes.chain[2] + first, &c, sizeof c);
    std::memcpy(lanes.chain[3] + first, &d, sizeof d);
  }
  MD5_INLINE void load_block(const uint8_t* const* at) {
    load_words(words, at, 0);
    load_words(words + 4, at, 16);
    load_words(words + 8, at, 32);
    load_words(words + 12, at, 48);
  }
};

// With `both`, two vectors side by side: one's steps fill the time in which the other's wait.
template <bool both>
MD5_TARGET void digest_vectors(MD5_lanes& lanes, size_t blocks) {
  constexpr int used = both ? 2 * vector_lanes : vector_lanes;
  stream_vector first, second;
  first.load_chain(lanes, 0);
  if constexpr (both) second.load_chain(lanes, vector_lanes);

  for (; blocks != 0; --blocks) {
    first.load_block(lanes.at);
    if constexpr (both) second.load_block(lanes.at + vector_lanes);
    for (int lane = 0; lane < used; ++lane)
      lanes.at[lane] += MD5_block;

    const word_lanes a1 = first.a, b1 = first.b, c1 = first.c, d1 = first.d;
    const word_lanes a2 = second.a, b2 = second.b, c2 = second.c, d2 = second.d;
#define VECTOR_STEP(v, mix, a, b, c, d, word, turn, constant) \
  v.a = turned<turn>(plus_##mix(v.a + (v.words[word] + uint32_t{constant}), v.b, v.c, v.d)) + v.b;
#define LANE_STEP(...)            \
  VECTOR_STEP(first, __VA_ARGS__) \
  if constexpr (both) VECTOR_STEP(second, __VA_ARGS__)
    MD5_STEPS(LANE_STEP)
#undef LANE_STEP
#undef VECTOR_STEP
    first.a += a1;
    first.b += b1;
    first.c += c1;
    first.d += d1;
    if constexpr (both) {
      second.a += a2;
      second.b += b2;
      second.c += c2;
      second.d += d2;
    }
  }
  first.store_chain(lanes, 0);
  if constexpr (both) second.store_chain(lanes, vector_lanes);
}

}  // namespace

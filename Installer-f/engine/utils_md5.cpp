// The MD5 digest of RFC 1321, 64 bytes at a time.
//
// Steps: bytes collect in `partial` until a block is full; whole blocks of the caller's buffer are
// digested in place; the end is padded with a bit, zeros and the bit count. No globals.

#include "Installer-f/engine/utils_md5.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Installer-f/engine/utils_md5_steps.h"

namespace {

constexpr size_t length_size = 8;  // of the bit count that ends the last block

// The greatest slice that MD5Update can take and that leaves every block aligned with the first.
constexpr uint32_t slice = 65535 / MD5_block * MD5_block;

inline uint32_t load_le32(const uint8_t* bytes) {
  uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  return value;
}

inline void store_le32(uint8_t* bytes, uint32_t value) {
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  std::memcpy(bytes, &value, sizeof value);
}

// The functions of rounds 1, 3 and 4.
struct mix_f {
  static uint32_t of(uint32_t x, uint32_t y, uint32_t z) { return z ^ (x & (y ^ z)); }
};
struct mix_h {
  static uint32_t of(uint32_t x, uint32_t y, uint32_t z) { return x ^ y ^ z; }
};
struct mix_i {
  static uint32_t of(uint32_t x, uint32_t y, uint32_t z) { return y ^ (x | ~z); }
};
struct mix_g;

template <typename mix>
[[gnu::always_inline]] inline void step(uint32_t& a, uint32_t b, uint32_t c, uint32_t d,
                                        uint32_t word, int turn, uint32_t constant) {
  a = std::rotl(a + mix::of(b, c, d) + word + constant, turn) + b;
}

// A step of round 2, whose function takes each bit from one of two words. The two halves share no
// bits, so they may be added one by one, and only the second has to wait for the step before.
template <>
[[gnu::always_inline]] inline void step<mix_g>(uint32_t& a, uint32_t b, uint32_t c, uint32_t d,
                                               uint32_t word, int turn, uint32_t constant) {
  a += word + constant + (c & ~d);
  a = std::rotl(a + (b & d), turn) + b;
}

}  // namespace

void MD5_digest_blocks(uint32_t (&chain)[4], const uint8_t* bytes, size_t blocks) {
  uint32_t a = chain[0], b = chain[1], c = chain[2], d = chain[3];
  for (; blocks != 0; --blocks, bytes += MD5_block) {
    const uint32_t a0 = a, b0 = b, c0 = c, d0 = d;
    uint32_t words[16];
    for (size_t i = 0; i < 16; ++i)
      words[i] = load_le32(bytes + 4 * i);
#define SCALAR_STEP(mix, a, b, c, d, word, turn, constant) \
  step<mix_##mix>(a, b, c, d, words[word], turn, constant);
    MD5_STEPS(SCALAR_STEP)
#undef SCALAR_STEP
    a += a0;
    b += b0;
    c += c0;
    d += d0;
  }
  chain[0] = a;
  chain[1] = b;
  chain[2] = c;
  chain[3] = d;
}

size_t MD5_pad(uint8_t* end, uint64_t byte_count) {
  const size_t held = byte_count % MD5_block;
  const size_t blocks = held + 1 + length_size <= MD5_block ? 1 : 2;
  const size_t count = blocks * MD5_block - held;
  std::memset(end, 0, count);
  end[0] = 0x80;
  const uint64_t bits = byte_count * 8;
  store_le32(end + count - length_size, static_cast<uint32_t>(bits));
  store_le32(end + count - length_size / 2, static_cast<uint32_t>(bits >> 32));
  return count;
}

void MD5_store(uint8_t (&digest)[16], const uint32_t (&chain)[4]) {
  for (size_t i = 0; i < 4; ++i)
    store_le32(digest + 4 * i, chain[i]);
}

void MD5Init(MD5_state& state) {
  std::copy_n(MD5_start_chain, 4, state.chain);
  state.byte_count = 0;
}

void MD5Update(MD5_state& state, const void* bytes, uint16_t count) {
  if (count == 0) return;
  const auto* from = static_cast<const uint8_t*>(bytes);
  size_t left = count;
  const size_t held = state.byte_count % MD5_block;
  state.byte_count += left;

  if (held != 0) {
    const size_t room = MD5_block - held;
    const size_t taken = std::min(left, room);
    std::memcpy(state.partial + held, from, taken);
    if (taken < room) return;
    MD5_digest_blocks(state.chain, state.partial, 1);
    from += taken;
    left -= taken;
  }
  MD5_digest_blocks(state.chain, from, left / MD5_block);
  std::memcpy(state.partial, from + left / MD5_block * MD5_block, left % MD5_block);
}

void MD5UpdateWide(MD5_state& state, const void* bytes, uint32_t count) {
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (count != 0) {
    const uint32_t now = std::min<uint32_t>(count, slice);
    MD5Update(state, from, static_cast<uint16_t>(now));
    from += now;
    count -= now;
  }
}

void MD5Final(uint8_t (&digest)[16], MD5_state& state) {
  uint8_t tail[MD5_block + MD5_padding];  // what is held, and the padding
  const size_t held = state.byte_count % MD5_block;
  std::memcpy(tail, state.partial, held);
  const size_t padding = MD5_pad(tail + held, state.byte_count);
  MD5_digest_blocks(state.chain, tail, (held + padding) / MD5_block);
  MD5_store(digest, state.chain);
}

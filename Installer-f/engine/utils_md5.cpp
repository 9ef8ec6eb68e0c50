// The MD5 digest of RFC 1321, 64 bytes at a time.
//
// Steps: bytes collect in `partial` until a block is full; whole blocks of the caller's buffer are
// digested in place; the end is padded with a bit, zeros and the bit count. No globals.

#include "Installer-f/engine/utils_md5.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace {

constexpr size_t block_size = 64;
constexpr size_t length_at = 56;  // where the last block holds the 64-bit bit count

// The greatest slice that MD5Update can take and that leaves every block aligned with the first.
constexpr uint32_t slice = 65535 / block_size * block_size;

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

template <typename mix>
[[gnu::always_inline]] inline void step(uint32_t& a, uint32_t b, uint32_t c, uint32_t d,
                                        uint32_t word, int turn, uint32_t constant) {
  a = std::rotl(a + mix::of(b, c, d) + word + constant, turn) + b;
}

// A step of round 2, whose function takes each bit from one of two words. The two halves share no
// bits, so they may be added one by one, and only the second has to wait for the step before.
[[gnu::always_inline]] inline void step_g(uint32_t& a, uint32_t b, uint32_t c, uint32_t d,
                                          uint32_t word, int turn, uint32_t constant) {
  a += word + constant + (c & ~d);
  a = std::rotl(a + (b & d), turn) + b;
}

// Digests `blocks` blocks. Each step's constant is the whole part of 2^32 times |sin| of its
// number.
void digest_blocks(uint32_t (&chain)[4], const uint8_t* bytes, size_t blocks) {
  uint32_t a = chain[0], b = chain[1], c = chain[2], d = chain[3];

  for (; blocks != 0; --blocks, bytes += block_size) {
    const uint32_t a0 = a, b0 = b, c0 = c, d0 = d;
    uint32_t x[16];
    for (size_t i = 0; i < 16; ++i)
      x[i] = load_le32(bytes + 4 * i);

    step<mix_f>(a, b, c, d, x[0], 7, 0xd76aa478);
    step<mix_f>(d, a, b, c, x[1], 12, 0xe8c7b756);
    step<mix_f>(c, d, a, b, x[2], 17, 0x242070db);
    step<mix_f>(b, c, d, a, x[3], 22, 0xc1bdceee);
    step<mix_f>(a, b, c, d, x[4], 7, 0xf57c0faf);
    step<mix_f>(d, a, b, c, x[5], 12, 0x4787c62a);
    step<mix_f>(c, d, a, b, x[6], 17, 0xa8304613);
    step<mix_f>(b, c, d, a, x[7], 22, 0xfd469501);
    step<mix_f>(a, b, c, d, x[8], 7, 0x698098d8);
    step<mix_f>(d, a, b, c, x[9], 12, 0x8b44f7af);
    step<mix_f>(c, d, a, b, x[10], 17, 0xffff5bb1);
    step<mix_f>(b, c, d, a, x[11], 22, 0x895cd7be);
    step<mix_f>(a, b, c, d, x[12], 7, 0x6b901122);
    step<mix_f>(d, a, b, c, x[13], 12, 0xfd987193);
    step<mix_f>(c, d, a, b, x[14], 17, 0xa679438e);
    step<mix_f>(b, c, d, a, x[15], 22, 0x49b40821);

    step_g(a, b, c, d, x[1], 5, 0xf61e2562);
    step_g(d, a, b, c, x[6], 9, 0xc040b340);
    step_g(c, d, a, b, x[11], 14, 0x265e5a51);
    step_g(b, c, d, a, x[0], 20, 0xe9b6c7aa);
    step_g(a, b, c, d, x[5], 5, 0xd62f105d);
    step_g(d, a, b, c, x[10], 9, 0x02441453);
    step_g(c, d, a, b, x[15], 14, 0xd8a1e681);
    step_g(b, c, d, a, x[4], 20, 0xe7d3fbc8);
    step_g(a, b, c, d, x[9], 5, 0x21e1cde6);
    step_g(d, a, b, c, x[14], 9, 0xc33707d6);
    step_g(c, d, a, b, x[3], 14, 0xf4d50d87);
    step_g(b, c, d, a, x[8], 20, 0x455a14ed);
    step_g(a, b, c, d, x[13], 5, 0xa9e3e905);
    step_g(d, a, b, c, x[2], 9, 0xfcefa3f8);
    step_g(c, d, a, b, x[7], 14, 0x676f02d9);
    step_g(b, c, d, a, x[12], 20, 0x8d2a4c8a);

    step<mix_h>(a, b, c, d, x[5], 4, 0xfffa3942);
    step<mix_h>(d, a, b, c, x[8], 11, 0x8771f681);
    step<mix_h>(c, d, a, b, x[11], 16, 0x6d9d6122);
    step<mix_h>(b, c, d, a, x[14], 23, 0xfde5380c);
    step<mix_h>(a, b, c, d, x[1], 4, 0xa4beea44);
    step<mix_h>(d, a, b, c, x[4], 11, 0x4bdecfa9);
    step<mix_h>(c, d, a, b, x[7], 16, 0xf6bb4b60);
    step<mix_h>(b, c, d, a, x[10], 23, 0xbebfbc70);
    step<mix_h>(a, b, c, d, x[13], 4, 0x289b7ec6);
    step<mix_h>(d, a, b, c, x[0], 11, 0xeaa127fa);
    step<mix_h>(c, d, a, b, x[3], 16, 0xd4ef3085);
    step<mix_h>(b, c, d, a, x[6], 23, 0x04881d05);
    step<mix_h>(a, b, c, d, x[9], 4, 0xd9d4d039);
    step<mix_h>(d, a, b, c, x[12], 11, 0xe6db99e5);
    step<mix_h>(c, d, a, b, x[15], 16, 0x1fa27cf8);
    step<mix_h>(b, c, d, a, x[2], 23, 0xc4ac5665);

    step<mix_i>(a, b, c, d, x[0], 6, 0xf4292244);
    step<mix_i>(d, a, b, c, x[7], 10, 0x432aff97);
    step<mix_i>(c, d, a, b, x[14], 15, 0xab9423a7);
    step<mix_i>(b, c, d, a, x[5], 21, 0xfc93a039);
    step<mix_i>(a, b, c, d, x[12], 6, 0x655b59c3);
    step<mix_i>(d, a, b, c, x[3], 10, 0x8f0ccc92);
    step<mix_i>(c, d, a, b, x[10], 15, 0xffeff47d);
    step<mix_i>(b, c, d, a, x[1], 21, 0x85845dd1);
    step<mix_i>(a, b, c, d, x[8], 6, 0x6fa87e4f);
    step<mix_i>(d, a, b, c, x[15], 10, 0xfe2ce6e0);
    step<mix_i>(c, d, a, b, x[6], 15, 0xa3014314);
    step<mix_i>(b, c, d, a, x[13], 21, 0x4e0811a1);
    step<mix_i>(a, b, c, d, x[4], 6, 0xf7537e82);
    step<mix_i>(d, a, b, c, x[11], 10, 0xbd3af235);
    step<mix_i>(c, d, a, b, x[2], 15, 0x2ad7d2bb);
    step<mix_i>(b, c, d, a, x[9], 21, 0xeb86d391);

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

}  // namespace

void MD5Init(MD5_state& state) {
  state.chain[0] = 0x67452301;
  state.chain[1] = 0xefcdab89;
  state.chain[2] = 0x98badcfe;
  state.chain[3] = 0x10325476;
  state.byte_count = 0;
}

void MD5Update(MD5_state& state, const void* bytes, uint16_t count) {
  if (count == 0) return;
  const auto* from = static_cast<const uint8_t*>(bytes);
  size_t left = count;
  const size_t held = state.byte_count % block_size;
  state.byte_count += left;

  if (held != 0) {
    const size_t room = block_size - held;
    const size_t taken = left < room ? left : room;
    std::memcpy(state.partial + held, from, taken);
    if (taken < room) return;
    digest_blocks(state.chain, state.partial, 1);
    from += taken;
    left -= taken;
  }
  digest_blocks(state.chain, from, left / block_size);
  std::memcpy(state.partial, from + left / block_size * block_size, left % block_size);
}

void MD5UpdateWide(MD5_state& state, const void* bytes, uint32_t count) {
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (count != 0) {
    const uint32_t now = count < slice ? count : slice;
    MD5Update(state, from, static_cast<uint16_t>(now));
    from += now;
    count -= now;
  }
}

void MD5Final(uint8_t (&digest)[16], MD5_state& state) {
  const size_t held = state.byte_count % block_size;
  const uint64_t bits = state.byte_count * 8;

  uint8_t tail[2 * block_size] = {};  // what is held, the end bit, zeros and the count
  std::memcpy(tail, state.partial, held);
  tail[held] = 0x80;
  const size_t blocks = held < length_at ? 1 : 2;
  uint8_t* count_at = tail + (blocks - 1) * block_size + length_at;
  store_le32(count_at, static_cast<uint32_t>(bits));
  store_le32(count_at + 4, static_cast<uint32_t>(bits >> 32));
  digest_blocks(state.chain, tail, blocks);

  for (size_t i = 0; i < 4; ++i)
    store_le32(digest + 4 * i, state.chain[i]);
}

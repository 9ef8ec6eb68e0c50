// The MD5 digest of RFC 1321. A state is a plain value: it may be copied, moved to another thread
// and continued there. Here MD5 tells a file's versions apart; it guards against nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct MD5_state {
  uint32_t chain[4];    // the running digest: A, B, C, D
  uint64_t byte_count;  // of everything fed so far
  uint8_t partial[64];  // the last byte_count % 64 bytes, not yet digested
};

void MD5Init(MD5_state& state);
void MD5Update(MD5_state& state, const void* bytes, uint16_t count);
// Any length, fed in slices that MD5Update can take; the slicing leaves no trace in the digest.
void MD5UpdateWide(MD5_state& state, const void* bytes, uint32_t count);
// Closes the digest; the state must be started anew before it is used again.
void MD5Final(uint8_t (&digest)[16], MD5_state& state);

// --- the parts, for a caller that has whole blocks ----------------------------------------------

inline constexpr size_t MD5_block = 64;    // bytes that are digested at once
inline constexpr size_t MD5_padding = 72;  // the most bytes that MD5_pad writes
inline constexpr uint32_t MD5_start_chain[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};

// Digests `blocks` whole blocks.
void MD5_digest_blocks(uint32_t (&chain)[4], const uint8_t* bytes, size_t blocks);

// Ends a stream of `byte_count` bytes by writing its padding at `end`, behind the last of them.
// Returns how many bytes that took, 9 to MD5_padding: the stream is whole blocks then.
size_t MD5_pad(uint8_t* end, uint64_t byte_count);

// The finished chain as the digest's bytes.
void MD5_store(uint8_t (&digest)[16], const uint32_t (&chain)[4]);

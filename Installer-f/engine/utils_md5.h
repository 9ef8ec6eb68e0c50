// The MD5 digest of RFC 1321. A state is a plain value: it may be copied, moved to another thread
// and continued there. Here MD5 tells a file's versions apart; it guards against nothing.
#pragma once

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

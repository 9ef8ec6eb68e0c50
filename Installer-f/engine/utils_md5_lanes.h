// MD5 of many streams at once, one in each lane of a vector.
//
// One stream's digest is bound by latency: each of its steps waits for the one before, and most of
// the processor idles. Streams in neighbouring lanes cost next to nothing, so hashing many files
// side by side is several times as fast as one after the other, as long as the lanes are full.
//
// Which instructions there are is asked at run time. Any thread; a set of lanes belongs to one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

inline constexpr int MD5_lanes_most = 32;

// The streams under way: lanes 0 to n - 1 of those that are in use, the rest holds nothing.
struct MD5_lanes {
  alignas(64) uint32_t chain[4][MD5_lanes_most];  // A, B, C, D of each lane
  const uint8_t* at[MD5_lanes_most];              // what the lane digests next
};

// How this machine can digest lanes.
struct MD5_lane_code {
  const char* name;  // of the instructions, for the log
  int lanes;         // the most at once; 1 is the scalar code
  int worth;         // with fewer in use, the scalar code is as fast, one lane after the other
  void (*digest_half)(MD5_lanes& lanes, size_t blocks);  // the first half of the lanes
  void (*digest_all)(MD5_lanes& lanes, size_t blocks);
};

// All that this machine can run, the fastest first. The scalar code is always there, and last.
std::span<const MD5_lane_code> MD5_lane_codes();

// Begins a stream in a lane, or takes one over from `chain`; the caller sets `at`.
void MD5_lane_load(MD5_lanes& lanes, int lane, const uint32_t (&chain)[4]);
void MD5_lane_store(const MD5_lanes& lanes, int lane, uint32_t (&chain)[4]);

// Digests `blocks` blocks of 64 bytes in each of the first `used` lanes, 1 to code.lanes, and moves
// their `at` behind them.
void MD5_digest_lanes(const MD5_lane_code& code, MD5_lanes& lanes, int used, size_t blocks);

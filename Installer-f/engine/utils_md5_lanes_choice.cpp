// Which code digests the lanes on this machine, and what all of it has in common. The one state is
// the answer of the processor, asked once.

#include "Installer-f/engine/utils_md5_lanes.h"

#include <vector>

#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_md5_lanes_int.h"

namespace {

#if defined(__x86_64__)
constexpr char small_vectors[] = "SSE2";
#else
constexpr char small_vectors[] = "vectors of 16 bytes";
#endif

void digest_one_by_one(MD5_lanes& lanes, int used, size_t blocks) {
  for (int lane = 0; lane < used; ++lane) {
    uint32_t chain[4];
    MD5_lane_store(lanes, lane, chain);
    MD5_digest_blocks(chain, lanes.at[lane], blocks);
    MD5_lane_load(lanes, lane, chain);
    lanes.at[lane] += blocks * MD5_block;
  }
}

std::vector<MD5_lane_code> codes_of_this_machine() {
  std::vector<MD5_lane_code> codes;
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512f"))
    codes.push_back({"AVX-512", 32, 3, MD5_half_of_32, MD5_all_of_32});
  if (__builtin_cpu_supports("avx2"))
    codes.push_back({"AVX2", 16, 3, MD5_half_of_16, MD5_all_of_16});
#endif
  codes.push_back({small_vectors, 8, 3, MD5_half_of_8, MD5_all_of_8});
  codes.push_back({"scalar", 1, 2, nullptr, nullptr});
  return codes;
}

}  // namespace

std::span<const MD5_lane_code> MD5_lane_codes() {
  static const std::vector<MD5_lane_code> codes = codes_of_this_machine();
  return codes;
}

void MD5_lane_load(MD5_lanes& lanes, int lane, const uint32_t (&chain)[4]) {
  for (int i = 0; i < 4; ++i)
    lanes.chain[i][lane] = chain[i];
}

void MD5_lane_store(const MD5_lanes& lanes, int lane, uint32_t (&chain)[4]) {
  for (int i = 0; i < 4; ++i)
    chain[i] = lanes.chain[i][lane];
}

void MD5_digest_lanes(const MD5_lane_code& code, MD5_lanes& lanes, int used, size_t blocks) {
  if (used < code.worth) {
    digest_one_by_one(lanes, used, blocks);
    return;
  }
  // Lanes of the vector that are not in use go through the motions with the first one's bytes.
  const bool half = used <= code.lanes / 2;
  for (int lane = used; lane < (half ? code.lanes / 2 : code.lanes); ++lane)
    lanes.at[lane] = lanes.at[0];
  (half ? code.digest_half : code.digest_all)(lanes, blocks);
}

// The scalar code against md5sum, and the lanes against it, in every set of instructions that this
// machine has.

#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>

#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_md5_lanes.h"
#include "corekit/files/sign.h"
#include "tests/unit/test_archive_util.h"

namespace {

std::string hex(const uint32_t (&chain)[4]) {
  uint8_t digest[16];
  MD5_store(digest, chain);
  return sign_hex(digest);
}

std::string scalar_digest(const std::string& bytes) {
  MD5_state state;
  MD5Init(state);
  MD5UpdateWide(state, bytes.data(), static_cast<uint32_t>(bytes.size()));
  uint8_t digest[16];
  MD5Final(digest, state);
  return hex(state.chain);
}

// Digests all streams, `width` of them at once: a lane whose stream has ended takes the next one,
// and once there is none, the last lane moves into its place. Streams begin at every offset.
std::vector<std::string> lane_digests(const MD5_lane_code& code, int width,
                                      const std::vector<std::string>& streams) {
  struct stream_in_lane {
    size_t stream, left;
  };
  std::vector<std::string> bytes(streams.size()), digests(streams.size());
  std::vector<stream_in_lane> in_lane;
  MD5_lanes lanes;
  size_t next = 0;
  const auto load = [&](int lane) {
    const size_t offset = next % 19;
    bytes[next].assign(offset + streams[next].size() + MD5_padding, 'x');
    std::memcpy(bytes[next].data() + offset, streams[next].data(), streams[next].size());
    auto* const begin = reinterpret_cast<uint8_t*>(bytes[next].data()) + offset;
    const size_t size = streams[next].size();
    MD5_lane_load(lanes, lane, MD5_start_chain);
    lanes.at[lane] = begin;
    in_lane[static_cast<size_t>(lane)] = {next++, (size + MD5_pad(begin + size, size)) / MD5_block};
  };
  for (int lane = 0; lane < width && next < streams.size(); ++lane) {
    in_lane.emplace_back();
    load(lane);
  }
  while (!in_lane.empty()) {
    size_t blocks = in_lane[0].left;
    for (const stream_in_lane& each : in_lane)
      blocks = std::min(blocks, each.left);
    MD5_digest_lanes(code, lanes, static_cast<int>(in_lane.size()), blocks);
    for (stream_in_lane& each : in_lane)
      each.left -= blocks;
    for (int lane = static_cast<int>(in_lane.size()) - 1; lane >= 0; --lane) {
      if (in_lane[static_cast<size_t>(lane)].left != 0) continue;
      uint32_t chain[4];
      MD5_lane_store(lanes, lane, chain);
      digests[in_lane[static_cast<size_t>(lane)].stream] = hex(chain);
      if (next < streams.size()) {
        load(lane);
        continue;
      }
      const int last = static_cast<int>(in_lane.size()) - 1;
      MD5_lane_store(lanes, last, chain);
      MD5_lane_load(lanes, lane, chain);
      lanes.at[lane] = lanes.at[last];
      in_lane[static_cast<size_t>(lane)] = in_lane.back();
      in_lane.pop_back();
    }
  }
  return digests;
}

void expect_same(const std::vector<std::string>& streams) {
  std::vector<std::string> expected;
  for (const std::string& stream : streams)
    expected.push_back(scalar_digest(stream));
  for (const MD5_lane_code& code : MD5_lane_codes()) {
    for (const int width : {1, 2, code.worth, code.lanes / 2, code.lanes / 2 + 1, code.lanes}) {
      if (width < 1 || width > code.lanes) continue;
      SCOPED_TRACE(std::string(code.name) + ", lanes in use: " + std::to_string(width));
      EXPECT_EQ(lane_digests(code, width, streams), expected);
    }
  }
}

TEST(EngineMd5Lanes, Codes) {
  ASSERT_FALSE(MD5_lane_codes().empty());
  EXPECT_EQ(MD5_lane_codes().back().lanes, 1);
  for (const MD5_lane_code& code : MD5_lane_codes()) {
    EXPECT_LE(code.lanes, MD5_lanes_most) << code.name;
    std::printf("%s: %d lanes\n", code.name, code.lanes);
  }
}

// Every length about the padding's turning points, and about the slices of the wide update.
TEST(EngineMd5Files, LengthsAgainstMd5sum) {
  std::vector<size_t> sizes(201);
  std::iota(sizes.begin(), sizes.end(), 0);
  for (const size_t middle : {65472u, 65535u, 65536u, 2 * 65472u, 2 * 65535u, 1000000u})
    sizes.insert(sizes.end(), {middle - 1, middle, middle + 1});
  const scratch_folder here;
  std::string command = "cd '" + here.path() + "' && md5sum";
  for (size_t i = 0; i < sizes.size(); ++i) {
    here.file(std::to_string(i), noise(sizes[i], static_cast<uint32_t>(i)));
    command += " " + std::to_string(i);
  }
  ASSERT_EQ(std::system((command + " >sums").c_str()), 0);
  std::ifstream sums(here / "sums");
  std::string digest;
  for (unsigned file; sums >> digest >> file; sizes[file] = SIZE_MAX)
    EXPECT_EQ(scalar_digest(noise(sizes[file], file)), digest) << sizes[file] << " bytes";
  EXPECT_EQ(std::count(sizes.begin(), sizes.end(), SIZE_MAX), 219);
}

// In pieces of any size, whatever is left of the block before.
TEST(EngineMd5Files, InPieces) {
  const std::string bytes = noise(20000, 7);
  for (const size_t longest : {1u, 63u, 64u, 65u, 200u}) {
    MD5_state state;
    MD5Init(state);
    std::mt19937 random(5);
    for (size_t at = 0; at < bytes.size();) {
      const size_t piece = std::min<size_t>(random() % (longest + 1), bytes.size() - at);
      MD5Update(state, bytes.data() + at, static_cast<uint16_t>(piece));
      at += piece;
    }
    uint8_t digest[16];
    MD5Final(digest, state);
    EXPECT_EQ(hex(state.chain), scalar_digest(bytes)) << longest;
  }
}

TEST(EngineMd5Lanes, EveryLength) {
  std::mt19937 random(1);
  std::vector<std::string> streams;
  for (uint32_t size = 0; size <= 300; ++size)
    streams.push_back(noise(size, size));
  expect_same(streams);
  std::shuffle(streams.begin(), streams.end(), random);
  for (size_t i = 0; i < streams.size(); i += 23)
    streams[i].resize(streams[i].size() * 100, static_cast<char>(i));
  expect_same(streams);
}

}  // namespace

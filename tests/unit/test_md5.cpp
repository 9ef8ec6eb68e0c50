// The digest against the md5sum program.

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "Installer-f/utils_md5.h"
#include "engine_tree.h"

namespace {

std::string hex(const uint8_t (&digest)[16]) {
  std::string text;
  for (const uint8_t byte : digest) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", byte);
    text += pair;
  }
  return text;
}

std::string wide_digest(std::string_view bytes) {
  MD5_state state;
  MD5Init(state);
  MD5UpdateWide(state, bytes.data(), static_cast<uint32_t>(bytes.size()));
  uint8_t digest[16];
  MD5Final(digest, state);
  return hex(digest);
}

std::string noise(size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes)
    byte = static_cast<char>(random());
  return bytes;
}

using EngineMd5Files = engine_tree;

// Every length about the padding's turning points, and about the slices of the wide update.
TEST_F(EngineMd5Files, LengthsAgainstMd5sum) {
  std::vector<size_t> sizes;
  for (size_t size = 0; size <= 200; ++size)
    sizes.push_back(size);
  for (const size_t middle : {65472u, 65535u, 65536u, 2 * 65472u, 2 * 65535u, 1000000u})
    for (size_t size = middle - 1; size <= middle + 1; ++size)
      sizes.push_back(size);

  std::string command = "cd '" + root + "' && md5sum";
  for (size_t i = 0; i < sizes.size(); ++i) {
    write(std::to_string(i), noise(sizes[i], static_cast<uint32_t>(i)));
    command += " " + std::to_string(i);
  }
  std::FILE* const sums = popen(command.c_str(), "r");
  ASSERT_NE(sums, nullptr);
  size_t rows = 0;
  char digest[33];
  unsigned file = 0;
  while (std::fscanf(sums, "%32s %u", digest, &file) == 2) {
    ++rows;
    EXPECT_EQ(wide_digest(noise(sizes[file], file)), digest) << sizes[file] << " bytes";
  }
  EXPECT_EQ(pclose(sums), 0);
  EXPECT_EQ(rows, sizes.size());
}

TEST(EngineMd5, SlicesLeaveNoTrace) {
  const std::string bytes = noise(300000, 9);
  const std::string whole = wide_digest(bytes);
  std::mt19937 random(1);
  for (const unsigned longest : {1u, 63u, 64u, 65u, 130u, 65535u}) {
    MD5_state state;
    MD5Init(state);
    for (size_t at = 0; at < bytes.size();) {
      const size_t left = bytes.size() - at;
      const size_t slice = std::min<size_t>(left, longest == 1 ? 1 : random() % (longest + 1));
      MD5Update(state, bytes.data() + at, static_cast<uint16_t>(slice));
      at += slice;
      const MD5_state moved = state;  // as when another thread goes on with the file
      MD5Init(state);
      state = moved;
    }
    uint8_t digest[16];
    MD5Final(digest, state);
    EXPECT_EQ(hex(digest), whole) << "slices of up to " << longest;
  }
}

}  // namespace

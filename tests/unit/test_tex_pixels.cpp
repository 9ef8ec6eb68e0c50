// The operations on pixels, as properties where there is one; sizes of pictures; S3TC blocks.

#include <gtest/gtest.h>
#include <squish.h>

#include <cstring>
#include <numeric>

#include "corekit/OOPS_cpp/colr.h"
#include "corekit/TEX/TEX_s3tc.h"
#include "tests/unit/test_tex_util.h"

namespace {

constexpr int all_formats[] = {TEX_alpha, TEX_rgb,  TEX_rgba,       TEX_bgr,  TEX_bgra,
                               TEX_depth, TEX_dxt1, TEX_dxt1_alpha, TEX_dxt3, TEX_dxt5};

bytes decode(const TEX_image_desc& desc, const unsigned char* blocks) {
  const TEX_image_desc plain{TEX_rgba, desc.width, desc.height, 0, 0};
  bytes rgba(TEX_level_bytes(plain));
  unsigned char* into = rgba.data();
  EXPECT_EQ(TEX_decode_s3tc(desc, plain, blocks, &into), 1);
  return rgba;
}

}  // namespace

TEST(TexSizes, BytesOfAPicture) {
  const struct {
    const char* label;
    TEX_image_desc desc;
    size_t bytes;
  } rows[] = {
      {"depth", {TEX_depth, 5, 3, 9, 0}, 60},
      {"depth of 32 bits", {TEX_depth_32, 5, 3, 0, 0}, 60},
      {"alpha", {TEX_alpha, 5, 3, 2, 0}, 21},
      {"RGB", {TEX_rgb, 5, 3, 1, 0}, 48},
      {"BGR", {TEX_bgr, 5, 3, 0, 0}, 45},
      {"RGBA", {TEX_rgba, 5, 3, 4, 0}, 72},
      {"BGRA", {TEX_bgra, 5, 3, 0, 0}, 60},
      {"unknown", {1234, 5, 3, 0, 0}, 0},
      {"no width", {TEX_rgb, 0, 3, 0, 0}, 0},
      {"height below 0", {TEX_dxt1, 4, -4, 0, 0}, 0},
      {"4 by 1 with levels", {TEX_rgb, 4, 1, 0, 1}, 12 + 6 + 3},
      {"5 by 3 with levels", {TEX_alpha, 5, 3, 0, 1}, 15 + 2 + 1},
      {"levels have the pad as well", {TEX_alpha, 2, 2, 1, 1}, 6 + 2},
      {"one pixel with levels", {TEX_rgba, 1, 1, 0, 1}, 4},
      {"DXT1 with levels", {TEX_dxt1, 8, 8, 0, 1}, 32 + 8 + 8 + 8},
      {"beyond 32 bits", {TEX_rgba, 65536, 65536, 0, 0}, size_t{1} << 34},
  };
  for (const auto& row : rows)
    EXPECT_EQ(TEX_bytes_needed_for_image(row.desc), row.bytes) << row.label;
  for (int width = 1; width < 10; ++width) {
    for (const auto& [format, flag] : {std::pair{TEX_dxt1, squish::kDxt1},
                                       {TEX_dxt1_alpha, squish::kDxt1},
                                       {TEX_dxt3, squish::kDxt3},
                                       {TEX_dxt5, squish::kDxt5}}) {
      EXPECT_EQ(TEX_bytes_needed_for_image({format, width, 7, 0, 0}),
                static_cast<size_t>(squish::GetStorageRequirements(width, 7, flag)));
    }
  }
  EXPECT_TRUE(TEX_size_fits(2048, 2048));
  EXPECT_FALSE(TEX_size_fits(2048, 2049));
  EXPECT_TRUE(TEX_size_fits(1, 1 << 22));
  EXPECT_FALSE(TEX_size_fits(1LL << 32, 1LL << 32));
  EXPECT_FALSE(TEX_size_fits(-2, -2));
}

TEST(TexPixels, FlipTwiceIsNothing) {
  for (const int format : all_formats) {
    for (const int mipmaps : {0, 1}) {
      for (const int height : {1, 2, 3, 4, 6, 7, 8, 16}) {
        for (const int width : {1, 4, 7, 16}) {
          const TEX_image_desc desc{format, width, height, TEX_pixel_bytes(format) ? 3 : 0,
                                    mipmaps};
          const bytes before = tex_noise(TEX_bytes_needed_for_image(desc), 1);
          bytes pixels = before;
          TEX_flip_y(desc, pixels.data());
          EXPECT_EQ(pixels == before, height == 1) << format;
          TEX_flip_y(desc, pixels.data());
          EXPECT_EQ(pixels, before) << format << " " << width << " by " << height;
        }
      }
    }
  }
  EXPECT_EXIT(TEX_flip_y({999, 4, 4, 0, 0}, scratch_array), testing::ExitedWithCode(1),
              "Illegal format!");
}

TEST(TexPixels, FlippedBlocksDecodeUpsideDown) {
  for (const int format : {TEX_dxt1, TEX_dxt3, TEX_dxt5}) {
    for (const int height : {1, 2, 3, 4, 8, 16}) {
      const TEX_image_desc desc{format, 12, height, 0, 0};
      bytes blocks = tex_noise(TEX_level_bytes(desc), 77);
      bytes want = decode(desc, blocks.data());
      TEX_flip_y({TEX_rgba, 12, height, 0, 0}, want.data());
      TEX_flip_y(desc, blocks.data());
      EXPECT_EQ(decode(desc, blocks.data()), want) << format << " high " << height;
    }
  }
}

TEST(TexPixels, GammaKeepsTheKindOfABlock) {
  const colr_class before = colr;
  for (int i = 0; i < 256; ++i)
    colr.gamma_table[i] = static_cast<unsigned char>(i / 2);
  std::mt19937 random(3);
  for (int i = 0; i < 5000; ++i) {
    unsigned char block[8], turned[8];
    for (unsigned char& byte : block)
      byte = static_cast<unsigned char>(random());
    if (i % 3 == 0) block[2] = static_cast<unsigned char>(block[0] + 1), block[3] = block[1];
    std::memcpy(turned, block, 8);
    nv_flip_blocks_dxtc1(turned, 1, 1);
    const auto color = [](const unsigned char* at) { return at[0] | at[1] << 8; };
    EXPECT_EQ(color(block) > color(block + 2), color(turned) > color(turned + 2));
    EXPECT_LE(color(turned) >> 11, (color(block) >> 11) / 2 + 1) << "the colour is corrected";
    EXPECT_EQ(turned[4], block[7]);
  }
  colr = before;
}

TEST(TexPixels, DownscaleKeepsTheSums) {
  for (const int format : {TEX_alpha, TEX_rgb, TEX_rgba, TEX_bgra}) {
    for (const int pad : {0, 5}) {
      for (const auto& [step_x, step_y] : {std::pair{1, 1}, {2, 2}, {4, 2}, {1, 3}, {12, 6}}) {
        SCOPED_TRACE(std::to_string(format) + " by " + std::to_string(step_x));
        TEX_image_desc desc{format, 12, 6, pad, 0};
        const TEX_image_desc old = desc;
        const bytes before = tex_noise(TEX_level_bytes(desc), 21);
        bytes after = before;
        TEX_downscale(desc, after.data(), step_x, step_y);
        ASSERT_EQ(desc.width, 12 / step_x);
        ASSERT_EQ(desc.height, 6 / step_y);
        ASSERT_EQ(desc.pad, pad);
        const int channels = TEX_pixel_bytes(format), count = step_x * step_y;
        for (int channel = 0; channel < channels; ++channel) {
          const auto sum = [&](const TEX_image_desc& d, const bytes& pixels) {
            double total = 0;
            for (int y = 0; y < d.height; ++y) {
              for (int x = 0; x < d.width; ++x)
                total += pixels[TEX_row_bytes(d) * y + x * channels + channel];
            }
            return total;
          };
          // Each pixel's mean is rounded by half a level at most.
          EXPECT_NEAR(sum(desc, after) * count, sum(old, before), 12 * 6 / 2);
        }
        if (count == 1) {
          EXPECT_EQ(after, before);
        }
      }
    }
  }
  // What does not fill a block is left out; no side vanishes.
  bytes pixels = {10, 20, 99, 30, 40, 99, 77, 77, 77};
  TEX_image_desc desc{TEX_alpha, 3, 3, 0, 0};
  TEX_downscale(desc, pixels.data(), 2, 2);
  EXPECT_EQ(desc.width * desc.height, 1);
  EXPECT_EQ(pixels[0], 25);
  TEX_downscale(desc, pixels.data(), 50, 0);
  EXPECT_EQ(desc.width * desc.height, 1);
}

TEST(TexPixels, ConvertKeepsTheColours) {
  for (const int from : {TEX_rgb, TEX_rgba, TEX_bgr, TEX_bgra}) {
    for (const int to : {TEX_rgb, TEX_rgba, TEX_bgr, TEX_bgra}) {
      for (const int pad : {0, 7}) {
        TEX_image_desc desc{from, 9, 4, pad, 0};
        const bytes before = tex_noise(TEX_level_bytes(desc), 8);
        bytes pixels = before;
        pixels.resize(before.size() + 9 * 4);
        ASSERT_TRUE(TEX_convert(desc, pixels.data(), to));
        ASSERT_EQ(desc.format, to);
        const auto channel = [](int format, int i) {
          return (format == TEX_bgr || format == TEX_bgra) && i < 3 ? 2 - i : i;
        };
        const int from_bytes = TEX_pixel_bytes(from), to_bytes = TEX_pixel_bytes(to);
        for (int y = 0; y < 4; ++y) {
          for (int x = 0; x < 9; ++x) {
            const unsigned char* a = &before[(9 * from_bytes + pad) * y + x * from_bytes];
            const unsigned char* b = &pixels[(9 * y + x) * to_bytes];
            for (int i = 0; i < 3; ++i)
              ASSERT_EQ(b[channel(to, i)], a[channel(from, i)]) << from << " to " << to;
            if (to_bytes == 4) {
              ASSERT_EQ(b[3], from_bytes == 4 ? a[3] : 255);
            }
          }
        }
      }
    }
  }
  TEX_image_desc desc{TEX_dxt1, 4, 4, 0, 0};
  EXPECT_FALSE(TEX_convert(desc, scratch_array, TEX_rgb));
}

TEST(TexPixels, ChromaKeyStopsAtTheTolerance) {
  unsigned char pixels[] = {255, 0, 255, 255, 250, 5, 255, 255, 250, 5, 254, 255, 0, 0, 0, 9};
  const unsigned char key[] = {255, 0, 255};
  TEX_chroma_key({TEX_rgba, 2, 2, 0, 0}, pixels, key, 11);
  EXPECT_EQ(pixels[3], 0);
  EXPECT_EQ(pixels[7], 0) << "10 is below 11";
  EXPECT_EQ(pixels[11], 255) << "11 is not";
  EXPECT_EQ(pixels[15], 9);
  EXPECT_EQ(pixels[4], 250) << "colours stay";
}

TEST(TexPixels, CompositeCopiesAndClips) {
  const TEX_image_desc src{TEX_rgb, 5, 4, 3, 0}, dst{TEX_rgba, 9, 8, 4, 0};
  const bytes from = tex_noise(TEX_level_bytes(src), 4);
  bytes to(TEX_level_bytes(dst), 7);
  TEX_composite(src, dst, from.data(), to.data(), 2, 3, 7, 7);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 9; ++x) {
      const unsigned char* at = &to[TEX_row_bytes(dst) * y + x * 4];
      const bool inside = x >= 2 && x < 7 && y >= 3 && y < 7;
      for (int i = 0; i < 3; ++i)
        ASSERT_EQ(at[i], inside ? from[TEX_row_bytes(src) * (y - 3) + (x - 2) * 3 + i] : 7);
      ASSERT_EQ(at[3], inside ? 255 : 7);
    }
  }
  // Rounded outward, clipped, and of one colour whatever the scale.
  const bytes red(5 * 4 * 4, 200);
  const TEX_image_desc flat{TEX_rgba, 5, 4, 0, 0};
  const struct {
    float x1, y1, x2, y2;
    int count;
  } rows[] = {{0.5f, 0.5f, 1.2f, 1.2f, 4},
              {-100, -100, 100, 100, 72},
              {8.5f, 7.5f, 1e30f, 1e30f, 1},
              {3, 3, 3, 3, 0},
              {5, 5, 2, 2, 0},
              {-9, -9, -1, -1, 0},
              {std::nanf(""), 0, 5, 5, 0}};
  for (const auto& row : rows) {
    std::fill(to.begin(), to.end(), static_cast<unsigned char>(7));
    TEX_composite(flat, dst, red.data(), to.data(), row.x1, row.y1, row.x2, row.y2);
    EXPECT_EQ(std::count(to.begin(), to.end(), 200), row.count * 4) << row.x1 << " to " << row.x2;
    EXPECT_EQ(std::count(to.begin(), to.end(), 7), 8 * 40 - row.count * 4);
  }
}

TEST(TexS3tc, RoundTripsStayNear) {
  // A smooth picture, which four colours a block can follow.
  const TEX_image_desc rgba{TEX_rgba, 18, 10, 0, 0}, rgb{TEX_rgb, 18, 10, 2, 0};
  bytes four(TEX_level_bytes(rgba)), three(TEX_level_bytes(rgb));
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 18; ++x) {
      const unsigned char pixel[] = {
          static_cast<unsigned char>(x * 8 + y), static_cast<unsigned char>(x * 8 + y + 40),
          static_cast<unsigned char>(200 - x * 8 - y), static_cast<unsigned char>(255 - y * 17)};
      std::memcpy(&four[(18 * y + x) * 4], pixel, 4);
      std::memcpy(&three[TEX_row_bytes(rgb) * y + x * 3], pixel, 3);
    }
  }
  for (const int quality : {s3tc_fast, s3tc_normal, s3tc_best}) {
    for (const int format : {TEX_dxt3, TEX_dxt5}) {
      const TEX_image_desc packed{format, 18, 10, 0, 0};
      void* blocks = nullptr;
      ASSERT_EQ(TEX_encode_s3tc(rgba, packed, four.data(), &blocks, quality), 1);
      const bytes back = decode(packed, static_cast<unsigned char*>(blocks));
      EXPECT_LE(tex_distance(back.data(), back.size(), four), 20) << format;
      std::free(blocks);
    }
    const TEX_image_desc packed{TEX_dxt1, 18, 10, 0, 0};
    bytes blocks(TEX_level_bytes(packed));
    void* into = blocks.data();
    ASSERT_EQ(TEX_encode_s3tc(rgb, packed, three.data(), &into, quality), 1);
    unsigned char* back = nullptr;
    ASSERT_EQ(TEX_decode_s3tc(packed, rgb, blocks.data(), &back), 1);
    EXPECT_LE(tex_distance(back, three.size(), three), 20);
    std::free(back);
  }
  void* blocks = nullptr;
  EXPECT_EQ(TEX_encode_s3tc(rgba, {TEX_dxt1, 17, 10, 0, 0}, four.data(), &blocks, 1), 0);
  EXPECT_EQ(TEX_encode_s3tc(rgba, {TEX_rgba, 18, 10, 0, 0}, four.data(), &blocks, 1), 0);
  EXPECT_EQ(
      TEX_encode_s3tc({TEX_alpha, 18, 10, 0, 0}, {TEX_dxt1, 18, 10, 0, 0}, four.data(), &blocks, 1),
      0);
  EXPECT_EQ(blocks, nullptr);
}

// The operations on pixels, as properties where there is one; S3TC blocks.

#include <climits>
#include <cmath>
#include <cstring>
#include <utility>

#include "corekit/draw/TEX_s3tc.h"
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

TEST(TexPixels, FlipTwiceIsNothing) {
  for (const int format : all_formats) {
    for (const int mipmaps : {0, 1}) {
      for (const int height : {1, 2, 3, 4, 7, 16}) {
        for (const int width : {1, 7, 16}) {
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

TEST(TexPixels, DownscaleTakesMeans) {
  // RGB with a pad: each channel by itself; the second row goes to the second row.
  bytes rgb = {10, 0, 1, 20, 0, 3, 99, 30, 0, 5, 40, 4, 7, 99, 8, 0, 9, 8, 0, 9, 99};
  TEX_image_desc desc{TEX_rgb, 2, 3, 1, 0};
  TEX_downscale(desc, rgb.data(), 2, 1);
  const bytes means[] = {{15, 0, 2}, {35, 2, 6}, {8, 0, 9}};
  for (int y = 0; y < 3; ++y)
    EXPECT_EQ(bytes(&rgb[size_t(y) * 4], &rgb[size_t(y) * 4 + 3]), means[y]) << y;
  // What does not fill a block is left out; no side vanishes.
  bytes alpha = {10, 20, 99, 30, 40, 99, 77, 77, 77};
  desc = {TEX_alpha, 3, 3, 0, 0};
  TEX_downscale(desc, alpha.data(), 2, 2);
  EXPECT_EQ(desc.width * desc.height, 1);
  EXPECT_EQ(alpha[0], 25);
  TEX_downscale(desc, alpha.data(), 50, 0);
  EXPECT_EQ(desc.width * desc.height, 1);
}

// Twice as wide, between its pixels the mean by distance; what lies beside the rectangle stays.
TEST(TexPixels, CompositeStretchesIntoItsRectangle) {
  const bytes small = {0, 100, 200, 90, 100, 200, 0, 0, 200, 90, 0, 200};
  bytes large(size_t{6} * 4 * 4, 7);
  TEX_composite({TEX_rgb, 2, 2, 0, 0}, {TEX_rgba, 6, 4, 0, 0}, small.data(), large.data(), 1, 1, 5,
                3);
  bytes want(large.size(), 7);
  for (const int y : {1, 2}) {
    const unsigned char green = y == 1 ? 100 : 0;
    const bytes row = {0,  green, 200, 255, 23, green, 200, 255,
                       68, green, 200, 255, 90, green, 200, 255};
    std::copy(row.begin(), row.end(), want.begin() + (size_t{6} * y + 1) * 4);
  }
  EXPECT_EQ(large, want);
  for (const auto& [x1, x2] : {std::pair{5.0f, 1.0f}, {0.0f, NAN}, {-9.0f, -1.0f}, {6.0f, 9.0f}})
    TEX_composite({TEX_rgb, 2, 2, 0, 0}, {TEX_rgba, 6, 4, 0, 0}, small.data(), large.data(), x1, 0,
                  x2, 4);
  EXPECT_EQ(large, want) << "no area, or none of it in the picture";
}

TEST(TexPixels, ConvertKeepsTheColours) {
  // Two rows of one pixel, with a pad.
  const std::tuple<int, int, bytes, bytes> rows[] = {
      {TEX_rgb, TEX_bgra, {1, 2, 3, 9, 4, 5, 6, 9}, {3, 2, 1, 255, 6, 5, 4, 255}},
      {TEX_rgba, TEX_rgb, {1, 2, 3, 7, 9, 4, 5, 6, 8, 9}, {1, 2, 3, 4, 5, 6}},
      {TEX_bgr, TEX_rgba, {1, 2, 3, 9, 4, 5, 6, 9}, {3, 2, 1, 255, 6, 5, 4, 255}},
      {TEX_bgra, TEX_rgba, {1, 2, 3, 7, 9, 4, 5, 6, 8, 9}, {3, 2, 1, 7, 6, 5, 4, 8}},
  };
  for (const auto& [from, to, before, after] : rows) {
    TEX_image_desc desc{from, 1, 2, 1, 0};
    bytes pixels = before;
    ASSERT_TRUE(TEX_convert(desc, pixels.data(), to));
    EXPECT_EQ(desc.format, to);
    pixels.resize(after.size());
    EXPECT_EQ(pixels, after) << from << " to " << to;
  }
  TEX_image_desc desc{TEX_dxt1, 4, 4, 0, 0};
  EXPECT_FALSE(TEX_convert(desc, scratch_array, TEX_rgb));
  EXPECT_FALSE(TEX_size_fits(1LL << 32, 1LL << 32));
  EXPECT_FALSE(TEX_size_fits(-2, -2));
  EXPECT_EQ(TEX_bytes_needed_for_image({TEX_alpha, 2, 2, 1, 1}), 8u)
      << "levels have the pad as well";
}

TEST(TexPixels, ColoursNearTheKeyAreSeenThrough) {
  const TEX_image_desc desc{TEX_rgba, 2, 2, 1, 0};  // with a pad of 7
  bytes pixels = {9, 20, 30, 255, 9, 20, 31, 255, 7, 11, 20, 30, 255, 8, 20, 30, 255, 7};
  constexpr unsigned char key[] = {9, 20, 30};
  TEX_chroma_key(desc, pixels.data(), key, 2);
  EXPECT_EQ(pixels, (bytes{9, 20, 30, 0, 9, 20, 31, 0, 7, 11, 20, 30, 255, 8, 20, 30, 0, 7}));
}

TEST(TexS3tc, RoundTripsStayNear) {
  // A smooth picture, which four colours a block can follow.
  const TEX_image_desc rgba{TEX_rgba, 18, 10, 0, 0};
  bytes pixels;
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 18; ++x) {
      for (const int level : {x * 8 + y, x * 8 + y + 40, 200 - x * 8 - y, 255 - y * 17})
        pixels.push_back(static_cast<unsigned char>(level));
    }
  }
  bytes opaque = pixels;
  for (size_t i = 3; i < opaque.size(); i += 4)
    opaque[i] = 255;
  const bytes noise = tex_noise(opaque.size(), 5);
  int loss = INT_MAX;
  for (const int quality : {s3tc_fast, s3tc_normal, s3tc_best}) {
    void* of_noise = nullptr;
    ASSERT_EQ(TEX_encode_s3tc(rgba, {TEX_dxt5, 18, 10, 0, 0}, noise.data(), &of_noise, quality), 1);
    const bytes near = decode({TEX_dxt5, 18, 10, 0, 0}, static_cast<unsigned char*>(of_noise));
    std::free(of_noise);
    const int before = std::exchange(loss, 0);
    for (size_t i = 0; i < near.size(); ++i)
      loss += (near[i] - noise[i]) * (near[i] - noise[i]);
    EXPECT_LT(loss, before) << "what takes longer is nearer";
    for (const int format : {TEX_dxt1_alpha, TEX_dxt3, TEX_dxt5}) {
      const TEX_image_desc packed{format, 18, 10, 0, 0};
      const bytes& from = format == TEX_dxt1_alpha ? opaque : pixels;
      void* blocks = nullptr;
      ASSERT_EQ(TEX_encode_s3tc(rgba, packed, from.data(), &blocks, quality), 1);
      const bytes back = decode(packed, static_cast<unsigned char*>(blocks));
      EXPECT_LE(tex_distance(back.data(), back.size(), from), 20) << format << " " << quality;
      std::free(blocks);
    }
  }
  // RGB with a pad gives the blocks of the same picture in RGBA, and comes back with its pad.
  const TEX_image_desc rgb{TEX_rgb, 18, 10, 2, 0}, dxt1{TEX_dxt1, 18, 10, 0, 0};
  bytes padded(TEX_level_bytes(rgb), 9);
  for (int i = 0; i < 18 * 10; ++i)
    std::copy_n(&opaque[size_t{4} * i], 3, &padded[TEX_row_bytes(rgb) * (i / 18) + i % 18 * 3]);
  void* of_rgb = nullptr;
  void* of_rgba = nullptr;
  ASSERT_EQ(TEX_encode_s3tc(rgb, dxt1, padded.data(), &of_rgb, s3tc_normal), 1);
  ASSERT_EQ(TEX_encode_s3tc(rgba, dxt1, opaque.data(), &of_rgba, s3tc_normal), 1);
  EXPECT_EQ(std::memcmp(of_rgb, of_rgba, TEX_level_bytes(dxt1)), 0);
  bytes back(padded.size(), 9);
  unsigned char* into = back.data();
  ASSERT_EQ(TEX_decode_s3tc(dxt1, rgb, of_rgb, &into), 1);
  EXPECT_LE(tex_distance(back.data(), back.size(), padded), 20);
  std::free(of_rgb);
  std::free(of_rgba);

  void* blocks = nullptr;
  EXPECT_EQ(TEX_encode_s3tc(rgba, {TEX_dxt1, 17, 10, 0, 0}, pixels.data(), &blocks, 1), 0);
  EXPECT_EQ(TEX_encode_s3tc(rgba, {TEX_rgba, 18, 10, 0, 0}, pixels.data(), &blocks, 1), 0);
  EXPECT_EQ(blocks, nullptr);
}

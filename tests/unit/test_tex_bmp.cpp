// BMP, and the choice of a reader by the first bytes.

#include <gtest/gtest.h>

#include <cstring>

#include "corekit/TEX/TEX_bmp.h"
#include "tests/unit/test_tex_util.h"

namespace {

int read(const bytes& data, unsigned long format, TEX_image_desc& desc, TEX_fault& fault,
         int limit = 0, int pow2 = 0) {
  picture_file file(data);
  unsigned char* pixels = scratch_array;
  return TEX_read_bmp(file.map, pixels, format, limit, pow2, desc, fault);
}

}  // namespace

TEST(TexBmp, ReadsWhatOthersWrite) {
  picture_folder folder;
  for (const char* kind : {"BMP", "BMP3"}) {
    for (int width = 1; width <= 6; ++width) {
      SCOPED_TRACE(kind + std::to_string(width));
      const std::string size = std::to_string(width) + "x5";
      tex_convert(folder, "-seed 3 -size " + size + " plasma: -type TrueColor " + kind + ":@x.bmp");
      const bytes data = tex_file(folder / "x.bmp");
      TEX_image_desc desc;
      TEX_fault fault;
      ASSERT_EQ(read(data, TEX_rgb, desc, fault), 1) << fault.text;
      EXPECT_EQ(desc.width, width);
      EXPECT_EQ(desc.height, 5);
      EXPECT_EQ(desc.format, TEX_rgb);
      EXPECT_EQ(tex_distance(scratch_array, TEX_level_bytes(desc),
                             tex_decoded(folder, "x.bmp", width, 3, "rgb")),
                0);
      ASSERT_EQ(read(data, TEX_rgba, desc, fault), 1);
      EXPECT_EQ(tex_distance(scratch_array, TEX_level_bytes(desc),
                             tex_decoded(folder, "x.bmp", width, 4, "rgba")),
                0);
    }
  }
  // The same file with its topmost row first.
  bytes data = tex_file(folder / "x.bmp");
  const bytes upright = tex_decoded(folder, "x.bmp", 6, 3, "rgb");
  const int height = -5;
  std::memcpy(data.data() + 22, &height, 4);
  TEX_image_desc desc;
  TEX_fault fault;
  ASSERT_EQ(read(data, 0, desc, fault), 1);
  TEX_flip_y(desc, scratch_array);
  EXPECT_EQ(tex_distance(scratch_array, TEX_level_bytes(desc), upright), 0);
  // Without the bytes that fill up the last row.
  ASSERT_EQ(read(bytes(data.begin(), data.end() - 2), 0, desc, fault), 1);
  TEX_flip_y(desc, scratch_array);
  EXPECT_EQ(tex_distance(scratch_array, TEX_level_bytes(desc), upright), 0);

  ASSERT_EQ(read(data, TEX_alpha, desc, fault, 0, 1), 1);
  EXPECT_EQ(desc.pad, 2);
  EXPECT_EQ(TEX_row_bytes(desc), 8u);
  for (int i : {6, 7, 14, 40, 63})
    EXPECT_EQ(scratch_array[i], 0) << i;
}

TEST(TexBmp, BrokenFilesAreFatal) {
  picture_folder folder;
  tex_convert(folder, "-seed 3 -size 6x5 plasma: -type TrueColor BMP3:@x.bmp");
  const bytes good = tex_file(folder / "x.bmp");
  const auto load = [](const bytes& data) {
    picture_file file(data);
    unsigned char* pixels = nullptr;
    const int ok = TEX_load_bmp("some/name.bmp", &file.map, pixels, TEX_rgb, 0, 0, nullptr);
    std::free(pixels);
    return ok;
  };
  EXPECT_EQ(load(good), 1);
  EXPECT_EQ(load({}), 0);
  EXPECT_EQ(load({'B'}), 0);
  EXPECT_EQ(load({'P', 'N', 'G'}), 0);
  const struct {
    const char* label;
    size_t at;
    uint32_t value;
    int size;
    const char* text;
  } rows[] = {
      {"32 bits", 28, 32, 2, "Wrong bitmap color depth for texture! some/name.bmp"},
      {"8 bits", 28, 8, 2, "Wrong bitmap color depth for texture!"},
      {"compressed", 30, 1, 4, "Compressed bitmaps cannot be used for a texture!"},
      {"the oldest header", 14, 12, 4, "This kind of bitmap file cannot be read!"},
      {"no width", 18, 0, 4, "a size that cannot be used"},
      {"width below 0", 18, 0xFFFFFFFF, 4, "a size that cannot be used"},
      {"huge width", 18, 0x7FFFFFFF, 4, "2147483647 by 5"},
      {"least height", 22, 0x80000000, 4, "6 by 2147483648"},
      {"data behind the end", 10, 0xFFFFFFF0, 4, "This bitmap file is cut short!"},
      {"one row too many", 22, 6, 4, "This bitmap file is cut short!"},
  };
  for (const auto& row : rows) {
    bytes data = good;
    std::memcpy(data.data() + row.at, &row.value, row.size);
    EXPECT_EXIT(load(data), testing::ExitedWithCode(1), row.text) << row.label;
  }
}

TEST(TexLoadAny, ChoosesByTheFirstBytes) {
  picture_folder folder;
  const std::string make = "-seed 3 -size 6x5 plasma: -type TrueColor +set date:create ";
  tex_convert(folder, make + "BMP3:@both.bmp");
  tex_convert(folder, make + "-define png:exclude-chunks=all PNG24:@both.png");
  tex_convert(folder, make + "BMP3:@misnamed.png");
  tex_convert(folder, make + "BMP3:@only.bmp");
  tex_convert(folder, make + "GIF:@other.png");
  folder.put("short.bmp", "BM12345");
  const auto any = [&](const std::string& name) {
    unsigned char* pixels = scratch_array;
    TEX_image_desc desc;
    return TEX_load_any(folder / name, pixels, TEX_rgb, 0, 0, &desc) ? desc.width : 0;
  };
  const auto ext = [&](const std::string& name) {
    unsigned char* pixels = scratch_array;
    return TEX_load_any_ext(folder / name, pixels, TEX_rgb, 0, 0, nullptr);
  };
  EXPECT_EQ(any("both.bmp"), 6);
  EXPECT_EQ(any("both.png"), 6);
  EXPECT_EQ(any("misnamed.png"), 6);
  EXPECT_EQ(any("other.png"), 0);
  EXPECT_EQ(any("short.bmp"), 0);
  EXPECT_EQ(any("absent.png"), 0);
  EXPECT_EQ(ext("both.dds"), 1);
  EXPECT_EQ(ext("only.dds"), 1);
  EXPECT_EQ(ext("other.bmp"), 0) << "the .png is there, so no other is tried";
  EXPECT_EQ(ext("absent.dds"), 0);

  unsigned char* pixels = nullptr;
  ASSERT_EQ(TEX_load_any(folder / "both.png", pixels, 0, 0, 0, nullptr), 1);
  ASSERT_NE(pixels, nullptr);
  std::free(pixels);
}

// BMP: against files that ImageMagick has made.

#include <cstring>

#include "corekit/draw/TEX_bmp.h"
#include "corekit/draw/TEX_load.h"
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
}

// A picture is asked for under either extension, and is what it begins as.
TEST(TexBmp, FilesOfAnyKind) {
  const picture_folder folder;
  tex_convert(folder, "-size 7x5 xc:red PNG24:@p.png");
  tex_convert(folder, "-size 6x5 xc:blue BMP3:@b.bmp");
  tex_convert(folder, "-size 4x5 xc:blue BMP3:@is_bmp.png");
  folder.file("text.png", "neither of them");
  folder.file("short.png", "BM");
  const std::tuple<const char*, bool, int> rows[] = {
      {"p.png", false, 7},     {"b.bmp", false, 6},    {"is_bmp.png", false, 4},
      {"p.bmp", false, 0},     {"p.bmp", true, 7},     {"b.png", true, 6},
      {"is_bmp.dds", true, 4}, {"text.png", false, 0}, {"short.png", false, 0},
      {"none.png", true, 0},   {"text.bmp", true, 0}};
  for (const auto& [name, any_extension, width] : rows) {
    const auto load = any_extension ? TEX_load_any_ext : TEX_load_any;
    unsigned char* pixels = scratch_array;
    TEX_image_desc desc{};
    EXPECT_EQ(load(folder / name, pixels, TEX_rgb, 0, 0, &desc), width != 0) << name;
    EXPECT_EQ(desc.width, width) << name;
  }
  unsigned char* pixels = scratch_array;
  EXPECT_EQ(TEX_load_any_ext(".png", pixels, TEX_rgb, 0, 0, nullptr), 0);
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
  const std::tuple<const char*, size_t, uint32_t, int, const char*> rows[] = {
      {"32 bits", 28, 32, 2, "Wrong bitmap color depth for texture! some/name.bmp"},
      {"the oldest header", 14, 12, 4, "This kind of bitmap file cannot be read!"},
      {"width below 0", 18, 0xFFFFFFFF, 4, "a size that cannot be used"},
      {"least height", 22, 0x80000000, 4, "6 by 2147483648"},
      {"one row too many", 22, 6, 4, "This bitmap file is cut short!"},
  };
  for (const auto& [label, at, value, size, text] : rows) {
    bytes data = good;
    std::memcpy(data.data() + at, &value, size);
    EXPECT_EXIT(load(data), testing::ExitedWithCode(1), text) << label;
  }
  bytes head(good.begin(), good.begin() + 54);
  head[28] = 32;
  EXPECT_EXIT(load(head), testing::ExitedWithCode(1), "color depth") << "nothing behind it";
}

// DDS: against files that ImageMagick has made, and as ImageMagick reads ours.

#include <cstring>

#include "corekit/draw/TEX_dds.h"
#include "corekit/draw/TEX_s3tc.h"
#include "corekit/draw/colr.h"
#include "tests/unit/test_tex_util.h"

namespace {

// Mixed colours of a block are rounded differently by different programs.
constexpr int mix_tolerance = 3;

void put_32(bytes& data, size_t at, uint32_t value) {
  for (int i = 0; i < 4; ++i)
    data[at + i] = static_cast<unsigned char>(value >> (8 * i));
}

// What TEX_load_dds makes of a file, as RGBA with the lowest row first.
bytes read(const bytes& data, TEX_image_desc& desc) {
  picture_file file(data);
  unsigned char* pixels = nullptr;
  if (!TEX_load_dds("", &file.map, pixels, desc)) return {};
  TEX_image_desc plain{TEX_rgba, desc.width, desc.height, 0, 0};
  bytes rgba(TEX_level_bytes(plain));
  unsigned char* into = rgba.data();
  if (TEX_block_bytes(desc.format)) {
    EXPECT_EQ(TEX_decode_s3tc(desc, plain, pixels, &into), 1);
  } else {
    std::memcpy(into, pixels, TEX_level_bytes(desc));
    plain.format = desc.format;
    EXPECT_TRUE(TEX_convert(plain, into, TEX_rgba));
  }
  TEX_flip_y(plain, into);
  return rgba;
}

// A DXT3 file, which ImageMagick reads and cannot write.
bytes make_dxt3(int width, int height) {
  const TEX_image_desc plain{TEX_rgba, width, height, 0, 0}, packed{TEX_dxt3, width, height, 0, 0};
  const bytes pixels = tex_noise(TEX_level_bytes(plain), 11);
  bytes data(128 + TEX_level_bytes(packed));
  void* blocks = data.data() + 128;
  EXPECT_EQ(TEX_encode_s3tc(plain, packed, pixels.data(), &blocks, s3tc_normal), 1);
  std::memcpy(data.data(), "DDS ", 4);
  put_32(data, 4, 124);
  put_32(data, 8, 0x1007);
  put_32(data, 12, static_cast<uint32_t>(height));
  put_32(data, 16, static_cast<uint32_t>(width));
  put_32(data, 76, 32);
  put_32(data, 80, 4);
  std::memcpy(data.data() + 84, "DXT3", 4);
  put_32(data, 108, 0x1000);
  return data;
}

}  // namespace

TEST(TexDds, ReadsWhatOthersWrite) {
  picture_folder folder;
  tex_convert(
      folder,
      "-seed 7 -size 37x23 plasma:red-blue \\( -size 37x23 gradient: \\) -alpha off -compose "
      "CopyOpacity -composite PNG32:@a.png");
  tex_convert(folder, "@a.png -resize 32x16! PNG32:@even.png");
  const std::string dds = " -define dds:compression=";
  tex_convert(folder, "@a.png -alpha off" + dds + "dxt1 -define dds:mipmaps=0 @dxt1.dds");
  tex_convert(folder, "@a.png" + dds + "dxt5 -define dds:mipmaps=0 @dxt5.dds");
  tex_convert(folder, "@even.png" + dds + "dxt5 -define dds:mipmaps=5 @dxt5m.dds");
  tex_convert(folder, "@even.png" + dds + "dxt5 -define dds:mipmaps=2 @partial.dds");
  tex_convert(folder, "@a.png" + dds + "none @bgra.dds");
  const bytes dxt3 = make_dxt3(37, 23);
  folder.file("dxt3.dds", std::string(dxt3.begin(), dxt3.end()));
  const std::tuple<const char*, int, int, int, int, int> rows[] = {
      {"dxt1.dds", TEX_dxt1, 37, 23, 0, mix_tolerance},
      {"dxt3.dds", TEX_dxt3, 37, 23, 0, mix_tolerance},
      {"dxt5.dds", TEX_dxt5, 37, 23, 0, mix_tolerance},
      {"dxt5m.dds", TEX_dxt5, 32, 16, 1, mix_tolerance},
      {"partial.dds", TEX_dxt5, 32, 16, 0, mix_tolerance},
      {"bgra.dds", TEX_bgra, 37, 23, 0, 0},
  };
  for (const auto& [file, format, width, height, mipmaps, tolerance] : rows) {
    SCOPED_TRACE(file);
    TEX_image_desc desc;
    const bytes rgba = read(tex_file(folder / file), desc);
    EXPECT_EQ(desc.format, format);
    EXPECT_EQ(desc.width, width);
    EXPECT_EQ(desc.height, height);
    EXPECT_EQ(desc.has_mipmaps != 0, mipmaps != 0);
    EXPECT_LE(tex_distance(rgba.data(), rgba.size(),
                           tex_decoded(folder, file + std::string("[0]"), width, 4, "rgba")),
              tolerance);
  }
}

TEST(TexDds, RefusesWhatItCannotRead) {
  bytes good = make_dxt3(8, 8);
  TEX_image_desc desc;
  ASSERT_FALSE(read(good, desc).empty());
  const std::tuple<const char*, size_t, uint32_t> rows[] = {
      {"magic", 0, 0x20534445},
      {"code DX10", 84, 0x30315844},
      {"neither kind", 80, 0},
      {"no width", 16, 0},
      {"a row of blocks too many", 12, 12},
      {"huge width", 16, 1u << 31},
      {"overflow", 12, 0x40000001},
      {"larger than the buffers", 16, 1 << 23},
      {"RGB of 16 bits", 80, 64}};
  for (const auto& [label, at, value] : rows) {
    bytes data = good;
    put_32(data, at, value);
    if (value == 64) put_32(data, 88, 16);
    EXPECT_TRUE(read(data, desc).empty()) << label;
  }
  // RGB wins over the code of a file that has both.
  put_32(good, 80, 4 | 64 | 1);
  good.resize(128 + 8 * 8 * 4);
  ASSERT_FALSE(read(good, desc).empty());
  EXPECT_EQ(desc.format, TEX_bgra);
}

TEST(TexDds, OthersReadWhatIsWritten) {
  picture_folder folder;
  tex_convert(folder, "-size 20x12 gradient:green-yellow PNG32:@a.png");
  const std::tuple<int, int, const char*, const char*, size_t> rows[] = {
      {TEX_rgb, 3, "rgb", "DXT1", 8}, {TEX_rgba, 4, "rgba", "DXT5", 16}};
  for (const auto& [format, channels, raw, code, block] : rows) {
    SCOPED_TRACE(code);
    const bytes pixels = tex_decoded(folder, "a.png", 20, channels, raw);
    ASSERT_EQ(TEX_save_dds(folder / "out.dds", pixels.data(), {format, 20, 12, 0, 0}), 1);
    const bytes file = tex_file(folder / "out.dds");
    // 20 by 12, 10 by 6, 5 by 3, 2 by 1, 1 by 1: blocks of 15, 6, 2, 1, 1.
    ASSERT_EQ(file.size(), 128 + block * 25);
    EXPECT_EQ(std::string(file.begin() + 84, file.begin() + 88), code);
    const bytes seen = tex_decoded(folder, "out.dds[0]", 20, channels, raw);
    EXPECT_LE(tex_distance(seen.data(), seen.size(), pixels), 24) << "compression loses some";
    TEX_image_desc back;
    ASSERT_FALSE(read(file, back).empty());
    EXPECT_NE(back.has_mipmaps, 0);
  }
  EXPECT_EQ(TEX_save_dds(folder / "none/x.dds", scratch_array, {TEX_rgb, 2, 2, 0, 0}), 0);
}

// The gamma table applies to both colours of a block, and never changes which is the greater.
TEST(TexDds, GammaKeepsTheOrderOfABlocksColours) {
  const struct {
    const char* label;
    int (*gamma)(int);
    int old_0, old_1, new_0, new_1;
  } rows[] = {
      {"none", [](int i) { return i; }, 0x1234, 0x0FED, 0x1234, 0x0FED},
      {"half", [](int i) { return i / 2; }, 0xFFFF, 0x8000, 0x7BEF, 0x4000},
      {"to black", [](int) { return 0; }, 0x8000, 0x7000, 1, 0},
      {"to black, equal", [](int) { return 0; }, 0x7000, 0x8000, 0, 0},
      {"to white", [](int) { return 255; }, 0x8000, 0x7000, 0xFFFF, 0xFFFE},
      {"turned", [](int i) { return 255 - i; }, 0xFFFF, 0, 1, 0},
      {"turned, the other way", [](int i) { return 255 - i; }, 0, 0xF800, 0x07FF, 0x07FF},
  };
  const colr_class before = colr;
  for (const auto& row : rows) {
    for (int i = 0; i < 256; ++i)
      colr.gamma_table[i] = static_cast<unsigned char>(row.gamma(i));
    unsigned char block[24] = {};
    const auto put = [&](unsigned char* at) {
      const unsigned char colours[] = {
          static_cast<unsigned char>(row.old_0), static_cast<unsigned char>(row.old_0 >> 8),
          static_cast<unsigned char>(row.old_1), static_cast<unsigned char>(row.old_1 >> 8)};
      std::copy_n(colours, 4, at);
    };
    const auto got = [](const unsigned char* at) {
      return std::pair{at[0] | at[1] << 8, at[2] | at[3] << 8};
    };
    const std::pair expected{row.new_0, row.new_1};
    put(block);
    nv_flip_blocks_dxtc1(block, 1, 1, 4);
    EXPECT_EQ(got(block), expected) << row.label;
    put(block + 8);
    nv_flip_blocks_dxtc3(block, 1, 1, 4);
    EXPECT_EQ(got(block + 8), expected) << row.label;
    put(block + 8);
    nv_flip_blocks_dxtc5(block, 1, 1, 4);
    EXPECT_EQ(got(block + 8), expected) << row.label;
  }
  colr = before;
}

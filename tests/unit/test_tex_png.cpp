// PNG: against files that ImageMagick has made, and as ImageMagick reads ours.

#include <cmath>
#include <cstring>

#include "corekit/draw/TEX_png.h"
#include "tests/unit/test_tex_util.h"

namespace {

constexpr int dx = 37, dy = 23;

// Leaves out the gamma, so that the pixels come as they are.
#define PLAIN " -define png:exclude-chunks=gAMA,cHRM,sRGB,date,tIME,iCCP "
#define GRAY "@base.png" PLAIN "-colorspace Gray -define png:color-type=0 -define png:bit-depth="

void make_base(const picture_folder& folder) {
  tex_convert(folder, "-seed 7 -size 37x23 plasma:red-blue PNG24:@base.png");
  tex_convert(folder, "@base.png" PLAIN
                      "\\( -size 37x23 gradient: \\) -alpha off -compose CopyOpacity -composite "
                      "PNG32:@alpha.png");
}

struct picture {
  TEX_image_desc desc;
  TEX_fault fault;
  unsigned char* pixels = nullptr;
  int ok = 0;
  ~picture() { std::free(pixels); }
  size_t size() const { return TEX_bytes_needed_for_image(desc); }
};

void read(picture& into, const bytes& data, unsigned long format, int limit = 0, int pow2 = 0,
          int flip = 0) {
  picture_file file(data);
  into.ok = TEX_read_png(file.map, into.pixels, format, limit, pow2, flip, into.desc, into.fault);
}

// Brightness of a pixel: the weighted sum of light, which a value stands for to the power of 1.8.
double brightness(const unsigned char* rgb) {
  if (rgb[0] == rgb[1] && rgb[1] == rgb[2]) return rgb[0];
  const auto light = [](unsigned char value) { return std::pow(value / 255.0, 1.8); };
  const double sum = 0.2126 * light(rgb[0]) + 0.7152 * light(rgb[1]) + 0.0722 * light(rgb[2]);
  return 255 * std::pow(sum, 1 / 1.8);
}

}  // namespace

TEST(TexPng, ReadsWhatOthersWrite) {
  picture_folder folder;
  make_base(folder);
  const struct {
    const char *label, *make;               // from base.png or alpha.png
    int natural;                            // format with none asked for
    int color_type, bit_depth, interlaced;  // that the file must have for the row to mean anything
    int tolerance;                          // 16 bits are cut, not rounded
  } rows[] = {
      {"RGB, 16 bits", "@base.png" PLAIN "-resize 200% -resize 37x23! PNG48:@x.png", TEX_rgb, 2, 16,
       0, 1},
      {"RGBA, interlaced", "@alpha.png" PLAIN "-interlace PNG PNG32:@x.png", TEX_rgba, 6, 8, 1, 0},
      {"palette, 2 bits, interlaced",
       "@base.png" PLAIN
       "-colors 3 -interlace PNG -define png:bit-depth=2 -define png:color-type=3 @x.png",
       TEX_rgb, 3, 2, 1, 0},
      {"palette with transparency",
       "@base.png" PLAIN "-colors 8 +dither -fill '#102030' -draw 'rectangle 3,3 20,10' "
       "-transparent '#102030' PNG8:@x.png",
       TEX_rgba, 3, 8, 0, 0},
      {"RGB with a transparent colour",
       "@base.png" PLAIN
       "-fill '#102030' -draw 'rectangle 3,3 20,10' -transparent '#102030' -define "
       "png:color-type=2 @x.png",
       TEX_rgba, 2, 8, 0, 0},
      {"gray, 1 bit", GRAY "1 -depth 1 @x.png", TEX_alpha, 0, 1, 0, 0},
      {"gray, 8 bits, interlaced", GRAY "8 -interlace PNG @x.png", TEX_alpha, 0, 8, 1, 0},
      {"gray, 16 bits", GRAY "16 @x.png", TEX_alpha, 0, 16, 0, 1},
      {"gray with alpha", "@alpha.png" PLAIN "-colorspace Gray -define png:color-type=4 @x.png",
       TEX_rgba, 4, 8, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    tex_convert(folder, row.make);
    const bytes data = tex_file(folder / "x.png");
    ASSERT_GT(data.size(), 29u);
    ASSERT_EQ(data[24], row.bit_depth);
    ASSERT_EQ(data[25], row.color_type);
    ASSERT_EQ(data[28], row.interlaced);

    picture natural, rgb, rgba, gray;
    read(natural, data, 0);
    read(rgb, data, TEX_rgb);
    read(rgba, data, TEX_rgba);
    read(gray, data, TEX_alpha);
    for (const picture* p : {&natural, &rgb, &rgba, &gray}) {
      ASSERT_EQ(p->ok, 1) << (p->fault.text ? p->fault.text : "");
      EXPECT_EQ(p->desc.width, dx);
      EXPECT_EQ(p->desc.height, dy);
      EXPECT_EQ(p->desc.pad, 0);
    }
    EXPECT_EQ(natural.desc.format, row.natural);
    EXPECT_EQ(rgb.desc.format, TEX_rgb);
    EXPECT_EQ(rgba.desc.format, TEX_rgba);
    EXPECT_EQ(gray.desc.format, TEX_alpha);
    const bytes want = tex_decoded(folder, "x.png", dx, 4, "rgba");
    EXPECT_LE(tex_distance(rgba.pixels, rgba.size(), want), row.tolerance);
    // The other formats tell the same, channel by channel.
    for (size_t i = 0; i < static_cast<size_t>(dx) * dy; ++i) {
      const unsigned char* four = rgba.pixels + i * 4;
      ASSERT_EQ(std::memcmp(rgb.pixels + i * 3, four, 3), 0) << i;
      ASSERT_NEAR(gray.pixels[i], brightness(four), 3) << i;  // libpng adds up 8-bit light
    }
    const picture& same = row.natural == TEX_rgb ? rgb : row.natural == TEX_rgba ? rgba : gray;
    EXPECT_EQ(std::memcmp(natural.pixels, same.pixels, same.size()), 0);
  }
}

TEST(TexPng, GammaIsCorrectedToTheSystems) {
  picture_folder folder;
  make_base(folder);  // base.png has a gAMA of 0.45455
  picture p;
  read(p, tex_file(folder / "base.png"), TEX_rgb);
  const bytes stored = tex_decoded(folder, "base.png", dx, 3, "rgb");
  ASSERT_EQ(stored.size(), p.size());
  for (size_t i = 0; i < stored.size(); ++i)
    ASSERT_NEAR(p.pixels[i], 255 * std::pow(stored[i] / 255.0, 1 / (0.45455 * 1.8)), 1.0) << i;
}

TEST(TexPng, PadsAndTurns) {
  picture_folder folder;
  make_base(folder);
  const bytes data = tex_file(folder / "alpha.png");
  picture tight;
  read(tight, data, TEX_rgba);
  ASSERT_EQ(tight.ok, 1);
  const size_t line = dx * 4;
  const struct {
    const char* label;
    int limit, pow2, flip, row, rows;
  } rows[] = {{"limit below the width", 36, 0, 0, 37, 23},
              {"both", 65, 1, 0, 128, 32},
              {"topmost row first", 0, 0, 1, 37, 23}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    picture p;
    read(p, data, TEX_rgba, row.limit, row.pow2, row.flip);
    ASSERT_EQ(p.ok, 1);
    EXPECT_EQ(p.desc.pad, (row.row - dx) * 4);
    EXPECT_EQ(p.desc.width, dx);
    EXPECT_EQ(p.desc.height, dy);
    const size_t stride = TEX_row_bytes(p.desc);
    for (int y = 0; y < row.rows; ++y) {
      const unsigned char* at = p.pixels + stride * y;
      const int source = row.flip ? dy - 1 - y : y;
      if (y < dy) {
        EXPECT_EQ(std::memcmp(at, tight.pixels + line * source, line), 0) << y;
      }
      for (size_t i = y < dy ? line : 0; i < stride; ++i)
        ASSERT_EQ(at[i], 0) << y;
    }
  }
}

TEST(TexPng, OthersReadWhatIsWritten) {
  picture_folder folder;
  for (const auto& [format, raw] :
       {std::pair{TEX_rgba, "rgba"}, {TEX_alpha, "gray"}, {TEX_rgb, "rgb"}}) {
    SCOPED_TRACE(raw);
    const TEX_image_desc desc{format, dx, dy, 0, 0};
    const bytes pixels = tex_noise(TEX_bytes_needed_for_image(desc), 5);
    ASSERT_EQ(TEX_save_png(folder / "out.png", desc, pixels.data()), 1);
    EXPECT_EQ(tex_decoded(folder, "out.png", dx, TEX_pixel_bytes(format), raw), pixels);
    picture back;  // corrected by nothing: the gamma that it writes is the system's
    read(back, tex_file(folder / "out.png"), static_cast<unsigned long>(format));
    EXPECT_EQ(tex_distance(back.pixels, back.size(), pixels), 0);
  }
  const bytes before = tex_file(folder / "out.png");
  EXPECT_EQ(TEX_save_png(folder / "out.png", {TEX_rgb, 0, 5, 0, 0}, scratch_array), 0);
  EXPECT_EQ(tex_file(folder / "out.png"), before);
}

TEST(TexPng, BrokenFilesAreFatal) {
  picture_folder folder;
  make_base(folder);
  const bytes good = tex_file(folder / "alpha.png");
  const auto load = [&](const bytes& data) {
    picture_file file(data);
    unsigned char* pixels = nullptr;
    const int ok = TEX_load_png("some/name.png", &file.map, pixels, TEX_rgba, 0, 0, 0, nullptr);
    std::free(pixels);
    return ok;
  };
  EXPECT_EQ(load(good), 1);
  EXPECT_EQ(load({}), 0);
  picture_file cut(good.data(), good.size() - 200);
  unsigned char* none = nullptr;
  TEX_image_desc desc;
  TEX_fault fault;
  EXPECT_EQ(TEX_read_png(cut.map, none, TEX_rgba, 0, 0, 0, desc, fault), 0);
  std::free(none);
  const auto dies = testing::ExitedWithCode(1);
  const auto changed = [&](size_t at, unsigned char value) {
    bytes data = good;
    data[at] = value;
    return data;
  };
  EXPECT_EXIT(load(bytes(good.begin(), good.end() - 200)), dies,
              "PNG Read Error, overran end of buffer! some/name.png");
  EXPECT_EXIT(load(changed(1, 'Q')), dies, "is_png=!png_sig_cmp\\(png_io_buf,0,8\\)");
  EXPECT_EXIT(load(changed(20, 0x7F)), dies, "setjmp\\(png_ptr->jmpbuf some/name.png");  // its CRC
  EXPECT_EXIT(load(changed(good.size() / 2, good[good.size() / 2] ^ 0x55)), dies, "PNG error!");
  // A header that promises more than the buffers hold is refused before anything is allocated.
  tex_convert(folder, "-size 4096x1025 xc:red PNG8:@wide.png");
  EXPECT_EXIT(load(tex_file(folder / "wide.png")), dies, "a size that cannot be used");
  tex_convert(folder, "-size 4096x1024 xc:red PNG8:@fits.png");
  EXPECT_EQ(load(tex_file(folder / "fits.png")), 1);
}

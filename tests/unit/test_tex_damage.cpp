// Pictures cut to every length and changed at random: a code, and no access where none may be.

#include <zlib.h>

#include <chrono>

#include "corekit/draw/TEX_bmp.h"
#include "corekit/draw/TEX_dds.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/TEX_s3tc.h"
#include "tests/unit/test_tex_util.h"

namespace {

using reader = int (*)(xmap_class& file, TEX_fault& fault);

int png(xmap_class& file, TEX_fault& fault) {
  TEX_image_desc desc;
  unsigned char* pixels = scratch_array;
  return TEX_read_png(file, pixels, TEX_rgba, 0, 0, 0, desc, fault);
}

int bmp(xmap_class& file, TEX_fault& fault) {
  TEX_image_desc desc;
  unsigned char* pixels = nullptr;
  const int ok = TEX_read_bmp(file, pixels, TEX_rgba, 0, 1, desc, fault);
  std::free(pixels);
  return ok;
}

// With all that the texture manager does to what it gets.
int dds(xmap_class& file, TEX_fault&) {
  TEX_image_desc desc;
  unsigned char* pixels = nullptr;
  if (!TEX_load_dds("", &file, pixels, desc)) return 0;
  bytes copy(pixels, pixels + TEX_bytes_needed_for_image(desc));
  TEX_flip_y(desc, copy.data());
  // Not every time: libsquish wakes several threads for each.
  static int turn = 0;
  if (TEX_block_bytes(desc.format) && desc.width * desc.height < 10000 && turn++ % 16 == 0) {
    unsigned char* rgba = nullptr;
    EXPECT_EQ(TEX_decode_s3tc(desc, {TEX_rgba, desc.width, desc.height, 0, 0}, copy.data(), &rgba),
              1);
    std::free(rgba);
  }
  return 1;
}

// Makes the check sums of the chunks right again, as far as there are whole chunks: otherwise
// nearly every change would end at the first sum.
void mend_png(bytes& data) {
  for (size_t at = 8; at + 12 <= data.size();) {
    const auto get = [&](size_t i) { return static_cast<size_t>(data[at + i]); };
    const size_t length = get(0) << 24 | get(1) << 16 | get(2) << 8 | get(3);
    if (length > data.size() - at - 12) return;
    const uLong sum = crc32(0, data.data() + at + 4, static_cast<uInt>(length + 4));
    for (int i = 0; i < 4; ++i)
      data[at + 8 + length + i] = static_cast<unsigned char>(sum >> (24 - 8 * i));
    at += length + 12;
  }
}

struct sample_file {
  std::string name;
  bytes data;
  reader read;
};

std::vector<sample_file> samples() {
  picture_folder folder;
  const struct {
    const char *name, *make;
    reader read;
  } rows[] = {
      {"rgba.png", "-define png:exclude-chunks=date PNG32:", png},
      {"gray16.png", "-colorspace Gray -define png:bit-depth=16 -define png:color-type=0 ", png},
      {"palette.png", "-colors 5 -interlace PNG PNG8:", png},
      {"old.bmp", "-alpha off -type TrueColor BMP3:", bmp},
      {"new.bmp", "-alpha off -type TrueColor BMP:", bmp},
      {"dxt1.dds", "-alpha off -define dds:compression=dxt1 -define dds:mipmaps=0 ", dds},
      {"dxt5.dds", "-define dds:compression=dxt5 -define dds:mipmaps=3 ", dds},
      {"none.dds", "-define dds:compression=none ", dds},
  };
  std::vector<sample_file> files;
  for (const auto& row : rows) {
    tex_convert(folder,
                "-seed 7 -size 8x8 plasma:red-blue \\( -size 8x8 gradient: \\) -alpha off -compose "
                "CopyOpacity -composite " +
                    std::string(row.make) + "@" + row.name);
    files.push_back({row.name, tex_file(folder / row.name), row.read});
  }
  return files;
}

}  // namespace

TEST(TexDamage, EveryLength) {
  for (const sample_file& sample : samples()) {
    ASSERT_GT(sample.data.size(), 100u) << sample.name;
    int whole = 0;
    for (size_t length = 0; length <= sample.data.size(); ++length) {
      picture_file file(sample.data.data(), length);
      TEX_fault fault;
      const int ok = sample.read(file.map, fault);
      EXPECT_FALSE(ok && fault.text) << sample.name << " cut to " << length;
      whole += ok;
    }
    picture_file file(sample.data);
    TEX_fault fault;
    EXPECT_EQ(sample.read(file.map, fault), 1) << sample.name << ": " << fault.text;
    // Without the end of a PNG, the fill of a last row, or the smaller levels there is a picture.
    EXPECT_LT(whole, 400) << sample.name;
    picture_file half(sample.data.data(), 128);
    EXPECT_EQ(sample.read(half.map, fault), 0) << sample.name;
  }
}

TEST(TexDamage, RandomChanges) {
  constexpr int changes = 60000;
  constexpr auto time_limit = std::chrono::seconds(6);  // for each sample
  for (const sample_file& sample : samples()) {
    std::mt19937 random(20);
    const auto start = std::chrono::steady_clock::now();
    int done = 0, read = 0, refused = 0;
    for (; done < changes && std::chrono::steady_clock::now() - start < time_limit; ++done) {
      bytes data = tex_mutated(sample.data, random);
      if (sample.read == png && done % 4 != 0) mend_png(data);
      picture_file file(data);
      TEX_fault fault;
      if (sample.read(file.map, fault)) {
        ++read;
        EXPECT_EQ(fault.text, nullptr);
      } else {
        ++refused;
      }
    }
    std::printf("%s: %d changed, %d read, %d refused\n", sample.name.c_str(), done, read, refused);
    EXPECT_GT(done, 1000) << sample.name;
    EXPECT_GT(refused, 0) << sample.name;
  }
}

// Pictures for the tests of the image formats: made and decoded by ImageMagick.
#pragma once

#include <cstdint>
#include <memory>
#include <random>

#include "corekit/draw/TEX_utils.h"
#include "corekit/files/xmap.h"
#include "tests/unit/test_files_scratch.h"

using bytes = std::vector<unsigned char>;

using picture_folder = scratch_folder;

// Runs ImageMagick's convert, with "@" in `arguments` standing for the folder.
inline void tex_convert(const picture_folder& folder, std::string arguments) {
  for (size_t at = 0; (at = arguments.find('@', at)) != std::string::npos;)
    arguments.replace(at, 1, folder.path());
  ASSERT_EQ(std::system(("convert " + arguments).c_str()), 0) << arguments;
}

inline bytes tex_file(const std::string& path) {
  const std::string content = content_of(path);
  return {content.begin(), content.end()};
}

// The pixels of a file as ImageMagick decodes it, 8 bits a channel, lowest row first.
inline bytes tex_decoded(const picture_folder& folder, const std::string& file, int width,
                         int channels, const char* format) {
  tex_convert(folder, "@" + file + " -depth 8 " + format + ":@decoded.raw");
  const bytes raw = tex_file(folder / "decoded.raw");
  const size_t row = static_cast<size_t>(width) * channels;
  bytes turned;
  for (size_t at = raw.size(); at >= row; at -= row)
    turned.insert(turned.end(), raw.begin() + at - row, raw.begin() + at);
  return turned;
}

// A mapped file that is in truth a block of memory, of exactly its size for the sanitizer's sake.
class picture_file {
 public:
  picture_file(const unsigned char* data, size_t size) : copy_(new unsigned char[size]) {
    std::copy(data, data + size, copy_.get());
    map.file_start = map.cursor = copy_.get();
    map.file_end = copy_.get() + size;
  }
  explicit picture_file(const bytes& data) : picture_file(data.data(), data.size()) {}

 private:
  std::unique_ptr<unsigned char[]> copy_;

 public:
  xmap_class map{""};
};

// The greatest difference of two pictures; 999 for different sizes.
inline int tex_distance(const unsigned char* a, size_t size, const bytes& b) {
  if (size != b.size()) return 999;
  int most = 0;
  for (size_t i = 0; i < size; ++i)
    most = std::max(most, std::abs(a[i] - b[i]));
  return most;
}

inline bytes tex_noise(size_t size, unsigned seed) {
  std::mt19937 random(seed);
  bytes data(size);
  for (unsigned char& byte : data)
    byte = static_cast<unsigned char>(random());
  return data;
}

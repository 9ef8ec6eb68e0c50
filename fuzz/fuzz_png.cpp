// Fuzz target of the PNG reader. Check sums are not looked at, or nearly every input would end at
// one: libpng leaves that to its caller only in builds of its own, so the sums are made right.

#include <zlib.h>

#include <cstdlib>
#include <vector>

#include "corekit/draw/TEX_png.h"
#include "corekit/files/xmap.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // The first byte says what is asked for.
  std::vector<unsigned char> copy(data + 1, data + size);
  for (size_t at = 8; at + 12 <= copy.size();) {
    const size_t length =
        static_cast<size_t>(copy[at]) << 24 | copy[at + 1] << 16 | copy[at + 2] << 8 | copy[at + 3];
    if (length > copy.size() - at - 12) break;
    const uLong sum = crc32(0, &copy[at + 4], static_cast<uInt>(length + 4));
    for (int i = 0; i < 4; ++i)
      copy[at + 8 + length + i] = static_cast<unsigned char>(sum >> (24 - 8 * i));
    at += length + 12;
  }
  copy.shrink_to_fit();

  constexpr unsigned long formats[] = {0, TEX_rgb, TEX_rgba, TEX_alpha};
  xmap_class file("");
  file.file_start = file.cursor = copy.data();
  file.file_end = copy.data() + copy.size();
  if (copy.empty()) return 0;
  TEX_image_desc desc;
  TEX_fault fault;
  unsigned char* pixels = nullptr;
  TEX_read_png(file, pixels, formats[data[0] & 3], data[0] >> 4, data[0] & 4, data[0] & 8, desc,
               fault);
  std::free(pixels);
  return 0;
}

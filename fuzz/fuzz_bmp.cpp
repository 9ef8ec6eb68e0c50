// Fuzz target of the BMP reader. The first byte says what is asked for.

#include <cstdlib>

#include "corekit/draw/TEX_bmp.h"
#include "corekit/files/xmap.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  constexpr unsigned long formats[] = {0, TEX_rgb, TEX_rgba, TEX_alpha};
  xmap_class file("");
  file.file_start = file.cursor = data + 1;
  file.file_end = data + size;
  TEX_image_desc desc;
  TEX_fault fault;
  unsigned char* pixels = nullptr;
  TEX_read_bmp(file, pixels, formats[data[0] & 3], data[0] >> 4, data[0] & 4, desc, fault);
  std::free(pixels);
  return 0;
}

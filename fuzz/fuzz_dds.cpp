// Fuzz target of the DDS reader, with what the texture manager does to its pictures: turn, decode
// and reduce them.

#include <cstdlib>
#include <vector>

#include "corekit/draw/TEX_dds.h"
#include "corekit/draw/TEX_s3tc.h"
#include "corekit/files/xmap.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  xmap_class file("");
  file.file_start = file.cursor = data;
  file.file_end = data + size;
  TEX_image_desc desc;
  unsigned char* found = nullptr;
  if (!TEX_load_dds("", &file, found, desc)) return 0;
  std::vector<unsigned char> copy(found, found + TEX_bytes_needed_for_image(desc));
  TEX_flip_y(desc, copy.data());
  if (!TEX_block_bytes(desc.format)) {
    TEX_downscale(desc, copy.data(), 2, 3);
    return 0;
  }
  unsigned char* rgba = nullptr;
  TEX_decode_s3tc(desc, {TEX_rgba, desc.width, desc.height, 0, 0}, copy.data(), &rgba);
  std::free(rgba);
  return 0;
}

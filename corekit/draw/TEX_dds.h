// DDS files: DXT1, DXT3 and DXT5, and uncompressed BGR and BGRA.
//
// The published header of 128 bytes, little-endian, of which these fields are used:
//     0  "DDS "                             80  4 = compressed, 64 = RGB, 1 = with alpha
//     8  flags: bit 17 = has mipmaps        84  "DXT1", "DXT3" or "DXT5"
//    12  height                             88  bits a pixel of RGB
//    16  width                              92  bits of red
//   108  caps: bit 22 = mipmaps            128  the picture, topmost row first, then its levels
#pragma once

#include <string>

#include "corekit/draw/TEX_utils.h"

class xmap_class;

// Checks a DDS file and points `pixels` at its picture: in the memory of `file`, which must stay
// open and is not to be written to, topmost row first. 1; or 0 if it is no DDS, of a kind not read
// here, larger than the scratch buffers allow, or cut short. A file whose smaller levels are not
// all there counts as having none.
int TEX_load_dds(const std::string& path, xmap_class* file, unsigned char*& pixels,
                 TEX_image_desc& desc);

// Writes RGB as DXT1 or RGBA as DXT5 with all levels down to 1 by 1; another format is fatal. The
// picture has its lowest row first in memory. The file appears whole or not at all. 1; or 0 with a
// line in the log if it cannot be written.
int TEX_save_dds(const std::string& path, const unsigned char* pixels, const TEX_image_desc& desc);

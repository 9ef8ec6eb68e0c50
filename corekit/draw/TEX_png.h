// PNG files, through libpng. One thread at a time: the file being read is a global.
#pragma once

#include <string>

#include "corekit/draw/TEX_utils.h"

class xmap_class;

// Reads a PNG of any colour type and depth as 8 bits a channel; TEX_utils.h explains the
// parameters. Palettes and transparent colours are expanded, and the file's gamma is corrected to
// that of `colr`. The lowest row comes first, or the topmost one if `flip` is non-zero.
int TEX_load_png(const std::string& path, xmap_class* file, unsigned char*& pixels,
                 unsigned long format, int width_limit, int pow2, int flip, TEX_image_desc* desc);

// The same without the alert: of a broken file `fault` says what is wrong, and the result is 0.
int TEX_read_png(xmap_class& file, unsigned char*& pixels, unsigned long format, int width_limit,
                 int pow2, int flip, TEX_image_desc& desc, TEX_fault& fault);

// Writes TEX_rgb, TEX_rgba or TEX_alpha (as gray), lowest row first in memory; another format is
// fatal. The file appears whole or not at all. 1; or 0 with a line in the log if it cannot be
// written.
int TEX_save_png(const std::string& path, const TEX_image_desc& desc, const unsigned char* pixels);

// Writes the picture in scratch_array: RGBA if bytes_per_pixel is 4, else RGB. Result as above.
int write_png_to_disk(const std::string& path, int dx, int dy, int bytes_per_pixel);

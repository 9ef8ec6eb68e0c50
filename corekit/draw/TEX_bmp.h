// BMP files: uncompressed, 24 bits a pixel.
#pragma once

#include <string>

#include "corekit/draw/TEX_utils.h"

class xmap_class;

// Reads a BMP; TEX_utils.h explains the parameters. As RGB, or as RGBA with alpha 255, or as its
// brightness; the lowest row first, also of a file that keeps its topmost row first.
int TEX_load_bmp(const std::string& path, xmap_class* file, unsigned char*& pixels,
                 unsigned long format, int width_limit, int pow2, TEX_image_desc* desc);

// The same without the alert: of a broken file `fault` says what is wrong, and the result is 0.
int TEX_read_bmp(xmap_class& file, unsigned char*& pixels, unsigned long format, int width_limit,
                 int pow2, TEX_image_desc& desc, TEX_fault& fault);

// From a picture's file to a texture: which reader, and at what size. The parameters are explained
// in TEX_utils.h. The main thread, or the one background load of the texture manager.
#pragma once

#include <string>

#include "corekit/draw/TEX_utils.h"

// Opens a picture and chooses its reader by the first bytes: "BM", then the signature of PNG.
int TEX_load_any(const std::string& path, unsigned char*& pixels, unsigned long format, int max_dim,
                 int pow2, TEX_image_desc* desc);
// The same for the path with its 4-character extension replaced by ".png", else by ".bmp".
int TEX_load_any_ext(const std::string& path, unsigned char*& pixels, unsigned long format,
                     int max_dim, int pow2, TEX_image_desc* desc);

// The size at which a picture of dx by dy pixels becomes a texture, into out_dx, out_dy: the
// texture resolution setting (ren.tex_res), changed by the load flags, and in `mode` 1 (pixels that
// are in scratch_array already) full size; small enough for the driver, and each side rounded up to
// a power of two unless the flags say otherwise. Returns the scale applied to the picture, at most
// 1. REQUIRES: dx and dy at least 1.
float TEX_get_scale(int flags, int dx, int dy, int* out_dx, int* out_dy, int mode);

// The fraction of full size that a texture resolution setting of 0 to 5 asks for: 1/32 to 1.
float TEX_scale_of_setting(int tex_res);

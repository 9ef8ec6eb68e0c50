// The two pixel buffers in which all image work is done, and the rule for texture sizes.
#pragma once

#include <string>

inline constexpr int scratch_bytes = 16 * 1024 * 1024;  // of each buffer

// Static, so that loading a picture allocates nothing. Rows of pixels, the lowest row first. One
// user at a time: the main thread, or the one background load while the main thread keeps away.
extern unsigned char scratch_array[scratch_bytes];
extern unsigned char scratch_array_temp[scratch_bytes];  // the second buffer of operations on it
extern int scratch_dx,
    scratch_dy;  // size of the picture in scratch_array; dx is the row stride, px

// Whether a picture of dx by dy pixels has both sides and fits the buffers at 4 bytes a pixel. If
// not, a fatal alert that names `name`; 0. Otherwise 1.
int check_dxy(const std::string& name, int dx, int dy);

// The size at which a picture of dx by dy pixels becomes a texture, into out_dx, out_dy: the
// texture resolution setting (ren.tex_res), changed by the load flags, and in `mode` 1 (pixels that
// are in scratch_array already) full size; small enough for the driver, and each side rounded up to
// a power of two unless the flags say otherwise. Returns the scale applied to the picture, at most
// 1. REQUIRES: dx and dy at least 1.
float TEX_get_scale(int flags, int dx, int dy, int* out_dx, int* out_dy, int mode);

// The fraction of full size that a texture resolution setting of 0 to 5 asks for: 1/32 to 1.
float TEX_scale_of_setting(int tex_res);

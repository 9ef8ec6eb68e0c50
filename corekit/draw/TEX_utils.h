// Pictures in memory: what describes one, the two buffers in which all image work is done, the
// operations on pixels, and the choice of a reader for a picture's file.
//
// Nothing here knows OpenGL's state; its format codes are used as plain numbers. Rows lie the
// lowest row first unless a comment says otherwise. No picture may be larger than one scratch
// buffer at 4 bytes a pixel: every reader checks that before it writes. The main thread, or the one
// background load of the texture manager.
#pragma once

#include <cstddef>
#include <string>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert_source.h"

// --- description of a picture ------------------------------------------------------------------

enum TEX_format : int {
  TEX_depth = 6402,
  TEX_depth_32 = 33191,
  TEX_alpha = 6406,  // also gray: one byte a pixel
  TEX_rgb = 6407,
  TEX_rgba = 6408,
  TEX_bgr = 32992,
  TEX_bgra = 32993,
  TEX_dxt1 = 33776,
  TEX_dxt1_alpha = 33777,
  TEX_dxt3 = 33778,
  TEX_dxt5 = 33779,
};

struct TEX_image_desc {
  int format = 0;       // TEX_format
  int width = 0;        // pixels
  int height = 0;       // pixels
  int pad = 0;          // bytes added at the end of every row
  int has_mipmaps = 0;  // non-zero: smaller levels, down to 1 by 1, follow in the same buffer
};

inline constexpr UTL_text TEX_bad_size = "This picture has a size that cannot be used:";

// What a reader found wrong with a picture of its own type. `text` is static, null for nothing.
struct TEX_fault {
  const char* text = nullptr;
  std::string detail;  // a second line for the user; may be empty
  alert_source source = at_picture_size;
};

int TEX_pixel_bytes(int format);                  // 0 for a compressed or unknown format
int TEX_block_bytes(int format);                  // of 4 by 4 pixels; 0 if not compressed
size_t TEX_row_bytes(const TEX_image_desc& d);    // from row to row of an uncompressed picture
size_t TEX_level_bytes(const TEX_image_desc& d);  // of the largest level alone
// Of the picture and, with has_mipmaps, its smaller levels. 0 for an unknown format or a side
// below 1.
size_t TEX_bytes_needed_for_image(const TEX_image_desc& d);
// `d` becomes the description of the next smaller level; false if it is 1 by 1 already.
bool TEX_next_level(TEX_image_desc& d);

// --- buffers -----------------------------------------------------------------------------------

inline constexpr int scratch_bytes = 16 * 1024 * 1024;  // of each buffer

// Static, so that loading a picture allocates nothing. One user at a time: the main thread, or the
// one background load while the main thread keeps away.
extern unsigned char scratch_array[scratch_bytes];
extern unsigned char scratch_array_temp[scratch_bytes];  // the second buffer of operations on it
extern int scratch_dx, scratch_dy;  // size of the picture in scratch_array; dx is the row stride

// Whether a picture of that size has both sides and fits the buffers at 4 bytes a pixel.
bool TEX_size_fits(long long dx, long long dy);

// The same; if not, a fatal alert that names `name`, and 0. Otherwise 1.
int check_dxy(const std::string& name, int dx, int dy);

// --- files -------------------------------------------------------------------------------------
// The readers of PNG and BMP share these parameters:
//   pixels  where the picture goes, of at least scratch_bytes; if null, a buffer of the size needed
//           is allocated, which the caller gives back with std::free
//   format  TEX_alpha, TEX_rgb or TEX_rgba; 0 takes the picture as it is
//   limit   pixels that a row is padded to; a limit not above the width pads nothing
//   pow2    non-zero: the row and the number of rows are raised to powers of two, and what is
//           added, that is right of and above the picture, is zero
//   desc    receives the picture's own size and the pad of its rows; may be null
// They return 1; or 0 with `pixels` as it was, if the file has no content or (BMP) is of another
// type. A broken file is a fatal alert.

// The place for a picture as the parameters above want it: fills desc.pad, takes or allocates the
// buffer and zeroes what is not picture. Null if it does not fit or memory is short. For the
// readers.
unsigned char* TEX_take_buffer(TEX_image_desc& desc, unsigned char* pixels, int limit, int pow2);
// The fatal alert that tells of a broken picture. For the readers.
void TEX_report(const TEX_fault& fault, const std::string& path);

// --- pixels ------------------------------------------------------------------------------------
// `pixels` holds what desc describes.

// Box-reduces by whole factors, in place: each pixel becomes the rounded mean of its source block.
// What does not fill a block at the right and at the top is left out; a side stays at least 1.
// Updates desc; the pad in bytes stays, and levels that followed are no longer counted.
void TEX_downscale(TEX_image_desc& desc, unsigned char* pixels, int step_x, int step_y);
// The next level of a picture with levels, in place of this one.
void TEX_halve(TEX_image_desc& desc, unsigned char* pixels);

// Turns the picture upside down, each level by itself. A compressed picture is turned block by
// block, which is exact if its height is a multiple of 4 or below 4; any other must be decoded
// first. Fatal for an unknown format.
void TEX_flip_y(const TEX_image_desc& desc, unsigned char* pixels);

// Turns an uncompressed picture of colour or alpha into another such format, in place, without pad.
// False, and nothing done, for other formats. REQUIRES: room for the picture in the new format, and
// no mipmaps.
bool TEX_convert(TEX_image_desc& desc, unsigned char* pixels, int format);

// Brightness of a colour, by the weights that libpng uses for a PNG wanted as gray.
unsigned char TEX_gray(int r, int g, int b);

// Sets alpha to 0 where |r - key[0]| + |g - key[1]| + |b - key[2]| < tolerance. RGBA only.
void TEX_chroma_key(const TEX_image_desc& desc, unsigned char* pixels, const unsigned char* key,
                    int tolerance);

// Copies all of `src` into the rectangle (x1, y1) to (x2, y2) of `dst`, in pixels, rounded outward
// and clipped; in between, source pixels are mixed. 3 or 4 bytes a pixel in both; where only the
// target has alpha it becomes 255. The pictures must not overlap.
void TEX_composite(const TEX_image_desc& src, const TEX_image_desc& dst,
                   const unsigned char* src_pixels, unsigned char* dst_pixels, float x1, float y1,
                   float x2, float y2);

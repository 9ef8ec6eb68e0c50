// S3TC: blocks of 4 by 4 pixels in 8 bytes (DXT1) or 16 (DXT3, DXT5). Any thread.
#pragma once

#include "corekit/draw/TEX_utils.h"

enum s3tc_quality : int { s3tc_fast = 0, s3tc_normal = 1, s3tc_best = 2 };

// Compresses one level of RGB or RGBA into out.format, through libsquish. *blocks holds
// TEX_level_bytes(out); if null it is allocated, and the caller gives it back with std::free. 1; or
// 0 for formats or sizes that do not go together, or if memory is short.
int TEX_encode_s3tc(const TEX_image_desc& in, const TEX_image_desc& out,
                    const unsigned char* pixels, void** blocks, int quality);

// Decompresses one level into RGB or RGBA, likewise. The blocks and *pixels must not overlap.
int TEX_decode_s3tc(const TEX_image_desc& in, const TEX_image_desc& out, const void* blocks,
                    unsigned char** pixels);

// Turn the pixels of `count` blocks upside down, of which the first `rows` rows (1 to 4) carry the
// picture. With `gamma` non-zero the colours are corrected by colr.gamma_table too.
void nv_flip_blocks_dxtc1(unsigned char* blocks, int count, int gamma, int rows = 4);
void nv_flip_blocks_dxtc3(unsigned char* blocks, int count, int gamma, int rows = 4);
void nv_flip_blocks_dxtc5(unsigned char* blocks, int count, int gamma, int rows = 4);

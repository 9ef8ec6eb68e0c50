// The picture of the frame: what is drawn is noted here piece by piece, and painted when the frame
// is shown. So a picture that is like the one before costs nothing more, and of another one only
// the part that differs is painted.
//
// Only notes and compares: no OpenGL is called here. For the drawing layer; whoever draws uses the
// functions of oglp.h. Main thread only.
#pragma once

#include <vector>

enum picture_shape : int { shape_quad, shape_line };  // 4 corners, or 2

// How a piece is painted.
struct picture_how {
  int shape;                             // of picture_shape
  int tex, blend;                        // the second and fourth arguments of OGL_setstate
  int glow;                              // 1 when blending adds
  unsigned texture;                      // OpenGL's name of it; 0 for none
  int clip_x, clip_y, clip_dx, clip_dy;  // in pixels of the window; clip_dx -1 for no clip
};

struct picture_corner {
  float x, y, s, t;  // window units, texture coordinates
};

// Compared byte by byte: it has no gaps, and corners that a line lacks are 0.
struct picture_piece {
  picture_how how;
  float rgba[4];
  picture_corner corners[4];
};
using picture_pieces = std::vector<picture_piece>;

// A rectangle in units of the window: lower left and upper right corner. Empty when x0 >= x1.
struct OGL_rect {
  float x0, y0, x1, y1;
};

// What a piece covers, its clip aside: at least all pixels that OpenGL can touch.
OGL_rect picture_bounds(const picture_piece& piece);

bool picture_same(const picture_pieces& a, const picture_pieces& b);

// The rectangle outside which the two pictures are the same, whatever lay under them. Empty when
// they are the same.
OGL_rect picture_damage(const picture_pieces& a, const picture_pieces& b);

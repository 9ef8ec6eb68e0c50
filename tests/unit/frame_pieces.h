// Where the pieces of the widgets' frames lie in their pictures, as the makers of both agreed on.
#pragma once

// A strip is stretched between its caps; drawn `extra` wider and `lower` than its place.
inline constexpr struct strip_piece {
  int type, cap, src, h, u, v, tile, extra, lower;
} strip_pieces[] = {
    {0, 10, 100, 26, 1, 487, 90, 0, 3},  {1, 20, 100, 26, 102, 487, 80, 0, 3},
    {2, 10, 52, 26, 304, 486, 42, 0, 0}, {3, 10, 52, 26, 304, 459, 42, 0, 0},
    {4, 10, 28, 16, 112, 161, 18, 0, 0}, {5, 10, 28, 16, 83, 161, 18, 0, 0},
    {7, 10, 65, 24, 240, 242, 55, 0, 0}, {8, 7, 16, 16, 289, 219, 9, 0, 0},
    {9, 10, 51, 26, 262, 133, 41, 4, 0}, {10, 26, 68, 24, 357, 488, 42, 4, 0},
};

// A box is tiled between slices of fixed widths, and drawn with margins: m at its sides, b below, t
// above.
inline constexpr struct box_piece {
  int type, u, v, side, m, b, t;
  double left, low, high;  // the slices; the right one is as the left
} box_pieces[] = {
    {11, 1, 358, 100, 9, 14, 4, 35, 30, 30},      {12, 102, 358, 100, 9, 14, 4, 35, 30, 30},
    {13, 203, 358, 100, 9, 14, 4, 35, 30, 30},    {14, 304, 358, 100, 9, 14, 4, 35, 30, 30},
    {15, 405, 358, 100, 9, 14, 4, 35, 30, 30},    {16, 1, 289, 68, 2, 2, 2, 23.8, 20.4, 20.4},
    {17, 70, 315, 42, 8, 13, 2, 20, 26, 14},      {18, 113, 315, 42, 8, 13, 2, 14.7, 12.6, 12.6},
    {19, 440, 12, 44, 6, 9, 4, 15.4, 13.2, 13.2}, {20, 982, 2, 41, 1, 1, 1, 14.35, 12.3, 12.3},
};

// The letters of the interface image's two fonts: which byte has which cell of its grid, and how
// far it moves the pen. The program that draws the image reads them here too, so this needs nothing
// else.
#pragma once

#include <array>
#include <string_view>

inline constexpr int glyph_columns = 21, glyph_rows = 5;
inline constexpr int glyph_dx = 14, glyph_dy = 15;  // of a cell, pixels

// Lowest row first. Bytes without a cell here, in the annex or of their base letter show the first
// one, a blank.
inline constexpr std::string_view glyph_grid[glyph_rows] = {
    " 0123456789AaBbCcDdEe",
    "FfGgHhIiJjKkLlMmNnOoP",
    "pQqRrSsTtUuVvWwXxYyZz",
    "!@#$%^&*()-_+=[]|\\':;",
    "<.>,?/`\xFB\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF",
};
static_assert([] {
  for (const std::string_view row : glyph_grid)
    if (row.size() != glyph_columns) return false;
  return true;
}());

// The cells to the right of the grid, in its four lowest rows: as many as fit beside the frames.
inline constexpr int annex_columns = 10, annex_rows = 4;
inline constexpr std::string_view glyph_annex[annex_rows] = {
    "\"{}~\xA1\xE4\xF6\xFC\xDF\xC4",
    "\xD6\xDC\xE0\xE8\xEC\xF2\xF9\xC0\xC8\xE2",
    "\xEA\xEE\xF4\xC2\xCA\xCE\xD4\xE3\xF5\xC3",
    "\xD5\xE7\xC7\xEB\xEF\xAB\xBB\xD9\xD2\xCC",
};
static_assert([] {
  for (const std::string_view row : glyph_annex)
    if (row.size() != annex_columns) return false;
  return true;
}());

// A cell of the interface image by column and row; the annex begins at column glyph_columns.
struct glyph_cell {
  unsigned char column, row;
};

// What stands in for the signs from 160 to 255 that have no cell: a letter's base, or what looks
// most like a sign.
inline constexpr std::string_view glyph_stand_ins =
    " !cLoY|S\"Ca<-\x2DR-o+23'uP.,1o>???\x3F"
    "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYPs"
    "aaaaaaaceeeeiiiidnooooo/ouuuuypy";
static_assert(glyph_stand_ins.size() == 256 - 160);

// Bytes with a cell of their own; the blank's is a space, as is that of a space.
inline constexpr std::array<glyph_cell, 256> glyph_own_cells = [] {
  std::array<glyph_cell, 256> cells{};
  const auto put = [&cells](std::string_view bytes, int column, int row) {
    for (const char c : bytes)
      cells[static_cast<unsigned char>(c)] = {static_cast<unsigned char>(column++),
                                              static_cast<unsigned char>(row)};
  };
  for (int row = 0; row < glyph_rows; ++row)
    put(glyph_grid[row], 0, row);
  for (int row = 0; row < annex_rows; ++row)
    put(glyph_annex[row], glyph_columns, row);
  return cells;
}();

// The byte that is drawn for a byte: itself, or the one that stands in for it.
constexpr unsigned char glyph_shown(unsigned char byte) {
  const glyph_cell cell = glyph_own_cells[byte];
  if (byte < 160 || cell.column != 0 || cell.row != 0) return byte;
  return static_cast<unsigned char>(glyph_stand_ins[byte - 160u]);
}

// Proportional widths in units, by byte; what is drawn as another is as wide as that, and what is
// not drawn has none.
inline constexpr std::array<unsigned char, 256> glyph_widths = [] {
  constexpr struct {
    unsigned char width;
    std::string_view bytes;
  } rows[] = {
      {2, ",."},
      {3, " '/:;I\\`ijl|\xFB\xEC\xEE\xEF\xCC\xCE"},
      {4, "!()-J[]frst{}\"\xA1"},
      {5, "c\xE7"},
      {6,
       "#$*0123456789?EFLPSTZ^_aekvxyz\xBF\xC1\xC9\xCD\xD1\xD3\xDA\xE1\xE9\xED\xF1\xF3\xFA"
       "\xE4\xE0\xE2\xE3\xE8\xEA\xEB\xC8\xCA\xAB\xBB"},
      {7, "+<=>BCKRVXYbdghnopqu~\xF6\xF2\xF4\xF5\xFC\xF9\xDF\xC7"},
      {8, "&ADGHNU\xC4\xC0\xC2\xC3\xDC\xD9"},
      {9, "@OQw\xD6\xD2\xD4\xD5"},
      {10, "Mm"},
      {11, "%W"},
  };
  std::array<unsigned char, 256> widths{};
  for (const auto& row : rows) {
    for (const char c : row.bytes)
      widths[static_cast<unsigned char>(c)] = row.width;
  }
  for (int byte = 160; byte < 256; ++byte)
    widths[static_cast<size_t>(byte)] = widths[glyph_shown(static_cast<unsigned char>(byte))];
  return widths;
}();

// --- the letters of the faces
// ----------------------------------------------------------------------

// The words on the wizard's own buttons are larger and bolder than its texts. A grid of their own
// in a part of the image that is free: letters and digits, as words on buttons want no more, and
// for
// "<" and ">" the chevrons of Back and Next, with the gap between them and the word.
inline constexpr int face_glyph_u = 312, face_glyph_v = 168;  // its lower left in the image
inline constexpr int face_glyph_dx = 15, face_glyph_dy = 18;  // of a cell
inline constexpr int face_glyph_columns = 13, face_glyph_rows = 9;
inline constexpr std::string_view face_glyph_grid[face_glyph_rows] = {
    "ABCDEFGHIJKLM",
    "NOPQRSTUVWXYZ",
    "abcdefghijklm",
    "nopqrstuvwxyz",
    "0123456789 .-",
    "'&\xC0\xC1\xC2\xC3\xC4\xC7\xC8\xC9\xCA\xCB\xCD",
    "\xCE\xD1\xD2\xD3\xD4\xD5\xD6\xD9\xDA\xDC\xE0\xE1\xE2",
    "\xE3\xE4\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF\xF1\xF2",
    "\xF3\xF4\xF5\xF6\xF9\xFA\xFB\xFC\xDF<>  ",
};
static_assert([] {
  for (const std::string_view row : face_glyph_grid)
    if (row.size() != face_glyph_columns) return false;
  return true;
}());

// By byte; of one without a cell 0 is the width, and the cell means nothing.
inline constexpr std::array<glyph_cell, 256> face_glyph_cells = [] {
  std::array<glyph_cell, 256> cells{};
  for (unsigned char row = 0; row < face_glyph_rows; ++row)
    for (unsigned char column = 0; column < face_glyph_columns; ++column)
      cells[static_cast<unsigned char>(face_glyph_grid[row][column])] = {column, row};
  return cells;
}();
inline constexpr std::array<unsigned char, 256> face_glyph_widths = [] {
  constexpr struct {
    unsigned char width;
    std::string_view bytes;
  } rows[] = {
      {3, " '.ijl"},
      {4, "I\xEC\xED\xEE\xEF"},
      {5, "-frt\xCD\xCE"},
      {6, "Jcsz\xE7"},
      {7,
       "EFLSabdeghknopquvxy\xC8\xC9\xCA\xCB\xE0\xE1\xE2\xE3\xE4\xE8\xE9\xEA\xEB\xF1\xF2\xF3\xF4"
       "\xF5\xF6\xF9\xFA\xFB\xFC"},
      {8, "0123456789BPRTYZ\xDF"},
      {9, "&ACGKVX\xC0\xC1\xC2\xC3\xC4\xC7"},
      {10, "DHNOQUw\xD1\xD2\xD3\xD4\xD5\xD6\xD9\xDA\xDC"},
      {11, "m"},
      {12, "M<>"},
      {14, "W"},
  };
  std::array<unsigned char, 256> widths{};
  for (const auto& row : rows)
    for (const char c : row.bytes)
      widths[static_cast<unsigned char>(c)] = row.width;
  return widths;
}();
static_assert([] {
  for (const std::string_view row : face_glyph_grid)
    for (const char c : row)
      if (face_glyph_widths[static_cast<unsigned char>(c)] == 0) return false;
  return true;
}());

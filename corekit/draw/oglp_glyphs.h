// The letters of the interface image's font: which byte has which cell of its grid, and how far it
// moves the pen. The program that draws the image reads them here too, so this needs nothing else.
#pragma once

#include <array>
#include <string_view>

inline constexpr int glyph_columns = 21, glyph_rows = 5;
inline constexpr int glyph_dx = 14, glyph_dy = 15;  // of a cell, pixels

// Lowest row first. Bytes that are not here show the first cell, a blank.
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

// Proportional widths in units, by byte; what is not here has none.
inline constexpr std::array<unsigned char, 256> glyph_widths = [] {
  constexpr struct {
    unsigned char width;
    std::string_view bytes;
  } rows[] = {
      {2, ",."},
      {3, " '/:;I\\`ijl|\xFB"},
      {4, "!()-J[]frst"},
      {5, "c"},
      {6, "#$*0123456789?EFLPSTZ^_aekvxyz\xBF\xC1\xC9\xCD\xD1\xD3\xDA\xE1\xE9\xED\xF1\xF3\xFA"},
      {7, "+<=>BCKRVXYbdghnopqu"},
      {8, "&ADGHNU"},
      {9, "@OQw"},
      {10, "Mm"},
      {11, "%W"},
  };
  std::array<unsigned char, 256> widths{};
  for (const auto& row : rows) {
    for (const char c : row.bytes)
      widths[static_cast<unsigned char>(c)] = row.width;
  }
  return widths;
}();

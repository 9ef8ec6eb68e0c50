// A real OpenGL context off the screen, and pictures in which a test sees where each glyph lies.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

// The grid as the font's maker draws it; 14 by 15 pixels a cell.
inline constexpr std::string_view font_rows[5] = {
    " 0123456789AaBbCcDdEe\"{}~\xA1\xE4\xF6\xFC\xDF\xC4",
    "FfGgHhIiJjKkLlMmNnOoP\xD6\xDC\xE0\xE8\xEC\xF2\xF9\xC0\xC8\xE2",
    "pQqRrSsTtUuVvWwXxYyZz\xEA\xEE\xF4\xC2\xCA\xCE\xD4\xE3\xF5\xC3",
    "!@#$%^&*()-_+=[]|\\':;\xD5\xE7\xC7\xEB\xEF\xAB\xBB\xD9\xD2\xCC",
    "<.>,?/`\xFB\xC1\xE1\xC9\xE9\xCD\xED\xD3\xF3\xDA\xFA\xD1\xF1\xBF",
};

// A window of 800 by 600 as the wizard has it: mnw, ogl_inited and the textures set up, the frame
// black. Fails loudly where no context can be had.
class gl_fixture : public testing::Test {
 public:
  static void clear();

 protected:
  static constexpr int window_dx = 800, window_dy = 600;

  void SetUp() override;
  void TearDown() override;

  static void new_driver();  // asks the driver anew, with the command line of now
  // A click at a place, for the frame that begins; and its end.
  static void click(float x, float y);
  static void move(float x, float y);
};

// Installs the window layer's sink of failures, as the start does it.
void alerts_are_drawn();

struct gl_pixel {
  int r, g, b;
};
gl_pixel read_pixel(int x, int y);
std::vector<unsigned char> read_picture();  // RGBA, from the lowest row up
// As it is, with nothing painted that is noted only: what a swap brings to the screen.
std::vector<unsigned char> read_buffer();
// Within 2 levels a channel.
testing::AssertionResult pixel_is(int x, int y, int r, int g, int b);

// What a drawing has put at each pixel: which glyph, and how many times it was painted over.
class picture_map {
 public:
  // Draws twice, with two versions of the interface and the elements image.
  explicit picture_map(const std::function<void()>& draw);

  int times(int x, int y) const { return times_[index(x, y)]; }
  // The text that begins at pen (x, y): characters until no glyph begins at the pen.
  std::string text_at(int x, int y, int pitch = 0) const;

 private:
  static size_t index(int x, int y) { return static_cast<size_t>(y) * 800 + x; }
  std::vector<int> times_;
  std::string glyphs_;  // 0 where none begins
};

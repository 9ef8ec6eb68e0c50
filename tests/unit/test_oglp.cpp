// Shapes, colours, state and frame, by what they leave in the frame buffer.

#include <SDL.h>

#include <algorithm>
#include <cmath>

#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/colr.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/OOPS_cpp/tman.h"
#include "corekit/Platform/PLT_gl.h"
#include "corekit/TEX/TEX_utils.h"
#include "tests/unit/gl_fixture.h"

class Oglp : public gl_fixture {};

TEST_F(Oglp, ColoursAreTintedBelow46AndFollowTheAlphas) {
  const struct {
    const char* label;
    int col;
    float alpha, tint, plot_alpha;
    int green_mode;
    int r, g, b;  // over black
  } rows[] = {
      {"plain", 1, 1, 1, 1, 0, 255, 51, 51},
      {"the last tinted index is dimmed", 45, 1, 0.5f, 1, 0, 128, 64, 32},
      {"index 46 is not dimmed", 46, 1, 0.5f, 1, 0, 255, 128, 64},
      {"index 49 is not dimmed", 49, 1, 0.5f, 1, 0, 255, 255, 255},
      {"half alpha", 49, 0.5f, 1, 1, 0, 128, 128, 128},
      {"plot_alpha multiplies", 49, 0.5f, 1, 0.5f, 0, 64, 64, 64},
      {"alpha above 0.99 is opaque", 49, 0.995f, 1, 1, 0, 255, 255, 255},
      {"green mode sums", 6, 1, 1, 1, 1, 0, 230, 0},
      {"green mode is held to 1", 0, 1, 1, 1, 1, 0, 255, 0},
      {"green mode keeps a glimmer", 11, 1, 1, 1, 1, 0, 3, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    colr.assign(45, 1, .5f, .25f);
    colr.assign(46, 1, .5f, .25f);
    colr.set_lites(row.tint, row.tint, row.tint);
    ren.plot_alpha = row.plot_alpha;
    ren.mono_green = row.green_mode;
    clear();
    OGL_fillrect(row.col, row.alpha, 100, 100, 10, 10);
    EXPECT_TRUE(pixel_is(105, 105, row.r, row.g, row.b));
  }
}

TEST_F(Oglp, InterfaceColoursComeFromTheImage) {
  std::vector<unsigned char> image(512 * 512 * 4, 7);
  const auto swatch = [&image](int column, int row, int r, int g, int b) {
    unsigned char* p = image.data() + (row * 512 + column) * 4;
    p[0] = static_cast<unsigned char>(r);
    p[1] = static_cast<unsigned char>(g);
    p[2] = static_cast<unsigned char>(b);
  };
  swatch(319, 155, 51, 67, 86);
  swatch(319, 147, 100, 110, 120);
  swatch(319, 123, 200, 210, 220);
  swatch(395, 115, 1, 2, 3);
  swatch(319, 67, 127, 220, 175);
  colr.assign_from_interface(image.data());
  const auto is = [](int index, float r, float g, float b) {
    EXPECT_NEAR(colr[index].r * 255, r, 0.01) << index;
    EXPECT_NEAR(colr[index].g * 255, g, 0.01) << index;
    EXPECT_NEAR(colr[index].b * 255, b, 0.01) << index;
  };
  is(34, 51, 67, 86);
  is(39, 150, 160, 170);  // the mean of 35 and 38
  is(44, 1, 2, 3);
  is(47, 127, 220, 175);
  is(40, 7, 7, 7);
  is(48, 0, 0, 0);  // none of theirs

  colr.set_lites(0.2f, 0.8f, 0.75f);
  colr.set_lites_for_interface();
  EXPECT_FLOAT_EQ(colr.lites().r, 0.75f);
  EXPECT_FLOAT_EQ(colr.lites().g, 0.8f);
}

TEST_F(Oglp, ColourTableHoldsWhatItShould) {
  colr = colr_class();
  const struct {
    int index;
    float r, g, b;
  } rows[] = {
      {0, 1, 1, 1},  {8, 1, .8f, .2f},       {12, 0, 0, 0},          {17, 0, 0, .6f},
      {33, 1, 1, 1}, {34, 0, 0, 0},          {49, 1, 1, 1},          {65, .2f, .2f, .8f},
      {69, 1, 0, 0}, {72, .49f, .43f, .24f}, {78, .44f, .53f, .54f}, {79, 0, 0, 0},
      {87, 1, 0, 1}, {88, 1, 1, 1},          {103, 0, 0, 0},         {107, 0, 0, 0},
      {-1, 1, 1, 1}, {108, 1, 1, 1},
  };
  for (const auto& row : rows) {
    EXPECT_FLOAT_EQ(colr[row.index].r, row.r) << row.index;
    EXPECT_FLOAT_EQ(colr[row.index].g, row.g) << row.index;
    EXPECT_FLOAT_EQ(colr[row.index].b, row.b) << row.index;
  }
  colr.assign(-1, 0, 0, 0);
  colr.assign(108, 0, 0, 0);
  EXPECT_EQ(colr[0].r, 1.0f);
  for (int i = 0; i < 256; ++i)
    EXPECT_EQ(colr.gamma_table[i], i);

  colr.spectrum_init(0);
  EXPECT_FLOAT_EQ(colr.spectrum(0).r, 1);
  EXPECT_NEAR(colr.spectrum(200).g, .32f, 1e-4);
  EXPECT_NEAR(colr.spectrum(500).r, .5f, 1e-4);  // half way from yellow to green
  EXPECT_NEAR(colr.spectrum(800).b, 1, 1e-4);
  colr.spectrum_init(2);
  EXPECT_FLOAT_EQ(colr.spectrum(250).g, .25f);
  EXPECT_FLOAT_EQ(colr.spectrum(250).r, 0);
  OGL_setstate(1, 0, 3, 5, 9, 11);
  colr.spectrum_plotscale(300, -400, 0, 5, 1);
  EXPECT_TRUE(pixel_is(300, 100, 0, 128, 0));
}

TEST_F(Oglp, AreasLieOnEdgesAndLinesOnPixelCentres) {
  OGL_fillrect(49, 1, 10, 20, 3, 2);
  int painted = 0;
  for (int y = 15; y < 30; ++y) {
    for (int x = 5; x < 20; ++x)
      painted += read_pixel(x, y).r > 128;
  }
  EXPECT_EQ(painted, 6);
  EXPECT_TRUE(pixel_is(10, 20, 255, 255, 255));
  EXPECT_TRUE(pixel_is(12, 21, 255, 255, 255));

  OGL_framerect(49, 1, 100, 100, 20, 5);
  for (const auto& [x, y] : {std::pair{100, 100}, {120, 100}, {120, 105}, {100, 105}, {110, 100}})
    EXPECT_TRUE(pixel_is(x, y, 255, 255, 255));
  for (const auto& [x, y] : {std::pair{99, 102}, {121, 102}, {110, 99}, {110, 106}, {110, 103}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));

  OGL_line(49, 1, 200, 50, 210, 50);
  for (int x = 200; x < 210; ++x) {
    EXPECT_TRUE(pixel_is(x, 50, 255, 255, 255));
    EXPECT_TRUE(pixel_is(x, 49, 0, 0, 0));
    EXPECT_TRUE(pixel_is(x, 51, 0, 0, 0));
  }
  EXPECT_TRUE(pixel_is(199, 50, 0, 0, 0));
  EXPECT_TRUE(pixel_is(211, 50, 0, 0, 0));

  colr.assign(12, 0, 0, 1);
  OGL_grayrect(300, 300, 310, 305, 0.5f);
  EXPECT_TRUE(pixel_is(309, 304, 0, 0, 128));
  EXPECT_TRUE(pixel_is(310, 304, 0, 0, 0));
}

TEST_F(Oglp, CirclesAreRound) {
  OGL_fillcircle(49, 200, 200, 20);
  OGL_framecircle(49, 400, 200, 20);
  for (int y = 170; y <= 230; ++y) {
    for (int x = 170; x <= 230; ++x) {
      const double distance = std::hypot(x - 200, y - 200);
      const int filled = read_pixel(x, y).r, framed = read_pixel(x + 200, y).r;
      if (distance < 19) {
        EXPECT_EQ(filled, 255) << x << "," << y;
      }
      if (distance > 21.5) {
        EXPECT_EQ(filled, 0) << x << "," << y;
      }
      if (distance < 18 || distance > 22) {
        EXPECT_EQ(framed, 0) << x << "," << y;
      }
    }
  }
  EXPECT_EQ(read_pixel(400, 219).r + read_pixel(400, 220).r, 255);
}

TEST_F(Oglp, OffsetsOfADialogMoveEverything) {
  mnw.x_off = 50;
  mnw.y_off = 30;
  OGL_fillrect(49, 1, 0, 0, 2, 2);
  EXPECT_TRUE(pixel_is(50, 30, 255, 255, 255));
  EXPECT_TRUE(pixel_is(0, 0, 0, 0, 0));
  OGL_line(49, 1, 10, 10, 12, 10);
  EXPECT_TRUE(pixel_is(60, 40, 255, 255, 255));
  OGL_2dquad_d(0, 49, 1, 20, 20, 0, 0, 2, 2, 0, 0, 5);
  colr.assign(34, 1, 0, 0);
  OGL_plot_back_col();  // the one that ignores them
  EXPECT_TRUE(pixel_is(0, 0, 255, 0, 0));
  EXPECT_TRUE(pixel_is(799, 599, 255, 0, 0));
}

TEST_F(Oglp, ScissorsCutAndTakeNegativeSizesAsNone) {
  mnw.x_off = 10;
  OGL_scissors(90, 100, 5, 5);
  OGL_fillrect(49, 1, 0, 0, 700, 500);
  OGL_scissors_end();
  EXPECT_TRUE(pixel_is(100, 100, 255, 255, 255));
  EXPECT_TRUE(pixel_is(104, 104, 255, 255, 255));
  for (const auto& [x, y] : {std::pair{99, 102}, {105, 102}, {102, 99}, {102, 105}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));
  clear();
  OGL_scissors(100, 100, -5, 20);
  OGL_fillrect(49, 1, 0, 0, 700, 500);
  OGL_scissors_end();
  EXPECT_TRUE(pixel_is(110, 110, 0, 0, 0));
}

TEST_F(Oglp, QuadsShowTheTexture) {
  const picture_map map([] {
    OGL_2dquad_d(t_interface, 49, 1, 100, 100, 50 / 512.0f, 60 / 512.0f, 30, 20, 30 / 512.0f,
                 20 / 512.0f, 5);
  });
  EXPECT_TRUE(map.covers_exactly(100, 100, 30, 20));
  EXPECT_TRUE(map.shows(100, 100, 50, 60));
  EXPECT_TRUE(map.shows(129, 119, 79, 79));

  clear();
  OGL_2dquad(0, 69, 1, 10, 10, 0, 0, 10, 20, 0, 0, 20, 20, 0, 0, 20, 10, 0, 0, 0, 4);
  EXPECT_TRUE(pixel_is(15, 15, 255, 0, 0));
}

TEST_F(Oglp, StateFollowsItsArguments) {
  const struct {
    const char* label;
    int args[6];
    bool fog, tex, lit, blend, alpha_test, depth;
  } rows[] = {
      {"flat", {1, 0, 3, 5, 9, 11}, false, false, false, true, false, false},
      {"textured", {1, 1, 3, 5, 9, 11}, false, true, false, true, false, false},
      {"all on", {0, 1, 2, 7, 8, 10}, true, true, true, true, true, true},
      {"alpha test alone", {1, 0, 3, 6, 9, 11}, false, false, false, false, true, false},
      {"neither", {1, 0, 3, 4, 9, 11}, false, false, false, false, false, false},
      {"negative units are none", {1, -3, 3, 4, 9, 11}, false, false, false, false, false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    const int* a = row.args;
    OGL_setstate(a[0], a[1], a[2], a[3], a[4], a[5]);
    EXPECT_EQ(glIsEnabled(GL_FOG), row.fog);
    EXPECT_EQ(glIsEnabled(GL_TEXTURE_2D), row.tex);
    EXPECT_EQ(glIsEnabled(GL_LIGHTING), row.lit);
    EXPECT_EQ(glIsEnabled(GL_LIGHT0), row.lit);
    EXPECT_EQ(glIsEnabled(GL_BLEND), row.blend);
    EXPECT_EQ(glIsEnabled(GL_ALPHA_TEST), row.alpha_test);
    EXPECT_EQ(glIsEnabled(GL_DEPTH_TEST), row.depth);
  }
  // What is changed behind its back is not seen, until it is told to look.
  glEnable(GL_FOG);
  OGL_setstate(1, 0, 3, 4, 9, 11);
  EXPECT_TRUE(glIsEnabled(GL_FOG));
  OGL_reset_state();
  OGL_setstate(1, 0, 3, 4, 9, 11);
  EXPECT_FALSE(glIsEnabled(GL_FOG));
}

TEST_F(Oglp, TextureUnitsUpToWhatTheDriverHas) {
  ASSERT_GE(ren.max_units, 4) << "a driver of one unit cannot show the others";
  const auto active =
      reinterpret_cast<PFNGLACTIVETEXTUREARBPROC>(SDL_GL_GetProcAddress("glActiveTextureARB"));
  const auto units = [active] {
    int mask = 0;
    for (int unit = 0; unit < 4; ++unit) {
      active(static_cast<GLenum>(GL_TEXTURE0 + unit));
      if (glIsEnabled(GL_TEXTURE_2D)) mask |= 1 << unit;
    }
    active(GL_TEXTURE0);
    return mask;
  };
  const struct {
    int tex, max_units, mask;
  } rows[] = {{1, 4, 1}, {3, 4, 7}, {2, 4, 3}, {0, 4, 0},   {4, 4, 15}, {1, 4, 1},
              {0, 4, 0}, {2, 1, 1}, {0, 1, 0}, {99, 4, 15}, {0, 4, 0}};
  for (const auto& row : rows) {
    ren.max_units = row.max_units;
    OGL_setstate(1, row.tex, 3, 5, 9, 11);
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
    EXPECT_EQ(unit, GL_TEXTURE0);
    EXPECT_EQ(units(), row.mask) << row.tex << " of " << row.max_units;
  }
}

TEST_F(Oglp, ScreenSpecsAndViewport) {
  const struct {
    int win_id, pix_dx, pix_dy;
    float side, top;
  } rows[] = {{0, 800, 600, 0, 0},    {0, 1024, 768, 0, 0},    {0, 1280, 800, 128, 32},
              {-1, 1280, 800, 0, 32}, {0, 1025, 769, 0.5f, 1}, {0, 0, 0, 0, 0}};
  for (const auto& row : rows) {
    mnw.win_id = row.win_id;
    mnw.pix_dx = row.pix_dx;
    mnw.pix_dy = row.pix_dy;
    mnw.ui_scale = 3;
    OGL_pix_specs();
    EXPECT_EQ(mnw.ui_scale, 1.0f);
    EXPECT_EQ(mnw.side_margin, row.side) << row.pix_dx;
    EXPECT_EQ(mnw.top_margin, row.top) << row.pix_dy;
    EXPECT_EQ(mnw.centre_x, static_cast<float>(row.pix_dx) / 2);
    EXPECT_EQ(mnw.ortho_right, static_cast<float>(row.pix_dx));
    EXPECT_EQ(mnw.ortho_top, static_cast<float>(row.pix_dy));
  }
  GLint port[4];
  mnw.ui_scale = 2;
  OGL_screensize(3, 10, 20, 30, 50);
  glGetIntegerv(GL_VIEWPORT, port);
  EXPECT_EQ(std::vector<int>(port, port + 4), (std::vector<int>{20, 40, 40, 60}));
  OGL_screensize(1, 10, 20, 30, 50);
  glGetIntegerv(GL_VIEWPORT, port);
  EXPECT_EQ(std::vector<int>(port, port + 4), (std::vector<int>{10, 20, 20, 30}));
  OGL_viewport(3, -1, -1, 1, 1, 1);
  OGL_poly_offset(2);
  EXPECT_TRUE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
  OGL_poly_offset(0);
  EXPECT_FALSE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
}

TEST_F(Oglp, GlowAddsAndNormalMixes) {
  OGL_fillrect(62, 1, 0, 0, 10, 10);  // 0 .6 0
  OGL_glow_colors();
  OGL_fillrect(69, 0.5f, 0, 0, 10, 10);
  EXPECT_TRUE(pixel_is(5, 5, 128, 153, 0));
  OGL_nrml_colors();
  OGL_fillrect(69, 0.5f, 0, 0, 10, 10);
  EXPECT_TRUE(pixel_is(5, 5, 191, 77, 0));
}

TEST_F(Oglp, NothingIsDrawnWithoutAWindow) {
  OGL_setstate(1, 0, 3, 4, 9, 11);
  ogl_inited = 0;
  OGL_fillrect(49, 1, 0, 0, 800, 600);
  OGL_framerect(49, 1, 10, 10, 100, 100);
  OGL_line(49, 1, 0, 0, 100, 100);
  OGL_fillcircle(49, 100, 100, 50);
  OGL_framecircle(49, 100, 100, 50);
  OGL_2dquad_d(t_interface, 49, 1, 0, 0, 0, 0, 800, 600, 1, 1, 5);
  OGL_plot_back_col();
  OGL_plot_back_tex();
  OGL_scissors(0, 0, 10, 10);
  OGL_number(49, 100, 100, 5, 3, 0, charset_fixed);
  OGL_number(49, 100, 100, 5, 3, 0, charset_text);
  OGL_gray_string(49, 100, 100, "text");
  OGL_boxed_string(100, 100, "a|b", "text", charset_text, 49);
  BTN_frame0(6, 100, 100, 100);
  BTN_fillwin(1, 12);
  BTN_zap_boxes(0);
  click(100, 100);
  int value = 1;
  EXPECT_EQ(BTN_action(100, 100, 100, 0, 1, "label", "note"), 0);
  EXPECT_EQ(BTN_bool(100, 100, &value, "label|more{?help", 0), 0);
  EXPECT_EQ(BTN_tab(0, 0, &value, 7, "label"), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(stls.hover_help, "");
  EXPECT_EQ(OGL_string(49, 100, 100, "one two three", 30), 70.0f);
  EXPECT_FALSE(glIsEnabled(GL_SCISSOR_TEST));
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  for (const auto& [x, y] : {std::pair{5, 5}, {100, 100}, {400, 300}, {795, 595}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));
}

TEST_F(Oglp, SwapAndScreenshot) {
  static int swaps;
  swaps = 0;
  PLT_swap_hook = [] {
    ++swaps;
    SDL_GL_SwapWindow(SDL_GL_GetCurrentWindow());
  };
  OGL_fillrect(69, 1, 0, 0, 800, 600);
  OGL_fillrect(56, 1, 799, 599, 1, 1);
  OGL_sbuff();
  EXPECT_EQ(swaps, 1);
  OGL_screenshot();
  EXPECT_EQ(scratch_dx, 800);
  EXPECT_EQ(scratch_dy, 600);
  const auto at = [](int x, int y) { return scratch_array + (y * 800 + x) * 3; };
  EXPECT_EQ(std::vector<int>(at(0, 0), at(0, 0) + 3), (std::vector<int>{255, 0, 0}));
  EXPECT_EQ(std::vector<int>(at(799, 599), at(799, 599) + 3), (std::vector<int>{0, 255, 0}));
}

TEST_F(Oglp, TiledBackgroundHasNoSeams) {
  // 1,000 by 700 with rows 1,024 apart: red tells the column's place, green the row's.
  const int dx = 1000, dy = 700, stride = 1024;
  std::fill_n(scratch_array, stride * dy * 4, static_cast<unsigned char>(9));
  for (int y = 0; y < dy; ++y) {
    for (int x = 0; x < dx; ++x) {
      unsigned char* p = scratch_array + (y * stride + x) * 4;
      p[0] = static_cast<unsigned char>(x / 4);
      p[1] = static_cast<unsigned char>(y / 4);
      p[2] = 100;
      p[3] = 255;
    }
  }
  OGL_cut_back_tex(dx, dy, stride);
  OGL_plot_back_tex();
  for (int i = 0; i < 600; i += 7)
    EXPECT_TRUE(pixel_is(i + 150, i, (i + 150) / 4, i / 4, 100));
  for (int x = 245; x < 255; ++x)  // across a joint
    EXPECT_TRUE(pixel_is(x, 10, x / 4, 2, 100));

  // The splash: the right edge at the window's.
  mnw.win_id = win_none;
  clear();
  OGL_plot_back_tex();
  EXPECT_TRUE(pixel_is(799, 599, 999 / 4, 599 / 4, 100));
  EXPECT_TRUE(pixel_is(0, 0, 200 / 4, 0, 100));

  OGL_cut_back_tex(0, 10, 10);
  OGL_cut_back_tex(4000, 10, 4000);  // too large: the old one stays
  OGL_cut_back_tex(100, 100, 50);
  mnw.win_id = win_main;
  clear();
  OGL_plot_back_tex();
  EXPECT_TRUE(pixel_is(400, 300, 100, 75, 100));
}

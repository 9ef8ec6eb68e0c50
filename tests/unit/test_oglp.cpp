// Shapes, colours and screen, by what they leave in the frame buffer.

#include "corekit/OOPS_cpp/colr.h"
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
      {"plot_alpha multiplies", 49, 0.5f, 1, 0.5f, 0, 64, 64, 64},
      {"alpha above 0.99 is opaque", 49, 0.995f, 1, 1, 0, 255, 255, 255},
      {"green mode sums", 6, 1, 1, 1, 1, 0, 230, 0},
      {"green mode is held to 1", 0, 1, 1, 1, 1, 0, 255, 0},
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
  for (const int x : {200, 205, 209})
    EXPECT_TRUE(pixel_is(x, 50, 255, 255, 255));
  for (const auto& [x, y] : {std::pair{205, 49}, {205, 51}, {199, 50}, {211, 50}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));
}

TEST_F(Oglp, ScissorsCutAndTakeNegativeSizesAsNone) {
  // In a dialog: its offset moves them, and all that is drawn but the background.
  mnw.x_off = 10;
  OGL_scissors(90, 100, 5, 5);
  OGL_fillrect(49, 1, 0, 0, 700, 500);
  OGL_scissors_end();
  EXPECT_TRUE(pixel_is(100, 100, 255, 255, 255));
  EXPECT_TRUE(pixel_is(104, 104, 255, 255, 255));
  for (const auto& [x, y] : {std::pair{99, 102}, {105, 102}, {102, 99}, {102, 105}})
    EXPECT_TRUE(pixel_is(x, y, 0, 0, 0));
  clear();
  OGL_fillrect(49, 1, 0, 0, 2, 2);
  EXPECT_TRUE(pixel_is(10, 0, 255, 255, 255));
  EXPECT_TRUE(pixel_is(9, 0, 0, 0, 0));
  colr.assign(34, 1, 0, 0);
  OGL_plot_back_col();
  EXPECT_TRUE(pixel_is(0, 0, 255, 0, 0));
  EXPECT_TRUE(pixel_is(799, 599, 255, 0, 0));
  clear();
  OGL_scissors(100, 100, -5, 20);
  OGL_fillrect(49, 1, 0, 0, 700, 500);
  OGL_scissors_end();
  EXPECT_TRUE(pixel_is(110, 110, 0, 0, 0));
}

TEST_F(Oglp, ScreenSpecs) {
  const struct {
    int win_id, pix_dx, pix_dy;
    float side, top;
  } rows[] = {{0, 1024, 768, 0, 0},
              {0, 1280, 800, 128, 32},
              {-1, 1280, 800, 0, 32},
              {0, 1025, 769, 0.5f, 1},
              {0, 0, 0, 0, 0}};
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
  }
}

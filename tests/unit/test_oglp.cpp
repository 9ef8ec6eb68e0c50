// Colours, state and screen, by what they leave in the frame buffer. The shapes are in the
// pictures.

#include <SDL.h>

#include <array>

#include "corekit/draw/colr.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_picture.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_tex_util.h"

class Oglp : public gl_fixture {};

TEST_F(Oglp, ColoursFollowTheAlphas) {
  const struct {
    const char* label;
    int col;
    float alpha, plot_alpha;
    int r, g, b;  // over black
  } rows[] = {
      {"plain", 1, 1, 1, 255, 51, 51},
      {"plot_alpha multiplies", 49, 0.5f, 0.5f, 64, 64, 64},
      {"alpha above 0.99 is opaque", 49, 0.995f, 1, 255, 255, 255},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    ren.plot_alpha = row.plot_alpha;
    clear();
    OGL_fillrect(row.col, row.alpha, 100, 100, 10, 10);
    EXPECT_TRUE(pixel_is(105, 105, row.r, row.g, row.b));
  }
  // Along the rainbow, also between its stops.
  for (const auto& [v, r, g, b] : {std::array{-1.0f, 1.0f, 0.0f, 0.0f},
                                   {0.25f, 1.0f, 0.75f, 0.0f},
                                   {2.5f / 6, 0.5f, 1.0f, 0.0f},
                                   {4.5f / 6, 0.0f, 0.5f, 1.0f},
                                   {1.0f, 0.8f, 0.0f, 0.8f}}) {
    OGL_spectrum_rgb(v);
    float now[4];
    glGetFloatv(GL_CURRENT_COLOR, now);
    EXPECT_NEAR(now[0], r, 0.001f) << v;
    EXPECT_NEAR(now[1], g, 0.001f) << v;
    EXPECT_NEAR(now[2], b, 0.001f) << v;
  }
}

TEST_F(Oglp, SpectraOfEveryKind) {
  const struct {
    int kind, at, r, g, b;
  } rows[] = {{1, 500, 127, 0, 0},  {2, 500, 0, 127, 0},   {3, 500, 0, 0, 127},
              {0, 0, 255, 0, 0},    {0, 200, 255, 82, 20}, {0, 300, 255, 168, 10},
              {0, 600, 0, 255, 0},  {0, 700, 0, 128, 128}, {0, 800, 0, 0, 255},
              {0, 999, 203, 0, 204}};
  for (const auto& row : rows) {
    SCOPED_TRACE(str_format("%d at %d", row.kind, row.at));
    colr.spectrum_init(row.kind);
    clear();
    colr.spectrum_plotscale(100, static_cast<float>(20 - row.at), 3, 7, 0);
    EXPECT_TRUE(pixel_is(100, 20, row.r, row.g, row.b));
  }
}

// The legend stands on its lower limit, and only half of it is within the window.
TEST_F(Oglp, ALegendHasItsColoursAndLimits) {
  colr.spectrum_init(1);
  const picture_map map([] { colr.spectrum_plotscale(100, 20, 3, 7, 0); });
  EXPECT_EQ(map.text_at(104, 16), "0,000,003");
  EXPECT_EQ(map.text_at(104, 20 + 1000 - 4), "");
  colr.spectrum_plotscale(100, 20, 3, 7, 0);
  EXPECT_TRUE(pixel_is(100, 17, 0, 0, 0));
  for (const int at : {0, 4, 200, 500}) {
    const int level = at * 255 / 1000;
    EXPECT_TRUE(pixel_is(100, 20 + at, level, 0, 0)) << at;
    EXPECT_TRUE(pixel_is(97, 20 + at, 0, 0, 0)) << at;
  }
  const picture_map upper([] { colr.spectrum_plotscale(100, -600, 3, 7, 0); });
  EXPECT_EQ(upper.text_at(104, 396), "0,000,007");
  clear();
  colr.spectrum_plotscale(100, -600, 3, 7, 0);
  EXPECT_TRUE(pixel_is(100, 400, 255, 0, 0));
  EXPECT_TRUE(pixel_is(100, 403, 0, 0, 0));
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
  for (const int level : {2, 0}) {
    OGL_poly_offset(level);
    EXPECT_EQ(glIsEnabled(GL_POLYGON_OFFSET_FILL), level ? GL_TRUE : GL_FALSE);
  }
}

// Of the splash: its right edge at the window's, its top above it, and no seam between the tiles.
TEST_F(Oglp, TheLargeBackgroundLiesInTiles) {
  const picture_folder folder;
  folder.folder("Resources/bitmaps");
  tex_convert(
      folder,
      "-size 450x350 xc:red xc:blue +append \\( xc:lime xc:white +append \\) -append "
      "-define png:exclude-chunks=gAMA,cHRM,sRGB,date PNG24:@Resources/bitmaps/intro_PFC.png");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  mnw.win_id = win_none;
  OGL_make_back_tex();
  std::filesystem::current_path(before);
  OGL_plot_back_tex();
  const struct {
    int x, y, r, g, b;
  } rows[] = {{0, 0, 0, 255, 0},     {349, 0, 0, 255, 0},   {350, 0, 255, 255, 255},
              {349, 349, 0, 255, 0}, {349, 350, 255, 0, 0}, {799, 599, 0, 0, 255}};
  for (const auto& row : rows)
    EXPECT_TRUE(pixel_is(row.x, row.y, row.r, row.g, row.b));
}

// Where a panel that fills the space left tells the next one to begin.
TEST_F(Oglp, PanelsStandSideBySide) {
  mnw.win_dx = 800;
  mnw.win_dy = 600;
  const struct {
    float x, y, dx, dy, next_x, next_y;
  } rows[] = {{0, 0, 100, 50, 110, 60},
              {0.5f, 0.5f, 100, 50, 110.5f, 60.5f},
              {-1, -1, 100, 50, 120, 70},
              {-1, -1, -1, -1, 800, 562}};
  for (const auto& row : rows) {
    float next_x = 0, next_y = 0;
    BTN_subwin(20, 12, row.x, row.y, row.dx, row.dy, "title", &next_x, &next_y);
    EXPECT_FLOAT_EQ(next_x, row.next_x) << row.x << ' ' << row.dx;
    EXPECT_FLOAT_EQ(next_y, row.next_y) << row.y << ' ' << row.dy;
  }
}

// The same pieces, of a texture that has become another.
TEST_F(Oglp, ATextureThatChangesIsPaintedAnew) {
  static std::vector<unsigned char> seen;
  PLT_swap_hook = [] { seen = read_buffer(); };
  for (const int value : {50, 200}) {
    scratch_dx = scratch_dy = 8;
    std::fill_n(scratch_array, 8 * 8 * 4, static_cast<unsigned char>(value));
    tman.load_texture(tex_fail_fatal, 500, tex_full_size | tex_rgba, tex_load_now,
                      "scratch_array:test");
    for (int frame = 0; frame < 2; ++frame) {
      OGL_plot_back_col();
      OGL_2dquad_d(500, col_as_is, 1, 10, 10, 0, 0, 20, 20, 1, 1, blend_none);
      OGL_sbuff();
      EXPECT_EQ(seen[(20 * 800 + 20) * 4], value) << frame;
    }
  }
}

// A letter is a quad at its place in the alphabet; what differs begins and ends with a letter.
TEST(OglpPicture, DamageIsWhatLiesBetween) {
  const auto picture = [](const std::string& letters) {
    picture_pieces pieces;
    for (const char letter : letters) {
      const float x = static_cast<float>(letter - 'A') * 10;
      picture_piece piece = {};
      piece.how.shape = shape_quad;
      for (int i = 0; i < 4; ++i)
        piece.corners[i] = {x + static_cast<float>(i / 2) * 5, static_cast<float>(i % 2), 0, 0};
      pieces.push_back(piece);
    }
    return pieces;
  };
  const struct {
    const char *a, *b, *damage;
  } rows[] = {
      {"", "", ""},         {"", "B", "BB"},       {"ABC", "ABC", ""},     {"ABC", "AC", "BB"},
      {"ABC", "ABD", "CD"}, {"ABC", "ACB", "BC"},  {"ABCD", "XBCY", "AY"}, {"ABBC", "ABC", "BB"},
      {"BB", "B", "BB"},    {"ABCD", "BCD", "AA"}, {"CBA", "DBA", "CD"},
  };
  for (const auto& row : rows) {
    for (const bool turned : {false, true}) {
      const auto a = picture(turned ? row.b : row.a), b = picture(turned ? row.a : row.b);
      const OGL_rect damage = picture_damage(a, b);
      EXPECT_EQ(picture_same(a, b), !*row.damage) << row.a << ' ' << row.b;
      if (!*row.damage) {
        EXPECT_GE(damage.x0, damage.x1) << row.a;
        continue;
      }
      EXPECT_EQ(damage.x0, picture({row.damage[0]})[0].corners[0].x) << row.a << ' ' << row.b;
      EXPECT_EQ(damage.x1, picture({row.damage[1]})[0].corners[3].x) << row.a << ' ' << row.b;
    }
  }
}

// What is painted of a picture that resembles the one before is what a whole painting gives.
TEST_F(Oglp, APictureInPartIsThePictureInWhole) {
  std::mt19937 random(9);
  const auto number = [&random](int limit) { return static_cast<float>(random() % limit); };
  std::vector<std::function<void()>> pieces;
  const auto piece = [&]() -> std::function<void()> {
    const float x = number(780), y = number(580), dx = number(90), dy = number(60);
    const int col = 49 + static_cast<int>(random() % 29);
    switch (random() % 5) {
      case 0:
        return [=] { OGL_fillrect(col, 0.5f, x, y, dx, dy); };
      case 1:
        return [=] { OGL_line(col, 1, x, y, x + dx, y - dy); };
      case 2:
        return [=] { BTN_frame2(12, x, y, dx + 70, dy + 70, "title"); };
      case 3:
        return [=] {
          OGL_scissors(x, y, dx, 8);
          OGL_string(col, x - 5, y + 3, "some text in here", 0);
          OGL_scissors_end();
        };
      default:
        return [=] {
          OGL_glow_colors();
          OGL_fillcircle(col, x, y, 7);
          OGL_nrml_colors();
        };
    }
  };
  for (int i = 0; i < 40; ++i)
    pieces.push_back(piece());
  const auto draw = [&pieces] {
    OGL_plot_back_col();
    for (const auto& put : pieces)
      put();
  };
  static std::vector<unsigned char> seen;
  PLT_swap_hook = [] { seen = read_buffer(); };
  for (int round = 0; round < 60; ++round) {
    const size_t at = random() % pieces.size();
    switch (random() % 4) {
      case 0:
        pieces.insert(pieces.begin() + static_cast<long>(at), piece());
        break;
      case 1:
        if (pieces.size() > 2) pieces.erase(pieces.begin() + static_cast<long>(at));
        break;
      case 2:
        OGL_show_next();
        break;
      default:
        pieces[at] = piece();
    }
    draw();
    if (!OGL_sbuff()) continue;
    const std::vector<unsigned char> in_part = seen;
    clear();
    draw();
    EXPECT_EQ(read_picture(), in_part) << "round " << round;
    OGL_drop_picture();
    clear();  // a swap leaves it undefined
  }
}

TEST_F(Oglp, TheStateIsWhatWasAskedFor) {
  const auto enabled = [] {
    std::string text;
    for (const GLenum flag :
         {GL_FOG, GL_TEXTURE_2D, GL_LIGHTING, GL_LIGHT0, GL_BLEND, GL_ALPHA_TEST, GL_DEPTH_TEST})
      text += glIsEnabled(flag) ? '1' : '0';
    GLboolean writes = GL_FALSE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &writes);
    for (int unit = 1; unit < 3 && OGL_active_unit(unit); ++unit)
      text += glIsEnabled(GL_TEXTURE_2D) ? '1' : '0';
    OGL_active_unit(0);
    return text + (writes ? '1' : '0');
  };
  ren.max_units = 3;
  const struct {
    int fog, tex, lit, alpha, read, write;
    const char* enabled;
  } rows[] = {
      {fog_on, 0, lit_off, blend_test, depth_read_off, depth_write_on, "1000010001"},
      {fog_off, 3, lit_on, blend_mix, depth_read_off, depth_write_on, "0111100111"},
      {fog_off, 2, lit_on, blend_mix_test, depth_read_on, depth_write_on, "0111111101"},
      {fog_off, 9, lit_off, blend_mix, depth_read_on, depth_write_off, "0100101110"},
      {fog_off, 2, lit_off, blend_mix, depth_read_off, depth_write_off, "0100100100"},
      {fog_off, 1, lit_off, blend_mix, depth_read_off, depth_write_off, "0100100000"},
      {fog_off, -1, lit_off, blend_mix, depth_read_off, depth_write_off, "0000100000"},
  };
  for (const bool forgotten : {false, true}) {
    if (forgotten) OGL_reset_state();
    for (const auto& row : rows) {
      OGL_setstate(row.fog, row.tex, row.lit, row.alpha, row.read, row.write);
      EXPECT_EQ(enabled(), row.enabled) << row.tex;
    }
  }
  tman.set_blend_level(1, 0.25f);
  OGL_active_unit(1);
  float level[4] = {};
  glGetTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, level);
  EXPECT_EQ((std::array{level[0], level[1], level[2], level[3]}),
            (std::array{0.25f, 0.25f, 0.25f, 0.25f}));
  OGL_active_unit(0);
}

TEST_F(Oglp, ViewportsInUnitsPixelsAndPerspective) {
  const auto viewport = [] {
    std::array<GLint, 4> place = {};
    glGetIntegerv(GL_VIEWPORT, place.data());
    return place;
  };
  mnw.ui_scale = 2;
  OGL_screensize(3, 10, 20, 110, 70);
  EXPECT_EQ(viewport(), (std::array{20, 40, 200, 100}));
  OGL_screensize(1, 10, 20, 110, 70);
  EXPECT_EQ(viewport(), (std::array{10, 20, 100, 50}));
  float matrix[16];
  OGL_viewport(3, -1, -1, 1, 1, 1);  // half as high as wide
  glGetFloatv(GL_PROJECTION_MATRIX, matrix);
  EXPECT_FLOAT_EQ(matrix[0], 1);
  EXPECT_FLOAT_EQ(matrix[5], 2);
  EXPECT_NEAR(matrix[14], -2, 0.001f);
  mnw.ui_scale = 1;
  OGL_pix_specs();
  EXPECT_EQ(viewport(), (std::array{0, 0, 800, 600}));
  glGetFloatv(GL_PROJECTION_MATRIX, matrix);
  EXPECT_FLOAT_EQ(matrix[0], 2.0f / 800);
  EXPECT_FLOAT_EQ(matrix[5], 2.0f / 600);
}

TEST_F(Oglp, Screenshots) {
  OGL_fillrect(49, 1, 0, 0, 400, 200);
  OGL_paint();
  glFinish();
  const picture_folder folder;
  folder.file("screenshot_1.png", "in the way");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  PLT_swap_hook = [] { SDL_GL_SwapWindow(SDL_GL_GetCurrentWindow()); };
  OGL_sbuff();
  OGL_screenshot(1);
  OGL_screenshot(0);
  std::filesystem::current_path(before);
  EXPECT_EQ(scratch_dx, 800);
  EXPECT_EQ(scratch_dy, 600);
  const bytes file = tex_decoded(folder, "screenshot_2.png", 800, 3, "rgb");
  ASSERT_EQ(file.size(), 800u * 600 * 3);
  EXPECT_EQ(tex_distance(scratch_array, file.size(), file), 0);
  EXPECT_EQ(content_of(folder / "screenshot_1.png"), "in the way");
}

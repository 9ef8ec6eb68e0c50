// A test process makes one window and keeps it. The picture that says where glyphs lie has the
// column and the row of the font's grid in red and green, in steps that filtering leaves exact, and
// in blue whether a glyph begins there.

#include "tests/unit/gl_fixture.h"

#include <SDL.h>

#include <algorithm>
#include <cstdlib>

#include "corekit/Platform/PLT_window_sdl.h"
#include "corekit/base/hl_math.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/window/hl_alert_draw.h"

// The driver keeps its own for the life of the process.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libSDL2\nleak:libEGL\nleak:libGL\nleak:libglapi\nleak:swrast_dri\nleak:libgallium\n"
         "leak:libLLVM\nleak:_dl_init\nleak:dlopen_implementation\n";
}

namespace {

constexpr int dx = 800, dy = 600;
constexpr int cell_dx = 14, cell_dy = 15, step = 8, marked = 200;
// A row of the glyphs' cells that the lines above and below do not paint over.
constexpr int row_in_cell = 9;

void* lookup(const char* name) {
  return SDL_GL_GetProcAddress(name);
}

// Makes the window; an empty string, or what went wrong.
std::string make_window() {
  setenv("SDL_VIDEODRIVER", "offscreen", 1);
  if (SDL_Init(SDL_INIT_VIDEO) != 0) return SDL_GetError();
  std::string error;
  if (!plt_load_sdl(&error)) return error;
  SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
  SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
  SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
  SDL_Window* window = SDL_CreateWindow("unit tests", 0, 0, dx, dy, SDL_WINDOW_OPENGL);
  if (!window) return SDL_GetError();
  if (!SDL_GL_CreateContext(window)) return SDL_GetError();
  return PLT_load_gl(&error) ? "" : error;
}

// The interface and the elements image of one kind; made once, since every map takes three kinds.
struct picture_pair {
  std::vector<unsigned char> interface_image, elements_image;
};

using painter = std::function<void(int u, int v, unsigned char* rgba)>;

std::vector<unsigned char> make_picture(int width, int height, const painter& paint) {
  std::vector<unsigned char> rgba(static_cast<size_t>(width) * height * 4);
  for (int v = 0; v < height; ++v) {
    for (int u = 0; u < width; ++u)
      paint(u, v, rgba.data() + (static_cast<size_t>(v) * width + u) * 4);
  }
  return rgba;
}

picture_pair make_pair(const painter& paint) {
  return {make_picture(512, 512, paint), make_picture(1024, 70, paint)};
}

void load_picture(int ref, int width, int height, const std::vector<unsigned char>& rgba) {
  scratch_dx = width;
  scratch_dy = height;
  std::copy(rgba.begin(), rgba.end(), scratch_array);
  tman.load_texture(tex_fail_fatal, ref, tex_interface | tex_full_size | tex_rgba, tex_load_now,
                    "scratch_array:hardwired textures");
}

void load_pair(const picture_pair& pair) {
  load_picture(t_elements, 1024, 70, pair.elements_image);
  load_picture(t_interface, 512, 512, pair.interface_image);
}

void mark_glyphs(int u, int v, unsigned char* rgba) {
  rgba[0] = static_cast<unsigned char>(u / cell_dx * step);
  rgba[1] = static_cast<unsigned char>(v / cell_dy * step);
  rgba[2] = u % cell_dx == 0 && v % cell_dy == row_in_cell ? marked : 0;
  rgba[3] = 255;
}

painter white_of(unsigned char alpha) {
  return [alpha](int, int, unsigned char* rgba) {
    std::fill_n(rgba, 3, static_cast<unsigned char>(255));
    rgba[3] = alpha;
  };
}

void load_white() {
  static const picture_pair pair = make_pair(white_of(255));
  load_pair(pair);
}

}  // namespace

void alerts_are_drawn() {
  static constexpr failure_sink sink = {draw_alert, MACIBM_finishup};
  report_to(&sink);
}

void gl_fixture::new_driver() {
  OGL_source source = OGL_driver_source;
  source.get_proc = lookup;
  glExt.init_extensions(source);
}

void gl_fixture::SetUp() {
  static const std::string trouble = make_window();
  ASSERT_EQ(trouble, "") << "no OpenGL context off the screen; is Mesa's software driver there?";
  OGL_new_context(true);
  new_driver();
  hl_math_init();
  mnw = mnw_record();
  mnw.win_id = win_main;
  mnw.pix_dx = window_dx;
  mnw.pix_dy = window_dy;
  mnw.win_dx = window_dx;
  mnw.win_dy = window_dy;
  mnw.mouse_x = mnw.mouse_y = -1;
  const ren_record found = ren;
  ren = ren_record();
  ren.max_units = found.max_units;
  ren.max_texture_size = found.max_texture_size;
  ren.extensions = found.extensions;
  colr = colr_class();
  // Text in any colour of the interface then shows the picture as it is.
  for (int index = 34; index <= 47; ++index)
    colr.assign(index, 1, 1, 1);
  colr.assign(81, 1, 1, 1);
  oglp = 1.0f;
  gKillTex = 0;
  stls = stls_record();
  PLT_swap_hook = nullptr;
  ogl_inited = 1;
  alerts_are_drawn();
  ogl_errors = 0;
  OGL_pix_specs();
  OGL_nrml_colors();
  load_white();
  clear();
}

void gl_fixture::TearDown() {
  OGL_check("the end of the test");
  EXPECT_EQ(ogl_errors, 0) << "OpenGL has complained; see the log";
  ogl_inited = 0;
}

void gl_fixture::clear() {
  OGL_drop_picture();
  OGL_show_next();
  glDisable(GL_SCISSOR_TEST);
  glClearColor(0, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
}

void gl_fixture::click(float x, float y) {
  move(x, y);
  mnw.mouse_clicked = 1;
}

void gl_fixture::move(float x, float y) {
  mnw.mouse_x = x;
  mnw.mouse_y = y;
  mnw.mouse_clicked = 0;
}

std::vector<unsigned char> read_buffer() {
  std::vector<unsigned char> pixels(static_cast<size_t>(dx) * dy * 4);
  glReadPixels(0, 0, dx, dy, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  return pixels;
}

std::vector<unsigned char> read_picture() {
  OGL_paint();
  return read_buffer();
}

gl_pixel read_pixel(int x, int y) {
  unsigned char rgba[4] = {};
  OGL_paint();
  glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
  return {rgba[0], rgba[1], rgba[2]};
}

testing::AssertionResult pixel_is(int x, int y, int r, int g, int b) {
  const gl_pixel p = read_pixel(x, y);
  if (std::abs(p.r - r) <= 2 && std::abs(p.g - g) <= 2 && std::abs(p.b - b) <= 2) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "pixel " << x << "," << y << " is " << p.r << " " << p.g
                                     << " " << p.b << ", not " << r << " " << g << " " << b;
}

picture_map::picture_map(const std::function<void()>& draw)
    : times_(size_t{dx} * dy), glyphs_(times_.size(), 0) {
  static const picture_pair glyphs_pair = make_pair(mark_glyphs);
  // White at half opacity: one coat gives 128, two give 192, three 224.
  static const picture_pair coats_pair = make_pair(white_of(128));
  const auto drawn_with = [&draw](const picture_pair& pair) {
    load_pair(pair);
    gl_fixture::clear();
    draw();
    return read_picture();
  };
  const std::vector<unsigned char> glyphs = drawn_with(glyphs_pair);
  const std::vector<unsigned char> coats = drawn_with(coats_pair);
  load_white();

  for (size_t i = 0; i < times_.size(); ++i) {
    const unsigned char* const p = glyphs.data() + i * 4;
    const size_t column = (p[0] + step / 2) / step, row = (p[1] + step / 2) / step;
    const bool begins = std::abs(p[2] - marked) <= 2 && row < std::size(font_rows);
    if (begins && column < font_rows[row].size()) glyphs_[i] = font_rows[row][column];
    const int level = coats[i * 4];
    times_[i] = level < 64 ? 0 : level < 160 ? 1 : level < 208 ? 2 : 3;
  }
}

std::string picture_map::text_at(int x, int y, int pitch) const {
  const int probe = y - 2 - 4 + row_in_cell;
  std::string text;
  while (x >= 0 && x < dx && probe >= 0 && probe < dy && glyphs_[index(x, probe)]) {
    const char c = glyphs_[index(x, probe)];
    text += c;
    x += pitch ? pitch : OGL_char_width(static_cast<unsigned char>(c));
  }
  return text;
}

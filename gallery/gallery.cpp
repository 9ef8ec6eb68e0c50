// skyvane-gallery: every frame, widget, letter, colour and picture of the toolkit on one page.
//
// A second application on the shared runtime, without any of the wizard: it has the APP_ functions
// that the runtime asks for, and a loop. The page is taller than the window. Scrolling moves
// mnw.y_off, so that the widgets keep their places in the page, and with them the keyboard focus.
// --png=FILE draws the page from top to bottom instead, a window's height at a time, into one PNG;
// --dialogs=FOLDER draws the dialogs that no page of the installer opens; --pages=FOLDER and
// --states=FOLDER play the installer's pages, and dialogs and widgets, in all their states.
//
// Main thread. Writes mnw's offset and wheel.

#include "gallery/gallery.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_app.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/UTL_translate_load.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"
#include "gallery/gallery_scenes.h"

namespace {

constexpr gallery_section sections[] = {
    {"Glyphs (charset 100), each over its width", 120, draw_glyphs},
    {"Texts and numbers", 250, draw_texts},
    {"Colours, by index", 290, draw_colours},
    {"Strips (BTN_frame1), three widths, and the bar (BTN_frame0)", 380, draw_strips},
    {"Boxes (BTN_frame2)", 310, draw_boxes},
    {"Actions", 210, draw_actions},
    {"Numbers, characters and texts", 280, draw_values},
    {"Choices, sliders and a list", 290, draw_choices},
    {"elements.png, its two halves", 190, draw_elements_picture},
    {"interface.png", 530, draw_interface_picture},
    {"map.png", 522, draw_map_picture},
    {"background.png, at half its size", 318, draw_background_picture},
};
constexpr float heading_dy = 34, section_gap = 20;

float page_height() {
  float height = section_gap;
  for (const gallery_section& section : sections)
    height += heading_dy + section.dy + section_gap;
  return height;
}

float window_height() {
  return static_cast<float>(mnw.pix_dy);
}

// Draws what lies in the window. The page's lower left corner is at (0, 0).
void draw_page() {
  const float window_bottom = -mnw.y_off, window_top = window_bottom + window_height();
  colr.assign(col_picture, 1, 1, 1);
  OGL_plot_back_col();
  float y = page_height() - section_gap;
  for (const gallery_section& section : sections) {
    const float dy = heading_dy + section.dy;
    if (y > window_bottom && y - dy < window_top) {
      BTN_frame2(box_page, section_left, y - dy, section_dx, dy, section.heading);
      section.draw(y - heading_dy);
    }
    y -= dy + section_gap;
  }
}

// --- in a window --------------------------------------------------------------------------------

constexpr int step_dy = 20;  // units that one step of the scroll bar moves the page
int steps_down = 0;          // from the page's top

// Puts the page where the scroll bar says, and the mouse with it.
void place_page() {
  const float y_off = window_height() - page_height() + static_cast<float>(steps_down * step_dy);
  mnw.mouse_y += mnw.y_off - y_off;
  mnw.y_off = y_off;
}

void scroll() {
  constexpr int index = 0, bar_rim = 30, steps_a_turn = 3;
  constexpr float bar_x = 784;
  const int last_step = static_cast<int>(page_height() - window_height()) / step_dy + 1;
  const float bottom = -mnw.y_off;
  BTN_vert_slider(index, bar_x, bottom + bar_rim, bottom + window_height() - bar_rim, 0, last_step,
                  &steps_down);
  steps_down = std::clamp(steps_down - mnw.wheel * steps_a_turn, 0, last_step);
  mnw.wheel = 0;
}

// --- into a file --------------------------------------------------------------------------------

bool write_page(const std::string& path) {
  constexpr int rgb_bytes = 3;
  PLT_place place;
  if (!PLT_picture_place(&place)) return false;
  const auto pixels = [&place](int units) { return units * place.dx / mnw.pix_dx; };
  const int units_dy = static_cast<int>(page_height());
  const int dx = place.dx, dy = pixels(units_dy);
  const size_t row_bytes = static_cast<size_t>(dx) * rgb_bytes;
  const auto picture = std::make_unique<unsigned char[]>(row_bytes * static_cast<size_t>(dy));
  gl.PixelStorei(GL_PACK_ALIGNMENT, 1);
  for (int bottom = 0; bottom < units_dy; bottom += mnw.pix_dy) {
    mnw.y_off = static_cast<float>(-bottom);
    BTN_begin_focus_ring();
    draw_page();
    OGL_paint();
    gl.ReadPixels(place.x, place.y, dx, std::min(place.dy, dy - pixels(bottom)), GL_RGB,
                  GL_UNSIGNED_BYTE,
                  picture.get() + row_bytes * static_cast<size_t>(pixels(bottom)));
    OGL_sbuff();
  }
  TEX_image_desc desc;
  desc.format = TEX_rgb;
  desc.width = dx;
  desc.height = dy;
  return TEX_save_png(path, desc, picture.get()) != 0;
}

bool write_pages(const std::string& folder) {
  return write_scenes(page_scenes(), cmdline.get_option("--only"), folder);
}

bool write_states(const std::string& folder) {
  std::vector<gallery_scene> scenes = state_scenes();
  for (const gallery_scene& scene : dialog_scenes())
    scenes.push_back(scene);
  return write_scenes(scenes, cmdline.get_option("--only"), folder);
}

int write_and_say_so(bool (*write)(const std::string&), const std::string& path) {
  MACIBM_startwind(win_main, 0);
  mnw.mouse_x = mnw.mouse_y = -1;
  if (write(path)) return 0;
  std::fprintf(stderr, "skyvane-gallery: %s cannot be written\n", path.c_str());
  return 1;
}

bool wants_png(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](std::string_view word) {
    return word.starts_with("--png=") || word.starts_with("--dialogs=") ||
           word.starts_with("--pages=") || word.starts_with("--states=");
  });
}

}  // namespace

bool write_window(const std::string& path, bool grey) {
  constexpr size_t rgb_bytes = 3;
  PLT_place place;
  if (!PLT_picture_place(&place)) return false;
  const size_t pixels = static_cast<size_t>(place.dx) * static_cast<size_t>(place.dy);
  std::vector<unsigned char> rows(pixels * rgb_bytes);
  gl.PixelStorei(GL_PACK_ALIGNMENT, 1);
  gl.ReadPixels(place.x, place.y, place.dx, place.dy, GL_RGB, GL_UNSIGNED_BYTE, rows.data());
  TEX_image_desc desc;
  desc.format = grey ? TEX_alpha : TEX_rgb;
  desc.width = place.dx;
  desc.height = place.dy;
  // Weights that are far apart, so that two colours are seldom one grey.
  for (size_t i = 0; grey && i < pixels; ++i) {
    const unsigned char* const rgb = rows.data() + i * rgb_bytes;
    rows[i] = static_cast<unsigned char>((3 * rgb[0] + 4 * rgb[1] + rgb[2]) / 8);
  }
  return TEX_save_png(path, desc, rows.data()) != 0;
}

// --- what the runtime asks for ------------------------------------------------------------------

namespace {

void update() {
  place_page();
  draw_page();
  scroll();
}

std::string usage() {
  return "Shows all that the toolkit draws, on one page that the wheel and the bar scroll.\n\n"
         "--png=FILE        writes the page into FILE and ends; needs no display\n"
         "--dialogs=FOLDER  writes the dialogs that no page of the installer opens, likewise\n"
         "--pages=FOLDER    writes the installer's pages in all their states, likewise\n"
         "--states=FOLDER   writes the widgets and dialogs in theirs\n"
         "--only=LIST       of these the ones named, with commas between\n"
         "--texts=FILE      in the language of this file\n";
}

}  // namespace

int main(int argc, char** argv) {
  // A page that goes into a file needs nobody to see it. A driver that was named stays.
  if (wants_png(argc, argv)) setenv("SDL_VIDEODRIVER", "offscreen", 0);
  APP.title = "Skyvane Gallery";
  APP.web_host = "www.skyvane.example";  // the about box names it
  APP.update = update;
  APP.usage = usage;
  APP.quit_request = [] { app_done = 1; };
  MACIBM_init(argc, argv);
  int status = 0;
  if (cmdline.has_option("--texts")) {
    UTL_translate_load(from_start_folder(cmdline.get_option("--texts")));
  }
  if (cmdline.has_option("--png")) {
    status = write_and_say_so(write_page, from_start_folder(cmdline.get_option("--png")));
  } else if (cmdline.has_option("--dialogs")) {
    status = write_and_say_so(write_dialogs, from_start_folder(cmdline.get_option("--dialogs")));
  } else if (cmdline.has_option("--states")) {
    status = write_and_say_so(write_states, from_start_folder(cmdline.get_option("--states")));
  } else if (cmdline.has_option("--pages")) {
    status = write_and_say_so(write_pages, from_start_folder(cmdline.get_option("--pages")));
  } else {
    while (!app_done)
      MACIBM_event_proc();
  }
  MACIBM_finishup(0);
  return status;
}

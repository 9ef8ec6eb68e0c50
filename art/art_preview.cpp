// Composes the wizard's windows from the pictures as the program draws them: the same slicing, the
// same bilinear sampling and blending. For people who change a drawing and want to see the whole.

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "art/art.h"

namespace {

struct screen {
  art_canvas window;
  const art_pictures& art;
  float x_off = 0, y_off = 0;
};

const art_colour ink_12 = art_rgb(0, 0, 0), ink_38 = art_rgb(255, 255, 255),
                 ink_40 = art_rgb(238, 238, 238), ink_41 = art_rgb(13, 27, 44),
                 ink_42 = art_rgb(93, 99, 110), ink_43 = art_rgb(34, 41, 53),
                 ink_45 = art_rgb(39, 44, 52), ink_47 = art_rgb(127, 220, 175),
                 ink_65 = art_rgb(51, 51, 204), ink_69 = art_rgb(255, 0, 0);

// Linear filtering as a texture does it: pixel centres at half positions, edges repeated.
art_colour sample(const art_canvas& from, float s, float t) {
  const float x = s - 0.5f, y = t - 0.5f;
  const int u = int(std::floor(x)), v = int(std::floor(y));
  const auto pick = [&](int column, int row) {
    return from.at(std::clamp(column, 0, from.dx - 1), std::clamp(row, 0, from.dy - 1));
  };
  return art_mix(art_mix(pick(u, v), pick(u + 1, v), x - float(u)),
                 art_mix(pick(u, v + 1), pick(u + 1, v + 1), x - float(u)), y - float(v));
}

void quad(screen& to, const art_canvas& from, float x, float y, float dx, float dy, float s,
          float t, float ds, float dt, art_colour tint = {1, 1, 1, 1}) {
  x += to.x_off;
  y += to.y_off;
  for (int v = std::max(0, int(std::ceil(y - 0.5f))); float(v) + 0.5f < y + dy; ++v)
    for (int u = std::max(0, int(std::ceil(x - 0.5f))); float(u) + 0.5f < x + dx; ++u) {
      if (u >= to.window.dx || v >= to.window.dy) break;
      art_colour c =
          sample(from, s + (float(u) + 0.5f - x) / dx * ds, t + (float(v) + 0.5f - y) / dy * dt);
      art_blend(to.window.at(u, v), {c.r * tint.r, c.g * tint.g, c.b * tint.b, c.a * tint.a}, 1);
    }
}

void element(screen& to, float x, float y, float u, float v, float dx, float dy,
             art_colour tint = {1, 1, 1, 1}) {
  quad(to, to.art.interface, x - dx / 2, y - dy / 2, dx, dy, u, v, dx, dy, tint);
}

// --- text ---------------------------------------------------------------------------------------
float text_width(const std::string& text) {
  float width = 0;
  for (const char c : text)
    width += float(glyph_widths[static_cast<unsigned char>(c)]);
  return width;
}

void text(screen& to, const art_colour& colour, float x, float y, const std::string& line,
          float just = 0) {
  x = std::floor(x - text_width(line) * just);
  for (const char c : line) {
    const unsigned char byte = static_cast<unsigned char>(c);
    for (int row = 0; row < glyph_rows; ++row)
      for (int column = 0; column < glyph_columns; ++column)
        if (byte && art_glyph(column, row) == byte)
          quad(to, to.art.interface, x, y - 6, glyph_dx, glyph_dy, float(column * glyph_dx),
               float(row * glyph_dy), glyph_dx, glyph_dy, colour);
    x += float(glyph_widths[byte]);
  }
}

void lines(screen& to, const art_colour& colour, float x, float y,
           const std::vector<std::string>& all) {
  for (const std::string& line : all) {
    text(to, colour, x, y, line);
    y -= 10;
  }
}

// --- frames -------------------------------------------------------------------------------------
struct strip {
  float cap, src, h, u, v, tile, extra, lower;
};

strip strip_of(int type) {
  switch (type) {
    case 0:
      return {10, 100, 26, 1, 487, 90, 0, 3};
    case 1:
      return {20, 100, 26, 102, 487, 80, 0, 3};
    case 2:
      return {10, 52, 26, 304, 486, 42, 0, 0};
    case 3:
      return {10, 52, 26, 304, 459, 42, 0, 0};
    case 4:
      return {10, 28, 16, 112, 161, 18, 0, 0};
    case 5:
      return {10, 28, 16, 83, 161, 18, 0, 0};
    case 7:
      return {10, 65, 24, 240, 242, 55, 0, 0};
    case 8:
      return {7, 16, 16, 289, 219, 9, 0, 0};
    case 9:
      return {10, 51, 26, 262, 133, 41, 4, 0};
    default:
      return {26, 68, 24, 357, 488, 42, 4, 0};
  }
}

void frame1(screen& to, int type, float x, float y, float width, art_colour tint = {1, 1, 1, 1}) {
  const strip s = strip_of(type);
  const float w = 2 * std::round(width / 2) + s.extra, left = x - w / 2,
              low = y - s.lower - s.h / 2, tile = s.tile - s.cap;
  const art_canvas& from = to.art.interface;
  quad(to, from, left, low, s.cap, s.h, s.u, s.v, s.cap, s.h, tint);
  for (float at = s.cap; at < w - s.cap; at += tile) {
    const float rest = w - s.cap - at;
    const float source = rest < tile ? std::min(tile, tile / s.tile * rest) : tile;
    quad(to, from, left + at, low, std::min(rest, tile), s.h, s.u + s.cap, s.v, source, s.h, tint);
  }
  quad(to, from, left + w - s.cap, low, s.src - s.tile, s.h, s.u + s.tile, s.v, s.src - s.tile, s.h,
       tint);
}

void frame0(screen& to, float x, float y, float length) {
  const float h = 2 * std::round(length / 2) + 8, low = y - h / 2;
  const art_canvas& from = to.art.interface;
  quad(to, from, x - 10, low, 20, 10, 102, 248, 20, 10);
  for (float at = 10; at < h - 10; at += 20) {
    const float rest = h - 10 - at;
    quad(to, from, x - 10, low + at, 20, std::min(rest, 20.0f), 102, 258, 20,
         rest < 20 ? std::min(30.0f, rest * 2 / 3 + 10) : 20);
  }
  quad(to, from, x - 10, low + h - 10, 20, 10, 102, 278, 20, 10);
}

struct box {
  float u, v, side, m, b, t;
};

box box_of(int type) {
  switch (type) {
    case 11:
      return {1, 358, 100, 9, 14, 4};
    case 12:
      return {102, 358, 100, 9, 14, 4};
    case 13:
      return {203, 358, 100, 9, 14, 4};
    case 14:
      return {304, 358, 100, 9, 14, 4};
    case 15:
      return {405, 358, 100, 9, 14, 4};
    case 16:
      return {1, 289, 68, 2, 2, 2};
    case 17:
      return {70, 315, 42, 8, 13, 2};
    case 18:
      return {113, 315, 42, 8, 13, 2};
    case 19:
      return {440, 12, 44, 6, 9, 4};
    default:
      return {982, 2, 41, 1, 1, 1};
  }
}

// The slices of one axis: destination start and length, source start and length.
struct slice {
  float at, length, from, source;
};

std::vector<slice> slices(float length, float side, float low, float high) {
  std::vector<slice> all{{0, low, 0, low}};
  const float tile = side - low - high;
  for (float at = low; at < length - high; at += tile) {
    const float part = std::min(tile, length - high - at);
    all.push_back({at, part, low, part});
  }
  all.push_back({length - high, high, side - high, high});
  return all;
}

void frame2(screen& to, int type, float x, float y, float dx, float dy,
            const std::string& title = "") {
  const box b = box_of(type);
  const bool menu = type == 17;
  const auto across =
      slices(dx + 2 * b.m, b.side, menu ? 20 : 0.35f * b.side, menu ? 20 : 0.35f * b.side);
  const auto up =
      slices(dy + b.b + b.t, b.side, menu ? 26 : 0.3f * b.side, menu ? 14 : 0.3f * b.side);
  const art_canvas& from = type == 20 ? to.art.elements : to.art.interface;
  for (const slice& h : across)
    for (const slice& v : up)
      quad(to, from, x - b.m + h.at, y - b.b + v.at, h.length, v.length, b.u + h.from, b.v + v.from,
           h.source, v.source);
  if (title.empty()) return;
  const art_colour& colour = type == 11 ? ink_40 : type == 15 ? ink_47 : ink_43;
  text(to, colour, type == 20 ? x + 10 : x + dx / 2, y + dy - (type == 11 ? 13 : 16), title,
       type == 20 ? 0.0f : 0.5f);
}

// --- widgets ------------------------------------------------------------------------------------
void button(screen& to, float x, float y, float dx, const std::string& label, bool down = false) {
  frame1(to, 2, x, y, dx);
  if (down) frame1(to, 3, x, y, dx);
  text(to, ink_43, x, y - 3, label, 0.5f);
}

void check(screen& to, float x, float y, bool radio, bool set, const std::string& label) {
  element(to, x, y + 3, radio ? 83 : 139, radio ? 123 : 178, 18, 18);
  if (set) element(to, x, y + 3, radio ? 83 : 139, radio ? 142 : 197, 18, 18);
  text(to, ink_43, x + 12, y, label);
}

void digits(screen& to, float x, float y, const std::string& value) {
  const float n = float(value.size());
  frame1(to, 9, x + n * 5 - 1, y + 3, n * 10 + 15);
  for (float i = 0; i < n; ++i) {
    element(to, x + i * 10 + 6, y + 18, 83, 197, 14, 18);
    element(to, x + i * 10 + 6, y - 10, 83, 178, 14, 18);
    text(to, ink_45, x + 3 + i * 10, y, value.substr(size_t(i), 1));
  }
}

void face(screen& to, float x, float y, float u, float dx, int state, bool off = false) {
  quad(to, to.art.elements, x, y, dx, 22, u, float(23 * state), dx, 22, {1, 1, 1, off ? 0.5f : 1});
}

// --- windows ------------------------------------------------------------------------------------
void wizard_frame(screen& to, int step) {
  static const std::vector<std::string> steps = {"Introduction",      "Choose Destination",
                                                 "Get Updates",       "Check Disk Space",
                                                 "Install Skyvane 9", "All Done"};
  quad(to, to.art.background, 0, 0, 800, 600, 0, 0, 800, 600);
  frame2(to, 20, 10, 50, 190, 453);
  frame2(to, 20, 210, 50, 580, 453);
  for (int i = 0; i < int(steps.size()); ++i)
    text(to, i == step ? ink_65 : ink_45, 30, 480 - 20 * float(i), steps[size_t(i)]);
}

void transfer_page(screen& to) {
  wizard_frame(to, 4);
  lines(to, ink_69, 30, 360,
        {"You have chosen to download", "Skyvane 9 betas.  If you do not",
         "want this, choose options and", "uncheck the beta option."});
  text(to, ink_12, 500, 480, "Installing Skyvane 9", 0.5f);
  lines(
      to, ink_12, 230, 440,
      {"The files that you need are being downloaded and unpacked. Files that you have already,",
       "and that are good, are kept as they are. You may press Back to stop: what is done by then",
       "is not lost, and the next run takes it up again.", "",
       "@ # $ % ^ & * ( ) _ + = [ ] | \\ ' : ; < . > , ? / ` 0123456789, The Typical Zoo",
       "\xC1rbol \xC9xito \xCDndice \xD3rbita \xDAltimo \xD1"
       "and\xFA \xBFqu\xE9 \xE1\xED\xF3\xF1"});
  button(to, 500, 350, 250, "Check the files again");
  button(to, 500, 325, 250, "Pressed as it looks", true);
  frame1(to, 4, 500, 155, 520);
  frame1(to, 5, 240 + 0.62f * 260, 155, 0.62f * 520);
  text(to, ink_12, 242, 120,
       "4,120 of 10,420 megabytes, 2.1 megabytes per second, 49 minutes left.");
  for (int i = 0; i < 3; ++i) {
    check(to, 30, 158 - 40 * float(i), true, i == 1, "");
    text(to, ink_45, 50, 158 - 40 * float(i), i ? "Mirror in Europe" : "Pick the best server");
  }
  face(to, 30, 12, 1, 50, 2);
  face(to, 100, 12, 628, 90, 2, true);
  face(to, 560, 12, 54, 89, 2);
  face(to, 670, 12, 150, 100, 0);
}

void map_page(screen& to) {
  wizard_frame(to, 3);
  text(to, ink_12, 500, 480, "Choose Scenery", 0.5f);
  lines(to, ink_12, 230, 440, {"Click or drag over the map to choose the scenery to install."});
  quad(to, to.art.map, 248, 150, 504, 252, 0, 0, 504, 252);
  for (int column = 0; column < 36; ++column)
    for (int row = 2; row < 17; ++row) {
      const bool chosen = column > 3 && column < 14 && row > 10 && row < 16;
      quad(to, to.art.map, 248 + 14 * float(column), 150 + 14 * float(row), 14, 14,
           14 * float(column), 252 + 14 * float(row), 14, 14, {1, 1, 1, chosen ? 1.0f : 0.5f});
    }
  face(to, 470, 120, 255, 114, 2);
  face(to, 620, 120, 374, 132, 1);
  face(to, 30, 12, 1, 50, 1);
  face(to, 100, 12, 628, 90, 0);
  face(to, 560, 12, 54, 89, 2, true);
  face(to, 670, 12, 150, 100, 2);
}

void settings_window(screen& to) {
  frame2(to, 11, 0, 0, 600, 380, "Skyvane Installer Settings");
  for (const float x : {7.0f, 575.0f})
    quad(to, to.art.interface, x, 361, 18, 18, 120, 178, 18, 18);
  frame2(to, 13, 10, 10, 580, 70, "Proxy (if you are behind a firewall with a Proxy)");
  frame2(to, 13, 10, 90, 580, 262, "General Preferences");
  frame1(to, 10, 220, 310, 150);
  text(to, ink_38, 160, 307, "Linux");
  check(to, 30, 265, false, true, "log installer actions... turn this on to output the downloads");
  check(to, 30, 190, false, false, "get the new beta as a demo if available.");
  digits(to, 400, 150, "0412");
  frame1(to, 9, 85 + 455 / 2.0f - 2, 43, 465);
  text(to, ink_45, 85, 40, "proxy.example.org");
  text(to, ink_43, 73, 40, "proxy host", 1);
  frame1(to, 9, 85 + 455 / 2.0f - 2, 23, 465);
  text(to, ink_43, 73, 20, "proxy port", 1);
  element(to, 500, 250, 208, 133, 26, 26);
  frame1(to, 7, 420, 230, 200);
  frame1(to, 8, 380, 234, 120, art_rgb(127, 220, 175));
  element(to, 440, 234, 262, 267, 20, 22);
}

void gallery_window(screen& to) {
  frame2(to, 12, 0, 0, 800, 340);
  frame1(to, 1, 400, 290, 800);
  for (int i = 0; i < 3; ++i) {
    quad(to, to.art.interface, 4 + 88 * float(i), 289, 98, 26, 204, i == 1 ? 486 : 459, 98, 26);
    text(to, i == 1 ? ink_41 : ink_42, 13 + 88 * float(i), 298,
         i == 1 ? "Selected" : "Another tab");
  }
  frame2(to, 13, 20, 140, 180, 120, "Type thirteen");
  frame2(to, 14, 220, 140, 180, 120, "Type fourteen");
  frame2(to, 15, 420, 140, 180, 120, "Type fifteen");
  lines(to, ink_38, 440, 210, {"Light text on the dark", "plate of the about box."});
  frame2(to, 16, 20, 30, 120, 80, "Sixteen");
  frame2(to, 17, 170, 30, 120, 80, "Seventeen");
  frame2(to, 18, 320, 30, 120, 80, "Eighteen");
  frame2(to, 19, 470, 30, 120, 80, "Nineteen");
  frame0(to, 700, 160, 160);
  element(to, 700, 190, 83, 240, 18, 24);
  element(to, 700, 250, 83, 266, 18, 22);
  element(to, 700, 70, 83, 216, 18, 22);
  frame0(to, 750, 160, 160);
  element(to, 750, 130, 83, 240, 18, 24, ink_47);
  frame1(to, 0, 680, 30, 160);
  quad(to, to.art.interface, 640, 300, 18, 18, 120, 178, 18, 18, {0.4f, 0.4f, 0.4f, 1});
  quad(to, to.art.interface, 660, 300, 18, 18, 120, 197, 18, 18);
}

}  // namespace

art_canvas art_preview(const art_pictures& pictures) {
  const int sheet_dy = 600 + 600 + 420 + 360;
  screen to{art_canvas(800, sheet_dy), pictures};
  const art_colour back = art_slate;
  std::fill(to.window.pixels.begin(), to.window.pixels.end(), back);
  to.y_off = float(sheet_dy - 600);
  transfer_page(to);
  to.y_off -= 600;
  map_page(to);
  to.x_off = 100;
  to.y_off -= 400;
  settings_window(to);
  to.x_off = 0;
  to.y_off = 10;
  gallery_window(to);
  return to.window;
}

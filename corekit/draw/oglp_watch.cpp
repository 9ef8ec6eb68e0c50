// The look at the layout: what is noted of a frame, and what is said of it.
//
// Main thread. Writes the log, and layout_watched at the start by hl_init.

#include "corekit/draw/oglp_watch.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_out.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"

bool layout_watched = false;

namespace {

constexpr float ink_dy = 8;  // of a capital; lines are 10 apart, so that those of one text are free
constexpr float face_ink_dy = 11;  // of a capital on a face
constexpr float rim = 2;           // of a frame, on which no letter may stand

struct noted_text {
  OGL_rect at;
  int col;
  std::string text;
  const char* trouble;  // null for none
};
std::vector<noted_text> texts;  // of the frame being drawn
std::vector<OGL_rect> frames;
std::optional<OGL_rect> clip;
std::set<std::string> said;
std::string list_path;  // empty when no list is wanted

bool overlap(const OGL_rect& a, const OGL_rect& b) {
  return a.x0 < b.x1 && b.x0 < a.x1 && a.y0 < b.y1 && b.y0 < a.y1;
}

bool inside(const OGL_rect& a, const OGL_rect& b, float b_rim) {
  return a.x0 >= b.x0 + b_rim && a.x1 <= b.x1 - b_rim && a.y0 >= b.y0 && a.y1 <= b.y1;
}

bool equal(const OGL_rect& a, const OGL_rect& b) {
  return a.x0 == b.x0 && a.y0 == b.y0 && a.x1 == b.x1 && a.y1 == b.y1;
}

OGL_rect window_rect() {
  return {mnw.x_off, mnw.y_off, mnw.x_off + mnw.win_dx, mnw.y_off + mnw.win_dy};
}

void say(const noted_text& note) {
  const std::string line = "LAYOUT: window " + std::to_string(mnw.win_id) + ", " + note.trouble +
                           ": " + note.text + '\n';
  if (!said.insert(line).second) return;
  xer << line;
}

// The file changes in one step, so that a reader sees the texts of one picture.
void write_list() {
  std::string all;
  for (const noted_text& text : texts) {
    const OGL_rgba color = OGL_color(text.col, 1);
    const auto byte = [&color](int part) { return std::lround(color.part[part] * 255); };
    all += str_format("%g %g %g %g %02lx%02lx%02lx ", text.at.x0, text.at.y0, text.at.x1,
                      text.at.y1, byte(0), byte(1), byte(2)) +
           text.text + '\n';
  }
  TEX_out file(list_path);
  FILE* const out = file.stream();
  file.finish(out && std::fwrite(all.data(), 1, all.size(), out) == all.size());
}

}  // namespace

void watch_list(const std::string& path) {
  layout_watched = true;
  list_path = path;
}

void watch_text(int col, float x, float base, std::string_view text, int charset) {
  if (!layout_watched) return;
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n'))
    text.remove_suffix(1);
  if (text.empty()) return;
  const float dx = static_cast<float>(OGL_string_width(text, charset));
  noted_text note = {{x, base, x + dx, base + (charset == charset_face ? face_ink_dy : ink_dy)},
                     col,
                     std::string(text),
                     nullptr};
  if (clip) {
    // Along the line a clip is a field or list that shows what fits of a name.
    note.at.x0 = std::max(note.at.x0, clip->x0);
    note.at.x1 = std::min(note.at.x1, clip->x1);
    if (note.at.y0 < clip->y0 || note.at.y1 > clip->y1) note.trouble = "cut off";
  }
  const OGL_rect window = window_rect();
  if (!inside(note.at, window, 0)) note.trouble = "beyond the window";
  for (const OGL_rect& frame : frames) {
    if (overlap(note.at, frame) && !inside(note.at, frame, rim)) note.trouble = "over an edge";
  }
  for (const noted_text& other : texts) {
    if (overlap(note.at, other.at)) note.trouble = "over a text";
  }
  texts.push_back(std::move(note));
}

void watch_frame(const OGL_rect& frame) {
  if (!layout_watched) return;
  // A whole picture of the window is its background.
  if (inside(window_rect(), frame, 0)) return watch_cover();
  // A face that is drawn anew takes the place of the former, label and all.
  const bool again =
      std::any_of(frames.begin(), frames.end(), [&](const OGL_rect& f) { return equal(f, frame); });
  if (again) std::erase_if(texts, [&](const noted_text& t) { return inside(t.at, frame, 0); });
  for (noted_text& text : texts) {
    if (overlap(text.at, frame)) text.trouble = "under a picture";
  }
  if (!again) frames.push_back(frame);
}

void watch_clip(const OGL_rect* to) {
  if (!layout_watched) return;
  clip = to ? std::optional<OGL_rect>(*to) : std::nullopt;
}

void watch_cover() {
  texts.clear();
  frames.clear();
}

void watch_shown(bool is_new) {
  if (!layout_watched) return;
  if (is_new && !list_path.empty()) write_list();
  for (const noted_text& text : texts) {
    if (text.trouble) say(text);
  }
  watch_cover();
}

// What all widgets share: identity, labels, the mouse test, and cells of the interface image.
//
// Main thread. Reads mnw; writes stls.

#include "corekit/widgets/butn.h"

#include <algorithm>
#include <cstdlib>

#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn_draw.h"

stls_record stls;

namespace {

constexpr float no_wrap = 9999.0f;
constexpr size_t one_line_length = 12;  // a label up to this is never split
constexpr float half_line = 5;

// Where a long label breaks: the blank, "-" or "/" nearest to the middle, the earlier of two at the
// same distance. The search starts with position 0 as its best, so that 0 also means nowhere.
size_t break_position(const std::string& text) {
  const long middle = static_cast<long>(text.size() / 2);
  size_t best = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != ' ' && text[i] != '-' && text[i] != '/') continue;
    if (std::labs(static_cast<long>(i) - middle) < std::labs(static_cast<long>(best) - middle)) {
      best = i;
    }
  }
  return best + 1 < text.size() ? best : 0;
}

// Where a label at the side goes on in a second line; 0 for one line.
size_t label_split(const std::string& text) {
  return text[0] != '-' && text.size() > one_line_length ? break_position(text) : 0;
}

}  // namespace

int BTN_identity(float x, float y) {
  return static_cast<int>(y) + (static_cast<int>(x) << 13);
}

void BTN_expand_label(const std::string& label, std::string* left, std::string* right,
                      std::string* help) {
  const size_t bar = label.rfind('|'), brace = label.rfind('{');
  const size_t end = brace == std::string::npos ? label.size() : brace;
  *left = label.substr(0, bar == std::string::npos ? end : bar);
  right->clear();
  if (bar != std::string::npos) {
    // A brace before the bar ends nothing: the right text runs to the end.
    *right = label.substr(bar + 1, end > bar ? end - bar - 1 : std::string::npos);
  }
  help->clear();
  if (end + 2 < label.size()) *help = label.substr(end + 2);
}

void BTN_util_draw_label(float x, float y, int side, const std::string& text, int active) {
  if (!ogl_inited || text.empty()) return;
  const int col = active ? col_label_on : col_label;
  const int just = side == 0 ? just_right : side == 1 ? just_centre : just_left;
  const auto put = [&](const std::string& line, float at) {
    OGL_string(col, x, at, line, no_wrap, charset_text, just);
  };
  if (text[0] == '-') {
    put(text.substr(1), y);
    return;
  }
  const size_t split = side != 1 ? label_split(text) : 0;
  if (split == 0) {
    put(text, y);
    return;
  }
  put(text.substr(0, split), y + half_line);
  put(text.substr(split + 1), y - half_line);
}

float BTN_label_width(const std::string& text) {
  if (text.empty()) return 0;
  const size_t split = label_split(text);
  const std::string_view all = text;
  if (split == 0) return static_cast<float>(OGL_string_width(all.substr(text[0] == '-' ? 1 : 0)));
  return static_cast<float>(
      std::max(OGL_string_width(all.substr(0, split)), OGL_string_width(all.substr(split + 1))));
}

int BTN_mouse_in(float left, float bottom, float right, float top) {
  return ogl_inited && mnw.popup_code == -1 && mnw.mouse_x >= left && mnw.mouse_x <= right &&
         mnw.mouse_y >= bottom && mnw.mouse_y <= top;
}

int BTN_click_in(float left, float bottom, float right, float top) {
  return mnw.mouse_clicked && BTN_mouse_in(left, bottom, right, top);
}

void BTN_hover(float left, float bottom, float right, float top, const std::string& help) {
  if (!help.empty() && BTN_mouse_in(left, bottom, right, top)) stls.hover_help = help;
}

int BTN_type_from_vector(int i, const std::vector<int>* v) {
  return i >= 0 && i < static_cast<int>(v->size()) ? (*v)[i] : 0;
}

std::string BTN_name_from_vector(int i, const std::vector<std::string>* v) {
  return i >= 0 && i < static_cast<int>(v->size()) ? (*v)[i] : std::string();
}

void OGL_boxed_string(float x, float y, const std::string& label, const std::string& s, int charset,
                      int col) {
  constexpr float rim = 7, label_gap = 8, text_inset = 4, other_width = 100, fixed_pitch = 10;
  float width = other_width;
  if (charset == charset_fixed) width = static_cast<float>(s.size()) * fixed_pitch + rim;
  if (charset == charset_text) width = static_cast<float>(OGL_string_width(s)) + rim;

  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  BTN_frame1(strip_value, x, y + 3, width, col_as_is);
  BTN_util_draw_label(x - width / 2 - label_gap, y, 0, left, 0);
  BTN_util_draw_label(x + width / 2 + label_gap, y, 2, right, 0);
  OGL_string(col, x - width / 2 + text_inset, y, s, no_wrap, charset);
}

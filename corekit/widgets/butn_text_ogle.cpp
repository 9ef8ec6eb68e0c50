// The callbacks by which the editor works on the focused text field.
//
// Main thread. Writes the field's text, OGLE_edit and the scroll.

#include <algorithm>
#include <cctype>

#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn_text.h"

float OGLE_x = 0, OGLE_y = 0;
float OGLE_entry_dx = 0;
float OGLE_dx = 0, OGLE_dy = 0;
std::string* OGLE_input = nullptr;
int OGLE_edit = 0;

namespace {

constexpr float no_wrap = 9999;
constexpr float line_height = 11, text_rise = 2;  // the text stands this far above its line's foot
constexpr float beyond_field = 1024;  // a field does not wrap before its text is so wide

void OGLE_GetVisibleBounds(OGLE_Rec*, OGLE_Bounds* bounds) {
  *bounds = {OGLE_x, OGLE_y - text_rise, OGLE_x + OGLE_entry_dx, OGLE_y - text_rise + line_height};
}

void OGLE_GetLogicalBounds(OGLE_Rec* rec, OGLE_Bounds* bounds) {
  OGLE_GetVisibleBounds(rec, bounds);
  bounds->left -= OGLE_dx;
  bounds->right += beyond_field - OGLE_dx;
  bounds->bottom -= OGLE_dy;
  bounds->top -= OGLE_dy;
}

void OGLE_SetLogicalHeight(OGLE_Rec*, float) {}

void OGLE_ScrollTo(OGLE_Rec*, float x, float y) {
  OGLE_dx = x;
  OGLE_dy = y;
}

void OGLE_GetText(OGLE_Rec*, const char** begin, const char** end) {
  *begin = OGLE_input->data();
  *end = *begin + OGLE_input->size();
}

void OGLE_ReplaceTextFunc(OGLE_Rec*, int start, int end, const char* new_begin,
                          const char* new_end) {
  OGLE_edit = 1;
  OGLE_input->replace(static_cast<size_t>(start), static_cast<size_t>(end - start), new_begin,
                      static_cast<size_t>(new_end - new_begin));
}

float OGLE_GetLineHeight(OGLE_Rec*) {
  return line_height;
}

float OGLE_MeasureString(OGLE_Rec*, const char* begin, const char* end) {
  return static_cast<float>(
      OGL_string_width(std::string_view(begin, static_cast<size_t>(end - begin))));
}

float width_of(char c) {
  return static_cast<float>(OGL_char_width(static_cast<unsigned char>(c)));
}

// The byte that crosses the width counts as filling it.
int OGLE_FitStringFwd(OGLE_Rec*, const char* begin, const char* end, float width) {
  int count = 0;
  while (begin != end && width > 0) {
    width -= width_of(*begin++);
    ++count;
  }
  return count;
}

int OGLE_FitStringRev(OGLE_Rec*, const char* begin, const char* end, float width) {
  int count = 0;
  while (begin != end && width > 0) {
    width -= width_of(*--end);
    ++count;
  }
  return count;
}

void OGLE_DrawString(OGLE_Rec*, const char* begin, const char* end, float x, float y) {
  OGL_string(col_note, x, y + text_rise, std::string(begin, end), no_wrap);
}

void OGLE_DrawSelection(OGLE_Rec*, const OGLE_Bounds& bounds) {
  if (bounds.left == bounds.right) {
    OGL_line(col_note, 1, bounds.left, bounds.bottom, bounds.left, bounds.top);
  } else {
    OGL_fillrect(col_mark, 1, bounds.left, bounds.bottom, bounds.right - bounds.left,
                 bounds.top - bounds.bottom);
  }
}

const char* OGLE_WordBreak(OGLE_Rec*, const char* begin, const char* end) {
  const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  return std::find_if(std::find_if_not(begin, end, is_space), end, is_space);
}

}  // namespace

const OGLE_Callbacks OGLE_cbs = {
    OGLE_GetVisibleBounds, OGLE_GetLogicalBounds, OGLE_SetLogicalHeight, OGLE_ScrollTo,
    OGLE_GetText,          OGLE_ReplaceTextFunc,  OGLE_GetLineHeight,    OGLE_MeasureString,
    OGLE_FitStringFwd,     OGLE_FitStringRev,     OGLE_DrawString,       OGLE_DrawSelection,
    OGLE_WordBreak,
};

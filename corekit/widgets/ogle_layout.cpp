// The editor's lines: where they begin, which one a position or a point is on, how they are drawn,
// and how far to scroll.
//
// Main thread. Writes the record's line table only.

#include "corekit/widgets/ogle_layout.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace {

bool is_line_break(char c) {
  return c == '\r' || c == '\n';
}

bool is_blank(char c) {
  return std::isspace(static_cast<unsigned char>(c)) && !is_line_break(c);
}

// The end of the line that begins at `start`, which is not the end of the text. Words join while
// they fit; blanks always do, and stay with the line in front of them.
const char* end_of_line(OGLE_Rec* rec, const char* start, const char* text_end, float width) {
  float used = 0;
  const char* cursor = start;
  for (;;) {
    const char* gap_end = cursor;
    while (gap_end != text_end && is_blank(*gap_end)) {
      ++gap_end;
    }
    used += rec->call.MeasureString(rec, cursor, gap_end);
    if (gap_end == text_end) return text_end;
    // One break ends one line, so that the two bytes of CR LF leave an empty line between them.
    if (is_line_break(*gap_end)) return gap_end + 1;
    const char* word_end = rec->call.WordBreak(rec, gap_end, text_end);
    // A table whose words do not move on must not hang the editor.
    word_end = std::clamp(word_end, gap_end + 1, text_end);
    used += rec->call.MeasureString(rec, gap_end, word_end);
    // A line is never empty: a word that is too wide is pushed through by its first byte alone.
    if (used > width) return std::max(gap_end, start + 1);
    if (word_end == text_end) return text_end;
    cursor = word_end;
  }
}

float line_bottom(const OGLE_Bounds& logical, float height, int line) {
  return logical.top - static_cast<float>(line + 1) * height;
}

// An axis of the scroll that brings `at` into view.
float reveal(float at, float scroll, float logical_low, float visible_low, float visible_high) {
  if (at < visible_low) return at - logical_low;
  if (at > visible_high) return at - logical_low - (visible_high - visible_low);
  return scroll;
}

struct line_range {
  int first, last;  // `last` is one past
};

line_range visible_lines(const OGLE_Rec* rec, const OGLE_Bounds& visible,
                         const OGLE_Bounds& logical, float height) {
  const float count = static_cast<float>(ogle_line_count(rec));
  const float first = std::floor((logical.top - visible.top) / height);
  const float last = std::ceil((logical.top - visible.bottom) / height);
  return {static_cast<int>(std::clamp(first, 0.0f, count)),
          static_cast<int>(std::clamp(last, 0.0f, count))};
}

void draw_selection(OGLE_Rec* rec, const ogle_text& text, line_range lines,
                    const OGLE_Bounds& visible, const OGLE_Bounds& logical, float height) {
  const int sel_start = std::min(rec->sel_start, text.size());
  const int sel_end = std::min(rec->sel_end, text.size());
  for (int line = lines.first; line < lines.last; ++line) {
    const int start = ogle_line_start(rec, line), end = ogle_line_end(rec, line, text.size());
    if (sel_start >= end || sel_end <= start) continue;
    OGLE_Bounds box;
    box.bottom = line_bottom(logical, height, line);
    box.top = box.bottom + height;
    box.left = visible.left;
    box.right = visible.right;
    if (sel_start >= start) box.left = logical.left + ogle_measure(rec, text, start, sel_start);
    if (sel_end <= end) box.right = logical.left + ogle_measure(rec, text, start, sel_end);
    rec->call.DrawSelection(rec, box);
  }
}

void draw_caret(OGLE_Rec* rec, const ogle_text& text, line_range lines, const OGLE_Bounds& logical,
                float height) {
  const int at = std::min(rec->sel_start, text.size());
  const int line = ogle_line_of(rec, at);
  if (line < lines.first || line >= lines.last) return;
  OGLE_Bounds box;
  box.bottom = line_bottom(logical, height, line);
  box.top = box.bottom + height;
  box.left = box.right = logical.left + ogle_measure(rec, text, ogle_line_start(rec, line), at);
  rec->call.DrawSelection(rec, box);
}

}  // namespace

// --- text and lines ------------------------------------------------------------------------------

ogle_text ogle_get_text(OGLE_Rec* rec) {
  ogle_text text = {nullptr, nullptr};
  rec->call.GetText(rec, &text.begin, &text.end);
  return text;
}

float ogle_measure(OGLE_Rec* rec, const ogle_text& text, int from, int to) {
  // The line table may be older than a text that its owner has cut.
  to = std::min(to, text.size());
  if (from >= to) return 0;
  return rec->call.MeasureString(rec, text.begin + from, text.begin + to);
}

int ogle_line_count(const OGLE_Rec* rec) {
  return std::max(1, static_cast<int>(rec->line_starts.size()));
}

int ogle_line_start(const OGLE_Rec* rec, int line) {
  return line < static_cast<int>(rec->line_starts.size()) ? rec->line_starts[line] : 0;
}

int ogle_line_end(const OGLE_Rec* rec, int line, int text_size) {
  return line + 1 < static_cast<int>(rec->line_starts.size())
             ? std::min(rec->line_starts[line + 1], text_size)
             : text_size;
}

int ogle_line_of(const OGLE_Rec* rec, int position) {
  const auto next = std::upper_bound(rec->line_starts.begin(), rec->line_starts.end(), position);
  return std::max(0, static_cast<int>(next - rec->line_starts.begin()) - 1);
}

int ogle_fit_line(OGLE_Rec* rec, const ogle_text& text, int line, float width) {
  const int start = ogle_line_start(rec, line);
  const int end = ogle_line_end(rec, line, text.size());
  if (start >= end) return std::min(start, text.size());
  const int position =
      start + rec->call.FitStringFwd(rec, text.begin + start, text.begin + end, width);
  // The boundary belongs to the next line: the caret would jump there, and up could never leave it.
  const bool last = line + 1 >= ogle_line_count(rec);
  return std::clamp(position, start, last ? end : end - 1);
}

int ogle_position_of_point(OGLE_Rec* rec, float x, float y) {
  OGLE_Bounds logical;
  rec->call.GetLogicalBounds(rec, &logical);
  x = std::clamp(x, logical.left, std::max(logical.left, logical.right));
  const ogle_text text = ogle_get_text(rec);
  const float line = std::floor((logical.top - y) / rec->call.GetLineHeight(rec));
  if (!(line >= 0)) return 0;
  if (line >= static_cast<float>(ogle_line_count(rec))) return text.size();
  return ogle_fit_line(rec, text, static_cast<int>(line), x - logical.left);
}

void OGLE_Repaginate(OGLE_Rec* rec) {
  OGLE_Bounds logical;
  rec->call.GetLogicalBounds(rec, &logical);
  const float width = logical.right - logical.left;
  const ogle_text text = ogle_get_text(rec);
  // A break at the very end of the text opens no line: the loop stops there.
  rec->line_starts.assign(1, 0);
  const char* at = text.begin;
  while (at != text.end) {
    at = end_of_line(rec, at, text.end, width);
    if (at != text.end) rec->line_starts.push_back(static_cast<int32_t>(at - text.begin));
  }
  rec->call.SetLogicalHeight(
      rec, static_cast<float>(ogle_line_count(rec)) * rec->call.GetLineHeight(rec));
}

// --- showing -------------------------------------------------------------------------------------

void OGLE_Draw(OGLE_Rec* rec, int active) {
  OGLE_Bounds visible, logical;
  rec->call.GetVisibleBounds(rec, &visible);
  rec->call.GetLogicalBounds(rec, &logical);
  const float height = rec->call.GetLineHeight(rec);
  const ogle_text text = ogle_get_text(rec);
  const line_range lines = visible_lines(rec, visible, logical, height);

  // The selection lies under the text.
  const bool selected = rec->sel_start < rec->sel_end;
  if (selected) draw_selection(rec, text, lines, visible, logical, height);
  for (int line = lines.first; line < lines.last; ++line) {
    const int end = ogle_line_end(rec, line, text.size());
    const int start = std::min(ogle_line_start(rec, line), end);
    rec->call.DrawString(rec, text.begin + start, text.begin + end, logical.left,
                         line_bottom(logical, height, line));
  }
  if (active && !selected) draw_caret(rec, text, lines, logical, height);
}

void OGLE_RevealSelection(OGLE_Rec* rec) {
  OGLE_Bounds visible, logical;
  rec->call.GetVisibleBounds(rec, &visible);
  rec->call.GetLogicalBounds(rec, &logical);
  const ogle_text text = ogle_get_text(rec);
  const int position = rec->end_is_active ? rec->sel_end : rec->sel_start;
  const int line = ogle_line_of(rec, position);
  const float x = logical.left + ogle_measure(rec, text, ogle_line_start(rec, line), position);
  // The far side of the line, in the direction in which the selection grows.
  const float y = logical.top -
                  static_cast<float>(line - rec->end_is_active + 1) * rec->call.GetLineHeight(rec);

  const float scroll_x = visible.left - logical.left, scroll_y = visible.bottom - logical.bottom;
  const float to_x = reveal(x, scroll_x, logical.left, visible.left, visible.right);
  const float to_y = reveal(y, scroll_y, logical.bottom, visible.bottom, visible.top);
  if (to_x != scroll_x || to_y != scroll_y) rec->call.ScrollTo(rec, to_x, to_y);
}

// The editor's keys.
//
// Main thread. Writes the record that it is given, and the text by its ReplaceText.

#include <algorithm>

#include "corekit/widgets/ogle.h"
#include "corekit/widgets/ogle_layout.h"

namespace {

enum editing_key : int { back = 8, left = 28, right = 29, up = 30, down = 31 };

// Puts `count` bytes in place of start to end, with the caret behind them.
void replace(OGLE_Rec* rec, int start, int end, const char* bytes, int count) {
  rec->call.ReplaceText(rec, start, end, bytes, bytes + count);
  rec->sel_start = rec->sel_end = start + count;
  // The caret ahead of the repagination: what a callback asks of the record must be in the text.
  rec->end_is_active = 1;
  OGLE_Repaginate(rec);
  OGLE_RevealSelection(rec);
}

void type_back(OGLE_Rec* rec) {
  if (rec->sel_start < rec->sel_end) {
    replace(rec, rec->sel_start, rec->sel_end, nullptr, 0);
  } else if (rec->sel_start > 0) {
    replace(rec, rec->sel_start - 1, rec->sel_start, nullptr, 0);
  } else {
    rec->end_is_active = 1;
  }
}

void type_character(OGLE_Rec* rec, int character) {
  const char byte = static_cast<char>(character);
  replace(rec, rec->sel_start, rec->sel_end, &byte, 1);
}

// A line up (-1) or down (1) from `position`, at the remembered column.
int line_away(OGLE_Rec* rec, int position, int dir) {
  const ogle_text text = ogle_get_text(rec);
  const int line = ogle_line_of(rec, position);
  if (rec->caret_column == -1) {
    rec->caret_column = ogle_measure(rec, text, ogle_line_start(rec, line), position);
  }
  const int target = line + dir;
  if (target < 0) return 0;
  if (target >= ogle_line_count(rec)) return text.size();
  return ogle_fit_line(rec, text, target, rec->caret_column);
}

void move_caret(OGLE_Rec* rec, int position) {
  rec->sel_start = rec->sel_end = position;
}

// A move in the direction `dir`; `vertical` ones go by lines.
void move(OGLE_Rec* rec, int dir, bool vertical, bool shift) {
  if (shift && vertical) {
    // Kept as it stands: up and down move the end that is not active, left and right the active
    // one.
    int32_t& end = rec->end_is_active ? rec->sel_start : rec->sel_end;
    end = line_away(rec, end, dir);
  } else if (shift) {
    (rec->end_is_active ? rec->sel_end : rec->sel_start) += dir;
  } else if (rec->sel_start < rec->sel_end) {
    move_caret(rec, dir < 0 ? rec->sel_start : rec->sel_end);
  } else {
    move_caret(rec, vertical ? line_away(rec, rec->sel_start, dir) : rec->sel_start + dir);
  }
  ogle_normalise(rec);
  OGLE_RevealSelection(rec);
}

}  // namespace

void OGLE_Key(OGLE_Rec* rec, int character, int shift) {
  if (character != up && character != down) rec->caret_column = -1;
  switch (character) {
    case back:
      return type_back(rec);
    case left:
      return move(rec, -1, false, shift != 0);
    case right:
      return move(rec, 1, false, shift != 0);
    case up:
      return move(rec, -1, true, shift != 0);
    case down:
      return move(rec, 1, true, shift != 0);
    default:
      return type_character(rec, character);
  }
}

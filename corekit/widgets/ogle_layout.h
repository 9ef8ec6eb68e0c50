// What the editor's files share and nobody else needs.
#pragma once

#include "corekit/widgets/ogle.h"

// The text as it stands now.
struct ogle_text {
  const char* begin;
  const char* end;
  int size() const { return static_cast<int>(end - begin); }
};
ogle_text ogle_get_text(OGLE_Rec* rec);

// Width of the bytes from `from` to `to`, both offsets, `from` not behind `to`.
float ogle_measure(OGLE_Rec* rec, const ogle_text& text, int from, int to);

// Lines. There is always one, which may be empty.
int ogle_line_count(const OGLE_Rec* rec);
int ogle_line_start(const OGLE_Rec* rec, int line);
int ogle_line_end(const OGLE_Rec* rec, int line, int text_size);  // start of the next
int ogle_line_of(const OGLE_Rec* rec, int position);              // on a boundary the later line

// The position in a line that lies `width` from its left. It never is the next line's first.
int ogle_fit_line(OGLE_Rec* rec, const ogle_text& text, int line, float width);
int ogle_position_of_point(OGLE_Rec* rec, float x, float y);

// Ends in order, and within the text.
void ogle_normalise(OGLE_Rec* rec);

// The editor's record and its selection: what the mouse does, and what follows an edit from
// outside.
//
// Main thread. Writes the record that it is given.

#include "corekit/widgets/ogle.h"

#include <algorithm>
#include <utility>

#include "corekit/widgets/ogle_layout.h"

OGLE_Rec* OGLE_Create(const OGLE_Callbacks& table, void* ref) {
  OGLE_Rec* rec = new OGLE_Rec;
  rec->call = table;
  rec->ref = ref;
  return rec;
}

void OGLE_Destroy(OGLE_Rec* rec) {
  delete rec;
}

void* OGLE_GetRef(const OGLE_Rec* rec) {
  return rec->ref;
}

void ogle_normalise(OGLE_Rec* rec) {
  if (rec->sel_end < rec->sel_start) {
    std::swap(rec->sel_start, rec->sel_end);
    rec->end_is_active = !rec->end_is_active;
  }
  const int size = ogle_get_text(rec).size();
  rec->sel_start = std::clamp(rec->sel_start, 0, size);
  rec->sel_end = std::clamp(rec->sel_end, 0, size);
}

void OGLE_GetSelection(const OGLE_Rec* rec, int* start, int* end) {
  if (start) *start = rec->sel_start;
  if (end) *end = rec->sel_end;
}

void OGLE_SetSelection(OGLE_Rec* rec, int start, int end) {
  rec->sel_start = start;
  rec->sel_end = end;
  ogle_normalise(rec);
}

void OGLE_Click(OGLE_Rec* rec, float x, float y, int extend) {
  rec->caret_column = -1;
  const int position = ogle_position_of_point(rec, x, y);
  if (!extend) {
    rec->sel_start = rec->sel_end = position;
    rec->end_is_active = 1;
  } else if (position < rec->sel_start) {
    rec->sel_start = position;
    rec->end_is_active = 0;
  } else {
    rec->sel_end = position;
    rec->end_is_active = 1;
  }
  ogle_normalise(rec);
  OGLE_RevealSelection(rec);
}

void OGLE_Drag(OGLE_Rec* rec, float x, float y) {
  rec->caret_column = -1;
  (rec->end_is_active ? rec->sel_end : rec->sel_start) = ogle_position_of_point(rec, x, y);
  ogle_normalise(rec);
  OGLE_RevealSelection(rec);
}

void OGLE_ReplaceText(OGLE_Rec* rec, int start, int end, const char* new_begin,
                      const char* new_end) {
  const int size = ogle_get_text(rec).size();
  start = std::clamp(start, 0, size);
  end = std::clamp(end, start, size);
  const int delta = static_cast<int>(new_end - new_begin) - (end - start);
  if (start <= rec->sel_start && end <= rec->sel_start) {
    rec->sel_start += delta;
    rec->sel_end += delta;
  } else if (start <= rec->sel_start) {
    rec->sel_end += delta;
    if (rec->sel_end < rec->sel_start) {
      rec->sel_start = rec->sel_end = std::max(rec->sel_start + delta, start);
    }
  }
  rec->call.ReplaceText(rec, start, end, new_begin, new_end);
  OGLE_Repaginate(rec);
  ogle_normalise(rec);
}

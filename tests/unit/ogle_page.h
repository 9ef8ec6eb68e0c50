// What pages of text need for the editor to lay them out, in a face made up for trials: shared by
// the editor's tests and its fuzz target.
#pragma once

#include <algorithm>

#include "corekit/widgets/ogle.h"

constexpr float line_height = 10, view_dx = 60, view_dy = 35;

// Uneven widths; line breaks and one letter have none.
inline float width_of(char c) {
  if (c == '\n' || c == '\r' || c == 'o') return 0;
  return static_cast<float>(1 + static_cast<unsigned char>(c) % 5);
}

inline bool is_space(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

class measured_page : public OGLE {
 protected:
  float GetLineHeight() override { return line_height; }
  float MeasureString(const char* b, const char* e) override {
    float dx = 0;
    for (; b < e; ++b)
      dx += width_of(*b);
    return dx;
  }
  int FitStringFwd(const char* b, const char* e, float dx) override {
    const char* at = b;
    while (at != e && dx > 0)
      dx -= width_of(*at++);
    return static_cast<int>(at - b);
  }
  int FitStringRev(const char* b, const char* e, float dx) override {
    const char* at = e;
    while (at != b && dx > 0)
      dx -= width_of(*--at);
    return static_cast<int>(e - at);
  }
  const char* WordBreak(const char* b, const char* e) override {
    return std::find_if(std::find_if_not(b, e, is_space), e, is_space);
  }
};

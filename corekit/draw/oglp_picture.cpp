// Two pictures are compared from both ends: what they have in common there is painted alike, so
// they differ at most where the pieces between lie. That takes one pass and needs no order of its
// own, and the usual change (a face under the mouse, a bar, a line of text) is a run of pieces.

#include "corekit/draw/oglp_picture.h"

#include <algorithm>
#include <cstring>

static_assert(sizeof(picture_piece) == 36 + 16 + 64, "a gap would be compared too");

namespace {

bool same(const picture_piece& a, const picture_piece& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

void take_in(OGL_rect& all, const OGL_rect& one) {
  if (all.x0 >= all.x1) {
    all = one;
    return;
  }
  all.x0 = std::min(all.x0, one.x0);
  all.y0 = std::min(all.y0, one.y0);
  all.x1 = std::max(all.x1, one.x1);
  all.y1 = std::max(all.y1, one.y1);
}

}  // namespace

OGL_rect picture_bounds(const picture_piece& piece) {
  constexpr float line_reach = 1;  // a line's pixels stand out beyond its ends and sides
  const int count = piece.how.shape == shape_quad ? 4 : 2;
  const float reach = piece.how.shape == shape_quad ? 0 : line_reach;
  const picture_corner* c = piece.corners;
  OGL_rect rect = {c[0].x, c[0].y, c[0].x, c[0].y};
  for (int i = 1; i < count; ++i) {
    rect.x0 = std::min(rect.x0, c[i].x);
    rect.y0 = std::min(rect.y0, c[i].y);
    rect.x1 = std::max(rect.x1, c[i].x);
    rect.y1 = std::max(rect.y1, c[i].y);
  }
  return {rect.x0 - reach, rect.y0 - reach, rect.x1 + reach, rect.y1 + reach};
}

bool picture_same(const picture_pieces& a, const picture_pieces& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

OGL_rect picture_damage(const picture_pieces& a, const picture_pieces& b) {
  const size_t shorter = std::min(a.size(), b.size());
  size_t front = 0;
  while (front < shorter && same(a[front], b[front]))
    ++front;
  size_t back = 0;
  while (front + back < shorter && same(a[a.size() - 1 - back], b[b.size() - 1 - back]))
    ++back;
  OGL_rect damage = {0, 0, 0, 0};
  for (const picture_pieces* of : {&a, &b}) {
    for (size_t i = front; i + back < of->size(); ++i)
      take_in(damage, picture_bounds((*of)[i]));
  }
  return damage;
}

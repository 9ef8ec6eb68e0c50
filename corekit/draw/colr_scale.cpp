// The scale of the spectrum, drawn: apart from the table, which the drawing itself stands on. Main
// thread.

#include <algorithm>

#include "corekit/base/hl_run.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"

void colr_class::spectrum_plotscale(float x, float y, float low, float high, int decimals) {
  constexpr int height = 1000, step = 4, limit_digits = 7;
  scale_low_ = low;
  scale_high_ = high;
  scale_span_ = high - low;
  if (!ogl_inited) return;
  OGL_number(col_white, x + 4, y + height - 4, high, limit_digits, decimals, charset_text);
  OGL_number(col_white, x + 4, y - 4, low, limit_digits, decimals, charset_text);

  for (int at = 0; at <= height; at += step) {
    const int entry = std::clamp(at * spectrum_count / height, 0, spectrum_count - 1);
    const colr_rgb& rgb = spectrum_[entry];
    const float middle = y + static_cast<float>(at), half = step / 2.0f;
    OGL_put_as(shape_quad, 0, blend_mix, 0, {{rgb.r, rgb.g, rgb.b, 1}});
    OGL_put_quad(x - half, middle - half, x + half, middle + half);
  }
}

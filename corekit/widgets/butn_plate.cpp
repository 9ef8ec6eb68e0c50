// Plates: the wizard's faces without their words, as wide as one likes. A plate is made of the two
// ends of a face's picture and of a column that is free of letters, drawn wide.
//
// Main thread. Writes nothing.

#include "corekit/widgets/butn_plate.h"

#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/draw/tman.h"

namespace {

constexpr float elements_dx = 1024, elements_dy = 128;

}  // namespace

void BTN_plot_plate(const BTN_face& face, float x, float y, float dx, float alpha) {
  if (!ogl_inited) return;
  x += mnw.x_off;
  y += mnw.y_off;
  watch_frame({x, y, x + dx, y + plate_dy});
  OGL_put_as(shape_quad, 1, blend_mix, t_elements, col_white, alpha);
  const float t0 = face.v / elements_dy, t1 = (face.v + plate_dy) / elements_dy;
  const auto put = [&](float x0, float x1, float u0, float u1) {
    OGL_put_quad(x + x0, y, x + x1, y + plate_dy, u0 / elements_dx, t0, u1 / elements_dx, t1);
  };
  put(0, plate_cap, face.u, face.u + plate_cap);
  put(plate_cap, dx - plate_cap, face.u + plate_cap, face.u + plate_cap);
  put(dx - plate_cap, dx, face.u + face.dx - plate_cap, face.u + face.dx);
}

float BTN_face_row(bool under, bool held) {
  constexpr float idle = 46, strip = plate_dy + 1;
  return !under ? idle : held ? idle - strip : idle - 2 * strip;
}

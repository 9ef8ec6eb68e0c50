// The gallery's sections of the compiled-in pictures.
//
// Main thread.

#include "corekit/draw/g_tex.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "gallery/gallery.h"

namespace {

// Draws the part of a picture that begins at pixel (u, v), dx by dy pixels, with its upper left
// corner at (x, top), `scale` times its size. `tex_dx`, `tex_dy` are the texture's sides.
void plot_part(int ref, float x, float top, float u, float v, float dx, float dy, float tex_dx,
               float tex_dy, float scale) {
  OGL_fillrect(col_gray, 1, x, top - dy * scale, dx * scale, dy * scale);
  OGL_2dquad_d(ref, col_picture, 1, x, top - dy * scale, u / tex_dx, v / tex_dy, dx * scale,
               dy * scale, dx / tex_dx, dy / tex_dy, blend_mix);
}

}  // namespace

void draw_elements_picture(float top) {
  constexpr float half = g_tex_elements_dx / 2.0f, dy = g_tex_elements_dy;
  plot_part(t_elements, content_left, top - 10, 0, 0, half, dy, 1024, 128, 1);
  plot_part(t_elements, content_left, top - 20 - dy, half, 0, half, dy, 1024, 128, 1);
}

void draw_interface_picture(float top) {
  plot_part(t_interface, content_left, top - 8, 0, 0, g_tex_interface_dx, g_tex_interface_dy, 512,
            512, 1);
}

void draw_map_picture(float top) {
  plot_part(t_map, content_left, top - 8, 0, 0, g_tex_map_dx, g_tex_map_dy, 512, 512, 1);
}

void draw_background_picture(float top) {
  plot_part(t_background, content_left, top - 8, 0, 0, g_tex_background_dx, g_tex_background_dy,
            1024, 1024, 0.5f);
}

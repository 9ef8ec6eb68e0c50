// The compiled-in pictures: from their rows, or for a window that scales from the PNG of the
// sharper set, into scratch_array, and from there to the texture manager. Texture coordinates are
// shares of a texture, and a sharper one is twice as large all over, so whoever draws need not know
// which set is loaded. Only the one in use is decoded and kept by the driver.
//
// Main thread. Writes the interface colours of colr, and scratch_array.

#include "corekit/draw/tman_hardwired.h"

#include <bit>
#include <cstring>

#include "corekit/base/exce.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/TEX_png.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/g_tex.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/tman.h"
#include "corekit/files/xmap.h"

namespace {

constexpr int sharp_scale = 2;

struct hardwired_row {
  const unsigned char* rows;
  const char *sharp, *sharp_end;  // a PNG file
  int dx, dy, pixel_bytes;
  int ref;
};
// The interface image comes last, since the palette is then read from where it lies.
const hardwired_row hardwired[] = {
    {g_tex_background, g_tex_background_2x, g_tex_background_2x_end, g_tex_background_dx,
     g_tex_background_dy, 3, t_background},
    {g_tex_elements, g_tex_elements_2x, g_tex_elements_2x_end, g_tex_elements_dx, g_tex_elements_dy,
     4, t_elements},
    {g_tex_map, g_tex_map_2x, g_tex_map_2x_end, g_tex_map_dx, g_tex_map_dy, 4, t_map},
    {g_tex_interface, g_tex_interface_2x, g_tex_interface_2x_end, g_tex_interface_dx,
     g_tex_interface_dy, 4, t_interface},
};

int stride_of(int dx) {
  return static_cast<int>(std::bit_ceil(static_cast<unsigned>(dx)));
}

// The plain picture into scratch_array.
void copy_rows(const hardwired_row& image) {
  const size_t row = static_cast<size_t>(image.dx) * image.pixel_bytes;
  const size_t stride = static_cast<size_t>(stride_of(image.dx)) * image.pixel_bytes;
  for (int y = 0; y < image.dy; ++y)
    std::memcpy(scratch_array + y * stride, image.rows + y * row, row);
}

// The sharper one. False, with a line in the log, if it is not what it should be.
bool decode_sharp(const hardwired_row& image) {
  const int dx = image.dx * sharp_scale, dy = image.dy * sharp_scale;
  xmap_class file("");
  file.look_at(image.sharp, image.sharp_end);
  unsigned char* into = scratch_array;
  TEX_image_desc desc;
  TEX_fault fault;
  const int format = image.pixel_bytes == 3 ? TEX_rgb : TEX_rgba;
  if (TEX_read_png(file, into, format, stride_of(dx), 0, 0, desc, fault) && desc.width == dx &&
      desc.height == dy)
    return true;
  xer << "WARNING: a sharper picture cannot be read: " << (fault.text ? fault.text : "size")
      << "\n";
  return false;
}

// Returns the scale of what is now in scratch_array.
int load_hardwired(const hardwired_row& image, int scale) {
  if (scale == 1 || !decode_sharp(image)) {
    scale = 1;
    copy_rows(image);
  }
  scratch_dx = stride_of(image.dx * scale);
  scratch_dy = image.dy * scale;
  const int colour = image.pixel_bytes == 3 ? tex_rgb : tex_rgba;
  tman.load_texture(tex_fail_fatal, image.ref, tex_interface | tex_full_size | colour, tex_load_now,
                    "scratch_array:hardwired textures");
  return scale;
}

// The look of the toolkit is edited in the interface image, and not here: its colours are swatches
// of that image.
struct swatch_row {
  int colour, column, row;
};
constexpr swatch_row swatches[] = {
    {34, 319, 155}, {35, 319, 147}, {36, 319, 139}, {37, 319, 131}, {38, 319, 123},
    {40, 319, 115}, {41, 319, 107}, {42, 319, 99},  {43, 319, 91},  {45, 319, 83},
    {46, 319, 75},  {47, 319, 67},  {44, 395, 115},
};
constexpr int mean_colour = 39, mean_of_1 = 35, mean_of_2 = 38;

// Takes the palette from the interface image in scratch_array.
void take_palette(int scale) {
  for (const swatch_row& swatch : swatches) {
    const size_t at = static_cast<size_t>(swatch.row * scale) * scratch_dx + swatch.column * scale;
    const unsigned char* rgb = scratch_array + at * 4;
    colr.assign(swatch.colour, static_cast<float>(rgb[0]) / 255, static_cast<float>(rgb[1]) / 255,
                static_cast<float>(rgb[2]) / 255);
  }
  const colr_rgb& one = colr[mean_of_1];
  const colr_rgb& other = colr[mean_of_2];
  colr.assign(mean_colour, (one.r + other.r) / 2, (one.g + other.g) / 2, (one.b + other.b) / 2);
}

int wanted_scale() {
  const bool takes_sharp = ren.max_texture_size >= stride_of(g_tex_background_dx * sharp_scale);
  return takes_sharp && OGL_place().dx > mnw.pix_dx ? sharp_scale : 1;
}

}  // namespace

void load_hardwired_textures() {
  int scale = 1;
  for (const hardwired_row& image : hardwired)
    scale = load_hardwired(image, wanted_scale());
  take_palette(scale);
}

void fit_hardwired_textures() {
  const float wanted = static_cast<float>(g_tex_interface_dx * wanted_scale());
  if (ogl_inited && tman.record(t_interface).dx != wanted) load_hardwired_textures();
}

// make-art: draws the four pictures of the wizard, each at one and at two pixels a unit, and writes
// them as PNG files.
//
//   make-art [--land LAND.json] [--fonts FOLDER] [--out FOLDER]
//
// 1. open the fonts; 2. draw interface, elements, background and, where the land is given, map;
// 3. write them, topmost row first, into the out folder. The same input gives the same bytes. The
// build turns the plain ones into arrays with embed-art, and takes the sharper ones in as they are.

#include <cstdio>
#include <string>

#include "art/art.h"

static int usage() {
  fprintf(stderr,
          "use: make-art [--land LAND.json] [--fonts FOLDER] [--out FOLDER]\n"
          "  --land     TopoJSON of the world's land (Natural Earth, 1:50 million); without it\n"
          "             the map is not drawn\n"
          "  --fonts    folder of the Lato faces; /usr/share/fonts/truetype/lato by default\n"
          "  --out      where the PNG files go; this folder by default\n");
  return 2;
}

// Draws and writes the set of so many pixels a unit.
static bool make_set(int scale, const std::string& land, const std::string& out) {
  const std::string tail = scale == 1 ? ".png" : "@" + std::to_string(scale) + "x.png";
  art_canvas interface(512, 512, scale), map(504, 504, scale);
  art_draw_swatches(interface);
  art_draw_cells(interface);
  art_draw_frames(interface);
  art_bleed({&interface, 0, 0, 512, 512});
  art_draw_glyphs(interface);  // their cells are white to the rim, whatever stands beside them
  if (!land.empty() && !art_map(land, map)) return false;
  // The plain pictures become rows of the depth that the program counts on; of the others only the
  // size of the file matters.
  const art_form map_form = scale == 1 ? form_rgba : form_palette;
  return art_write(interface, form_rgba, out + "/interface" + tail) &&
         art_write(art_elements(scale), form_rgba, out + "/elements" + tail) &&
         (land.empty() || art_write(map, map_form, out + "/map" + tail)) &&
         art_write(art_background(scale), form_rgb, out + "/background" + tail);
}

int main(int argc, char** argv) {
  std::string land, fonts = "/usr/share/fonts/truetype/lato", out = ".";
  for (int i = 1; i < argc; i += 2) {
    const std::string option = argv[i];
    std::string* const value = option == "--land"    ? &land
                               : option == "--fonts" ? &fonts
                               : option == "--out"   ? &out
                                                     : nullptr;
    if (!value || i + 1 == argc) return usage();
    *value = argv[i + 1];
  }
  if (!art_open_fonts(fonts)) return 1;

  for (const int scale : {1, 2})
    if (!make_set(scale, land, out)) return 1;
  return 0;
}

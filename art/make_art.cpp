// make-art: draws the four pictures of the wizard and writes them as PNG files.
//
//   make-art [--land LAND.json] [--fonts FOLDER] [--out FOLDER]
//
// 1. open the fonts; 2. draw interface, elements, background and, where the land is given, map;
// 3. write them, topmost row first, into the out folder. The same input gives the same bytes. The
// build turns the files into arrays with embed-art.

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

  art_pictures art;
  art_draw_swatches(art.interface);
  art_draw_cells(art.interface);
  art_draw_frames(art.interface);
  art_bleed({&art.interface, 0, 0, art.interface.dx, art.interface.dy});
  art_draw_glyphs(art.interface);  // their cells are white to the rim, whatever stands beside them
  art.elements = art_elements();
  art.background = art_background();
  if (!land.empty() && !art_map(land, art.map)) return 1;

  if (!art_write(art.interface, true, out + "/interface.png")) return 1;
  if (!art_write(art.elements, true, out + "/elements.png")) return 1;
  if (!land.empty() && !art_write(art.map, true, out + "/map.png")) return 1;
  if (!art_write(art.background, false, out + "/background.png")) return 1;
  return 0;
}

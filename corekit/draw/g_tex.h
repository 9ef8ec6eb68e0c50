// The four pictures that are compiled into the program: the whole look of the wizard. They are
// drawn by art/make_art, kept as art/*.png, and turned into these arrays by the build
// (art/embed.cpp).
//
// An array is rows of pixels with no header and no padding between rows. THE FIRST ROW IS THE
// LOWEST ROW OF THE PICTURE: a texture coordinate (u, v) in pixels is array row v, column u, so
// that t rises with v and with y on the screen, and a quad drawn from (x, y) upward shows row 0 at
// its foot. In a PNG file of height h, array row r is file row h - 1 - r. Colours are not
// premultiplied; pixels of alpha 0 carry the colour of their neighbours, so that filtering makes no
// dark fringe.
//
// A sharper set, twice as large each way, is for windows in which a unit is more than a pixel. It
// is kept as the PNG files themselves, from g_tex_NAME_2x to its end: as rows it would double the
// program's size.
//
// Read only, any thread, for the life of the process.
#pragma once

inline constexpr int g_tex_interface_dx = 512, g_tex_interface_dy = 512;    // RGBA
inline constexpr int g_tex_elements_dx = 1024, g_tex_elements_dy = 70;      // RGBA
inline constexpr int g_tex_map_dx = 504, g_tex_map_dy = 504;                // RGBA
inline constexpr int g_tex_background_dx = 800, g_tex_background_dy = 600;  // RGB

extern "C" {
extern const unsigned char g_tex_interface[1048576];   // glyphs, swatches, frames, widget cells
extern const unsigned char g_tex_elements[286720];     // button faces (rows 46 idle, 23 pressed, 0
                                                       //   hover, each 22 high) and the page panel
extern const unsigned char g_tex_map[1016064];         // rows 0 to 251 the plain world, 252 to 503
                                                       //   the same with its land highlighted; both
                                                       //   from the south pole up, west to east
extern const unsigned char g_tex_background[1440384];  // the sky; 384 zero bytes follow the rows

extern const char g_tex_interface_2x[], g_tex_interface_2x_end[];
extern const char g_tex_elements_2x[], g_tex_elements_2x_end[];
extern const char g_tex_map_2x[], g_tex_map_2x_end[];
extern const char g_tex_background_2x[], g_tex_background_2x_end[];
}

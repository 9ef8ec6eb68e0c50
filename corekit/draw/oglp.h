// Drawing: a flat layer of rectangles, lines, quads and bitmap text over a small cache of OpenGL
// state. Units are pixels of the current dialog, origin at its lower left, y upward. `col` is an
// index into colr; `alpha` multiplies plot_alpha. Without a window (ogl_inited 0) nothing is drawn
// and OpenGL is not called.
//
// Main thread only.
#pragma once

#include <string>
#include <string_view>

#include "corekit/draw/colour.h"

extern float oglp;  // glyph quads grow by this when above 1; the advance stays

// What the renderer is, as far as drawing asks.
struct ren_record {
  int max_units = 1;            // texture units of the driver
  int max_texture_size = 2048;  // pixels a side that the driver takes
  int tex_res = 5;              // texture resolution setting, 0 to 5; 5 is full size
  int mono_green = 0;           // draw everything in shades of green
  float plot_alpha = 1.0f;      // multiplied into every colour's alpha
  // The driver, as OGL_extensions has found it.
  std::string vendor, renderer, version, extensions;
  int max_image_units = 1;      // of fragment programs
  int max_attrib_units = 1;     // texture coordinates of vertex programs
  float max_anisotropy = 1.0f;  // 1 none
};
extern ren_record ren;

enum text_charset : int {
  charset_text = 100,
  charset_fixed = 102,
  charset_alternate = 103,
  charset_face = 104,  // the larger letters of the wizard's own buttons
};
enum text_just : int { just_left = 0, just_centre = 1, just_right = 2 };

// --- start -------------------------------------------------------------------------------------

// A context has become current, or is about to go: forgets what was known of the one before. Once
// OGL_extensions has asked the driver of a new one, textures may be loaded, before ogl_inited too.
void OGL_new_context(bool is_there);

// Forgets the cached state: the next OGL_setstate reads it from OpenGL again. For whoever has
// changed it behind this layer's back.
void OGL_reset_state();

// --- screen and state --------------------------------------------------------------------------
void OGL_pix_specs();  // mnw's scales, limits and margins from pix_dx, pix_dy; then the projection
// glViewport: `mode` 2 the whole window, 3 the corners given in units, others in pixels.
void OGL_screensize(int mode, float x1, float y1, float x2, float y2);
// The projection: `mode` 2 flat over mnw's limits, and the window's viewport; 3 a perspective over
// the limits given. `keep_aspect` multiplies bottom and top by the viewport's height / width.
void OGL_viewport(int mode, float l, float b, float r, float t, int keep_aspect = 0);
// The one door for OpenGL's state; a value that is set already costs nothing.
// `tex` is the number of texture units to enable, from 0 up to what the driver has; the others are
// of gl_setting, one that is not of its kind being the kind's "off". Flat drawing is (fog_off, tex,
// lit_off, blend_mix, depth_read_off, depth_write_off).
enum gl_setting : int {
  fog_on = 0,
  fog_off = 1,
  lit_on = 2,
  lit_off = 3,
  blend_none = 4,
  blend_mix = 5,
  blend_test = 6,      // the alpha test alone
  blend_mix_test = 7,  // both
  depth_read_on = 8,
  depth_read_off = 9,
  depth_write_on = 10,
  depth_write_off = 11,
};
void OGL_setstate(int fog, int tex, int lit, int alpha, int depth_read, int depth_write);
void OGL_glow_colors();           // blending adds
void OGL_nrml_colors();           // blending mixes: what all flat drawing expects
void OGL_poly_offset(int level);  // 0 off
void OGL_scissors(float x, float y, float dx, float dy);  // draw inside only; negative sizes are 0
void OGL_scissors_end();

// --- shapes ------------------------------------------------------------------------------------
void OGL_fillrect(int col, float alpha, float x, float y, float dx, float dy);
void OGL_framerect(int col, float alpha, float x, float y, float dx, float dy);
// Between two corners, in col_black.
void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha);
void OGL_line(int col, float alpha, float x1, float y1, float x2, float y2);
void OGL_fillcircle(int col, float x, float y, float r);
void OGL_framecircle(int col, float x, float y, float r);
// A quad with four free corners, and one along the axes. `ref` above 0 is a texture of tman; `tex`
// and `blend` are the second and fourth arguments of OGL_setstate.
void OGL_2dquad(int ref, int col, float alpha, float x1, float y1, float s1, float t1, float x2,
                float y2, float s2, float t2, float x3, float y3, float s3, float t3, float x4,
                float y4, float s4, float t4, int tex, int blend);
void OGL_2dquad_d(int ref, int col, float alpha, float x, float y, float s, float t, float dx,
                  float dy, float ds, float dt, int blend);
void OGL_spectrum_rgb(float v);  // sets the GL colour from a rainbow; v is held to 0 to 1

// --- text, ISO Latin-1 -------------------------------------------------------------------------
// OGL_string and OGL_string_width take UTF-8 as well, for the paths in a text.

// Word-wrapped text (a `wrap_dx` of 0 or below, or 9999 and above, does not wrap, and then LF moves
// nothing). Returns the y of the next line, without a window too.
float OGL_string(int col, float x, float y, const std::string& s, float wrap_dx,
                 int charset = charset_text, int just = just_left);
int OGL_string_lines(const std::string& s, float wrap_dx);  // that it takes, in charset_text
// An odometer of exactly `digits` cells (charset_fixed), or a number in text with "," and ".",
// which goes over to 1.23x6 (1.23 times ten to the 6) when it does not fit `digits`.
void OGL_number(int col, float x, float y, float value, int digits, int decimals, int charset);
std::string OGL_number_text(float value, int digits, int decimals);  // the latter form's characters
void OGL_gray_string(int col, float x, float y, const std::string& s);  // centred over a plate
// Width of one byte, and of a whole string, in the proportional charset, or in charset_face; units.
int OGL_char_width(unsigned char ch);
int OGL_string_width(std::string_view s, int charset = charset_text);
bool OGL_face_has(std::string_view s);  // whether charset_face has all of its letters

// One line, in window units (no dialog offset is added). `just` goes by the proportional widths in
// every charset; charset_face goes by its own.
void str_one_line(int col, float x, float y, std::string_view s, int charset, int just);
// Makes ready to draw glyphs: state, colour, font. Gives the cell size in units and the origin of
// the grid in the font's texture; returns the fixed advance, 0 for a proportional charset, or -1
// after the alert for a charset that there is not.
float OGL_strtex(int charset, int col, float* s0, float* t0, float* cell_dx, float* cell_dy);
// Adds one glyph to the picture, as OGL_strtex has made ready; in window units.
void OGL_char(float x, float y, float s0, float t0, float cell_dx, float cell_dy, int ch,
              int charset);

// --- frame -------------------------------------------------------------------------------------
void OGL_plot_back_col();  // the whole window in col_back
// Ends the frame: shows what was drawn in it, unless that is what the window shows already. 1 if it
// was shown. Nothing is cleared: each frame draws the whole window. With `goes_on` the frame is not
// over, and what comes is drawn on top.
int OGL_sbuff(int goes_on = 0);
// Whether OGL_sbuff would show something.
int OGL_differs();
// Forgets what was drawn in this frame; 1 if anything was.
int OGL_drop_picture();
// The window has lost what it shows: the next OGL_sbuff shows its picture in any case.
void OGL_show_next();
// Puts what was drawn so far into the back buffer. For whoever reads from there; OGL_sbuff does it
// by itself.
void OGL_paint();
// The large background: while the splash is up, takes "Resources/bitmaps/intro_PFC.png", of at most
// 2,048 pixels a side, into the tiles t_back_tile and on (an alert if it cannot); and draws it, if
// there is one. Uses up scratch_array.
void OGL_make_back_tex();
void OGL_plot_back_tex();
// Reads the middle of the window, at most 2,048 by 2,048, from the shown picture into scratch_array
// as rows of RGB, and its size into scratch_dx, scratch_dy. With `to_file` non-zero also writes it
// to the first "screenshot_1.png" and so on of the working folder that does not exist yet.
void OGL_screenshot(int to_file = 0);

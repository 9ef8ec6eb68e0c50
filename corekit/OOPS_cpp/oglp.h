// Drawing: a flat layer of rectangles, lines, quads and bitmap text over a small cache of OpenGL
// state. Units are pixels of the current dialog, origin at its lower left, y upward. `col` is an
// index into colr; `alpha` multiplies plot_alpha. Without a window (ogl_inited 0) nothing is drawn.
//
// Main thread only.
#pragma once

#include <string>

extern float oglp;  // glyph quads grow by this when above 1; the advance stays

enum text_charset : int { charset_text = 100, charset_fixed = 102, charset_alternate = 103 };
enum text_just : int { just_left = 0, just_centre = 1, just_right = 2 };

// --- screen and state
// ------------------------------------------------------------------------------
void OGL_pix_specs();
void OGL_screensize(int mode, float x1, float y1, float x2, float y2);
void OGL_viewport(int mode, float l, float b, float r, float t, int keep_aspect = 0);
void OGL_setstate(int fog, int tex, int lit, int alpha, int depth_read, int depth_write);
void OGL_glow_colors();
void OGL_nrml_colors();
void OGL_poly_offset(int level);
void OGL_scissors(float x, float y, float dx, float dy);
void OGL_scissors_end();

// --- shapes
// ----------------------------------------------------------------------------------------
void OGL_fillrect(int col, float alpha, float x, float y, float dx, float dy);
void OGL_framerect(int col, float alpha, float x, float y, float dx, float dy);
void OGL_grayrect(float x1, float y1, float x2, float y2, float alpha);
void OGL_line(int col, float alpha, float x1, float y1, float x2, float y2);
void OGL_fillcircle(int col, float x, float y, float r);
void OGL_framecircle(int col, float x, float y, float r);
void OGL_2dquad(int ref, int col, float alpha, float x1, float y1, float s1, float t1, float x2,
                float y2, float s2, float t2, float x3, float y3, float s3, float t3, float x4,
                float y4, float s4, float t4, int tex, int blend);
void OGL_2dquad_d(int ref, int col, float alpha, float x, float y, float s, float t, float dx,
                  float dy, float ds, float dt, int blend);

// --- text
// ------------------------------------------------------------------------------------------
// Word-wrapped text (a `wrap_dx` of 0 or below, or 9999 and above, does not wrap). Returns the y of
// the next line, without a window too.
float OGL_string(int col, float x, float y, const std::string& s, float wrap_dx,
                 int charset = charset_text, int just = just_left);
void OGL_number(int col, float x, float y, float value, int digits, int decimals, int charset);
void OGL_gray_string(int col, float x, float y, const std::string& s);
void OGL_boxed_string(float x, float y, const std::string& label, const std::string& s, int charset,
                      int col);
// Width of one byte, and of a whole string, in the proportional charset; units.
int OGL_char_width(unsigned char ch);
int OGL_string_width(const std::string& s);

// --- frame
// -----------------------------------------------------------------------------------------
void OGL_plot_back_col();
void OGL_sbuff();
void OGL_screenshot(int to_file);

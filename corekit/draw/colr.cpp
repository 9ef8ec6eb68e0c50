// The colour table: the fixed colours, and the spectrum.
//
// Main thread. Writes nothing but the table.

#include "corekit/draw/colr.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/base/hl_run.h"

colr_class colr;

namespace {

// Runs of colours that are set at start; what lies between begins black.
struct colr_row {
  int index;
  colr_rgb rgb;
};
constexpr colr_row fixed_colours[] = {
    {0, {1, 1, 1}},           {1, {1, .2f, .2f}},    {2, {1, 1, .2f}},
    {3, {.7f, .7f, .7f}},     {4, {.8f, 0, 0}},      {5, {1, 1, 0}},
    {6, {.3f, .3f, .3f}},     {7, {.2f, 0, 0}},      {8, {1, .8f, .2f}},
    {9, {.1f, .1f, .1f}},     {10, {0, .8f, 0}},     {11, {0, 0, 0}},
    {12, {0, 0, 0}},          {13, {0, .4f, 0}},     {14, {0, 0, 0}},
    {15, {.4f, .4f, 1}},      {16, {0, 0, 0}},       {17, {0, 0, .6f}},
    {18, {.9f, .9f, .9f}},    {19, {.8f, .1f, .1f}}, {20, {.9f, .9f, 1}},
    {21, {.9f, .9f, .9f}},    {22, {.1f, .1f, .1f}}, {23, {0, 0, 0}},
    {24, {1, 1, 0}},          {25, {0, 0, 0}},       {26, {1, 1, 1}},
    {27, {1, 1, 1}},          {28, {1, 1, 1}},       {29, {1, 1, 0}},
    {30, {0, 0, 0}},          {31, {1, 1, 1}},       {32, {1, 1, 1}},
    {33, {1, 1, 1}},          {49, {1, 1, 1}},       {50, {.4f, 1, .4f}},
    {51, {1, .4f, .4f}},      {52, {1, 1, .6f}},     {53, {.7f, .7f, 1}},
    {54, {1, .5f, 0}},        {55, {.8f, .8f, .8f}}, {56, {0, 1, 0}},
    {57, {1, .2f, .2f}},      {58, {1, 1, .2f}},     {59, {.4f, .4f, 1}},
    {60, {.5f, .3f, 0}},      {61, {.5f, .5f, .5f}}, {62, {0, .6f, 0}},
    {63, {.6f, .2f, 0}},      {64, {1, 1, 0}},       {65, {.2f, .2f, .8f}},
    {66, {1, .4f, 0}},        {67, {.2f, .2f, .2f}}, {68, {0, .2f, 0}},
    {69, {1, 0, 0}},          {70, {.6f, .6f, 0}},   {71, {.15f, .15f, .6f}},
    {72, {.49f, .43f, .24f}}, {73, {0, 0, 0}},       {74, {0, .1f, 0}},
    {75, {1, .2f, 1}},        {76, {1, 0, 1}},       {77, {0, 1, 1}},
    {78, {.44f, .53f, .54f}}, {85, {1, 0, 1}},       {86, {0, 0, 0}},
    {87, {1, 0, 1}},          {88, {1, 1, 1}},
};

colr_rgb mix(const colr_rgb& a, const colr_rgb& b, float part) {
  return {a.r + (b.r - a.r) * part, a.g + (b.g - a.g) * part, a.b + (b.b - a.b) * part};
}

// The colour at `v`, 0 to 1, of a scale with stops at equal distances.
template <int count>
colr_rgb along(const colr_rgb (&stops)[count], float v) {
  const float at = std::clamp(v, 0.0f, 1.0f) * static_cast<float>(count - 1);
  const int band = std::min(static_cast<int>(at), count - 2);
  return mix(stops[band], stops[band + 1], at - static_cast<float>(band));
}

}  // namespace

colr_class::colr_class() {
  for (const colr_row& row : fixed_colours)
    table_[row.index] = row.rgb;
  for (int i = 0; i < 256; ++i) {
    gamma_table[i] =
        static_cast<unsigned char>(std::lround(255.0 * std::pow(i / 255.0, gamma_target / gamma)));
  }
}

void colr_class::assign(int index, float r, float g, float b) {
  if (index >= 0 && index < colr_count) table_[index] = {r, g, b};
}

void colr_class::set_lites_for_interface() {
  for (float* part : {&lites_.r, &lites_.g, &lites_.b})
    *part = std::max(*part, 0.75f);
}

void colr_class::spectrum_init(int kind) {
  static constexpr colr_rgb rainbow[] = {{1, 0, 0}, {1, .32f, .08f}, {1, 1, 0},
                                         {0, 1, 0}, {0, 0, 1},       {.8f, 0, .8f}};
  for (int i = 0; i < spectrum_count; ++i) {
    const float v = static_cast<float>(i) / static_cast<float>(spectrum_count);
    switch (kind) {
      case 1:
        spectrum_[i] = {v, 0, 0};
        break;
      case 2:
        spectrum_[i] = {0, v, 0};
        break;
      case 3:
        spectrum_[i] = {0, 0, v};
        break;
      default:
        spectrum_[i] = along(rainbow, v);
        break;
    }
  }
}

void OGL_spectrum_rgb(float v) {
  static constexpr colr_rgb stops[] = {{1, 0, 0}, {1, .5f, 0}, {1, 1, 0},    {0, 1, 0},
                                       {0, 1, 1}, {0, 0, 1},   {.8f, 0, .8f}};
  if (!ogl_inited) return;
  const colr_rgb rgb = along(stops, v);
  gl.Color3fv(&rgb.r);
}

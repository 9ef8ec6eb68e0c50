// A picture as a PNG file: in full colours, or in 256 that are found by median cut (P. Heckbert,
// "Color image quantization for frame buffer display", 1982).
//
// No gamma is noted in the file: what reads it takes the bytes as they are.

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <map>

#include "art/canvas.h"

namespace {

using bytes = std::vector<uint8_t>;
using rgb = std::array<uint8_t, 3>;

bytes to_bytes(const art_canvas& canvas, int channels) {
  bytes all;
  all.reserve(canvas.pixels.size() * size_t(channels));
  for (const art_colour& pixel : canvas.pixels) {
    const float parts[4] = {pixel.r, pixel.g, pixel.b, pixel.a};
    for (int c = 0; c < channels; ++c)
      all.push_back(uint8_t(std::clamp(parts[c], 0.0f, 1.0f) * 255.0f + 0.5f));
  }
  return all;
}

// --- palette ------------------------------------------------------------------------------------
struct counted {
  rgb colour;
  long count;
};
using box = std::vector<counted>;

int spread(const box& of, size_t channel) {
  const auto [low, high] = std::minmax_element(
      of.begin(), of.end(),
      [&](const auto& a, const auto& b) { return a.colour[channel] < b.colour[channel]; });
  return high->colour[channel] - low->colour[channel];
}

size_t widest_channel(const box& of) {
  size_t widest = 0;
  for (const size_t channel : {1u, 2u})
    if (spread(of, channel) > spread(of, widest)) widest = channel;
  return widest;
}

// The upper half of the box, by pixels, along its widest channel; it keeps the lower one.
box split(box& of) {
  const size_t channel = widest_channel(of);
  std::sort(of.begin(), of.end(), [&](const auto& a, const auto& b) {
    return a.colour[channel] != b.colour[channel] ? a.colour[channel] < b.colour[channel]
                                                  : a.colour < b.colour;
  });
  long all = 0, below = 0;
  for (const counted& one : of)
    all += one.count;
  size_t at = 0;
  while (at + 2 < of.size() && (below += of[at].count) < all / 2)
    ++at;
  box upper(of.begin() + long(at) + 1, of.end());
  of.resize(at + 1);
  return upper;
}

std::vector<rgb> best_colours(const std::map<rgb, long>& histogram) {
  std::vector<box> boxes(1);
  for (const auto& [colour, count] : histogram)
    boxes[0].push_back({colour, count});
  while (boxes.size() < 256) {
    const auto widest =
        std::max_element(boxes.begin(), boxes.end(), [](const box& a, const box& b) {
          return spread(a, widest_channel(a)) < spread(b, widest_channel(b));
        });
    if (widest->size() < 2) break;
    boxes.push_back(split(*widest));
  }
  std::vector<rgb> colours;
  for (const box& of : boxes) {
    long sums[3] = {}, all = 0;
    for (const auto& [colour, count] : of) {
      all += count;
      for (size_t c = 0; c < 3; ++c)
        sums[c] += colour[c] * count;
    }
    colours.push_back({uint8_t((sums[0] + all / 2) / all), uint8_t((sums[1] + all / 2) / all),
                       uint8_t((sums[2] + all / 2) / all)});
  }
  return colours;
}

uint8_t nearest(const std::vector<rgb>& colours, const rgb& to) {
  const auto distance = [&to](const rgb& a) {
    int sum = 0;
    for (size_t c = 0; c < 3; ++c)
      sum += (a[c] - to[c]) * (a[c] - to[c]);
    return sum;
  };
  const auto best =
      std::min_element(colours.begin(), colours.end(),
                       [&](const rgb& a, const rgb& b) { return distance(a) < distance(b); });
  return uint8_t(best - colours.begin());
}

// Turns pixels of three bytes into ones of one, and returns what these stand for.
std::vector<rgb> reduce(bytes& pixels) {
  std::map<rgb, long> histogram;
  for (size_t i = 0; i < pixels.size(); i += 3)
    ++histogram[{pixels[i], pixels[i + 1], pixels[i + 2]}];
  std::vector<rgb> colours = best_colours(histogram);
  std::map<rgb, uint8_t> places;
  for (const auto& [colour, count] : histogram)
    places[colour] = nearest(colours, colour);
  for (size_t i = 0; i < pixels.size(); i += 3)
    pixels[i / 3] = places[{pixels[i], pixels[i + 1], pixels[i + 2]}];
  pixels.resize(pixels.size() / 3);
  return colours;
}

// --- file ---------------------------------------------------------------------------------------
bool write_file(FILE* out, const art_canvas& canvas, int png_type, const std::vector<rgb>& colours,
                std::vector<png_bytep>& rows) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  bool ok = false;
  if (info && !setjmp(png_jmpbuf(png))) {
    png_init_io(png, out);
    png_set_compression_level(png, 9);
    png_set_compression_mem_level(png, 9);
    // Neighbours in a palette have nothing in common.
    png_set_filter(png, PNG_FILTER_TYPE_BASE, colours.empty() ? PNG_ALL_FILTERS : PNG_FILTER_NONE);
    png_set_IHDR(png, info, png_uint_32(canvas.dx), png_uint_32(canvas.dy), 8, png_type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!colours.empty())
      png_set_PLTE(png, info, reinterpret_cast<const png_color*>(colours.data()),
                   int(colours.size()));
    png_write_info(png, info);
    png_write_image(png, rows.data());
    png_write_end(png, info);
    ok = true;
  }
  png_destroy_write_struct(&png, &info);
  return ok;
}

}  // namespace

bool art_write(const art_canvas& canvas, art_form form, const std::string& path) {
  bytes pixels = to_bytes(canvas, form == form_rgba ? 4 : 3);
  std::vector<rgb> colours;
  if (form == form_palette) colours = reduce(pixels);
  const size_t row = pixels.size() / size_t(canvas.dy);
  std::vector<png_bytep> rows;
  for (int v = canvas.dy - 1; v >= 0; --v)
    rows.push_back(pixels.data() + row * size_t(v));
  const int png_type = form == form_rgba  ? PNG_COLOR_TYPE_RGB_ALPHA
                       : form == form_rgb ? PNG_COLOR_TYPE_RGB
                                          : PNG_COLOR_TYPE_PALETTE;
  FILE* const out = fopen(path.c_str(), "wb");
  bool ok = out && write_file(out, canvas, png_type, colours, rows);
  if (out && fclose(out) != 0) ok = false;
  if (!ok) fprintf(stderr, "cannot write %s\n", path.c_str());
  return ok;
}

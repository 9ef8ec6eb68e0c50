// The numbered colours: every drawing function takes an index into this table.
//
// 0 to 33, 49 to 78 and 85 to 88 are fixed at start, 34 to 47 come out of the interface image, and
// the rest begin black and are the application's to assign. Indices below 46 are dimmed by the
// light tint. Main thread.
#pragma once

inline constexpr int colr_count = 108;
inline constexpr int colr_tinted = 46;  // indices below this one are multiplied by the tint
inline constexpr int spectrum_count = 1000;

struct colr_rgb {
  float r = 0, g = 0, b = 0;  // 0 to 1
};

class colr_class {
 public:
  colr_class();

  // Stores a colour; an index outside the table is ignored.
  void assign(int index, float r, float g, float b);
  // The colour of an index; white for an index outside the table.
  const colr_rgb& operator[](int index) const {
    return table_[index >= 0 && index < colr_count ? index : 0];
  }

  // Raises each tint component to at least 0.75, so that a dark scene leaves the interface
  // readable.
  void set_lites_for_interface();
  const colr_rgb& lites() const { return lites_; }

  // Fills the spectrum. `kind` 0 is the rainbow from red to violet, 1, 2 and 3 a ramp of red, green
  // or blue alone.
  void spectrum_init(int kind);
  // Draws the spectrum as a legend 1,000 units high that stands on (x, y), with its two limits.
  void spectrum_plotscale(float x, float y, float low, float high, int decimals);

  // What image code corrects to and from. Equal, so that gamma_table is the identity.
  double gamma_target = 1.8;
  double gamma = 1.8;
  int gamma_differs = 0;           // 1 when gamma is not 1.8
  unsigned char gamma_table[256];  // 255 * (i / 255) ^ (gamma_target / gamma), rounded

 private:
  colr_rgb table_[colr_count];
  colr_rgb lites_{1, 1, 1};
  float scale_low_ = 0, scale_high_ = 0, scale_span_ = 0;  // of the legend last drawn
  colr_rgb spectrum_[spectrum_count];
};

extern colr_class colr;

// The numbered colours: every drawing function takes an index into this table.
#pragma once

inline constexpr int colr_count = 108;

struct colr_rgb {
  float r = 0, g = 0, b = 0;  // 0 to 1
};

class colr_class {
 public:
  colr_class();
  void assign(int index, float r, float g, float b);
  const colr_rgb& operator[](int index) const { return table_[index]; }
  // Raises each tint component to at least 0.75, so that a dark scene leaves the interface
  // readable.
  void set_lites_for_interface();
  const colr_rgb& lites() const { return lites_; }

 private:
  colr_rgb table_[colr_count];
  colr_rgb lites_{1, 1, 1};
};

extern colr_class colr;

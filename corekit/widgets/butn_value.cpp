// Number entry digit by digit, and the character wheel.
//
// Main thread. Writes the caller's variable, stls (hover help), mnw.cursor_mode, and the statics of
// the two widget families: their key queues and the cell under the keyboard cursor.

#include "corekit/widgets/butn_value.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>

#include "corekit/base/hl_run.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/oglp.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_draw.h"
#include "corekit/widgets/keys_codes.h"

namespace {

constexpr float cell_pitch = 10, no_wrap = 9999;
constexpr int most_digits = 15;   // what a number's magnitude holds exactly while it is edited
constexpr int most_columns = 10;  // whose arrows respond

// --- cells ---------------------------------------------------------------------------------------

// A row of cells from x on, what surrounds it, and the mouse on it.
struct cell_row {
  float x, y;
  int count;
  float up_y, down_y;  // middles of the arrows

  float width() const { return static_cast<float>(count) * cell_pitch; }
  float middle() const { return y + 3; }

  void plot_arrows() const {
    constexpr float half_dx = 7, half_dy = 9, u = 90, up_v = 206, down_v = 187;
    for (int i = 0; i < count; ++i) {
      const float cell_middle = x + static_cast<float>(i) * cell_pitch + 6;
      BTN_util_element(cell_middle, up_y, u, up_v, half_dx, half_dy, 0);
      BTN_util_element(cell_middle, down_y, u, down_v, half_dx, half_dy, 0);
    }
  }

  void plot_cursor(int cell) const {
    OGL_fillrect(col_mark, 1, x + static_cast<float>(cell) * cell_pitch + 2, y - 2, 9, 11);
  }

  bool mouse_on_cells() const { return BTN_mouse_in(x, y - 2, x + width(), y + 8); }
  // The column that was clicked, or -1.
  int clicked_cell() const {
    if (!mnw.mouse_clicked || !mouse_on_cells()) return -1;
    return std::clamp(static_cast<int>((mnw.mouse_x - 2 - x) / cell_pitch), 0, count - 1);
  }

  // 1 or -1 when an arrow was clicked, with its column; 0 otherwise. The pointer shows which.
  int clicked_arrow(int* column) const {
    if (!BTN_mouse_in(x, y - 18, x + width(), y + 24) || mouse_on_cells()) return 0;
    const bool up = mnw.mouse_y > middle();
    mnw.cursor_mode = up ? cursor_up : cursor_down;
    *column = static_cast<int>((mnw.mouse_x - x) / cell_pitch);
    if (!mnw.mouse_clicked || *column >= std::min(count, most_columns)) return 0;
    return up ? 1 : -1;
  }
};

void plot_labels(const cell_row& row, const std::string& left, const std::string& right) {
  BTN_util_draw_label(row.x - 12, row.y, 0, left, 0);
  BTN_util_draw_label(row.x + row.width() + 12, row.y, 2, right, 0);
}

void plot_number_box(const cell_row& row) {
  BTN_frame1(strip_value, row.x + static_cast<float>(row.count) * 5 - 1, row.middle(),
             row.width() + 15, 0);
}

// Moves the cursor by the arrow keys, round the ends.
void step_cursor(int* cell, int by, int count) {
  *cell = (*cell + by + count) % count;
}

// --- numbers as the digits that are shown --------------------------------------------------------

// A number being edited, in units of its last decimal: so a digit is exactly the one on the screen,
// whatever a float makes of tenths.
class shown_number {
 public:
  shown_number(float value, int digits, int decimals, float low, float high)
      : digits_(digits), scale_(std::pow(10.0, decimals)), low_(low), high_(high) {
    read(value);
  }

  void step(int digit, int by) { units_ += by * place(digit); }
  void set_digit(int digit, int to) {
    const int64_t p = place(digit), a = std::llabs(units_);
    const int64_t changed = a + (to - a / p % 10) * p;
    units_ = units_ < 0 ? -changed : changed;
  }
  void set_sign(bool negative) { units_ = negative ? -std::llabs(units_) : std::llabs(units_); }

  // Within the limits, then rounded: half away from zero.
  float value() {
    read(std::clamp(static_cast<float>(static_cast<double>(units_) / scale_), low_, high_));
    return static_cast<float>(static_cast<double>(units_) / scale_);
  }

 private:
  void read(float value) {
    constexpr double most_units = 1e18;  // within 64 bits
    if (std::isnan(value)) value = 0;
    const double units = static_cast<double>(std::clamp(value, low_, high_)) * scale_;
    units_ = std::llround(std::clamp(units, -most_units, most_units));
  }
  int64_t place(int digit) const {
    int64_t p = 1;
    for (int i = digit + 1; i < digits_; ++i)
      p *= 10;
    return p;
  }

  int digits_;
  double scale_;
  float low_, high_;
  int64_t units_ = 0;
};

// The greatest number of so many digits, a little below the next power of ten: 9.99 times a power
// for three of them.
float limit_of(int digits, int decimals) {
  const double nines = 10.0 - std::pow(10.0, 1 - std::clamp(digits, 1, 10));
  return static_cast<float>(nines * std::pow(10.0, digits - 1 - decimals));
}

// One key of a number entry.
void take_number_key(const BTN_key& key, shown_number& number, int* hot, int digits, float low,
                     float high) {
  switch (key.vkey) {
    case vk_left:
      return step_cursor(hot, -1, digits);
    case vk_right:
      return step_cursor(hot, 1, digits);
    case vk_up:
      return number.step(*hot, 1);
    case vk_down:
      return number.step(*hot, -1);
    default:
      break;
  }
  if (key.ch >= '0' && key.ch <= '9') {
    number.set_digit(*hot, key.ch - '0');
    step_cursor(hot, 1, digits);
  } else if (key.ch == '+' && low < 0) {
    number.set_sign(false);
  } else if (key.ch == '-' && high >= 0) {
    number.set_sign(true);
  }
}

}  // namespace

// One call is one frame; what is done in it:
//
//   mouse on the cells       hover help; a click puts the cursor there and takes the focus
//   mouse on the arrows      pointer up or down; a click steps that digit
//   keys, with the focus     arrows, digits, + and -
//   in every frame           clamp, round, draw
int BTN_flt_range(float x, float y, float* value, int digits, int decimals, float low, float high,
                  const std::string& label) {
  static BTN_key_queue queue;
  static int hot_digit = 0;
  if (!ogl_inited) return 0;
  digits = std::clamp(digits, 1, most_digits);
  if (high < low) std::swap(low, high);
  const cell_row row = {x, y, digits, y + 18, y - 10};
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);

  BTN_hover(x, y - 2, x + row.width(), y + 8, help);
  const int clicked = row.clicked_cell();
  if (clicked >= 0) hot_digit = clicked;
  const int id = BTN_identity(x, y);
  const int focused =
      BTN_register_queue(id, queue, accept_moves | accept_digits | accept_signs, clicked >= 0);
  if (focused) hot_digit = std::clamp(hot_digit, 0, digits - 1);

  const float before = *value;
  shown_number number(*value, digits, decimals, low, high);
  BTN_key key;
  for (int at = 0; BTN_take_key(queue, id, &at, &key);) {
    hot_digit = std::clamp(hot_digit, 0, digits - 1);
    take_number_key(key, number, &hot_digit, digits, low, high);
    number.value();  // each key finds a value within the limits
  }
  int column;
  if (const int by = row.clicked_arrow(&column)) number.step(column, by);
  *value = number.value();

  plot_number_box(row);
  row.plot_arrows();
  plot_labels(row, left, right);
  if (focused) row.plot_cursor(hot_digit);
  OGL_number(col_note, x + 3, y, *value, digits, decimals, charset_fixed);
  return *value != before;
}

int BTN_flt(float x, float y, float* value, int digits, int decimals, int allow_negative,
            const std::string& label) {
  const float high = limit_of(digits, decimals);
  return BTN_flt_range(x, y, value, digits, decimals, allow_negative ? -high : 0, high, label);
}

int BTN_int(float x, float y, int* value, int digits, int allow_negative,
            const std::string& label) {
  const float high = limit_of(digits, 0);
  return BTN_int_range(x, y, value, digits, allow_negative ? -high : 0, high, label);
}

int BTN_int_range(float x, float y, int* value, int digits, float low, float high,
                  const std::string& label) {
  if (!ogl_inited) return 0;
  float as_float = static_cast<float>(*value);
  BTN_flt_range(x, y, &as_float, digits, 0, low, high, label);
  const int before = *value;
  *value = static_cast<int>(as_float);
  return *value != before;
}

int BTN_dob_range(float x, float y, double* value, int digits, int decimals, float low, float high,
                  const std::string& label) {
  float as_float = static_cast<float>(*value);
  const int changed = BTN_flt_range(x, y, &as_float, digits, decimals, low, high, label);
  if (changed) *value = as_float;
  return changed;
}

namespace {
float grid_x(float i, int digits) {
  return i * 75 + 75 - static_cast<float>(digits) * cell_pitch;
}
float grid_y(float j) {
  return j * 50 + 25;
}
}  // namespace

int BTN_fltij(float i, float j, float* value, int digits, int decimals, int allow_negative,
              const std::string& label) {
  return BTN_flt(grid_x(i, digits), grid_y(j), value, digits, decimals, allow_negative, label);
}

int BTN_flt_rangeij(float i, float j, float* value, int digits, int decimals, float low, float high,
                    const std::string& label) {
  return BTN_flt_range(grid_x(i, digits), grid_y(j), value, digits, decimals, low, high, label);
}

void BTN_display_number(float x, float y, float value, int digits, int decimals,
                        const std::string& label) {
  if (!ogl_inited) return;
  const cell_row row = {x, y, std::max(digits, 1), 0, 0};
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  plot_number_box(row);
  plot_labels(row, left, right);
  OGL_number(col_note, x + 3, y, value, digits, decimals, charset_fixed);
}

int enter_lat_lon(float* lat, float* lon, float x, float y, int decimals) {
  constexpr int lat_digits = 2, lon_digits = 3;
  constexpr float gap = 70;
  const float lon_x = x + static_cast<float>(lat_digits + decimals) * cell_pitch + gap;
  int changed = BTN_flt_range(x, y, lat, lat_digits + decimals, decimals, -90, 90, "lat:");
  changed |= BTN_flt_range(lon_x, y, lon, lon_digits + decimals, decimals, -180, 180, "lon:");
  return changed;
}

// --- character wheel -----------------------------------------------------------------------------

namespace {

constexpr char wheel[] = " 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-";
constexpr int wheel_size = static_cast<int>(sizeof wheel) - 1;

char turned(char c, int by) {
  const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  const char* found = upper ? std::find(wheel, wheel + wheel_size, upper) : wheel + wheel_size;
  // What is not on the wheel counts as "0".
  const int position = found == wheel + wheel_size ? 1 : static_cast<int>(found - wheel);
  return wheel[(position + by + wheel_size) % wheel_size];
}

void take_wheel_key(const BTN_key& key, char* text, int* hot, int length) {
  switch (key.vkey) {
    case vk_left:
      return step_cursor(hot, -1, length);
    case vk_right:
      return step_cursor(hot, 1, length);
    case vk_up:
      text[*hot] = turned(text[*hot], 1);
      return;
    case vk_down:
      text[*hot] = turned(text[*hot], -1);
      return;
    default:
      break;
  }
  const bool letter = (key.ch >= 'A' && key.ch <= 'Z') || (key.ch >= 'a' && key.ch <= 'z');
  if (!letter && !(key.ch >= '0' && key.ch <= '9') && key.ch != '-') return;
  text[*hot] = static_cast<char>(std::toupper(key.ch));
  step_cursor(hot, 1, length);
}

}  // namespace

int BTN_chars(float x, float y, char* text, int length, const std::string& label) {
  static BTN_key_queue queue;
  static int hot_digit = 0;
  if (!ogl_inited || length < 1) return 0;
  const cell_row row = {x, y, length, y + 3 + 15, y + 3 - 13};
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);

  BTN_hover(x, y - 2, x + row.width(), y + 8, help);
  const int clicked = row.clicked_cell();
  if (clicked >= 0) hot_digit = clicked;
  const int id = BTN_identity(x, y);
  const int focused = BTN_register_queue(
      id, queue, accept_moves | accept_letters | accept_digits | accept_signs | accept_printable,
      clicked >= 0);
  if (focused) hot_digit = std::clamp(hot_digit, 0, length - 1);

  const std::string before(text, static_cast<size_t>(length));
  BTN_key key;
  for (int at = 0; BTN_take_key(queue, id, &at, &key);) {
    hot_digit = std::clamp(hot_digit, 0, length - 1);
    take_wheel_key(key, text, &hot_digit, length);
  }
  int column;
  if (const int by = row.clicked_arrow(&column)) text[column] = turned(text[column], by);

  BTN_frame1(strip_value, x + static_cast<float>(length) * 5 + 1, row.middle(), row.width() + 11,
             0);
  row.plot_arrows();
  plot_labels(row, left, right);
  if (focused) row.plot_cursor(hot_digit);
  for (int i = 0; i < length; ++i) {
    OGL_string(col_note, x + 3 + static_cast<float>(i) * cell_pitch, y,
               std::string(1, text[i] ? text[i] : ' '), no_wrap, charset_fixed);
  }
  return before != std::string_view(text, static_cast<size_t>(length));
}

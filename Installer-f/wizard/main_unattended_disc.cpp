// Any thread: nothing but the arguments is read or written.

#include "Installer-f/wizard/main_unattended_disc.h"

#include <algorithm>

#include "corekit/base/hl_string.h"

namespace {

constexpr size_t name_length = 7;  // of "+30-120"

bool is_number(std::string_view digits) {
  return std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A sign and a whole number of degrees that a sector begins at: its index, or -1.
int index_of(std::string_view text, int limit) {
  if ((text[0] != '+' && text[0] != '-') || !is_number(text.substr(1))) return -1;
  const int size = str_to_int(text.substr(1));
  const int degrees = text[0] == '-' ? -size : size;
  if (degrees % 10 != 0 || degrees < -limit || degrees >= limit) return -1;
  return (degrees + limit) / 10;
}

// The cell of a sector's name, or -1.
int cell_of(std::string_view name) {
  if (name.size() != name_length) return -1;
  const int row = index_of(name.substr(0, 3), 90);
  const int column = index_of(name.substr(3), 180);
  return row < 0 || column < 0 ? -1 : sector_cell(column, row);
}

}  // namespace

std::string unattended_read_sectors(const std::string& text, int (&selected)[sector_count]) {
  std::fill(std::begin(selected), std::end(selected), text == "all" ? 1 : 0);
  if (text == "all" || text == "none") return "";

  std::string_view rest = text;
  for (;;) {
    const size_t comma = rest.find(',');
    const std::string_view name = rest.substr(0, comma);
    const int cell = cell_of(name);
    if (cell < 0) {
      return "--sectors wants all, none or a list such as +30-120,+40-110, and there is no sector "
             "'" +
             std::string(name) + "'.";
    }
    selected[cell] = 1;
    if (comma == std::string_view::npos) return "";
    rest.remove_prefix(comma + 1);
  }
}

std::string unattended_missing_sector(const int (&wanted)[sector_count],
                                      const int (&available)[sector_count]) {
  for (int column = 0; column < sector_columns; ++column) {
    for (int row = 0; row < sector_rows; ++row) {
      const int cell = sector_cell(column, row);
      if (wanted[cell] && !available[cell]) {
        return str_format("%+03d%+04d", row * 10 - 90, column * 10 - 180);
      }
    }
  }
  return "";
}

// Main thread. Reads the arguments and the present language.

#include "Installer-f/wizard/main_unattended_disc.h"

#include <algorithm>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"

std::string unattended_read_sectors(const std::string& text, int (&selected)[sector_count]) {
  std::fill(std::begin(selected), std::end(selected), text == "all" ? 1 : 0);
  if (text == "all" || text == "none") return "";

  std::string_view rest = text;
  for (;;) {
    const size_t comma = rest.find(',');
    const std::string_view name = rest.substr(0, comma);
    const int cell = sector_cell_of(name);
    if (cell < 0) {
      return str_fill(
          tr("--sectors wants all, none or a list such as +30-120,+40-110, and there is "
             "no sector '%s'."),
          {std::string(name)});
    }
    selected[cell] = 1;
    if (comma == std::string_view::npos) return "";
    rest.remove_prefix(comma + 1);
  }
}

std::string unattended_sector_name(int column, int row) {
  return str_format("%+03d%+04d", row * 10 - 90, column * 10 - 180);
}

std::string unattended_missing_sector(const int (&wanted)[sector_count],
                                      const int (&available)[sector_count]) {
  for (int column = 0; column < sector_columns; ++column) {
    for (int row = 0; row < sector_rows; ++row) {
      const int cell = sector_cell(column, row);
      if (wanted[cell] && !available[cell]) {
        return unattended_sector_name(column, row);
      }
    }
  }
  return "";
}

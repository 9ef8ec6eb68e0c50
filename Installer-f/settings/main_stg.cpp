// Storage of the settings record and of the run's paths and names. Main thread.

#include "Installer-f/settings/main_stg.h"

#include <algorithm>

#include "corekit/base/hl_string.h"

stg_record stg;

std::string dest_dir_path;
std::string temp_path;
std::string dvd_path;
std::string cmd_line_path;
std::string install_name;

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

}  // namespace

int platform_named(std::string_view word) {
  constexpr struct {
    std::string_view word;
    target_platform platform;
  } rows[] = {{"mac", target_mac}, {"windows", target_windows}, {"linux", target_linux}};
  const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                       [&](const auto& one) { return one.word == word; });
  return row == std::end(rows) ? 0 : row->platform;
}

int sector_cell_of(std::string_view name) {
  if (name.size() != name_length) return -1;
  const int row = index_of(name.substr(0, 3), 90);
  const int column = index_of(name.substr(3), 180);
  return row < 0 || column < 0 ? -1 : sector_cell(column, row);
}

void set_directory_state(int state) {
  stg.directory_state = state;
}

// The list of installed copies: skyvane_install.txt in the preferences folder, one absolute folder
// a line with its trailing "/", no header, in order of registration.
//
// Main thread. Writes all_skyroots and the file.

#include "Installer-f/engine/utils_registry.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_own.h"
#include "corekit/files/io_utils.h"

std::vector<std::string> all_skyroots;

namespace {

constexpr int line_size = 2048;  // with its NUL; a longer line reads as two

// Where the list is; empty, with a line in the log, when the system has no preferences folder.
std::string registry_path() {
  std::string path;
  if (get_OS_abs_path(os_dir_prefs, path) != 0 || path.empty()) {
    xer << "WARNING: registration of this sky-root folder failed!\n";
    return "";
  }
  return path + "skyvane_install.txt";
}

// The next line without its end. Returns false at the end of the file. `open_ended` tells whether
// the file has ended without a line end.
bool next_line(std::FILE* file, char (&line)[line_size], bool& open_ended) {
  if (std::fgets(line, line_size, file) == nullptr) return false;
  const size_t length = std::strcspn(line, "\r\n");
  open_ended = std::strchr(line, '\n') == nullptr;
  line[length] = '\0';
  return true;
}

// A list that somebody else has put there is none: what it names would be offered as a copy.
std::FILE* open_list(const std::string& path, PLT_own_mode mode) {
  const int file = PLT_open_own(path, mode);
  return file < 0 ? nullptr : fdopen(file, mode == plt_own_read ? "r" : "a");
}

// All lines that can be read, as they stand; but a folder ends in "/", or each of its files would
// be looked for beside it.
std::vector<std::string> read_lines(const std::string& path, bool& open_ended) {
  std::vector<std::string> lines;
  std::FILE* const file = open_list(path, plt_own_read);
  if (file == nullptr) return lines;
  char line[line_size];
  while (next_line(file, line, open_ended)) {
    std::string& added = lines.emplace_back(line);
    if (added.starts_with('/') && !added.ends_with('/')) added += '/';
  }
  std::fclose(file);
  return lines;
}

bool append_line(const std::string& path, const std::string& line) {
  std::FILE* const file = open_list(path, plt_own_append);
  if (file == nullptr) return false;
  const bool written = std::fputs(line.c_str(), file) >= 0;
  return std::fclose(file) == 0 && written;
}

}  // namespace

void locate_all_skyvanes() {
  all_skyroots.clear();
  const std::string path = registry_path();
  if (path.empty()) return;
  bool open_ended = false;
  for (std::string& line : read_lines(path, open_ended)) {
    // Longer than any path that the file services take, which they would end the program over.
    if (app_path.size() + line.size() > path_limit) continue;
    // The rest of a line that was too long is no folder below the working one.
    if (line.starts_with('/') && dir_exists(line)) all_skyroots.push_back(std::move(line));
  }
}

void register_new_skyvane() {
  const std::string path = registry_path();
  if (path.empty()) return;
  // A path that is not one line would be read back as other paths.
  if (dest_dir_path.empty() || dest_dir_path.size() >= line_size ||
      dest_dir_path.find_first_of(std::string_view("\n\r\0", 3)) != std::string::npos) {
    xer << "WARNING: this folder's path cannot be registered: " << dest_dir_path << '\n';
    return;
  }

  const io_own_turn turn(path);
  bool open_ended = false;
  const std::vector<std::string> lines = read_lines(path, open_ended);
  if (std::find(lines.begin(), lines.end(), dest_dir_path) != lines.end()) return;
  // A file that was cut short must not swallow the new line.
  if (!append_line(path, (open_ended ? "\n" : "") + dest_dir_path + "\n"))
    xer << "WARNING: could not append registration file: " << path << '\n';
}

void unregister_skyvane(const std::string& copy) {
  const std::string path = registry_path();
  if (path.empty()) return;
  const io_own_turn turn(path);
  bool open_ended = false;
  std::vector<std::string> lines = read_lines(path, open_ended);
  if (std::erase(lines, copy) == 0) return;
  std::string text;
  for (const std::string& line : lines)
    text += line + "\n";
  if (!io_own_replace(path, text))
    xer << "WARNING: could not write registration file: " << path << '\n';
}

int path_is_to_a_sim() {
  constexpr const char* marks[] = {"Airfoils", "Instructions", "Output", "Resources"};
  bool seen[std::size(marks)] = {};

  std::vector<std::string> names;
  std::vector<int> is_folder;
  const int count =
      dest_dir_path.empty() ? 0 : opensave_getitems(dest_dir_path, 0, names, is_folder);
  for (int i = 0; i < count; ++i) {
    if (!is_folder[i]) continue;
    for (size_t m = 0; m < std::size(marks); ++m)
      if (str_holds(names[i], marks[m])) seen[m] = true;
  }
  for (const bool mark : seen)
    if (!mark) return 0;
  return 1;
}

// Well-known folders, by the freedesktop rules.
//
//   executable   /proc/self/exe, or, where no /proc is mounted, what the kernel was asked to start
//   desktop      XDG_DESKTOP_DIR of user-dirs.dirs, else Desktop in the home folder, else that
//   settings     $XDG_CONFIG_HOME or ~/.config, then "skyvane/"
//   state        $XDG_STATE_HOME or ~/.local/state, then "skyvane/"
//
// The temporary folder is in PLT_folders_temp.cpp. Keeps nothing.

#include <fcntl.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "corekit/Platform/PLT_system.h"

namespace {
constexpr char product_folder[] = "skyvane/";
constexpr mode_t private_mode = 0700;

bool is_folder(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string with_slash(std::string path) {
  if (path.empty() || path.back() != '/') path += '/';
  return path;
}

// A folder that the environment names; empty unless it is absolute, as anything else is to be
// ignored.
std::string folder_of_environment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value && value[0] == '/' ? with_slash(value) : std::string();
}

// The folder that the environment names, or the one in the home folder.
std::string folder_of_user(const char* variable, const char* in_home) {
  std::string named = folder_of_environment(variable);
  if (!named.empty()) return named;
  const std::string home = PLT_home_folder();
  return home.empty() ? home : home + in_home;
}

std::string config_folder() {
  return folder_of_user("XDG_CONFIG_HOME", ".config/");
}

// Makes a folder and those above it that are missing.
bool make_path(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string head = path.substr(0, slash);
    if (mkdir(head.c_str(), private_mode) != 0 && errno != EEXIST && !is_folder(head)) return false;
  }
  return is_folder(path);
}

std::string folder_of_product(const std::string& parent) {
  if (parent.empty()) return {};
  const std::string path = parent + product_folder;
  return make_path(path) ? path : std::string();
}

std::string read_small_file(const std::string& path) {
  constexpr size_t enough = 64 * 1024;
  std::string text;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return text;
  text.resize(enough);
  const ssize_t got = read(file, text.data(), text.size());
  text.resize(got > 0 ? static_cast<size_t>(got) : 0);
  close(file);
  return text;
}
}  // namespace

std::string PLT_executable_path() {
  std::string path(PATH_MAX, '\0');
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  if (length <= 0) {
    const auto* const started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    char resolved[PATH_MAX];
    return started && realpath(started, resolved) ? resolved : std::string();
  }
  path.resize(static_cast<size_t>(length));
  // A program that was replaced while it runs, as an update of this one does, is named with a mark.
  constexpr std::string_view mark = " (deleted)";
  if (path.ends_with(mark) && access(path.c_str(), F_OK) != 0) {
    path.resize(path.size() - mark.size());
  }
  return path;
}

std::string PLT_home_folder() {
  std::string named = folder_of_environment("HOME");
  if (!named.empty()) return named;
  char buffer[4096];
  passwd entry;
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found) != 0 || !found) return {};
  return found->pw_dir && found->pw_dir[0] == '/' ? with_slash(found->pw_dir) : std::string();
}

std::string PLT_desktop_folder() {
  const std::string home = PLT_home_folder();
  const std::string config = config_folder();
  if (!config.empty()) {
    const std::string text = read_small_file(config + "user-dirs.dirs");
    const std::string named = PLT_parse_user_dir(text, "XDG_DESKTOP_DIR", home);
    if (!named.empty() && is_folder(named)) return with_slash(named);
  }
  if (home.empty()) return {};
  // A machine without a desktop is not given one.
  return is_folder(home + "Desktop") ? home + "Desktop/" : home;
}

std::string PLT_prefs_folder() {
  return folder_of_product(config_folder());
}

std::string PLT_state_folder() {
  return folder_of_product(folder_of_user("XDG_STATE_HOME", ".local/state/"));
}

std::string PLT_parse_user_dir(std::string_view text, std::string_view key, std::string_view home) {
  std::string value;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : text.size());
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(key)) continue;
    line.remove_prefix(key.size());
    if (!line.starts_with("=\"")) continue;
    line.remove_prefix(2);

    std::string found;
    constexpr std::string_view home_word = "$HOME";
    if (line.starts_with(home_word)) {
      line.remove_prefix(home_word.size());
      if (!line.starts_with('/') && !line.starts_with('"')) continue;
      found = home.substr(0, home.empty() ? 0 : home.size() - 1);
    } else if (!line.starts_with('/')) {
      continue;
    }
    size_t at = 0;
    for (; at < line.size() && line[at] != '"'; ++at) {
      if (line[at] == '\\' && at + 1 < line.size()) ++at;
      found += line[at];
    }
    if (at == line.size()) continue;  // the quote is never closed
    while (found.size() > 1 && found.back() == '/')
      found.pop_back();
    value = found;  // a later line overrules, as in the shell that the file is written for
  }
  return value;
}

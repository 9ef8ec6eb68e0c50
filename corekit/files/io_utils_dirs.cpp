// Well-known folders and volumes: what the platform layer finds, in the form that the program's
// paths have.

#include <cerrno>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_utils_dirs";
constexpr int dir_not_found = -120;
}  // namespace

int get_OS_abs_path(os_dir_type type, std::string& path) {
  switch (type) {
    case os_dir_this_app:
      path = path_folder(PLT_executable_path());
      break;
    case os_dir_this_bundle:
      path = PLT_executable_path();
      break;
    case os_dir_desktop:
    case os_dir_default_apps:
      path = PLT_desktop_folder();
      break;
    case os_dir_temp:
      path = PLT_temp_folder();
      break;
    case os_dir_prefs:
      path = PLT_prefs_folder();
      break;
    default:
      path.clear();
  }
  // "/" is the only separator. A folder that really has one of the others in its name is lost by
  // this, which is as well: no reader would open a file in it.
  for (char& c : path) {
    if (c == '\\' || c == ':') c = '/';
  }
  return path.empty() ? io_fail(dir_not_found, this_file, 45) : 0;
}

int get_free_space(const std::string& path, unsigned long long* total, unsigned long long* free) {
  std::string at = app_path + path;
  uint64_t total_bytes = 0, free_bytes = 0;
  int failed = PLT_volume_space(at, &total_bytes, &free_bytes);
  // The folder of an install is made only when the user has agreed to its size.
  while (failed == ENOENT || failed == ENOTDIR) {
    while (!at.empty() && at.back() == '/')
      at.pop_back();
    const bool absolute = !at.empty() && at.front() == '/';
    if (at.empty() || at == ".") break;
    at = path_folder(at);
    if (at.empty() && !absolute) at = ".";
    failed = PLT_volume_space(at, &total_bytes, &free_bytes);
  }
  if (failed) return io_fail(failed, this_file, 61);
  if (total) *total = total_bytes;
  if (free) *free = free_bytes;
  return 0;
}

int eject_dvd(const std::string& path) {
  return io_fail(PLT_eject(path), this_file, 68);
}

// Questions that the engine puts to a path before it acts on it. No globals are written; the
// destination and the disk are read.

#include "Installer-f/engine/utils_decide.h"

#include "Installer-f/settings/main_stg.h"
#include "corekit/files/io_utils.h"

std::string_view installed_part(std::string_view path) {
  const size_t slash = path.find('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

void trim_dest_folder(std::string& path) {
  path.erase(0, path.size() - installed_part(path).size());
}

std::string install_location(std::string_view path) {
  const std::string_view part = installed_part(path);
  std::string location;
  location.reserve(dest_dir_path.size() + part.size());
  return location.append(dest_dir_path).append(part);
}

std::string location_on_disk(std::string_view path) {
  std::string location = install_location(path);
  if (g_case_sensitive) findPath(location);
  return location;
}

int path_has_no_file(std::string_view path) {
  return path.ends_with('/');
}

bool manifest_path_is_safe(std::string_view path) {
  if (path.find('\0') != std::string_view::npos) return false;
  std::string_view rest = installed_part(path);
  for (;;) {
    const size_t slash = rest.find('/');
    const std::string_view component = rest.substr(0, slash);
    if (component.empty() || component == "." || component == "..") return false;
    if (slash == std::string_view::npos) return true;
    rest.remove_prefix(slash + 1);
  }
}

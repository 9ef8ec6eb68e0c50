// The flags of a run, and paths against the folder that it was started in. Main thread.

#include "corekit/base/hl_run.h"

#include <climits>
#include <cstdlib>

int app_done = 0;
int ogl_inited = 0;
int app_headless = 0;
int app_packaged = 0;
std::string start_folder;

std::string from_start_folder(const std::string& path) {
  return !path.empty() && path[0] == '/' ? path : start_folder + path;
}

std::string folder_from_start(const std::string& folder) {
  std::string path = from_start_folder(folder);
  if (path.back() != '/') path += '/';
  // The user reads it, and the list of copies compares it: no detours, as far as it exists.
  const bool has_detour =
      path.find("/./") != std::string::npos || path.find("/../") != std::string::npos;
  char resolved[PATH_MAX];
  if (!has_detour || !realpath(path.c_str(), resolved)) return path;
  path = resolved;
  return path == "/" ? path : path + '/';
}

// The flags of a run, paths against the folder that it was started in, and web pages. Main thread.

#include "corekit/base/hl_run.h"

#include <climits>
#include <cstdlib>

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/mnw.h"

int app_done = 0;
int ogl_inited = 0;
int app_headless = 0;
std::string start_folder;

namespace {

constexpr size_t url_limit = 499;

}  // namespace

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

void go_to_URL(const std::string& url) {
  if (url.size() > url_limit) {
    __MACIBM_alert(win_main, "String too long!", url.substr(0, url_limit), "", "", t_exit,
                   "GenC/hl_mnw", 412);
  }
  xer << "Web page: " << url << '\n';
  if (!ogl_inited) return;
  if (!PLT_open_url(url)) xer << "WARNING: no browser could be started.\n";
}

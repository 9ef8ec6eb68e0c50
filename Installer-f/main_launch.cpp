// Main thread.

#include "Installer-f/main_launch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "Installer-f/main_stg.h"
#include "corekit/Files/io_utils.h"
#include "corekit/GenC/hl_init.h"
#include "corekit/GenH/hl_string.h"
#include "corekit/OOPS_cpp/exce.h"

namespace {

std::string without_last_slash(std::string path) {
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// The executable inside a bundle folder: the one named for the bundle. Anything else, and a folder
// without one, is run as it stands.
std::string executable_of(const std::string& app) {
  if (!dir_exists(app)) return app;
  std::string name(path_leaf(app));
  if (const size_t dot = name.rfind('.'); dot != std::string::npos && dot > 0) name.resize(dot);
  const std::string inside = app + "/Contents/MacOS/" + name;
  return file_exists(inside) ? inside : app;
}

}  // namespace

int launch_app(const std::string& app, const std::string& path) {
  const std::string program = executable_of(app_path + without_last_slash(app));
  xer << "Launching: " << program << " with " << path << '\n';
  xer.flush();

  const pid_t child = fork();
  if (child < 0) return errno;
  if (child > 0) {
    // The settings are saved and the screen given back before the other program draws.
    MACIBM_finishup(1);
    std::_Exit(1);
  }

  const char* argv[] = {program.c_str(), nullptr, nullptr, nullptr};
  if (!path.empty()) {
    argv[1] = "-path";
    argv[2] = path.c_str();
  }
  execv(program.c_str(), const_cast<char* const*>(argv));
  _exit(errno);
}

void leave_disc() {
  std::string bundle, temp;
  get_OS_abs_path(os_dir_this_bundle, bundle);
  if (dvd_path.empty()) return;
  // Only the shorter length is compared, on purpose: a disc that is mounted below another still
  // counts as the place that the program runs from.
  const size_t length = std::min(dvd_path.size(), bundle.size());
  if (bundle.compare(0, length, dvd_path, 0, length) != 0) return;

  get_OS_abs_path(os_dir_temp, temp);
  const std::string copied = temp + std::string(path_leaf(without_last_slash(bundle)));
  copy_file_recursive(bundle, copied);
  launch_app(copied, "");
}

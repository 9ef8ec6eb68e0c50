// Starting another program in this one's place. Main thread.

#include "Installer-f/wizard/main_launch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "Installer-f/wizard/main_launch_int.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_init.h"

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

std::vector<char*> launch_arguments(start_order& order) {
  std::vector<char*> argv = {order.program.data()};
  for (std::string& argument : order.arguments)
    argv.push_back(argument.data());
  argv.push_back(nullptr);
  return argv;
}

void launch_become(const start_order& order, const std::vector<char*>& argv) {
  // A folder that has gone in the meantime is no reason not to start.
  if (!order.folder.empty() && chdir(order.folder.c_str()) != 0) errno = 0;
  std::signal(SIGPIPE, SIG_DFL);  // ignored here; a program that is started starts like any other
  execv(order.program.c_str(), argv.data());
  const int failed = errno;
  std::perror(order.program.c_str());
  _exit(failed);
}

int launch_hand_over(start_order order, int save) {
  const std::vector<char*> argv = launch_arguments(order);
  // The child waits until the other end of this is closed, which the parent's own end does: by then
  // the settings are saved and the screen is given back.
  int gate[2] = {-1, -1};
  if (pipe2(gate, O_CLOEXEC) != 0) return errno;
  const pid_t child = fork();
  if (child < 0) {
    const int failed = errno;
    close(gate[0]);
    close(gate[1]);
    return failed;
  }
  if (child > 0) {
    MACIBM_finishup(save);
    if (!copy_folder.empty()) launch_drop_copy();
    std::_Exit(1);
  }
  close(gate[1]);
  char nothing;
  while (read(gate[0], &nothing, 1) < 0 && errno == EINTR) {
  }
  launch_become(order, argv);
}

int launch_app(const std::string& app, const std::string& path) {
  const std::string program = executable_of(app_path + without_last_slash(app));
  xer << "Launching: " << program << " with " << path << '\n';
  xer.flush();
  start_order order = {program, {}, ""};
  if (!path.empty()) order.arguments = {"-path", path};
  // The folder of a copy from a disc goes before the other program begins.
  if (!copy_folder.empty()) order.folder = path_folder(without_last_slash(app_path + app));
  return launch_hand_over(order, 1);
}

std::string missing_program(const std::string& app) {
  const std::string program = executable_of(app_path + without_last_slash(app));
  return file_exists(program) && access(program.c_str(), X_OK) == 0 ? "" : program;
}

// Main thread.

#include "Installer-f/wizard/main_launch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_init.h"

namespace {

constexpr char copy_mark[] = "copied from disc";  // a file that holds its own folder's path
constexpr char resources_name[] = "Resources/";
constexpr char log_name[] = "Skyvane Installer Log.txt";

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

// A program, what it is given, and the folder that it starts in; empty for this one's.
struct start_order {
  std::string program;
  std::vector<std::string> arguments;
  std::string folder;
};

// The form that execv wants, into the strings of `order`. Made before a fork: the child of a
// process with threads had better not allocate.
std::vector<char*> arguments_of(start_order& order) {
  std::vector<char*> argv = {order.program.data()};
  for (std::string& argument : order.arguments)
    argv.push_back(argument.data());
  argv.push_back(nullptr);
  return argv;
}

[[noreturn]] void become(const start_order& order, const std::vector<char*>& argv) {
  // A folder that has gone in the meantime is no reason not to start.
  if (!order.folder.empty() && chdir(order.folder.c_str()) != 0) errno = 0;
  execv(order.program.c_str(), argv.data());
  const int failed = errno;
  std::perror(order.program.c_str());
  _exit(failed);
}

// --- a copy from a disc --------------------------------------------------------------------------

std::string copy_folder;  // the folder of this program, when it is a copy from a disc

void drop_copy() {
  xer.close();
  std::string prefs;
  if (get_OS_abs_path(os_dir_prefs, prefs) == 0) {
    copy_file(copy_folder + log_name, prefs + log_name);
  }
  PLT_remove_tree(copy_folder);
}

// --- handing over --------------------------------------------------------------------------------

// Ends this process and starts another. `save` is that of MACIBM_finishup. Returns errno if no
// process could be made.
int hand_over(start_order order, int save) {
  const std::vector<char*> argv = arguments_of(order);
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
    if (!copy_folder.empty()) drop_copy();
    std::_Exit(1);
  }
  close(gate[1]);
  char nothing;
  while (read(gate[0], &nothing, 1) < 0 && errno == EINTR) {
  }
  become(order, argv);
}

// --- leaving the disc ----------------------------------------------------------------------------

// The path in the mark protects a folder that somebody has copied elsewhere, mark and all.
bool is_marked_copy(const std::string& folder) {
  std::ifstream mark(folder + copy_mark, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(mark), {}};
  return !text.empty() && text == folder;
}

// Copies the program into a new folder; the path of the copy, or empty.
std::string copy_program(const std::string& program) {
  // Not inside the temporary folder, which goes when this process ends.
  std::string temp;
  if (get_OS_abs_path(os_dir_temp, temp) != 0) return "";
  std::string made = std::string(path_folder(without_last_slash(temp))) + "skyvane-disc-XXXXXX";
  if (!mkdtemp(made.data())) return "";
  // The copy will know its own folder by the name without links.
  char resolved[PATH_MAX];
  const std::string folder = std::string(realpath(made.c_str(), resolved) ? resolved : made) + "/";

  const std::string resources = std::string(path_folder(program)) + resources_name;
  const std::string copied = folder + std::string(path_leaf(program));
  int failed = copy_file_recursive(program, copied);
  if (!failed) failed = make_file_executable(copied.c_str());
  if (!failed && dir_exists(resources)) {
    failed = copy_file_recursive(resources, folder + resources_name);
  }
  if (!failed && !(std::ofstream(folder + copy_mark, std::ios::binary) << folder).flush()) {
    failed = EIO;
  }
  // Some systems run nothing from where their temporary files are.
  if (!failed && access(copied.c_str(), X_OK) != 0) failed = errno;
  if (!failed) return copied;
  xer << "WARNING: cannot leave the disc: " << error_str(failed) << '\n';
  PLT_remove_tree(folder);
  return "";
}

// Only the shorter length is compared, on purpose: a disc that is mounted below another still
// counts as the place that the program runs from.
bool is_on_disc(const std::string& program) {
  const size_t length = std::min(dvd_path.size(), program.size());
  return length > 0 && program.compare(0, length, dvd_path, 0, length) == 0;
}

}  // namespace

int launch_app(const std::string& app, const std::string& path) {
  const std::string program = executable_of(app_path + without_last_slash(app));
  xer << "Launching: " << program << " with " << path << '\n';
  xer.flush();
  start_order order = {program, {}, ""};
  if (!path.empty()) order.arguments = {"-path", path};
  // The folder of a copy from a disc goes before the other program begins.
  if (!copy_folder.empty()) order.folder = path_folder(without_last_slash(app_path + app));
  return hand_over(order, 1);
}

void leave_disc(int argc, char** argv) {
  std::string program;
  get_OS_abs_path(os_dir_this_bundle, program);
  const std::string folder(path_folder(program));
  if (is_marked_copy(folder)) {
    copy_folder = folder;
    std::atexit(drop_copy);
    return;
  }
  if (!is_on_disc(program)) return;
  const std::string copied = copy_program(program);
  if (copied.empty()) return;

  // Relative paths among the arguments mean the folder that this process was started in.
  start_order order = {copied, {argv + std::min(argc, 1), argv + argc}, start_folder};
  xer << "Launching: " << copied << " with \n";
  // Nothing is saved: the settings have not been read yet, and these would be the defaults.
  if (app_headless) {
    const std::vector<char*> arguments = arguments_of(order);
    MACIBM_finishup(0);
    become(order, arguments);
  }
  if (hand_over(order, 0) != 0) PLT_remove_tree(std::string(path_folder(copied)));
}

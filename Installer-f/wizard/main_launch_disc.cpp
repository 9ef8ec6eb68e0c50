// Leaving the disc: the copy of the program that goes on, and what that copy removes at its end.
//
//   the parent  copies into a new folder of this user's alone, writes a mark there: a token, and
//   the
//               list of what it has copied; starts the copy with the token in its environment
//   the copy    believes the mark only if its folder is of that kind and the tokens are the same,
//   so
//               that no file which somebody leaves beside a program can make it delete anything
//   its end     the log goes to the state folder; what the list names goes, and nothing else
//
// Main thread. Writes copy_folder.

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_launch.h"
#include "Installer-f/wizard/main_launch_int.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_init_log.h"

std::string copy_folder;

namespace {

constexpr char copy_mark[] = "copied from disc";
constexpr char token_name[] = "SKYVANE_DISC_COPY";
constexpr char folder_head[] = "skyvane-disc-";
constexpr char resources_name[] = "Resources/";
constexpr char log_name[] = "Skyvane Installer Log.txt";
// What the copy writes in its own folder while it runs.
constexpr const char* own_files[] = {log_name, "MemoryLog.txt", "stack_crawl.txt", copy_mark};

std::vector<std::string> copied_paths;  // below copy_folder, what a folder holds before the folder

std::string new_token() {
  unsigned char bytes[16];
  if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) return "";
  std::string token;
  for (const unsigned char byte : bytes)
    token += str_format("%02x", static_cast<unsigned>(byte));
  return token;
}

// What copy_file_recursive has made of `below`, a folder's path that ends in "/" or is empty.
void list_copied(const std::string& folder, const std::string& below,
                 std::vector<std::string>& paths) {
  std::vector<std::string> names;
  std::vector<int> is_folder;
  const int count = opensave_getitems(folder + below, 0, names, is_folder);
  for (int i = 0; i < count; ++i) {
    if (is_folder[i]) list_copied(folder, below + names[i] + "/", paths);
    if (!is_folder[i]) paths.push_back(below + names[i]);
  }
  if (!below.empty()) paths.push_back(below);
}

bool write_mark(const std::string& folder, const std::string& token) {
  std::vector<std::string> paths;
  list_copied(folder, "", paths);
  std::ofstream mark(folder + copy_mark, std::ios::binary);
  mark << token << '\n';
  for (const std::string& path : paths)
    mark << path << '\n';
  return static_cast<bool>(mark.flush());
}

bool stays_below(const std::string& path) {
  return !path.empty() && path[0] != '/' && ("/" + path + "/").find("/../") == std::string::npos;
}

// Whether this program is the copy that its parent has made, and then what it is made of.
bool take_mark(const std::string& folder) {
  const char* const given = std::getenv(token_name);
  const std::string expected = given ? given : "";
  unsetenv(token_name);  // not for the programs that this one starts
  if (expected.empty() || !PLT_is_lasting_folder(folder, folder_head)) return false;
  std::ifstream mark(folder + copy_mark, std::ios::binary);
  std::string line;
  if (!std::getline(mark, line) || line != expected) return false;
  while (std::getline(mark, line)) {
    if (stays_below(line)) copied_paths.push_back(line);
  }
  return true;
}

// Copies the program into a new folder; the path of the copy, or empty. Sets the token that the
// copy will look for.
std::string copy_program(const std::string& program) {
  const std::string token = new_token();
  // The copy will know its own folder by the name without links.
  const std::string folder = token.empty() ? "" : PLT_make_lasting_folder(folder_head);
  if (folder.empty()) return "";

  const std::string resources = std::string(path_folder(program)) + resources_name;
  std::string copied = folder + std::string(path_leaf(program));
  int failed = copy_file_recursive(program, copied);
  if (!failed) failed = make_file_executable(copied.c_str());
  if (!failed && dir_exists(resources)) {
    failed = copy_file_recursive(resources, folder + resources_name);
  }
  if (!failed && !write_mark(folder, token)) failed = EIO;
  // Some systems run nothing from where their temporary files are.
  if (!failed && access(copied.c_str(), X_OK) != 0) failed = errno;
  if (!failed && setenv(token_name, token.c_str(), 1) != 0) failed = errno;
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

void launch_drop_copy() {
  log_keep();
  for (const char* const name : own_files)
    std::remove((copy_folder + name).c_str());
  for (const std::string& path : copied_paths)
    std::remove((copy_folder + path).c_str());
  rmdir(copy_folder.c_str());
}

void leave_disc(int argc, char** argv) {
  std::string program;
  get_OS_abs_path(os_dir_this_bundle, program);
  const std::string folder(path_folder(program));
  if (take_mark(folder)) {
    copy_folder = folder;
    std::atexit(launch_drop_copy);
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
    const std::vector<char*> arguments = launch_arguments(order);
    MACIBM_finishup(0);
    launch_become(order, arguments);
  }
  if (launch_hand_over(order, 0) != 0) PLT_remove_tree(std::string(path_folder(copied)));
}

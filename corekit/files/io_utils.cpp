// Questions about single files and what can be done to one: the plain half of the file services.
//
// Each service prefixes app_path, makes one or two calls of the system and hands the code back.
// Globals written: sErrFile and sErrLine (of the calling thread), and the buffer of copy_file.

#include "corekit/files/io_utils.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/files/io_utils_int.h"

std::string app_path;
int g_case_sensitive = 1;

// One pair for each thread: a plain pair would be torn between workers that fail at once.
constinit thread_local const char* sErrFile = "";
constinit thread_local int sErrLine = 0;

namespace {
constexpr char this_file[] = "Files/io_utils";

// stat by the manifest's rule, which lets the case differ.
bool found(const std::string& path, struct stat& info) {
  std::string full = app_path + path;
  path_checked(full);
  if (stat(full.c_str(), &info) == 0) return true;
  return g_case_sensitive && io_repair_case(full) && stat(full.c_str(), &info) == 0;
}
}  // namespace

int io_fail(int code, const char* file, int line) {
  if (code != 0) {
    sErrFile = file;
    sErrLine = line;
  }
  return code;
}

const std::string& path_checked(const std::string& path) {
  if (path.size() > path_limit) {
    __MACIBM_alert(0, "String too long!", "", "", "", t_exit, at_path_too_long);
  }
  return path;
}

int file_exists(const std::string& path) {
  struct stat info;
  return found(path, info) && !S_ISDIR(info.st_mode);
}

int dir_exists(const std::string& path) {
  struct stat info;
  return found(path, info) && S_ISDIR(info.st_mode);
}

int APL_file_size(const std::string& path) {
  struct stat info;
  if (!found(path, info) || S_ISDIR(info.st_mode)) return -1;
  // A size that wrapped to a negative number would read as a missing file, so a large one is
  // clipped.
  return info.st_size > INT_MAX ? INT_MAX : static_cast<int>(info.st_size);
}

int is_sim_link(const char* path, std::string* target) {
  char text[path_limit];
  const ssize_t length = readlink((app_path + path).c_str(), text, sizeof text);
  if (length < 0) return 0;
  if (target) target->assign(text, static_cast<size_t>(length));
  return 1;
}

int delete_file(const std::string& path) {
  if (path.empty()) return io_fail(ENOENT, this_file, 82);
  const std::string full = app_path + path;
  const int failed = full.back() == '/' ? rmdir(full.c_str()) : unlink(full.c_str());
  return failed ? io_fail(errno, this_file, 85) : 0;
}

int rename_file(const std::string& folder, const std::string& old_name,
                const std::string& new_name) {
  const std::string base = app_path + folder;
  if (std::rename((base + old_name).c_str(), (base + new_name).c_str()) == 0) return 0;
  return io_fail(errno, this_file, 92);
}

int make_folder(const std::string& path) {
  std::string full = app_path + path;
  if (!full.empty() && full.back() == '/') full.pop_back();
  return mkdir(full.c_str(), 0755) ? io_fail(errno, this_file, 98) : 0;
}

int make_file_executable(const char* path) {
  return chmod((app_path + path).c_str(), 0755) ? io_fail(errno, this_file, 102) : 0;
}

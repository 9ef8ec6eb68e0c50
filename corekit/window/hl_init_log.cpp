// The log of a run: one file a run, the last five kept.
//
// Steps: --log; else beside the program; else in the state folder. A log that lies there already is
// renamed, which does no harm to a run that is writing to it, and those that are too many and no
// run's any more are deleted. Two runs that begin at once may both rename: neither overwrites.
//
// Main thread, once. Writes xer and the place of the log.

#include "corekit/window/hl_init_log.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>
#include <vector>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/xer.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr std::string_view log_stem = "Skyvane Installer Log";
constexpr std::string_view log_end = ".txt";
constexpr std::string_view log_name = "Skyvane Installer Log.txt";
constexpr size_t most_set_aside = 4;
constexpr int attempts = 8;  // at a name that other runs may take at the same moment

struct {
  std::string path;
  bool is_beside = false;  // in the program's folder
  std::string refused;     // the log that was asked for, and could not be had
  int reason = 0;          //   with its errno
} state;

// "Skyvane Installer Log 2026-03-01 14.05.09.txt": by name, in the order of time.
std::string aside_name(time_t last_line, int attempt) {
  tm parts = {};
  localtime_r(&last_line, &parts);
  char date[32];
  std::strftime(date, sizeof date, " %F %H.%M.%S", &parts);
  std::string name = std::string(log_stem) + date;
  if (attempt > 0) name += "_" + std::to_string(attempt + 1);  // sorts behind the one without
  return name.append(log_end);
}

bool is_aside_name(std::string_view name) {
  constexpr std::string_view form = " 0000-00-00 00.00.00";
  if (!name.starts_with(log_stem) || !name.ends_with(log_end)) return false;
  if (name.size() < log_stem.size() + form.size() + log_end.size()) return false;
  name = name.substr(log_stem.size(), form.size());
  return std::equal(name.begin(), name.end(), form.begin(), [](char c, char wanted) {
    return wanted == '0' ? c >= '0' && c <= '9' : c == wanted;
  });
}

// Renames over nothing. A volume that cannot promise that is asked first.
bool rename_to_free(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  struct stat info;
  if (lstat(to.c_str(), &info) != 0) return std::rename(from.c_str(), to.c_str()) == 0;
  errno = EEXIST;
  return false;
}

// False if a log of ours is there and cannot be renamed: it would be written over.
bool set_aside(const std::string& folder, const std::string& path) {
  const io_handle old(PLT_open_own(path, plt_own_read));
  struct stat info;
  if (!old || fstat(old.get(), &info) != 0) return true;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (rename_to_free(path, folder + aside_name(info.st_mtime, attempt))) return true;
    // Another run may have moved it meanwhile.
    if (errno != EEXIST) return errno == ENOENT;
  }
  return false;
}

// Deletes a log of ours, unless the run that it is of is still at work.
void drop_if_ended(const std::string& path) {
  const io_handle log(PLT_open_own(path, plt_own_read));
  if (log && flock(log.get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

void drop_oldest(const std::string& folder) {
  DIR* const dir = opendir(folder.c_str());
  if (!dir) return;
  std::vector<std::string> names;
  while (const dirent* const entry = readdir(dir))
    if (is_aside_name(entry->d_name)) names.emplace_back(entry->d_name);
  closedir(dir);
  std::sort(names.begin(), names.end());
  for (size_t i = 0; i + most_set_aside < names.size(); ++i)
    drop_if_ended(folder + names[i]);
}

bool open_in(const std::string& folder) {
  if (folder.empty()) return false;
  const std::string path = folder + std::string(log_name);
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (!set_aside(folder, path)) return false;
    if (xer_open(path)) {
      state.path = path;
      drop_oldest(folder);
      return true;
    }
    if (errno != EWOULDBLOCK) return false;  // else a run that began at the same moment has it
  }
  return false;
}

bool open_asked_for(int argc, const char* const* argv) {
  constexpr std::string_view option = "--log=";
  std::string_view asked;
  for (int i = 1; i < argc; ++i)
    if (std::string_view(argv[i]).starts_with(option)) asked = argv[i] + option.size();
  if (asked.empty()) return false;
  const std::string path = from_start_folder(std::string(asked));
  if (xer_open(path)) {
    state.path = path;
    return true;
  }
  state.reason = errno;
  state.refused = path;
  return false;
}

}  // namespace

void log_begin(int argc, const char* const* argv, const std::string& app_folder) {
  state = {};
  if (open_asked_for(argc, argv)) return;
  state.is_beside = !app_packaged && open_in(app_folder);
  if (!state.is_beside) open_in(PLT_state_folder());
}

void log_keep() {
  xer.close();
  const std::string folder = PLT_state_folder();
  if (!state.is_beside || folder.empty()) return;
  const std::string kept = folder + std::string(log_name);
  if (!set_aside(folder, kept)) return;
  if (copy_file(state.path, kept) == 0) drop_oldest(folder);
}

const std::string& log_path() {
  return state.path;
}

std::string log_refused() {
  if (state.refused.empty()) return "";
  const bool is_taken = state.reason == EWOULDBLOCK;
  return state.refused + ": " +
         (is_taken ? tr("another run is writing to it") : std::strerror(state.reason));
}

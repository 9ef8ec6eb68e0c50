// The temporary folder of a run: a new one under $TMPDIR or /tmp, with a lock for as long as the
// process lives. A killed process leaves its folder, without a lock; the next run removes it.
//
//   make, lock   in this order, so that another run's sweep may come between: if it did, once more
//   sweep        ours by name, owner and access, and without a lock: taken under our own lock
//
// Main thread, but for PLT_remove_tree. Globals written: the temporary folder of this process.

#include <dirent.h>
#include <fcntl.h>
#include <fts.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "corekit/Platform/PLT_system.h"

namespace {

constexpr std::string_view name_head = "skyvane-run-";
constexpr std::string_view name_blanks = "XXXXXX";  // filled in by mkdtemp
constexpr int attempts = 3;                         // at a folder that no sweep takes away

std::string temp_folder;
pid_t temp_owner = 0;
int temp_lock = -1;

// The folder itself, which no link may stand for.
int open_folder(const std::string& folder) {
  return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// The system drops the lock when the process ends, however it ends.
bool lock_folder(int handle) {
  return flock(handle, LOCK_EX | LOCK_NB) == 0;
}

bool is_private_folder(int handle) {
  struct stat info;
  return fstat(handle, &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
         (info.st_mode & 0777) == 0700;
}

// Whether nobody else can put something of his in the place of a folder of ours.
bool is_safe_parent(const std::string& parent) {
  struct stat info;
  return stat(parent.c_str(), &info) == 0 &&
         ((info.st_mode & S_ISVTX) || !(info.st_mode & (S_IWGRP | S_IWOTH)));
}

void remove_left_ones(const std::string& parent) {
  if (!is_safe_parent(parent)) return;
  DIR* const dir = opendir(parent.c_str());
  if (!dir) return;
  while (const dirent* const entry = readdir(dir)) {
    const std::string_view name = entry->d_name;
    if (name.size() != name_head.size() + name_blanks.size() || !name.starts_with(name_head)) {
      continue;
    }
    const std::string path = parent + entry->d_name;
    const int handle = open_folder(path);
    if (handle < 0) continue;
    if (is_private_folder(handle) && lock_folder(handle)) PLT_remove_tree(path);
    close(handle);
  }
  closedir(dir);
}

bool make_temp_in(const std::string& parent) {
  // The program's own paths cannot hold these, so a folder below them would be of no use.
  if (parent.empty() || parent.find_first_of("\\:") != std::string::npos) return false;
  remove_left_ones(parent);
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string path = parent + std::string(name_head) + std::string(name_blanks);
    if (!mkdtemp(path.data())) return false;  // made with mode 0700
    temp_lock = open_folder(path);
    // A volume without locks serves as well: there no run can take the folder of another for left.
    const bool ours = temp_lock >= 0 && (lock_folder(temp_lock) || errno != EWOULDBLOCK);
    if (ours && access(path.c_str(), F_OK) == 0) {
      temp_folder = path + "/";
      return true;
    }
    if (temp_lock >= 0) close(temp_lock);
    temp_lock = -1;
  }
  return false;
}

thread_local int first_removal_failure;  // errno; nftw hands its callback no pointer of ours

int remove_one(const char* path, const struct stat*, int, FTW*) {
  if (std::remove(path) != 0 && first_removal_failure == 0) first_removal_failure = errno;
  return 0;  // what can go goes
}

}  // namespace

std::string PLT_temp_folder() {
  if (temp_folder.empty()) {
    const char* const named = std::getenv("TMPDIR");
    std::string parent = named && named[0] == '/' ? named : "";
    if (!parent.empty() && parent.back() != '/') parent += '/';
    if (!make_temp_in(parent)) make_temp_in("/tmp/");
    temp_owner = getpid();
  }
  return temp_folder;
}

std::string PLT_make_lasting_folder(std::string_view head) {
  // Not inside the temporary folder, which goes when this process ends.
  std::string path = PLT_temp_folder();
  if (path.empty()) {
    errno = ENOENT;
    return path;
  }
  path.resize(path.rfind('/', path.size() - 2) + 1);
  path += std::string(head) + std::string(name_blanks);
  if (!mkdtemp(path.data())) return {};
  char resolved[PATH_MAX];
  return std::string(realpath(path.c_str(), resolved) ? resolved : path) + "/";
}

bool PLT_is_lasting_folder(const std::string& folder, std::string_view head) {
  std::string_view name = folder;
  if (!name.ends_with('/')) return false;
  name.remove_suffix(1);
  name.remove_prefix(name.rfind('/') + 1);
  if (name.size() != head.size() + name_blanks.size() || !name.starts_with(head)) return false;
  const int handle = open_folder(folder.substr(0, folder.size() - 1));
  if (handle < 0) return false;
  const bool ours = is_private_folder(handle);
  close(handle);
  return ours;
}

void PLT_drop_temp_folder() {
  if (!temp_folder.empty() && temp_owner == getpid()) PLT_remove_tree(temp_folder);
  temp_folder.clear();
  if (temp_lock >= 0) close(temp_lock);
  temp_lock = -1;
}

int PLT_remove_tree(const std::string& path) {
  std::string top = path;
  while (top.size() > 1 && top.back() == '/')
    top.pop_back();  // or a link would be followed
  first_removal_failure = 0;
  if (nftw(top.c_str(), remove_one, 32, FTW_DEPTH | FTW_PHYS | FTW_MOUNT) != 0) return errno;
  return first_removal_failure;
}

std::vector<std::string> PLT_files_below(const std::string& folder) {
  std::vector<std::string> files;
  std::string top = folder;
  char* const tops[] = {top.data(), nullptr};
  FTS* const walk = fts_open(tops, FTS_PHYSICAL | FTS_NOCHDIR, nullptr);
  if (!walk) return files;
  while (const FTSENT* const at = fts_read(walk)) {
    const bool is_file = at->fts_info == FTS_F || at->fts_info == FTS_SL ||
                         at->fts_info == FTS_SLNONE || at->fts_info == FTS_DEFAULT;
    if (is_file && at->fts_pathlen > folder.size())
      files.emplace_back(at->fts_path + folder.size());
  }
  fts_close(walk);
  std::sort(files.begin(), files.end());
  return files;
}

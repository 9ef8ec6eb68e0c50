// Main thread. Writes its own record of the lock that is held.

#include "Installer-f/engine/utils_registry_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "corekit/base/exce.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

namespace {

struct held_lock {
  io_handle folder;  // locked, unless the volume knows no locks
  dev_t device = 0;  // of the folder, which may be moved away, or deleted and made anew
  ino_t number = 0;
} held;

bool is_held(const struct stat& folder) {
  return held.folder && held.device == folder.st_dev && held.number == folder.st_ino;
}

}  // namespace

copy_lock lock_copy(const std::string& folder) {
  const std::string path = app_path + folder;
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return copy_lock_ours;  // not made yet
  if (is_held(info)) return copy_lock_ours;
  unlock_copy();

  io_handle opened(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened || fstat(opened.get(), &info) != 0) return copy_lock_ours;
  if (flock(opened.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return copy_lock_busy;
    xer << "WARNING: this volume knows no locks: " << folder << '\n';
  }
  held = {std::move(opened), info.st_dev, info.st_ino};
  return copy_lock_ours;
}

void unlock_copy() {
  held = {};
}

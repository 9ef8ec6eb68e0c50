// Opening what the program writes for itself: log, reports, settings, list of copies. These lie at
// places that others may be able to write to, so the name alone is not believed.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "corekit/Platform/PLT_system.h"

namespace {

// An administrator's file counts as ours: he can do as he likes in any case.
bool is_ours(int file, struct stat& info) {
  return fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 1 &&
         (info.st_uid == geteuid() || info.st_uid == 0);
}

}  // namespace

int PLT_open_own(const std::string& path, PLT_own_mode mode) {
  // Without O_TRUNC: nothing is cut before it is known whose it is.
  const int flags = (mode == plt_own_read ? O_RDONLY : O_WRONLY | O_CREAT) |
                    (mode == plt_own_append ? O_APPEND : 0);
  const int file = open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0644);
  if (file < 0) return -1;
  struct stat info;
  if (!is_ours(file, info)) {
    close(file);
    errno = EPERM;
    return -1;
  }
  if (mode == plt_own_anew && info.st_size > 0 && ftruncate(file, 0) != 0) {
    const int failed = errno;
    close(file);
    errno = failed;
    return -1;
  }
  return file;
}

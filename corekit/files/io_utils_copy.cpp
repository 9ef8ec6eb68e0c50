// Copying one file: content and permission bits, through one buffer that is kept between calls.
//
// Steps: open the source; open the target without emptying it, so that a file copied onto itself is
// noticed in time; empty the target, copy, set the bits, and close with the result looked at.
// One thread at a time (the disc copy pool has a single one). Globals written: the buffer.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_utils_copy";

char copy_buffer[65536];

int write_all(int file, const char* data, size_t bytes) {
  while (bytes > 0) {
    const ssize_t written = write(file, data, bytes);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return io_fail(errno, this_file, 26);
    data += written;
    bytes -= static_cast<size_t>(written);
  }
  return 0;
}

int copy_content(int from, int to) {
  for (;;) {
    const ssize_t got = read(from, copy_buffer, sizeof copy_buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return io_fail(errno, this_file, 37);
    if (got == 0) return 0;
    if (const int failed = write_all(to, copy_buffer, static_cast<size_t>(got))) return failed;
  }
}

// Opens a plain file. Not blocking, so that a pipe in a file's place cannot hold the program up.
int open_plain(const std::string& path, int flags, struct stat& info) {
  const int file = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666);
  if (file < 0) return -1;
  if (fstat(file, &info) == 0 && S_ISREG(info.st_mode)) return file;
  close(file);
  return -1;
}
}  // namespace

int copy_file(const std::string& source, const std::string& target) {
  struct stat from_info, to_info;
  const int from = open_plain(app_path + source, O_RDONLY, from_info);
  if (from < 0) return io_fail(ENOENT, this_file, 56);

  const std::string target_path = app_path + target;
  const bool was_there = lstat(target_path.c_str(), &to_info) == 0;
  const int to = open_plain(target_path, O_WRONLY | O_CREAT, to_info);
  if (to < 0) {
    close(from);
    return io_fail(ENOENT, this_file, 63);
  }

  int failed = 0;
  if (from_info.st_dev != to_info.st_dev || from_info.st_ino != to_info.st_ino) {
    // Not of a new file: ext4 starts to write out, when it is closed, whatever was cut to nothing.
    if (to_info.st_size > 0 && ftruncate(to, 0) != 0) failed = io_fail(errno, this_file, 68);
    if (!failed) failed = copy_content(from, to);
    if (!failed && fchmod(to, from_info.st_mode & 0777) != 0) {
      // A volume without permission bits refuses to set them; the content is all that it can hold.
      if (errno != EPERM && errno != ENOTSUP) failed = io_fail(errno, this_file, 72);
    }
  }
  // Some volumes report a full disk only here.
  if (close(to) != 0 && !failed && errno != EINTR) failed = io_fail(errno, this_file, 76);
  close(from);
  if (failed && !was_there) unlink(target_path.c_str());
  return failed;
}

// Copying one file: content and permission bits, through one buffer that is kept between calls.
//
// Steps: open the source; open the target without emptying it, so that a file copied onto itself is
// noticed in time; empty the target, copy, set the bits, and close with the result looked at.
// One thread at a time (the disc copy pool has a single one). Globals written: the buffer.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_utils_copy";

char copy_buffer[65536];

int copy_content(int from, int to) {
  for (size_t got = sizeof copy_buffer; got == sizeof copy_buffer;) {
    if (const int code = io_read_all(from, copy_buffer, sizeof copy_buffer, got)) {
      return io_fail(code, this_file, 26);
    }
    if (const int code = io_write_all(to, copy_buffer, got)) return io_fail(code, this_file, 27);
  }
  return 0;
}

// Opens a plain file. Not blocking, so that a pipe in a file's place cannot hold the program up.
io_handle open_plain(const std::string& path, int flags, struct stat& info) {
  io_handle file(open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666));
  return file && fstat(file.get(), &info) == 0 && S_ISREG(info.st_mode) ? std::move(file)
                                                                        : io_handle();
}
}  // namespace

int copy_file(const std::string& source, const std::string& target) {
  struct stat from_info, to_info;
  const io_handle from = open_plain(app_path + source, O_RDONLY, from_info);
  if (!from) return io_fail(ENOENT, this_file, 56);

  const std::string target_path = app_path + target;
  const bool was_there = lstat(target_path.c_str(), &to_info) == 0;
  io_handle to = open_plain(target_path, O_WRONLY | O_CREAT, to_info);
  if (!to) return io_fail(ENOENT, this_file, 63);

  int failed = 0;
  if (from_info.st_dev != to_info.st_dev || from_info.st_ino != to_info.st_ino) {
    // Not of a new file: ext4 starts to write out, when it is closed, whatever was cut to nothing.
    if (to_info.st_size > 0 && ftruncate(to.get(), 0) != 0) failed = io_fail(errno, this_file, 68);
    if (!failed) failed = copy_content(from.get(), to.get());
    if (!failed && fchmod(to.get(), from_info.st_mode & 0777) != 0) {
      // A volume without permission bits refuses to set them; the content is all that it can hold.
      if (errno != EPERM && errno != ENOTSUP) failed = io_fail(errno, this_file, 72);
    }
  }
  // Some volumes report a full disk only here.
  const int close_code = to.close();
  if (!failed) failed = io_fail(close_code, this_file, 76);
  if (failed && !was_there) unlink(target_path.c_str());
  return failed;
}

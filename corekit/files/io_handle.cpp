// Reading and writing to the end, whatever the system hands over at a time. No state; any thread.

#include "corekit/files/io_handle.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {
// The system moves at most this much in one call.
constexpr size_t one_call = 0x7FFFF000;
}  // namespace

int io_handle::close() {
  if (fd_ < 0) return 0;
  // After EINTR the descriptor is gone as well, and may be somebody else's already.
  const int failed = ::close(std::exchange(fd_, -1)) == 0 || errno == EINTR ? 0 : errno;
  return failed;
}

int io_read_all(int fd, void* into, size_t wanted, size_t& got) {
  auto* const bytes = static_cast<unsigned char*>(into);
  got = 0;
  while (got < wanted) {
    const ssize_t count = read(fd, bytes + got, std::min(wanted - got, one_call));
    if (count == 0) break;
    if (count > 0) {
      got += static_cast<size_t>(count);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int io_write_all(int fd, const void* from, size_t size) {
  const auto* const bytes = static_cast<const unsigned char*>(from);
  for (size_t done = 0; done < size;) {
    const ssize_t count = write(fd, bytes + done, std::min(size - done, one_call));
    if (count > 0) {
      done += static_cast<size_t>(count);
    } else if (count == 0) {
      return EIO;  // no device of ours does this; without an end to it the loop would have none
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

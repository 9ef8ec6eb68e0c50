// The window library's headless twin: no display can be had, and every call says so.

#include "corekit/Platform/PLT_window.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>

namespace {

// Counts wake-ups from other threads; made on first use, kept for the process's life.
int wake_handle() {
  static const int handle = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  return handle;
}

}  // namespace

bool PLT_has_display() {
  return false;
}

void PLT_plain_alert(const std::string& message, const std::string& explanation) {
  std::fprintf(stderr, "%s\n%s\n", message.c_str(), explanation.c_str());
  std::fflush(stderr);
}

bool PLT_open_url(const std::string&) {
  return false;
}

void PLT_wait_event(int milliseconds) {
  pollfd wake{wake_handle(), POLLIN, 0};
  if (poll(&wake, 1, milliseconds) > 0) {
    uint64_t count;
    // The count is of no interest, and a failed read only means that another wait took it.
    [[maybe_unused]] const ssize_t got = read(wake.fd, &count, sizeof count);
  }
}

void PLT_wake() {
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t put = write(wake_handle(), &one, sizeof one);
}

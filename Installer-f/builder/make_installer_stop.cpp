// Noting that a build is to end. A handler sets a flag and nothing else; the key is looked for a
// few times a second. Main thread but for the handler.

#include "Installer-f/builder/make_installer_stop.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <iterator>

#include "corekit/Platform/PLT_system.h"

namespace {

constexpr int stop_signals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr size_t hangup = 2;  // its place among them
constexpr int none = -1, by_key = 0;
constexpr uint64_t key_interval = 100000;  // microseconds

std::atomic<int> stopped_by = none;
static_assert(std::atomic<int>::is_always_lock_free);

struct watch_state {
  struct sigaction before[std::size(stop_signals)];
  termios terminal;
  bool reads_keys = false;
  uint64_t looked_at = 0;  // when the key was last looked for
} watch;

void note_signal(int number) {
  stopped_by = number;
}

// A job in the background may not touch the terminal.
bool owns_terminal() {
  return isatty(STDIN_FILENO) && isatty(STDERR_FILENO) && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

void look_for_key() {
  const uint64_t now = PLT_microseconds();
  if (!watch.reads_keys || now - watch.looked_at < key_interval) return;
  watch.looked_at = now;
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  char keys[64];
  while (poll(&input, 1, 0) == 1 && (input.revents & POLLIN)) {
    const ssize_t count = read(STDIN_FILENO, keys, sizeof keys);
    if (count <= 0) return;
    for (ssize_t i = 0; i < count; ++i)
      if (keys[i] == 'q' || keys[i] == 'Q') stopped_by = by_key;
  }
}

}  // namespace

builder_stop_watch::builder_stop_watch() {
  stopped_by = none;
  struct sigaction action = {};
  action.sa_handler = note_signal;
  for (size_t i = 0; i < std::size(stop_signals); ++i)
    sigaction(stop_signals[i], &action, &watch.before[i]);
  // Whoever started it with nohup wants it to outlive the terminal.
  if (watch.before[hangup].sa_handler == SIG_IGN) sigaction(SIGHUP, &watch.before[hangup], nullptr);
  if (!owns_terminal() || tcgetattr(STDIN_FILENO, &watch.terminal) != 0) return;
  termios at_once = watch.terminal;
  at_once.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  watch.reads_keys = tcsetattr(STDIN_FILENO, TCSADRAIN, &at_once) == 0;
}

builder_stop_watch::~builder_stop_watch() {
  if (watch.reads_keys) tcsetattr(STDIN_FILENO, TCSADRAIN, &watch.terminal);
  watch.reads_keys = false;
  for (size_t i = 0; i < std::size(stop_signals); ++i)
    sigaction(stop_signals[i], &watch.before[i], nullptr);
}

bool builder_stopped() {
  look_for_key();
  return stopped_by != none;
}

int builder_stop_signal() {
  return stopped_by;
}

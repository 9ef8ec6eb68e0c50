// The clock, the processor count, and the running of other programs.

#include "corekit/Platform/PLT_system.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

uint64_t PLT_microseconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000 + static_cast<uint64_t>(now.tv_nsec) / 1'000;
}

int PLT_processor_count() {
  // What the process may use, which inside a container or under taskset is less than there is.
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
    if (const int count = CPU_COUNT(&allowed); count > 0) return count;
  }
  const long online = sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? static_cast<int>(online) : 1;
}

namespace {
constexpr uint64_t poll_microseconds = 5'000;

// Starts a program in a process group of its own, without input or output. 0 on failure.
pid_t start(const char* const* argv) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t how;
  if (posix_spawn_file_actions_init(&files) != 0) return 0;
  if (posix_spawnattr_init(&how) != 0) {
    posix_spawn_file_actions_destroy(&files);
    return 0;
  }
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  // Signals that this process ignores or blocks would stay so in the program, which knows nothing
  // of it.
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&how, &none);
  posix_spawnattr_setsigdefault(&how, &all);
  posix_spawnattr_setpgroup(&how, 0);
  posix_spawnattr_setflags(&how,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

  pid_t child = 0;
  // The prototype lacks a const for reasons of history; the strings are not written to.
  const int failed =
      posix_spawnp(&child, argv[0], &files, &how, const_cast<char* const*>(argv), environ);
  posix_spawnattr_destroy(&how);
  posix_spawn_file_actions_destroy(&files);
  return failed ? 0 : child;
}
}  // namespace

int PLT_run_program(const char* const* argv, int seconds) {
  const pid_t child = start(argv);
  if (child == 0) return -1;
  const uint64_t deadline = PLT_microseconds() + static_cast<uint64_t>(seconds) * 1'000'000;
  int status = 0;
  for (;;) {
    const pid_t ended = waitpid(child, &status, WNOHANG);
    if (ended == child) break;
    if (ended < 0 && errno != EINTR) return -1;
    if (PLT_microseconds() >= deadline) {
      kill(-child, SIGKILL);
      while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
      }
      return -1;
    }
    usleep(poll_microseconds);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Other programs: their start, what they write, and their end. Waiting is done in short sleeps, so
// that it can be bounded.

#include "corekit/Platform/PLT_child.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "corekit/Platform/PLT_system.h"

namespace {

constexpr useconds_t look_again_us = 5'000;
constexpr uint64_t killed_us = 1'000'000;  // a program that waits for a drive takes no signal

// The program itself. Signals that this process ignores or blocks would stay so in it.
pid_t spawn(const char* const* argv, int output) {
  posix_spawn_file_actions_t files;
  posix_spawnattr_t how;
  if (posix_spawn_file_actions_init(&files) != 0) return 0;
  if (posix_spawnattr_init(&how) != 0) {
    posix_spawn_file_actions_destroy(&files);
    return 0;
  }
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (output >= 0) {
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&how, &none);
  posix_spawnattr_setsigdefault(&how, &all);
  posix_spawnattr_setpgroup(&how, 0);
  posix_spawnattr_setflags(&how,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  pid_t pid = 0;
  // The prototype lacks a const for reasons of history; the strings are not written to.
  const int failed =
      posix_spawnp(&pid, argv[0], &files, &how, const_cast<char* const*>(argv), environ);
  posix_spawnattr_destroy(&how);
  posix_spawn_file_actions_destroy(&files);
  return failed ? 0 : pid;
}

bool ends_within(PLT_child* child, uint64_t microseconds) {
  const uint64_t deadline = PLT_microseconds() + microseconds;
  int status;
  while (!PLT_child_has_ended(child, &status)) {
    if (PLT_microseconds() >= deadline) return false;
    usleep(look_again_us);
  }
  return true;
}

}  // namespace

bool PLT_child_start(PLT_child* child, const char* const* argv, bool wants_output) {
  int ends[2] = {-1, -1};
  if (wants_output && pipe2(ends, O_CLOEXEC) != 0) return false;
  *child = {spawn(argv, ends[1]), ends[0]};
  if (ends[1] >= 0) close(ends[1]);
  if (child->pid == 0) PLT_child_close(child);
  if (child->output >= 0) fcntl(child->output, F_SETFL, O_NONBLOCK);
  return child->pid != 0;
}

void PLT_child_read(PLT_child* child, std::string* text, size_t limit) {
  char buffer[4096];
  while (child->output >= 0) {
    const ssize_t got = read(child->output, buffer, sizeof buffer);
    if (got > 0) {
      text->append(buffer, static_cast<size_t>(got));
      if (text->size() > limit) PLT_child_close(child);
    } else if (got == 0 || errno != EINTR) {
      if (got == 0 || errno != EAGAIN) PLT_child_close(child);
      return;
    }
  }
}

void PLT_child_close(PLT_child* child) {
  if (child->output >= 0) close(child->output);
  child->output = -1;
}

bool PLT_child_has_ended(PLT_child* child, int* status) {
  int how = 0;
  const pid_t ended = waitpid(child->pid, &how, WNOHANG);
  if (ended == 0 || (ended < 0 && errno == EINTR)) return false;
  *status = ended > 0 && WIFEXITED(how) ? WEXITSTATUS(how) : -1;
  child->pid = 0;
  return true;
}

void PLT_child_end(PLT_child* child, uint64_t polite_us) {
  const pid_t group = child->pid;
  if (group != 0) {
    if (polite_us > 0) kill(-group, SIGTERM);
    const bool gone = polite_us > 0 && ends_within(child, polite_us);
    // The group outlives its first process if that has left children behind.
    kill(-group, SIGKILL);
    if (!gone) ends_within(child, killed_us);
  }
  child->pid = 0;
  PLT_child_close(child);
}

int PLT_run_program(const char* const* argv, int seconds) {
  PLT_child child;
  if (!PLT_child_start(&child, argv, false)) return -1;
  const uint64_t deadline = PLT_microseconds() + static_cast<uint64_t>(seconds) * 1'000'000;
  int status = -1;
  while (!PLT_child_has_ended(&child, &status)) {
    if (PLT_microseconds() >= deadline) {
      PLT_child_end(&child, 0);
      return -1;
    }
    usleep(look_again_us);
  }
  return status;
}

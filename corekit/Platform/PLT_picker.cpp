// The desktop's folder window as another program: started with a pipe for its answer and in a group
// of its own, asked by poll, and ended with its children when it is no longer wanted.
//
// Main thread. One at a time.

#include "corekit/Platform/PLT_picker.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <vector>

#include "corekit/Platform/PLT_system.h"

namespace {

constexpr size_t longest_answer = 64 * 1024;  // no path is longer; what says more is no picker
constexpr uint64_t polite_us = 300'000;       // from the request to end to the order to
constexpr useconds_t wait_us = 5'000;
constexpr int exit_chosen = 0, exit_cancelled = 1;

using argument_list = std::vector<std::string>;

argument_list zenity_arguments(const std::string& title, const std::string& start_in) {
  argument_list arguments = {"zenity", "--file-selection", "--directory", "--title=" + title};
  if (!start_in.empty()) arguments.push_back("--filename=" + start_in);
  return arguments;
}

argument_list kdialog_arguments(const std::string& title, const std::string& start_in) {
  return {"kdialog", "--title", title, "--getexistingdirectory", start_in.empty() ? "/" : start_in};
}

constexpr argument_list (*kinds[])(const std::string&, const std::string&) = {zenity_arguments,
                                                                              kdialog_arguments};

// The picker that is up.
struct picker_state {
  pid_t child = 0;  // 0: none
  int answer = -1;  // reading end of its output; -1 once that has ended
  size_t kind = 0;
  std::string title, start_in, text;
};
picker_state picker;

bool start_program(const argument_list& arguments) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  posix_spawn_file_actions_t files;
  posix_spawnattr_t how;
  posix_spawn_file_actions_init(&files);
  posix_spawnattr_init(&how);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  // Signals that this process ignores or blocks would stay so in the program.
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&how, &none);
  posix_spawnattr_setsigdefault(&how, &all);
  posix_spawnattr_setpgroup(&how, 0);
  posix_spawnattr_setflags(&how,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  std::vector<char*> argv;
  for (const std::string& argument : arguments) {
    argv.push_back(const_cast<char*>(argument.c_str()));  // not written to
  }
  argv.push_back(nullptr);
  pid_t child = 0;
  const int failed = posix_spawnp(&child, argv[0], &files, &how, argv.data(), environ);
  posix_spawnattr_destroy(&how);
  posix_spawn_file_actions_destroy(&files);
  close(ends[1]);
  if (failed) {
    close(ends[0]);
    return false;
  }
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  picker.child = child;
  picker.answer = ends[0];
  picker.text.clear();
  return true;
}

// Starts the first kind from `first` on that can be started.
int start_from(size_t first) {
  for (size_t kind = first; kind < std::size(kinds); ++kind) {
    if (!start_program(kinds[kind](picker.title, picker.start_in))) continue;
    picker.kind = kind;
    return plt_picker_running;
  }
  return plt_picker_none;
}

void close_answer() {
  if (picker.answer >= 0) close(picker.answer);
  picker.answer = -1;
}

// Reads what there is.
void read_answer() {
  char buffer[4096];
  while (picker.answer >= 0) {
    const ssize_t got = read(picker.answer, buffer, sizeof buffer);
    if (got > 0) {
      picker.text.append(buffer, static_cast<size_t>(got));
      if (picker.text.size() > longest_answer) close_answer();
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else {
      if (got == 0 || errno != EAGAIN) close_answer();
      return;
    }
  }
}

// The path in the program's answer, which ends in a newline; empty if there is none.
std::string path_in(std::string text) {
  if (text.empty() || text[0] != '/' || text.find('\0') != std::string::npos) return "";
  if (text.back() == '\n') text.pop_back();
  while (text.size() > 1 && text.back() == '/')
    text.pop_back();
  return text;
}

}  // namespace

int PLT_picker_start(const std::string& title, const std::string& start_in) {
  PLT_picker_cancel();
  picker.title = title;
  picker.start_in = start_in;
  return start_from(0);
}

int PLT_picker_poll(std::string* path) {
  if (picker.child == 0) return plt_picker_none;
  read_answer();
  int status = 0;
  const pid_t ended = waitpid(picker.child, &status, WNOHANG);
  if (ended == 0 || (ended < 0 && errno == EINTR)) return plt_picker_running;
  // What it wrote last is still in the pipe. A child that it left behind may hold that open, so its
  // end is not waited for.
  read_answer();
  close_answer();
  picker.child = 0;

  const int code = ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (code == exit_cancelled) return plt_picker_cancelled;
  if (code == exit_chosen) {
    const std::string chosen = path_in(picker.text);
    if (!chosen.empty()) {
      *path = chosen;
      return plt_picker_chosen;
    }
  }
  return start_from(picker.kind + 1);
}

void PLT_picker_cancel() {
  if (picker.child == 0) return;
  kill(-picker.child, SIGTERM);
  const uint64_t deadline = PLT_microseconds() + polite_us;
  bool gone = false;
  while (!gone && PLT_microseconds() < deadline) {
    const pid_t ended = waitpid(picker.child, nullptr, WNOHANG);
    gone = ended > 0 || (ended < 0 && errno != EINTR);
    if (!gone) usleep(wait_us);
  }
  // The group outlives its first process if that has left children behind.
  kill(-picker.child, SIGKILL);
  while (!gone) {
    const pid_t ended = waitpid(picker.child, nullptr, 0);
    gone = ended > 0 || errno != EINTR;
  }
  picker.child = 0;
  close_answer();
}

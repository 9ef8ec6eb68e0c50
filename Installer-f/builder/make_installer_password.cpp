// Passwords; see make_installer_password.h. Main thread. The one global is what the signals'
// handler leaves for it.

#include "Installer-f/builder/make_installer_password.h"

#include <fcntl.h>
#include <sodium.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iterator>

#include "corekit/files/io_handle.h"

namespace {

constexpr size_t longest = 1024;
constexpr int ending[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t ended_by = 0;

void note_signal(int number) {
  ended_by = number;
}

// While one lives, the signals that end a program end a read, and what is typed is not shown.
// Afterwards they do what they do.
class unseen_typing {
 public:
  explicit unseen_typing(int terminal) : terminal_(terminal) {
    is_terminal_ = tcgetattr(terminal, &before_) == 0;
    if (!is_terminal_) return;
    ended_by = 0;
    struct sigaction note = {};
    note.sa_handler = note_signal;  // and no SA_RESTART
    for (size_t i = 0; i < std::size(ending); ++i)
      sigaction(ending[i], &note, &actions_[i]);
    termios unseen = before_;
    unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    unseen.c_lflag |= static_cast<tcflag_t>(ECHONL);
    tcsetattr(terminal, TCSAFLUSH, &unseen);
  }
  ~unseen_typing() {
    if (!is_terminal_) return;
    tcsetattr(terminal_, TCSAFLUSH, &before_);
    for (size_t i = 0; i < std::size(ending); ++i)
      sigaction(ending[i], &actions_[i], nullptr);
    if (ended_by != 0) raise(ended_by);
  }
  unseen_typing(const unseen_typing&) = delete;
  unseen_typing& operator=(const unseen_typing&) = delete;

  bool is_terminal() const { return is_terminal_; }

 private:
  int terminal_;
  bool is_terminal_ = false;
  termios before_ = {};
  struct sigaction actions_[std::size(ending)] = {};
};

}  // namespace

bool password_from(int fd, std::string& password) {
  password.clear();
  password.reserve(longest);  // so that growing leaves no copy of it behind
  char byte = 0;
  while (password.size() < longest) {
    const ssize_t got = read(fd, &byte, 1);
    if (got < 0 && errno == EINTR && ended_by == 0) continue;
    if (got < 0) return false;
    if (got == 0 || byte == '\n') return got != 0 || !password.empty();
    password += byte;
  }
  return false;
}

bool password_from_terminal(const char* prompt, std::string& password) {
  const io_handle terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
  if (!terminal) return false;
  const unseen_typing unseen(terminal.get());
  if (!unseen.is_terminal()) return false;
  const std::string text(prompt);
  io_write_all(terminal.get(), text.data(), text.size());
  return password_from(terminal.get(), password);
}

void password_wipe(std::string& password) {
  password.resize(password.capacity());
  sodium_memzero(password.data(), password.size());
  password.clear();
}

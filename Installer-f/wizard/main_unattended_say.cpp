// The console of a run without a display.
//
// Main thread.

#include "Installer-f/wizard/main_unattended_say.h"

#include <unistd.h>

#include <cstdio>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/exce.h"

namespace {

struct console_state {
  bool terminal = false;
  bool line_open = false;  // a live line stands unfinished on the terminal
  std::string last_live;
} console;

}  // namespace

void say_begin() {
  console.terminal = isatty(STDOUT_FILENO) != 0;
}

bool say_has_terminal() {
  return console.terminal;
}

void say_end_live() {
  if (console.line_open) std::fputc('\n', stdout);
  console.line_open = false;
}

void say(const std::string& line) {
  say_end_live();
  std::fprintf(stdout, "%s\n", PLT_terminal_text(line).c_str());
  std::fflush(stdout);
}

void complain(const std::string& line) {
  say_end_live();
  std::fflush(stdout);
  std::fprintf(stderr, "%s\n", PLT_terminal_text(line).c_str());
  xer << PLT_terminal_text(line) << '\n';
}

void say_live(const std::string& line) {
  if (line == console.last_live) return;
  console.last_live = line;
  std::fprintf(stdout, "\r%s\033[K", PLT_terminal_text(line).c_str());
  std::fflush(stdout);
  console.line_open = true;
}

std::string on_one_page(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n' && (out.empty() || out.back() == '\n')) continue;
    out += c;
  }
  while (!out.empty() && out.back() == '\n')
    out.pop_back();
  return out;
}

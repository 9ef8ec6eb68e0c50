// The console of a run without a display.
//
// Main thread.

#include "Installer-f/wizard/main_unattended_say.h"

#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/exce.h"

namespace {

struct console_state {
  bool terminal = false;
  bool quiet = false, json = false, timestamps = false;
  bool line_open = false;  // a live line stands unfinished on the terminal
  std::string last_live;
} console;

// ISO 8601, with the zone.
std::string time_now() {
  const time_t now = std::time(nullptr);
  tm parts = {};
  localtime_r(&now, &parts);
  char text[40];
  return {text, std::strftime(text, sizeof text, "%FT%T%z", &parts)};
}

// Each of the text's lines, with the time before it if it is wanted.
void print(std::FILE* to, const std::string& text) {
  const std::string mark = console.timestamps ? time_now() + " " : "";
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    std::fprintf(to, "%s%s\n", mark.c_str(),
                 PLT_terminal_text(std::string_view(text).substr(at, end - at)).c_str());
    at = end + 1;
  }
  std::fflush(to);
}

}  // namespace

void say_begin() {
  console.quiet = cmdline.has_option("--quiet");
  console.json = cmdline.has_option("--json");
  console.timestamps = cmdline.has_option("--timestamps");
  console.terminal = isatty(STDOUT_FILENO) != 0 && !console.quiet && !console.json;
}

bool say_has_terminal() {
  return console.terminal;
}

bool say_is_json() {
  return console.json;
}

void say_end_live() {
  if (console.line_open) std::fputc('\n', stdout);
  console.line_open = false;
}

void say_event(const char* event, const json_line& line) {
  if (!console.json) return;
  std::string text = json_line("event", event).add("time", time_now()).text();
  const std::string members = line.text();
  if (members.size() > 2) text.replace(text.size() - 1, 1, ", " + members.substr(1));
  std::fprintf(stdout, "%s\n", text.c_str());
  std::fflush(stdout);
}

void say(const std::string& line) {
  xer << PLT_terminal_text(line) << '\n';
  say_event("message", json_line("text", line));
  if (console.json || console.quiet) return;
  say_end_live();
  print(stdout, line);
}

void complain(const std::string& line) {
  xer << PLT_terminal_text(line) << '\n';
  say_event("error", json_line("text", line));
  if (console.json) return;
  say_end_live();
  std::fflush(stdout);
  print(stderr, line);
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

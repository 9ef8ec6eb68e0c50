// How the builder speaks: progress, notices, and alerts.
//
// Progress goes to standard error: on a terminal one line that is rewritten, elsewhere a line now
// and then. Main thread.

#include "Installer-f/builder/make_installer_say.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"

namespace {

constexpr int plain_step = 500;  // files between two lines where lines pile up

bool line_is_open = false;  // the terminal's line holds progress and has not been ended

size_t terminal_columns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

void say(const std::string& line) {
  builder_progress_end();
  std::fprintf(stderr, "%s\n", PLT_terminal_text(line).c_str());
  xer << PLT_terminal_text(line) << '\n';
}

}  // namespace

void builder_progress(int done, const std::string& line, const std::string& path) {
  static const bool on_terminal = isatty(STDERR_FILENO) != 0;
  std::string text = PLT_terminal_text(line + " " + path);
  if (on_terminal) {
    text.resize(std::min(text.size(), terminal_columns() - 1));
    std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
    line_is_open = true;
  } else if (done % plain_step == 0) {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

void builder_progress_end() {
  if (line_is_open) std::fputc('\n', stderr);
  line_is_open = false;
}

void builder_notice(const std::string& line) {
  say(line);
}

void builder_warning(const std::string& line) {
  say("WARNING: " + line);
}

void builder_alert(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, int source_line) {
  builder_progress_end();
  __MACIBM_alert(mnw.win_id, line_1, line_2, line_3, line_4, t_alert, "Installer-f/make_installer",
                 source_line);
}

void builder_fatal(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, int source_line) {
  builder_progress_end();
  __MACIBM_alert(mnw.win_id, line_1, line_2, line_3, line_4, t_exit, "Installer-f/make_installer",
                 source_line);
  std::abort();  // not reached: the alert ends the process
}

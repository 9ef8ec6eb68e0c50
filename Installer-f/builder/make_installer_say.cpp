// How the builder speaks: progress, notices, and alerts.
//
// With a window, progress is drawn at its foot, and the frame that follows reads the keys. Without
// one, progress goes to standard error: on a terminal one line that is rewritten, elsewhere a line
// now and then. Main thread.

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Installer-f/builder/make_installer.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_types.h"
#include "corekit/draw/oglp.h"
#include "corekit/window/hl_alert.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

int (*builder_quit_key)() = nullptr;

namespace {

constexpr int plain_step = 500;  // files between two lines where lines pile up

bool line_is_open = false;  // the terminal's line holds progress and has not been ended

size_t terminal_columns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

// A frame of the builder's own: what the pages would draw stays out of it.
void draw_progress(const std::string& line, const std::string& path) {
  constexpr int back_colour = 34, text_colour = 38;
  OGL_fillrect(back_colour, 1.0f, 0, 0, 1024, 30);
  OGL_string(text_colour, 10, 17, line, 0);
  OGL_string(text_colour, 10, 5, path, 0);
  const int modal_before = mnw.modal_up;
  mnw.modal_up = 1;
  MACIBM_event_proc();
  mnw.modal_up = modal_before;
}

void say(const std::string& line) {
  builder_progress_end();
  std::fprintf(stderr, "%s\n", PLT_terminal_text(line).c_str());
  xer << PLT_terminal_text(line) << '\n';
}

}  // namespace

void builder_progress(int done, const std::string& line, const std::string& path) {
  if (ogl_inited) {
    draw_progress(line, path);
    return;
  }
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

int builder_quit_pressed() {
  return ogl_inited && builder_quit_key ? builder_quit_key() : 0;
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

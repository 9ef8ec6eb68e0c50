// The alert: from any thread, before any window exists, inside another alert.
//
// On another thread an alert becomes a record on a queue; on the main thread it is shown, drawn
// (hl_alert_draw.cpp) or plain, logged, and if fatal ends the program. Owned by the main thread but
// for the first step.

#include "corekit/window/hl_alert.h"

#include <cstdio>
#include <cstdlib>

#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_debug.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_thread.h"
#include "corekit/window/hl_alert_draw.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

int alerts_shown = 0;

namespace {

int in_alert = 0;  // recursion guard: 1 while an alert is being shown

constexpr size_t plain_limit = 499;  // characters that the platform's plain alert takes

void log_lines(const alert_line* lines, const std::string& where) {
  for (int i = 0; i < 4; ++i)
    xer << PLT_terminal_text(lines[i].logged()) << '\n';
  xer << where << '\n';
  xer.flush();
}

void print_lines(const std::string* lines) {
  for (int i = 0; i < 4; ++i) {
    if (!lines[i].empty()) std::fprintf(stderr, "%s\n", PLT_terminal_text(lines[i]).c_str());
  }
  std::fflush(stderr);
}

// The plain form: two lines joined to a message, two to an explanation. `nested` says that an alert
// was up already, so that this one must not raise another: it is cut to fit instead.
void show_plain(const std::string* lines, bool nested) {
  std::string text[2] = {lines[0] + " " + lines[1], lines[2] + " " + lines[3]};
  for (std::string& part : text) {
    if (part.size() <= plain_limit) continue;
    if (nested) {
      part.resize(plain_limit);
    } else {
      __MACIBM_alert(win_main, "String too long!", part, "", "", t_exit, "corekit/GenH/hl_string",
                     137);
    }
  }
  PLT_plain_alert(text[0], text[1]);
}

// Ends the process without running the destructors of the program's globals: worker threads may
// still be reading them.
[[noreturn]] void end_process() {
  std::fflush(nullptr);
  std::_Exit(1);
}

}  // namespace

void MACIBM_fault(const char* file, int source_line, const std::string& line_1,
                  const std::string& line_2, const std::string& line_3, const std::string& line_4) {
  __MACIBM_alert(win_main, line_1, line_2, line_3, line_4, t_exit, file, source_line);
}

void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type, const char* file,
                    int source_line) {
  if (THREAD_is_inited() && !THREAD_is_main_thread()) {
    THREAD_send_exception(exce_class(line_1.logged(), line_2.logged(), line_3.logged(),
                                     line_4.logged(), file, source_line, type));
    return;
  }

  const alert_line lines[4] = {line_1, line_2, line_3, line_4};
  const std::string where = "(" + std::string(file) + " line " + std::to_string(source_line) + ")";

  if (type == t_exit) UTL_append_crawl();

  // An automatic frame-rate run must not wait for anyone.
  if (cmdline.has_option("--fps_test")) {
    log_lines(lines, where);
    if (type == t_exit) end_process();
    return;
  }

  const bool nested = in_alert != 0;
  in_alert = 1;
  ++alerts_shown;

  const std::string shown[4] = {line_1.shown(), line_2.shown(), line_3.shown(), line_4.shown()};
  const bool empty =
      line_1.is_empty() && line_2.is_empty() && line_3.is_empty() && line_4.is_empty();
  if (!ogl_inited || nested) {
    if (!empty) show_plain(shown, nested);
  } else if (!empty) {
    // A test or a person at a terminal reads it there too.
    if (type != 0) print_lines(shown);
    draw_alert(window, shown, type, where);
  }

  if (type == t_alert || type == t_exit || nested) {
    dump_mem_stats(
        "This is the dump_mem_stats call from the following code: if(type==t_exit || type == "
        "t_alert || recursive_error)");
    xer << '\n';
    log_lines(lines, where);
  }
  if (type != t_exit && !nested) {
    in_alert = 0;
    return;
  }

  // An alert inside an alert always ends the program: whatever failed is failing again.
  MACIBM_finishup(0);
  app_done = 1;
  end_process();
}

// Alerts: the one way in which anything in the system tells the user that something is wrong; and
// the sink that the window layer installs to show them.
#pragma once

#include <string>

#include "corekit/base/exce.h"
#include "corekit/base/hl_types.h"

// Shows four lines of text and where they came from.
//
// `window` is the win_id to return to. `type` is 0 (the language chooser, no text), t_alert (a
// message; returns when the user has read it) or t_exit (ends the program with status 1; does not
// return on the main thread). `file` and `source_line` identify the caller; `file` must be static
// text. Callable from any thread: off the main thread the alert is posted and shown on the main
// thread's next frame, and a t_exit ends the calling thread at once. An alert inside an alert ends
// the program.
void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type, const char* file,
                    int source_line);

// The alert of a fault of the program itself, which no user causes or can mend. Fatal; its lines
// stay English, for those who can.
void MACIBM_fault(const char* file, int source_line, const std::string& line_1,
                  const std::string& line_2 = "", const std::string& line_3 = "",
                  const std::string& line_4 = "");

// Alerts shown since the program began. Main thread.
extern int alerts_shown;

// --- the sink -----------------------------------------------------------------------------------

// What the floors above know and this one does not. Before it is installed an alert has the plain
// form, and a fatal one ends the process with nothing to take down.
struct failure_sink {
  // The drawn form; `where` names the source of a fatal one. Back when the user has read it. Called
  // only with a window on (ogl_inited) and outside another alert.
  void (*show)(const exce_class& failure, const std::string& where);
  // Takes the runtime down; `save` as for MACIBM_finishup.
  void (*finish)(int save);
};
void report_to(const failure_sink* sink);  // static; null takes it away

// Shows a failure, logs it, and ends the program if it is fatal. Main thread; others send theirs
// (THREAD_send_exception).
void report(const exce_class& failure);

// Takes the runtime down, as the sink does it.
void report_finish(int save);

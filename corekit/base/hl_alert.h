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

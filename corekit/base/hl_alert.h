// Alerts: the one way in which anything in the system tells the user that something is wrong; and
// the sink that the window layer installs to show them.
#pragma once

#include <string>

#include "corekit/base/exce.h"
#include "corekit/base/hl_alert_source.h"
#include "corekit/base/hl_types.h"

// Shows four lines of text and where they came from.
//
// `window` is the win_id to return to. `type` is 0 (the language chooser, no text), t_alert (a
// message; returns when the user has read it) or t_exit (ends the program with status 1; does not
// return on the main thread). `source` names the caller. Callable from any thread: off the main
// thread the alert is posted and shown on the main thread's next frame, and a t_exit ends the
// calling thread at once. An alert inside an alert ends the program.
void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type,
                    alert_source source);
// The same for a caller that the table of sources does not know; `file` must be static text.
void __MACIBM_alert(int window, const alert_line& line_1, const alert_line& line_2,
                    const alert_line& line_3, const alert_line& line_4, int type, const char* file,
                    int source_line);

// The alert of a fault of the program itself, which no user causes or can mend. Fatal; its lines
// stay English, for those who can.
void MACIBM_fault(alert_source source, const std::string& line_1, const std::string& line_2 = "",
                  const std::string& line_3 = "", const std::string& line_4 = "");

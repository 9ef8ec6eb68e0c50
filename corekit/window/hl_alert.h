// Alerts: the one way in which anything in the system tells the user that something is wrong.
#pragma once

#include <string>
#include <utility>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_types.h"

// One line of an alert. A literal is a text like any other that a user sees: it stays English on
// its way from a thread to the main thread and in the log, and is translated when it is shown. What
// the caller has put together, translated piece by piece, and a name or a path, is a std::string
// and stays as it is.
struct alert_line {
  alert_line(const char* literal) : english(literal) {}
  alert_line(std::string line) : made(std::move(line)) {}

  UTL_text english = nullptr;  // null when the line was made
  std::string made;

  bool is_empty() const { return english ? !*english : made.empty(); }
  // Main thread.
  std::string shown() const { return english && *english ? UTL_translate_string(english) : made; }
  std::string logged() const { return english ? english : made; }
};

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

// Texts of the alerts that an application may replace; each is translated when it is shown.
struct alert_texts_record {
  UTL_text ok = "OK";          // the button of an alert
  UTL_text accept = "Accept";  // the button of the language chooser
  // The question of MACIBM_nuke_alert is "prefix text suffix", and its answers 1, 2, 3.
  UTL_text nuke_prefix = "Do you want to save the changes to";
  UTL_text nuke_suffix = "before it closes?";
  UTL_text nuke_answers[3] = {"Save", "Do not save", "Cancel"};
};
extern alert_texts_record alert_texts;

// A question with up to three answers; returns 1, 2 or 3. 3 also when it cannot be put or is closed
// without an answer.
int MACIBM_nuke_alert(const std::string& text, int offer_third);

// The failure record that travels between threads, and the sink that shows it.
//
// Nothing throws exce_class to report a failure: the record is a message that goes by queue to the
// main thread, which shows it. See hl_thread.h for the queues.
#pragma once

#include <string>
#include <utility>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert_source.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/xer.h"

// One line of a failure. A literal is a text like any other that a user sees: it stays English on
// its way from a thread to the main thread and in the log, and is looked up when it is shown. What
// the caller has put together, translated piece by piece, and a name or a path, is a std::string
// and stays as it is.
struct alert_line {
  alert_line() = default;
  alert_line(const char* literal) : english(literal) {}
  alert_line(std::string line) : made(std::move(line)) {}

  UTL_text english = nullptr;  // static text; null when the line was made
  std::string made;

  bool is_empty() const { return english ? !*english : made.empty(); }
  // Main thread.
  std::string shown() const { return english && *english ? UTL_translate_string(english) : made; }
  std::string logged() const { return english ? english : made; }
};

class exce_class {
 public:
  exce_class() = default;
  exce_class(alert_line l1, alert_line l2, alert_line l3, alert_line l4, const char* source_file,
             int source_line, int how_bad);
  exce_class(alert_line l1, alert_line l2, alert_line l3, alert_line l4, alert_source source,
             int how_bad);
  exce_class(const exce_class&) = default;
  exce_class& operator=(const exce_class&) = default;
  virtual ~exce_class() = default;

  // Shows the record as an alert; severity 2 ends the program. Main thread. On another thread, as a
  // last resort, writes it to the log and takes the runtime down.
  void Report() const;
  // Writes the record to the log and flushes; stops and changes nothing.
  void LogAndContinue() const;
  void MakeFatal() { severity = 2; }

  void log_lines() const;  // the four lines, each on its own, to the log
  bool is_empty() const;   // four empty lines

  alert_line line_1, line_2, line_3, line_4;
  const char* file = "no exception";  // static text
  int line = 0;
  int severity = 2;  // 0 a note, t_alert, t_exit
  int window = 0;    // the win_id to return to when it has been shown
};

// What std::bad_alloc comes to. Any thread.
exce_class no_memory_failure(alert_source source);

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

// Tells an alert where no window draws it. `ends` says that the program ends with it.
using plain_teller = void (*)(const std::string& message, const std::string& explanation,
                              bool ends);
void report_plainly_by(plain_teller teller);  // null: as the platform does it

// Takes the runtime down, as the sink does it.
void report_finish(int save);

// Alerts shown since the program began. Main thread.
extern int alerts_shown;

// What the threads' floor knows: whether the caller is not the main thread, and how a record gets
// there. Before it is installed there is one thread.
struct failure_post {
  bool (*is_elsewhere)();
  void (*send)(const exce_class& failure);
};
void report_across(const failure_post* post);  // static; null takes it away

// Shows the failure, or sends it to the thread that does. Any thread.
void report_from_anywhere(const exce_class& failure);

// The failure record that travels between threads, and the log stream.
//
// Nothing throws exce_class to report a failure: the record is a message that goes by queue to the
// main thread, which shows it. See hl_thread.h for the queues, hl_alert.h for the showing.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>

#include "corekit/base/UTL_translate.h"

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

// --- the log ------------------------------------------------------------------------------------

// The log, "Skyvane Installer Log.txt" beside the application; rewritten on each run, fixed-point
// numbers. A stream that could not be opened swallows what is written to it. It has no lock: the
// main thread writes, and another one only when it has no other way left to report its failure.
extern std::ofstream xer;

// Opens the log at `path`, truncating. Returns false if that failed; the run goes on without.
bool xer_open(const std::string& path);

// Writes the log's header: title, notices, system and hardware lines.
void xer_header();

// The name that the header gives to a processor type: PLT_machine::cpu_type, its first character in
// the highest byte. Begins and ends with a blank.
std::string xer_cpu_name(uint32_t cpu_type);

// The failure record, and how it is shown: drawn by the window layer's sink or plain, logged, and
// if fatal it ends the program.
//
// Any thread may make a record or report one from anywhere; the rest is the main thread's.

#include "corekit/base/exce.h"

#include <cstdio>
#include <cstdlib>

#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_debug.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"

int alerts_shown = 0;

namespace {

const failure_sink* the_sink = nullptr;
plain_teller the_teller = nullptr;
const failure_post* the_post = nullptr;
int in_alert = 0;  // recursion guard: 1 while an alert is being shown

constexpr size_t plain_limit = 499;  // characters that the platform's plain alert takes

void log_failure(const exce_class& failure, const std::string& where) {
  failure.log_lines();
  xer << where << '\n';
  xer.flush();
}

void print_lines(const exce_class& failure) {
  for (const alert_line* line :
       {&failure.line_1, &failure.line_2, &failure.line_3, &failure.line_4}) {
    if (!line->is_empty()) std::fprintf(stderr, "%s\n", PLT_terminal_text(line->shown()).c_str());
  }
  std::fflush(stderr);
}

// The plain form: two lines joined to a message, two to an explanation. `nested` says that an alert
// was up already, so that this one must not raise another: it is cut to fit instead.
void show_plain(const exce_class& failure, bool nested) {
  std::string text[2] = {failure.line_1.shown() + " " + failure.line_2.shown(),
                         failure.line_3.shown() + " " + failure.line_4.shown()};
  for (std::string& part : text) {
    if (part.size() <= plain_limit) continue;
    if (nested) {
      part.resize(plain_limit);
    } else {
      report(exce_class("String too long!", part, "", "", at_plain_too_long, t_exit));
    }
  }
  if (the_teller) {
    the_teller(text[0], text[1], nested || failure.severity == t_exit);
  } else {
    PLT_plain_alert(text[0], text[1]);
  }
}

void show(const exce_class& failure, const std::string& where, bool nested) {
  if (failure.is_empty()) return;
  if (!the_sink || !ogl_inited || nested) {
    show_plain(failure, nested);
    return;
  }
  // A test or a person at a terminal reads it there too.
  if (failure.severity != 0) print_lines(failure);
  the_sink->show(failure, where);
}

// Ends the process without running the destructors of the program's globals: worker threads may
// still be reading them.
[[noreturn]] void end_process() {
  std::fflush(nullptr);
  std::_Exit(1);
}

}  // namespace

void report_to(const failure_sink* sink) {
  the_sink = sink;
}

void report_plainly_by(plain_teller teller) {
  the_teller = teller;
}

void report_across(const failure_post* post) {
  the_post = post;
}

void report_from_anywhere(const exce_class& failure) {
  if (the_post && the_post->is_elsewhere()) {
    the_post->send(failure);
    return;
  }
  report(failure);
}

void report_finish(int save) {
  if (the_sink) the_sink->finish(save);
}

void report(const exce_class& failure) {
  const int type = failure.severity;
  const std::string where =
      "(" + std::string(failure.file) + " line " + std::to_string(failure.line) + ")";

  if (type == t_exit) UTL_append_crawl();

  // An automatic frame-rate run must not wait for anyone.
  if (cmdline.has_option("--fps_test")) {
    log_failure(failure, where);
    if (type == t_exit) {
      APP.given_up();
      end_process();
    }
    return;
  }

  const bool nested = in_alert != 0;
  in_alert = 1;
  ++alerts_shown;
  show(failure, where, nested);

  if (type == t_alert || type == t_exit || nested) {
    dump_mem_stats(
        "This is the dump_mem_stats call from the following code: if(type==t_exit || type == "
        "t_alert || recursive_error)");
    xer << '\n';
    log_failure(failure, where);
  }
  if (type != t_exit && !nested) {
    in_alert = 0;
    return;
  }

  // An alert inside an alert always ends the program: whatever failed is failing again.
  APP.given_up();
  report_finish(0);
  app_done = 1;
  end_process();
}

// --- the record ---------------------------------------------------------------------------------

exce_class::exce_class(alert_line l1, alert_line l2, alert_line l3, alert_line l4,
                       const char* source_file, int source_line, int how_bad)
    : line_1(std::move(l1)),
      line_2(std::move(l2)),
      line_3(std::move(l3)),
      line_4(std::move(l4)),
      file(source_file),
      line(source_line),
      severity(how_bad) {}

exce_class::exce_class(alert_line l1, alert_line l2, alert_line l3, alert_line l4,
                       alert_source source, int how_bad)
    : exce_class(std::move(l1), std::move(l2), std::move(l3), std::move(l4), quote_of(source).file,
                 quote_of(source).line, how_bad) {}

exce_class no_memory_failure(alert_source source) {
  return exce_class("There is no more memory, and I cannot go on.",
                    "Your own files are as they were. Close other programs and start this one "
                    "again: it goes on from where it was.",
                    "", "", source, t_exit);
}

void exce_class::log_lines() const {
  for (const alert_line* text : {&line_1, &line_2, &line_3, &line_4})
    xer << PLT_terminal_text(text->logged()) << '\n';
}

bool exce_class::is_empty() const {
  return line_1.is_empty() && line_2.is_empty() && line_3.is_empty() && line_4.is_empty();
}

void exce_class::Report() const {
  if (the_post && the_post->is_elsewhere()) {
    xer << "EXCEPTION REPORTED FROM THREAD!!  File: " << file << ", line " << line << ".\n";
    log_lines();
    xer.flush();
    app_done = 1;
    report_finish(1);
    return;
  }
  report(*this);
}

void exce_class::LogAndContinue() const {
  // A warning reads "fatal" here too, on purpose: only a note is not.
  xer << "Logging " << (severity ? "fatal" : "non-fatal") << " Exception thrown from file: " << file
      << ", line " << line << ".\n";
  log_lines();
  xer.flush();
}

// A folder window as another program, which writes the path and tells by its exit status how it
// went.
//
// Main thread.

#include <initializer_list>
#include <string>

#include "corekit/Platform/PLT_child.h"
#include "corekit/Platform/PLT_picker.h"
#include "corekit/Platform/PLT_picker_kinds.h"

namespace {

constexpr size_t longest_answer = 64 * 1024;  // no path is longer; what says more is no picker
constexpr uint64_t polite_us = 300'000;       // from the request to end to the order to
constexpr int exit_chosen = 0, exit_cancelled = 1;

struct {
  PLT_child child;
  std::string text;
} program;

bool start(const char* const* argv) {
  program.text.clear();
  return PLT_child_start(&program.child, argv, true);
}

}  // namespace

bool plt_zenity_start(const PLT_picker_question& question) {
  const std::string title = "--title=" + question.title;
  const std::string start_in = "--filename=" + question.start_in;
  const char* const argv[] = {"zenity",
                              "--file-selection",
                              "--directory",
                              title.c_str(),
                              question.start_in.empty() ? nullptr : start_in.c_str(),
                              nullptr};
  return start(argv);
}

bool plt_kdialog_start(const PLT_picker_question& question) {
  const char* const start_in = question.start_in.empty() ? "/" : question.start_in.c_str();
  const char* const argv[] = {
      "kdialog", "--title", question.title.c_str(), "--getexistingdirectory", start_in, nullptr};
  return start(argv);
}

int plt_program_poll(std::string* path) {
  int status = -1;
  PLT_child_read(&program.child, &program.text, longest_answer);
  if (!PLT_child_has_ended(&program.child, &status)) return plt_picker_running;
  // What it wrote last is still in the pipe. A child that it left behind may hold that open, so its
  // end is not waited for.
  PLT_child_read(&program.child, &program.text, longest_answer);
  if (status == exit_cancelled) return plt_picker_cancelled;
  if (status != exit_chosen) return plt_picker_none;
  *path = program.text;
  if (path->ends_with('\n')) path->pop_back();
  return plt_picker_chosen;
}

void plt_program_stop() {
  PLT_child_end(&program.child, polite_us);
}

// The desktop's folder window: which kinds there are, in which order they are tried, and what is
// taken for an answer. A kind that cannot be had, or fails, is followed by the next one.
//
// Main thread. One at a time.

#include "corekit/Platform/PLT_picker.h"

#include <iterator>

#include "corekit/Platform/PLT_picker_kinds.h"

namespace {

constexpr PLT_picker_kind kinds[] = {
    {plt_portal_start, plt_portal_poll, plt_portal_stop},
    {plt_zenity_start, plt_program_poll, plt_program_stop},
    {plt_kdialog_start, plt_program_poll, plt_program_stop},
};

// What is asked, and by which kind; null while no window is up.
struct {
  PLT_picker_question question;
  const PLT_picker_kind* kind = nullptr;
} picker;

// Starts the first kind from `kind` on that can be had.
int start_from(const PLT_picker_kind* kind) {
  for (; kind != std::end(kinds); ++kind) {
    if (!kind->start(picker.question)) continue;
    picker.kind = kind;
    return plt_picker_running;
  }
  return plt_picker_none;
}

bool is_path(const std::string& text) {
  return !text.empty() && text[0] == '/' && text.find('\0') == std::string::npos;
}

}  // namespace

int PLT_picker_start(const std::string& title, const std::string& start_in) {
  PLT_picker_cancel();
  picker.question = {title, start_in};
  return start_from(kinds);
}

int PLT_picker_poll(std::string* path) {
  if (!picker.kind) return plt_picker_none;
  std::string answer;
  const int state = picker.kind->poll(&answer);
  if (state == plt_picker_running) return state;
  const PLT_picker_kind* const asked = picker.kind;
  PLT_picker_cancel();
  if (state == plt_picker_cancelled) return state;
  if (state != plt_picker_chosen || !is_path(answer)) return start_from(asked + 1);
  while (answer.size() > 1 && answer.back() == '/')
    answer.pop_back();
  *path = answer;
  return state;
}

void PLT_picker_cancel() {
  if (picker.kind) picker.kind->stop();
  picker.kind = nullptr;
}

// Main thread. Writes nothing but when the job began.

#include "Installer-f/wizard/main_notice.h"

#include "corekit/Platform/PLT_notice.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/xtim.h"

namespace {

constexpr float long_job = 15;  // seconds; who has waited that long may have gone to other work

double job_began = -1;  // negative for no job
page_function told_of;

bool is_last(page_function page) {
  return page->kind == page_last || page->kind == page_last_update;
}

}  // namespace

void wizard_tell_desktop(page_function page, const wizard_screen& screen) {
  PLT_show_progress(screen.progress);
  PLT_notice_frame();
  if (page->kind == page_choice) {
    job_began = -1;
  } else if (screen.progress >= 0 && job_began < 0) {
    job_began = xtim.now_sec;
  }
  if (page == told_of) return;
  told_of = page;
  // A disc that is asked for holds the job up as if it had ended.
  if (job_began < 0 || !(is_last(page) || page->kind == page_disc)) return;
  if (xtim.now_sec - job_began >= long_job && !PLT_window_is_in_front()) {
    PLT_notify(screen.title, screen.text);
  }
  if (is_last(page)) job_began = -1;
}

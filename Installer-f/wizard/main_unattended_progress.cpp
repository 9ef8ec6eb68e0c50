// Main thread.

#include "Installer-f/wizard/main_unattended_progress.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"

namespace {

std::string megabytes(double kb) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB", kb / 1000);
  return text;
}

std::string amount(double done_kb, double all_kb) {
  return str_fill(tr("%s of %s"), {megabytes(done_kb), megabytes(all_kb)});
}

std::string clock_time(float seconds) {
  const long whole = std::min(static_cast<long>(seconds), 359999L);
  char text[32];
  std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}

std::string transfer_line(float fraction) {
  const patch_figures figures = patch_progress();
  char percent[16];
  std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(fraction * 100));
  std::string line = percent;
  line += "  " + amount(figures.done_kb, stg.todo_zip_kb);
  line += "  " + std::to_string(static_cast<long>(figures.kb_per_second)) + " kB/s";
  line += "  " + str_fill(tr("%s left"), {clock_time(figures.seconds_left)});
  return line;
}

std::string progress_line(page_kind kind, float fraction) {
  if (kind == page_transfer) return transfer_line(fraction);
  char percent[16];
  std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(fraction * 100));
  if (kind != page_install) return percent;
  return std::string(percent) + "  " + amount(fraction * stg.todo_raw_kb, stg.todo_raw_kb);
}

int last_step = -1;  // last 5 % step printed of the present page

bool is_new_step(float fraction) {
  const int step = static_cast<int>(fraction * 20);
  return std::exchange(last_step, step) != step;
}

void say_progress_event(page_kind kind, float fraction) {
  if (!is_new_step(fraction)) return;
  json_line line;
  line.add("fraction", static_cast<double>(fraction));
  if (kind == page_transfer) {
    const patch_figures figures = patch_progress();
    line.add("done_bytes", static_cast<int64_t>(figures.done_kb * 1000))
        .add("total_bytes", static_cast<int64_t>(stg.todo_zip_kb * 1000))
        .add("bytes_per_second", static_cast<int64_t>(figures.kb_per_second * 1000))
        .add("seconds_left", static_cast<int64_t>(figures.seconds_left));
  }
  say_event("progress", line);
}

}  // namespace

void progress_begin() {
  last_step = -1;
}

void progress_show(page_kind kind, const wizard_screen& screen) {
  float fraction = screen.progress;
  if (kind == page_transfer) {
    // The page's own figure is smoothed for the eye; a log wants the plain one.
    const double done = stg.todo_raw_kb > 0 ? next.done_raw_kb / stg.todo_raw_kb : 0;
    fraction = static_cast<float>(std::min(done, 1.0));
  }
  if (fraction < 0) return;
  if (say_is_json()) {
    say_progress_event(kind, fraction);
    return;
  }
  if (say_has_terminal()) {
    say_live(progress_line(kind, fraction));
    return;
  }
  if (!is_new_step(fraction)) return;
  if (kind == page_transfer || kind == page_install) say(progress_line(kind, fraction));
}

// Both pages run on the main thread, a bounded step a frame.

#include "Installer-f/wizard/main_patch.h"

#include <algorithm>
#include <cmath>

#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_trust.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_patch_answers.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr int slot_list = 0, slot_manifest = 1;
constexpr uint64_t frame_budget_us = 20000;
constexpr float ratio_worth_telling = 0.01f;  // below this the time left is a guess of a guess

std::string whole(float value) {
  return std::to_string(static_cast<long long>(value));
}

void show_manifest_progress(wizard_screen& screen) {
  const long length = http.slot_active(slot_manifest) ? http.slot_length(slot_manifest) : -1;
  screen.progress = length > 0 ? static_cast<float>(http.slot_received(slot_manifest)) /
                                     static_cast<float>(length)
                               : -0.01f;
  const std::string percent = whole(std::floor(screen.progress * 100));
  screen.progress_text =
      percent == "-1"
          ? tr("I am checking the net for the latest version of Skyvane 9 right now, and I am "
               "connecting to the server...")
          : tr("I am checking the net for the latest version of Skyvane 9 right now, and I am ") +
                percent + tr("% done checking.");
}

// A step on the way to the manifest, and more as the answers come in, for as long as a frame may
// take: most are short, and there within a moment.
void step_to_manifest() {
  constexpr uint64_t tick_us = 16000;
  frame_soon = frame_in_a_tick;
  const uint64_t start = PLT_microseconds();
  for (uint64_t used = 0; used < tick_us; used = PLT_microseconds() - start) {
    const int count = stg.server_count, state = stg.directory_state;
    UTL_download_directory();
    // What comes next is worth a frame of its own.
    if (count != stg.server_count || state != stg.directory_state) frame_soon = frame_at_once;
    const int slot = stg.server_count < 1 ? slot_list : slot_manifest;
    used = PLT_microseconds() - start;
    if (frame_soon == frame_at_once || !http.slot_active(slot) || used >= tick_us) return;
    http.wait(1u << slot, static_cast<int>((tick_us - used) / 1000) + 1);
    if (PLT_microseconds() - start >= tick_us) frame_soon = frame_at_once;
  }
}

// --- the transfer page ---------------------------------------------------------------------------

void smooth_ratio(float& ratio) {
  // A job without weight is done as soon as it is looked at.
  const float target =
      stg.todo_raw_kb > 0 ? static_cast<float>(next.done_raw_kb / stg.todo_raw_kb) : 1.0f;
  const float k = 5 * xtim.period;
  ratio = std::clamp((1 - k) * ratio + k * target, 0.0f, 1.0f);
}

std::string activity_line() {
  switch (stg.activity) {
    case activity_deleting:
      return tr("Deleting ") + crnt_file_name + tr(" because that file is no longer needed!");
    case activity_fetching:
      // How much of it is done is not known before its length is.
      if (stg.file_fraction < 0) return tr("Downloading and installing ") + crnt_file_name + ".";
      return tr("Downloading and installing ") + crnt_file_name + tr(", currently ") +
             whole(stg.file_fraction * 100) + tr("% done with that file.");
    case activity_have_it:
      return tr("duplicate filename through file ") + crnt_file_name +
             tr(", but not installing it because you already have this file.");
    default:
      return tr("Browsing through file ") + crnt_file_name +
             tr(", but not installing it because you don't need this file.");
  }
}

std::string time_left(float seconds) {
  if (seconds < 120) return whole(seconds) + tr(" seconds");
  if (seconds < 7200) return whole(seconds / 60) + tr(" minutes");
  return whole(seconds / 3600) + tr(" hours");
}

std::string speed_line(float ratio) {
  const patch_figures figures = patch_progress();
  if (ratio <= ratio_worth_telling || figures.done_kb <= 0) return "";
  return tr("About ") + time_left(figures.seconds_left) +
         tr(" left in the install, downloading at ") + whole(figures.kb_per_second) +
         tr(" kilobytes/second ") + tr("with ") + std::to_string(figures.streams) +
         tr(" simultaneous download streams.");
}

void show_transfer(const patch_flow& flow, wizard_screen& screen) {
  screen.back = flow.back;
  if (stg.server_down) {
    screen.text =
        tr("I can not download the file '") + crnt_file_path +
        tr("'.\n\nYour internet connection may not be working, or the server could be undergoing "
           "maintainance or an upgrade right now.\n\nI am trying another server now to see if I "
           "can still get you a download...");
    return;
  }
  screen.text = speed_line(*flow.done_ratio);
  screen.progress_text = activity_line();
  screen.progress = *flow.done_ratio;
}

// Decides, makes the folders, and starts the streams. False when the user declined, a folder could
// not be made, or another program works on the copy. That one leads back, too, and not on: a copy
// that was verified is locked since then, so here it is a new one that somebody else has begun.
bool begin_transfer(const patch_flow& flow) {
  // The manifest may have come when another copy was chosen.
  if (trust_is_behind(dest_dir_path)) {
    __MACIBM_alert(0, "This copy has had a newer release than the one that the servers offer now.",
                   dest_dir_path, "I leave it as it is.", "", t_alert, at_untrusted_manifest);
    return false;
  }
  if (!choose_files_again()) return false;
  if (flow.is_new_copy) register_new_skyvane();
  if (make_dirs() != 0) return false;
  if (lock_copy(dest_dir_path) == copy_lock_busy) {
    __MACIBM_alert(0, "Another installer or updater is at work on this folder:", dest_dir_path, "",
                   "", t_alert, at_copy_in_use);
    return false;
  }
  missing_files.clear();
  grab_discard_partial();
  grab_reset();
  *flow.done_ratio = 0;
  if (flow.is_running) *flow.is_running = 1;
  return true;
}

}  // namespace

int check_servers(const check_flow& flow, int first_time, wizard_screen& screen) {
  // A return to this page reads the manifest anew.
  if (first_time && stg.directory_state == manifest_loaded) {
    set_directory_state(manifest_unpacked);
  }
  screen.title = tr(flow.title);
  screen.back = flow.back;
  step_to_manifest();

  if (stg.server_count == -1) {
    screen.text = tr(flow.contacting);
    screen.is_busy = true;
    return 0;
  }
  switch (stg.directory_state) {
    case manifest_none:
      screen.is_busy = true;
      screen.text = tr(flow.downloading) + server_name[stg.server_index];
      show_manifest_progress(screen);
      return 0;
    case manifest_unpacked:
      screen.text = tr(flow.processing);
      screen.is_busy = true;
      return 0;
    case manifest_refused:
      screen.text = tr("There was a problem reading information from the servers.");
      return 0;
    default:
      return 1;
  }
}

patch_figures patch_progress() {
  patch_figures figures;
  // In flight is below nothing while no length is known.
  figures.done_kb = std::max(next.done_zip_kb + next.in_flight_kb, 0.0);
  const double elapsed = std::max(xtim.now_sec - next.start_time, 1.0);
  figures.kb_per_second = static_cast<float>(figures.done_kb / elapsed);
  const auto left = static_cast<float>(std::max(stg.todo_zip_kb - figures.done_kb, 0.0));
  figures.seconds_left = figures.kb_per_second > 0 ? left / figures.kb_per_second : 0;
  figures.streams = 0;
  for (const int active : next.stream_active)
    figures.streams += active ? 1 : 0;
  return figures;
}

int run_patch(const patch_flow& flow, int first_time, wizard_screen& screen) {
  const bool starting = flow.is_running ? !*flow.is_running : first_time != 0;
  if (starting && !begin_transfer(flow)) {
    screen.next = flow.back;
    return 1;
  }

  screen.title = tr("Installing");
  screen.show_servers = 1;
  // The first pass always runs, however late the frame is.
  const uint64_t start = PLT_microseconds();
  for (uint64_t used = 0; used < frame_budget_us; used = PLT_microseconds() - start) {
    if (grab_files()) {
      grab_discard_partial();
      grab_reset();
      screen.next = flow.done;
      if (flow.is_running) *flow.is_running = 0;
      return 1;
    }
    smooth_ratio(*flow.done_ratio);
    used = PLT_microseconds() - start;
    if (used < frame_budget_us) grab_wait(static_cast<int>((frame_budget_us - used) / 1000));
  }
  show_transfer(flow, screen);
  frame_soon = frame_at_once;  // what this page waits for, it waits for by itself
  return 0;
}

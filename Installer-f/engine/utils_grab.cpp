// grab_files: one step of each live stream, and the end of the job; the reset of the transfer and
// the discard of what a broken one left. The step itself is in utils_stream.cpp.
//
// Main thread. Writes `next`; grab_totals is only defined here.

#include "Installer-f/engine/utils_grab.h"

#include <algorithm>
#include <cmath>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_grab_mirrors.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_stream.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_unpack.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_single.h"
#include "corekit/net/http.h"

transfer_record next;
transfer_totals grab_totals;

namespace {

// The first file that no stream has had yet. A failure rewinds next.next_file, the measure of how
// far the job has come; but a stream keeps its file until it is settled, so none behind this mark
// has to be handed out, or looked at, again.
int32_t handed_out = 0;

bool job_is_over(int32_t file_count) {
  for (int s = 0; s < stream_limit; ++s) {
    if (next.stream_active[s] != 0 && next.stream_file[s] < file_count) return false;
  }
  return true;
}

bool needs_work(const file_version_struct& file) {
  return file.need_fetch != 0 || file.need_delete != 0;
}

// Gives stream `s` the next file that needs something. Most files of an update need nothing: those
// on the way there are passed over in one go, and the stream visits the last of them for all.
void take_next_file(int s, int32_t file_count) {
  const int32_t first = std::max(next.next_file, handed_out);
  int32_t at = first;
  while (at < file_count && !needs_work(sim_info[static_cast<size_t>(at)].current()))
    ++at;
  next.stream_file[s] = at > first ? at - 1 : at;
  handed_out = next.next_file = std::min(file_count, next.stream_file[s] + 1);
}

}  // namespace

int grab_files() {
  const int32_t file_count = static_cast<int32_t>(sim_info.size());
  stream_collect_unpacked();
  next.in_flight_kb = 0;
  for (int s = 0; s < stream_limit; ++s) {
    if (next.stream_active[s] == 0) continue;
    if (next.stream_take_next[s] != 0) take_next_file(s, file_count);
    if (next.stream_file[s] >= file_count) continue;  // it waits for the others, still active
    if (stream_step(s)) settle_stream_count(s);
  }

  if (!job_is_over(file_count)) return stg.extract_failed;
  next.finished = 1;
  if (!missing_files.empty()) stg.extract_failed = 1;
  remove_emptied_folders(deleted_files);
  return 1;
}

void grab_wait(int milliseconds) {
  unsigned slots = 0;
  bool unpacks = false;
  float rest = static_cast<float>(milliseconds) / 1000;
  for (int s = 0; s < stream_limit; ++s) {
    if (next.stream_active[s] == 0) continue;
    // One that found no more files still has its mark: it waits for the others.
    if (next.stream_file[s] >= static_cast<int32_t>(sim_info.size())) continue;
    if (next.stream_take_next[s] != 0) return;
    switch (stream_where(s)) {
      case stream_fetching:
        slots |= 1u << (first_stream_slot + s);
        break;
      case stream_unpacking:
        unpacks = true;
        break;
      case stream_resting:
        rest = std::min(rest, stream_rests_for(s));
        break;
    }
  }
  http.wait(slots, static_cast<int>(std::ceil(rest * 1000)), unpacks ? unpack_descriptor() : -1);
}

void grab_reset() {
  stream_stop_all();
  handed_out = next.next_file = 0;
  for (int s = 0; s < stream_limit; ++s) {
    next.stream_active[s] = next.stream_take_next[s] = s < 2 ? 1 : 0;
    next.stream_file[s] = 0;
  }
  next.start_time = xtim.now_sec;
  next.in_flight_kb = 0;
  next.done_zip_kb = next.done_raw_kb = 0;
  mirrors_forget();
}

void grab_kill() {
  stream_stop_all();
  unpack_end();
}

// The names are those beside the installed files, and not the streams' own under temp_path. That is
// so on purpose: the next transfer simply writes over the streams' files. An archive of the user's
// may have such a name as well: one whose content the makers have not shipped is his, and stays.
void grab_discard_partial() {
  if (dest_dir_path.empty()) return;  // no copy chosen yet: there is nowhere to look
  const auto gate = copy_gate();
  for (int s = 0; gate && s < stream_limit; ++s) {
    const int32_t file = next.stream_file[s];
    if (next.stream_active[s] == 0 || file < 0 || file >= static_cast<int32_t>(sim_info.size())) {
      continue;
    }
    const file_history_struct& history = sim_info[static_cast<size_t>(file)];
    const file_version_struct& wanted = history.current();
    const std::string_view inside = installed_part(wanted.path);
    const std::string archive = std::string(inside) + ".zip";
    io_handle found;
    if (gate->open_file(archive, found) == 0 &&
        place_is_archive_of(found.get(), place_budget(wanted.zip_kb), history)) {
      gate->remove_file(archive);
    }
  }
}

// One step of one stream: delete the file, fetch it, or pass over it; and how many streams there
// should be.
//
// A transfer from a fast mirror takes thousands of steps a second, and most files of an update need
// nothing: the strings here keep their memory from step to step, nothing is asked of the disk for a
// file that is passed over, and the log is not flushed.
//
// Main thread. Writes `next`, grab_totals, crnt_file_name, crnt_file_path, deleted_files, the
// decision's result in the current version, and of stg the fields activity, file_fraction,
// server_down, server_index.

#include "Installer-f/engine/utils_stream.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_unpack.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"

std::string crnt_file_name;
std::string crnt_file_path;

namespace {

std::string location;  // where the present file is installed

// The user may pick a mirror while the transfer runs, and a new list may be shorter.
int present_server() {
  return std::clamp(stg.server_index, 0, std::max(stg.server_count - 1, 0));
}

// The verification finds a file under another case of letters, too. It is replaced or deleted under
// the spelling that it has on disk: under the manifest's own, the old one would stay beside the new
// and be found again for ever.
void use_spelling_on_disk() {
  if (g_case_sensitive) findPath(location);
}

void delete_step(file_version_struct& file) {
  stg.activity = activity_deleting;
  const int code = delete_file(location);
  if (code == 0) {
    file.sig_match = 0;
    file.sig_have = sig_none;
    ++grab_totals.deleted;
  }
  if (stg.log_actions != 0) {
    xer << "now we want to nuke a file: DELETING  file " << location << ", with result=" << code
        << ".\n";
  }
  note_emptied_folders(location, deleted_files);
}

void note_progress(int slot, float zip_kb) {
  const auto received = static_cast<float>(http.slot_received(slot));
  const auto length = static_cast<float>(http.slot_length(slot));
  if (!http.slot_active(slot)) {
    stg.file_fraction = 0;
  } else if (length < 0) {
    stg.file_fraction = -0.01f;
  } else {
    stg.file_fraction = length > 0 ? received / length : 0;
  }
  next.in_flight_kb += stg.file_fraction * zip_kb;
}

// The stream tries its file again on another mirror, and the file is handed out once more, so that
// any stream may come by it. Files between that are done already are fetched twice; it does no
// harm.
void change_server(int s) {
  stg.server_down = 1;
  ++grab_totals.failed;
  next.next_file = std::min(next.next_file, next.stream_file[s]);
  next.stream_take_next[s] = 0;
  draw_server();
}

bool fetch_step(int s, file_version_struct& file) {
  stg.activity = activity_fetching;
  const int slot = first_stream_slot + s;
  static std::string archive;
  archive = temp_path;
  archive += static_cast<char>('0' + s);
  archive += ".zip";

  // Without a mirror there is nothing to ask; it looks to the user like one that does not answer.
  const int result = stg.server_count < 1 ? http_failed
                                          : http.net_check(slot, server_name[present_server()],
                                                           crnt_file_path, archive);
  switch (result) {
    case http_running:
      note_progress(slot, file.zip_kb);
      return false;
    case http_failed:
      change_server(s);
      return false;
    case http_done:
      break;
    default:
      return false;
  }
  if (!(file.sig_have == sig_none)) use_spelling_on_disk();
  if (!extract_and_delete_file(archive, location, file.sig_want)) {
    change_server(s);
    return false;
  }
  stg.server_down = 0;
  file.sig_match = 1;  // also if that failed: the next verification sees what is really there
  next.done_zip_kb += file.zip_kb;
  next.done_raw_kb += file.raw_kb;
  return true;
}

}  // namespace

bool stream_step(int s) {
  file_version_struct& file = sim_info[static_cast<size_t>(next.stream_file[s])].current();
  const std::string_view inside = installed_part(file.path);
  location = dest_dir_path;
  location += inside;
  crnt_file_name = path_leaf(inside);
  crnt_file_path = server_path[present_server()];
  crnt_file_path += file.path;
  crnt_file_path += ".zip";
  next.stream_take_next[s] = 0;

  if (file.path.ends_with('/')) {
    __MACIBM_alert(0, "I am working through the list and found a path that has no file!",
                   "This is impossible to download or delete!", "It is:", std::string(file.path),
                   t_exit, "Installer-f/utils", 2410);
  }
  const bool wanted = file.need_delete != 0 || file.need_fetch != 0;
  if (wanted && !manifest_path_is_safe(file.path)) {
    xer << "WARNING: leaving alone a file that lies outside the destination: " << file.path << "\n";
    stg.activity = activity_not_wanted;
  } else if (file.need_delete != 0) {
    use_spelling_on_disk();
    delete_step(file);
  } else if (file.need_fetch != 0) {
    return fetch_step(s, file);
  } else {
    stg.activity = file.sig_match != 0 ? activity_have_it : activity_not_wanted;
  }
  return true;
}

int wanted_streams(float rate, int manual) {
  if (manual > 0) return manual;
  if (rate > 200) return 9;
  if (rate > 150) return 8;
  if (rate > 100) return 6;
  if (rate > 50) return 4;
  return 2;
}

void settle_stream_count(int s) {
  const float elapsed = std::max(xtim.now_sec - next.start_time, 1.0f);
  const int wanted =
      wanted_streams((next.done_zip_kb + next.in_flight_kb) / elapsed, stg.stream_count);

  int live = 0;
  int free_stream = -1;
  for (int i = stream_limit - 1; i >= 0; --i) {
    if (next.stream_active[i] != 0) {
      ++live;
    } else {
      free_stream = i;
    }
  }
  if (wanted > live && free_stream >= 0) {
    next.stream_active[free_stream] = 1;
    next.stream_take_next[free_stream] = 1;
  }
  if (wanted < live) {
    next.stream_active[s] = 0;  // only here, at the end of a file: none is given away half fetched
  } else {
    next.stream_take_next[s] = 1;
  }
}

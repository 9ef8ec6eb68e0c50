// One step of one stream: delete the file, fetch it, have it unpacked, or pass over it; and how
// many streams there should be.
//
// A failure of a mirror, be it that it does not deliver or that what it delivers is not the file,
// sends the stream to another; only when all have failed at a file, and one with a wrong archive,
// is the user told. A transfer from a fast mirror takes thousands of steps a second: a stream's
// strings are put together once a file, and the log is not flushed.
//
// Main thread. Writes `next`, grab_totals, crnt_file_name, crnt_file_path, deleted_files, the
// decision's result in the current version, and of stg the fields activity, file_fraction,
// server_down, extract_failed.

#include "Installer-f/engine/utils_stream.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_grab_mirrors.h"
#include "Installer-f/engine/utils_grab_state.h"
#include "Installer-f/engine/utils_guard.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_unpack.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"

std::string crnt_file_name;
std::string crnt_file_path;

namespace {

struct stream_record {
  int32_t file = -1;     // what all this is about; -1: not yet begun
  std::string location;  // where the file is installed
  std::string remote;    // path of its archive, on the mirror asked last
  int mirror = no_mirror;
  double asked_at = 0;                 // frame clock
  mirror_set failed = 0;               // mirrors that have failed at this file
  mirror_set wrong = 0;                // those of them that delivered something else
  int bad_archive = 0;                 // the code of the last of these
  mirror_set refused = 0;              // those that would not have it otherwise if asked again
  std::vector<fetch_trouble> answers;  // the last of each mirror that has failed
  int rounds = 0;                      // times that all have failed
  bool is_unpacking = false;
  std::unique_ptr<unpack_task> unpacked;  // come back, not yet acted on
};
stream_record streams[stream_limit];

// An archive of up to so many bytes stays in memory. A larger one goes by way of the disk.
constexpr uint64_t most_in_memory = 4'000'000;
// A mirror that does not answer may do so a moment later; where the others have a wrong archive, it
// is asked so many times, its rest in between, before the user is told. Alone it is asked for
// ever.
constexpr int most_rounds = 2;
constexpr int code_too_large = 27;  // as of an archive on the disk

file_history_struct& history_of(int s) {
  return sim_info[static_cast<size_t>(next.stream_file[s])];
}

// Bytes that the stream's archive may have: all that its signature leaves it, if there is one.
uint64_t most_archive(int s, const file_version_struct& file) {
  const file_sum* const sum = trust_sum(next.stream_file[s]);
  return sum ? std::max<uint64_t>(sum->archive_bytes, 1) : place_budget(file.zip_kb);
}

// Where the stream's archive goes; empty for memory.
std::string archive_path(int s, const file_version_struct& file) {
  if (most_archive(s, file) <= most_in_memory) return "";
  return temp_path + static_cast<char>('0' + s) + ".zip";
}

// Where `file` is on the mirror that is asked, or would be.
void set_remote(stream_record& stream, const file_version_struct& file) {
  const int mirror = stream.mirror != no_mirror ? stream.mirror : stg.server_index;
  stream.remote = server_path[std::clamp(mirror, 0, std::max(stg.server_count - 1, 0))];
  stream.remote += file.path.view();
  stream.remote += ".zip";
}

void begin_file(int s, const file_version_struct& file) {
  stream_record& stream = streams[s];
  stream.file = next.stream_file[s];
  stream.location = dest_dir_path;
  stream.location += installed_part(file.path);
  stream.mirror = no_mirror;
  stream.failed = stream.wrong = stream.refused = 0;
  stream.answers.clear();
  stream.bad_archive = stream.rounds = 0;
  stream.is_unpacking = false;
  stream.unpacked.reset();
  set_remote(stream, file);
}

// The verification finds a file under another case of letters, too. It is replaced or deleted under
// the spelling that it has on disk: under the manifest's own, the old one would stay beside the new
// and be found again for ever.
void use_spelling_on_disk(std::string& location) {
  if (g_case_sensitive) findPath(location);
}

// The location, as the gate of the copy takes it.
std::string path_in_copy(const stream_record& stream) {
  return stream.location.substr(dest_dir_path.size());
}

// --- delete --------------------------------------------------------------------------------------

void delete_step(stream_record& stream, file_history_struct& history) {
  file_version_struct& file = history.current();
  stg.activity = activity_deleting;
  use_spelling_on_disk(stream.location);
  const std::shared_ptr<gate_class> gate = copy_gate();
  int code = gate ? 0 : errno;
  if (code == 0 && !guard_lets_go(stream.location, history)) code = code_changed;
  if (code == 0) code = gate->remove_file(path_in_copy(stream));
  if (code == 0) {
    file.sig_match = 0;
    file.sig_have = sig_none;
    ++grab_totals.deleted;
  } else if (code != ENOENT) {
    xer << "WARNING: I could not delete " << stream.location
        << ", which the next update will try again: " << error_str(code) << '\n';
  }
  if (stg.log_actions != 0) {
    xer << "now we want to nuke a file: DELETING  file " << stream.location
        << ", with result=" << code << ".\n";
  }
  note_emptied_folders(stream.location, deleted_files);
}

// --- a mirror fails ------------------------------------------------------------------------------

void tell_unpack_failure(const stream_record& stream, int code) {
  __MACIBM_alert(0, "The installer cannot extract a file.",
                 UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                 UTL_translate_string("Compressed File: ") + stream.remote,
                 UTL_translate_string("Destination: ") + stream.location, t_alert, at_file_archive);
}

// The file cannot be had, or not be put into its place: the transfer ends with it.
void report_unpack_failure(const stream_record& stream, int code) {
  stg.extract_failed = 1;
  tell_unpack_failure(stream, code);
}

double let_down_at = 0;  // frame clock of the last failure of a mirror

void note_answer(stream_record& stream, const fetch_trouble& trouble) {
  trouble_note(trouble);
  std::erase_if(stream.answers,
                [&](const fetch_trouble& known) { return known.mirror == trouble.mirror; });
  stream.answers.push_back(trouble);
}

// The file is left out; the next run will ask for it again. An archive that is wrong everywhere is
// told of at once, and once a job: there may be thousands.
void pass_over(const stream_record& stream) {
  const bool is_first = missing_files.empty();
  if (is_first && stream.wrong != 0) tell_unpack_failure(stream, stream.bad_archive);
  missing_files.push_back({path_in_copy(stream), stream.answers});
  xer << "WARNING: every mirror refuses a file, which is left out: " << stream.location << '\n';
}

// The stream turns to another mirror with the file that it keeps. `bad_archive` is 0 for a mirror
// that has not delivered. True when there is nobody left to ask, and the user has been told or will
// be.
bool mirror_let_down(int s, int bad_archive, const fetch_trouble& trouble) {
  stream_record& stream = streams[s];
  if (!trouble.mirror.empty()) note_answer(stream, trouble);
  stg.server_down = 1;
  let_down_at = xtim.now_sec;
  ++grab_totals.failed;
  next.next_file = std::min(next.next_file, next.stream_file[s]);
  if (stream.mirror == no_mirror) return false;
  // One that refuses a file for good works, and is asked for the next at once, where this one will
  // be left out.
  if (!passes_over_missing || !trouble.is_final) mirror_failed(stream.mirror, stream.asked_at);
  const mirror_set mirror = mirror_set{1} << stream.mirror;
  stream.failed |= mirror;
  stream.mirror = no_mirror;
  if (trouble.is_final) stream.refused |= mirror;
  if (bad_archive != 0) {
    stream.bad_archive = bad_archive;
    stream.wrong |= mirror;
  }
  if (!mirrors_are_all(stream.failed)) return false;
  ++stream.rounds;
  if (passes_over_missing) {
    const bool for_good =
        mirrors_are_all(stream.refused) || (stream.refused != 0 && stream.rounds >= most_rounds);
    if (for_good) pass_over(stream);
    stream.failed = stream.refused;
    return for_good;
  }
  if (mirrors_are_all(stream.wrong) || (stream.wrong != 0 && stream.rounds >= most_rounds)) {
    report_unpack_failure(stream, stream.bad_archive);
    return true;
  }
  stream.failed = stream.wrong;  // the others were not there, and are asked again
  return false;
}

// --- fetch ---------------------------------------------------------------------------------------

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

// False when there is no copy to unpack into any more, and the user has been told.
bool begin_unpacking(int s, const file_version_struct& file) {
  stream_record& stream = streams[s];
  const std::shared_ptr<gate_class> gate = copy_gate();
  if (!gate) {
    report_unpack_failure(stream, errno);
    return false;
  }
  if (!(file.sig_have == sig_none)) use_spelling_on_disk(stream.location);
  auto task = std::make_unique<unpack_task>();
  task->stream = s;
  task->file = stream.file;
  task->archive_path = archive_path(s, file);
  if (task->archive_path.empty()) task->archive.swap(http.body(first_stream_slot + s));
  task->most_archive = most_archive(s, file);
  task->gate = gate;
  task->path = path_in_copy(stream);
  task->sig_want = file.sig_want;
  task->most = place_budget(file.raw_kb);
  task->sum = trust_sum(stream.file);
  task->may_replace = [location = stream.location, &history = history_of(s)] {
    return guard_lets_go(location, history);
  };
  stream.is_unpacking = true;
  unpack_enqueue(std::move(task));
  return true;
}

// The mirror has not delivered, or there is no room here for what it sends. True as for
// mirror_let_down.
bool fetch_failed(int s, const file_version_struct& file) {
  const stream_record& stream = streams[s];
  const int slot = first_stream_slot + s;
  const std::string local = archive_path(s, file);
  const fetch_trouble trouble =
      trouble_of_slot(slot, server_name[stream.mirror], stream.remote, local);
  if (trouble.is_local) {
    trouble_note(trouble);
    report_unpack_failure(stream, http.trouble(slot).code);
    return true;
  }
  return mirror_let_down(s, http.trouble(slot).kind == net_too_large ? code_too_large : 0, trouble);
}

// True when the stream is finished with its file.
bool fetch(int s, const file_version_struct& file) {
  stream_record& stream = streams[s];
  if (stream.mirror == no_mirror) {
    stream.mirror = mirror_to_ask(stream.failed);
    stream.asked_at = xtim.now_sec;
    // Without a list there is nothing to ask; it looks to the user like one that does not answer.
    if (stg.server_count < 1) mirror_let_down(s, 0, {});
    if (stream.mirror == no_mirror) return false;
    set_remote(stream, file);
  }
  const int slot = first_stream_slot + s;
  switch (http.net_check(slot, server_name[stream.mirror], stream.remote, archive_path(s, file),
                         static_cast<int64_t>(most_archive(s, file)))) {
    case http_running:
      note_progress(slot, file.zip_kb);
      // Asked since the last failure, and it answers.
      if (stream.asked_at >= let_down_at && http.slot_received(slot) > 0) stg.server_down = 0;
      return false;
    case http_failed:
      return fetch_failed(s, file);
    case http_done:
      return !begin_unpacking(s, file);
    default:
      return false;
  }
}

// --- unpacked ------------------------------------------------------------------------------------

// The file is in its place, and known to be.
void note_installed(file_version_struct& file) {
  file.sig_have = file.sig_want;
  file.sig_match = 1;
  ++grab_totals.fetched;
}

void log_unpacked(const unpack_task& task) {
  if (stg.log_actions == 0) return;
  xer << "EXPANDING file " << dest_dir_path << task.path << ", with result=" << task.result.code
      << ".\n"
      << "CHMODING  file " << dest_dir_path << task.path << ", with result=" << task.result.code
      << ".\n";
}

// Acts on what the worker gave back. True when the stream is finished with its file.
bool act_on_unpacked(int s, file_version_struct& file) {
  stream_record& stream = streams[s];
  const std::unique_ptr<unpack_task> task = std::move(stream.unpacked);
  stream.is_unpacking = false;
  http.body(first_stream_slot + s).swap(task->archive);  // its memory, for the next
  log_unpacked(*task);
  log_gate_notes(*task->gate);
  const place_result result = task->result;
  if (result.outcome == place_ok) {
    mirror_delivered(stream.mirror);
    trouble_ended(server_name[stream.mirror]);
    stg.server_down = 0;
    note_installed(file);
  } else if (place_is_wrong_content(result.outcome)) {
    xer << "WARNING: " << server_name[stream.mirror] << " sent something else in place of "
        << stream.remote << ": " << error_str(result.code) << '\n';
    const auto trouble = trouble_of_content(server_name[stream.mirror], stream.remote);
    if (!mirror_let_down(s, result.code, trouble)) return false;
  } else {
    trouble_note(trouble_here(stream.location, result.code));
    report_unpack_failure(stream, result.code);
  }
  file.sig_match = 1;  // also if that failed: the next verification sees what is really there
  next.done_zip_kb += file.zip_kb;
  next.done_raw_kb += file.raw_kb;
  return true;
}

bool fetch_step(int s, file_version_struct& file) {
  stg.activity = activity_fetching;
  stream_record& stream = streams[s];
  if (stream.unpacked) return act_on_unpacked(s, file);
  if (!stream.is_unpacking) return fetch(s, file);
  stg.file_fraction = 1;
  next.in_flight_kb += file.zip_kb;
  return false;
}

}  // namespace

stream_state stream_where(int s) {
  const stream_record& stream = streams[s];
  if (stream.is_unpacking) return stream_unpacking;
  return stream.mirror == no_mirror ? stream_resting : stream_fetching;
}

float stream_rests_for(int s) {
  return mirror_rests_for(streams[s].failed);
}

bool stream_step(int s) {
  file_version_struct& file = history_of(s).current();
  stream_record& stream = streams[s];
  if (stream.file != next.stream_file[s]) begin_file(s, file);
  crnt_file_name = path_leaf(stream.location);
  crnt_file_path = stream.remote;
  next.stream_take_next[s] = 0;

  if (file.path.view().ends_with('/')) {
    __MACIBM_alert(0, "I am working through the list and found a path that has no file!",
                   "This is impossible to download or delete!", "It is:", std::string(file.path),
                   t_exit, at_path_without_file);
  }
  const bool wanted = file.need_delete != 0 || file.need_fetch != 0;
  if (wanted && !manifest_path_is_safe(file.path)) {
    xer << "WARNING: leaving alone a file that lies outside the destination: " << file.path << "\n";
    stg.activity = activity_not_wanted;
  } else if (file.need_delete != 0) {
    delete_step(stream, history_of(s));
  } else if (file.need_fetch != 0) {
    if (!fetch_step(s, file)) return false;
  } else {
    stg.activity = file.sig_match != 0 ? activity_have_it : activity_not_wanted;
  }
  stream.file = -1;
  return true;
}

void stream_collect_unpacked() {
  while (std::unique_ptr<unpack_task> task = unpack_take_finished())
    streams[task->stream].unpacked = std::move(task);
}

void stream_stop_all() {
  while (std::unique_ptr<unpack_task> task = unpack_wait_finished())
    streams[task->stream].unpacked = std::move(task);
  for (int s = 0; s < stream_limit; ++s) {
    const std::unique_ptr<unpack_task> task = std::move(streams[s].unpacked);
    if (task) log_unpacked(*task);
    const size_t file = task ? static_cast<size_t>(task->file) : sim_info.size();
    if (file < sim_info.size() && task->result.outcome == place_ok)
      note_installed(sim_info[file].current());
    streams[s] = {};
    http.drop(first_stream_slot + s);  // or the next job would take the old file for its own
  }
}

int wanted_streams(double rate, int manual) {
  if (manual > 0) return manual;
  if (rate > 200) return 9;
  if (rate > 150) return 8;
  if (rate > 100) return 6;
  if (rate > 50) return 4;
  return 2;
}

void settle_stream_count(int s) {
  const double elapsed = std::max(xtim.now_sec - next.start_time, 1.0);
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

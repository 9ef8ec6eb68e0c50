// Selection, the program's judgement of what belongs to the user and what belongs to it.
//
// Steps of choose_files: judge each current version by what is on disk; take back what lies below a
// shipped file; ask about those whose state no release knows; last, share out the progress of what
// is to be fetched. Each step goes through the table once at most: a manifest may hold half a
// million files.
//
// Main thread. Writes the two filter globals, engine_ask's default, need_fetch, need_delete and
// progress_start of the current versions, and stg.sector_selected.

#include "Installer-f/engine/utils_select.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select_above.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

int32_t g_want_sim = 1;
int32_t g_want_global = 1;

namespace {

int keep_it(const std::string&, int) {
  return answer_keep;
}

}  // namespace

engine_questions engine_ask = {keep_it, nullptr};

namespace {

constexpr int os_every = 0;
constexpr int os_linux_of_all =
    6;  // lies among the files for every platform, but is for Linux only

// Answers that hold for a whole folder, for as long as one choose_files lasts.
struct folder_answers {
  std::set<std::string, std::less<>> overwrite;
  std::set<std::string, std::less<>> keep;
};

enum verdict { leave_it, act_on_it, ask_user, cancelled };

// A file in the state of any release, the current one included, is the program's own.
bool is_ours(const file_history_struct& history) {
  const file_sig& have = history.current().sig_have;
  return std::any_of(history.versions.begin(), history.versions.end(),
                     [&](const file_version_struct& version) { return have == version.sig_want; });
}

verdict put_question(const file_version_struct& file, int gone, folder_answers& answers) {
  const std::string location = install_location(file.path);
  const std::string_view folder = path_folder(location);
  if (answers.overwrite.contains(folder)) return act_on_it;
  if (answers.keep.contains(folder)) return leave_it;

  int answer = engine_ask.given ? engine_ask.given(location) : 0;
  if (answer == 0) {
    xer << "File: " << location << "  sig_want=" << file.sig_want << "  sig_have=" << file.sig_have
        << '\n';
    answer = engine_ask.modified(location, gone);
  }
  switch (answer) {
    case answer_overwrite:
      return act_on_it;
    case answer_keep:
      return leave_it;
    case answer_overwrite_folder:
      answers.overwrite.emplace(folder);
      return act_on_it;
    case answer_keep_folder:
      answers.keep.emplace(folder);
      return leave_it;
    default:  // an answer that is none must not turn into an overwrite
      return cancelled;
  }
}

// A tile of a sector that the user has taken away is a file that the release has dropped.
bool is_taken_away(const file_version_struct& file) {
  return file.is_global && !sector_is_selected(file);
}

bool is_dropped(const file_version_struct& file) {
  return file.sig_want == sig_gone || is_taken_away(file);
}

verdict judge(const file_history_struct& history) {
  const file_version_struct& current = history.current();
  if (current.sig_have == sig_none) return is_dropped(current) ? leave_it : act_on_it;
  if (current.sig_have == current.sig_want && !is_taken_away(current)) return leave_it;
  return is_ours(history) ? act_on_it : ask_user;
}

// The record alone, for the walks through the table.
bool is_for_this_run(const file_version_struct& record) {
  if (record.is_global ? !g_want_global : !g_want_sim) return false;
  return record.os == stg.target_os || record.os == os_every ||
         (record.os == os_linux_of_all && stg.target_os == target_linux);
}

void set_flags(file_version_struct& file, bool act) {
  const bool dropped = is_dropped(file);
  file.need_fetch = act && !dropped;
  file.need_delete = act && dropped;
}

// What the first walk through the table has found.
struct silent_verdicts {
  std::vector<int32_t> unknown;  // places of those that the user has to judge, in order
  double fetch_kb = 0;           // installed size of what is to be fetched so far
};

// Sets the flags of all that can be judged without the user, and adds their paths to `above`.
silent_verdicts judge_silently(files_above& above) {
  silent_verdicts found;
  for (size_t i = 0; i < sim_info.size(); ++i) {
    file_history_struct& history = sim_info[i];
    file_version_struct& current = history.current();
    current.need_fetch = current.need_delete = 0;
    if (!is_for_this_run(current)) continue;
    above.add(current.path);
    const verdict decision = judge(history);
    if (decision != leave_it) set_flags(current, decision == act_on_it);
    if (current.need_fetch) found.fetch_kb += current.raw_kb;
    if (decision == ask_user) found.unknown.push_back(static_cast<int32_t>(i));
  }
  above.look(is_for_this_run);
  return found;
}

// Leaves alone what lies below a shipped file, and asks nothing about it.
void spare_what_lies_below(const files_above& above, std::vector<int32_t>& unknown) {
  std::erase_if(unknown, [&](int32_t i) { return above.stand_above(sim_info[i].current().path); });
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    if (!is_for_this_run(current) || !above.stand_above(current.path)) continue;
    set_flags(current, false);
    if (current.sig_want != sig_gone) {
      xer << "WARNING: leaving alone a file below another file: " << current.path.view() << '\n';
    }
  }
}

// False when the user cancelled: the flags of the files after that one are clear then.
bool ask_about(const std::vector<int32_t>& unknown) {
  folder_answers answers;
  for (const int32_t i : unknown) {
    file_version_struct& current = sim_info[i].current();
    const verdict decision = put_question(current, is_dropped(current), answers);
    set_flags(current, decision == act_on_it);
    if (decision != cancelled) continue;
    for (size_t rest = static_cast<size_t>(i) + 1; rest < sim_info.size(); ++rest)
      set_flags(sim_info[rest].current(), false);
    return false;
  }
  return true;
}

double kb_to_fetch() {
  double kb = 0;
  for (const file_history_struct& history : sim_info)
    if (history.current().need_fetch) kb += history.current().raw_kb;
  return kb;
}

// Where on the way from 0 to 1 each file begins, by installed size; `total` is that of all that is
// to be fetched.
void share_progress(double total) {
  double sum = 0;
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    current.progress_start = total > 0 ? static_cast<float>(sum / total) : 0.5f;
    if (current.need_fetch) sum += current.raw_kb;
  }
}

// --- sectors ---------------------------------------------------------------------------------

// Whether the folder that holds the tile, and tiles of its sector alone, is on disk: it is made
// when the sector is chosen and goes with its last tile when the sector is taken away. So a sector
// whose tiles have all been lost, or never came, is still told from one that nobody wanted. Nothing
// tells them apart where a release keeps tiles of several sectors in one folder, or where somebody
// has removed the folder as well.
bool has_folder_of_sector(const file_version_struct& tile) {
  std::string_view folder = path_folder(tile.path);
  if (folder.empty()) return false;
  const std::string_view name = path_leaf(folder.substr(0, folder.size() - 1));
  return sector_cell_of(name) == sector_cell(tile.lon_index, tile.lat_index) &&
         dir_exists(install_location(folder));
}

}  // namespace

void set_install_filter(int want_sim, int want_global) {
  g_want_sim = want_sim;
  g_want_global = want_global;
}

int want_this_f(int history, int version) {
  return is_for_this_run(sim_info[history].versions[version]);
}

bool sector_is_selected(const file_version_struct& tile) {
  return stg.sector_selected[sector_cell(tile.lon_index, tile.lat_index)] != 0;
}

void scenery_take_all() {
  std::copy(std::begin(stg.sector_available), std::end(stg.sector_available),
            std::begin(stg.sector_selected));
}

void scenery_from_install() {
  std::fill(std::begin(stg.sector_selected), std::end(stg.sector_selected), 0);
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    if (!current.is_global) continue;
    int& selected = stg.sector_selected[sector_cell(current.lon_index, current.lat_index)];
    if (!selected) selected = !(current.sig_have == sig_none) || has_folder_of_sector(current);
  }
}

bool choose_files() {
  files_above above;
  auto [unknown, fetch_kb] = judge_silently(above);
  const bool is_settled = above.none() && unknown.empty();
  if (!above.none()) spare_what_lies_below(above, unknown);
  if (!ask_about(unknown)) return false;
  share_progress(is_settled ? fetch_kb : kb_to_fetch());
  return true;
}

int dropped_files_left() {
  files_above above;
  std::vector<std::string_view> dropped;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    if (current.sig_want != sig_gone || current.sig_have == sig_none) continue;
    if (!is_for_this_run(current) || !is_ours(history)) continue;
    dropped.push_back(current.path);
    above.add(current.path);
  }
  if (dropped.empty()) return 0;
  above.look(is_for_this_run);
  return static_cast<int>(std::count_if(dropped.begin(), dropped.end(), [&](std::string_view path) {
    return !above.stand_above(path);
  }));
}

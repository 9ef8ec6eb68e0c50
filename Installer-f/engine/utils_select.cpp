// Selection, the program's judgement of what belongs to the user and what belongs to it.
//
// Steps of choose_files: clear the flags; judge each current version by what is on disk, asking
// where that is unknown to every release; last, share out the progress of what is to be fetched.
//
// Main thread. Writes the two filter globals, need_fetch, need_delete and progress_start of the
// current versions, and stg.sector_selected.

#include "Installer-f/engine/utils_select.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_set>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_ask.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"

int32_t g_want_sim = 1;
int32_t g_want_global = 1;

int (*ask_about_modified)(const std::string& location, int gone) = select_alert;

namespace {

constexpr int os_every = 0;
constexpr int os_linux_of_all =
    6;  // lies among the files for every platform, but is for Linux only

// Answers that hold for a whole folder, for as long as one choose_files lasts.
struct folder_answers {
  std::set<std::string, std::less<>> overwrite;
  std::set<std::string, std::less<>> keep;
};

enum verdict { leave_it, act_on_it, cancelled };

// A file in the state of any release, the current one included, is the program's own.
bool is_ours(const file_history_struct& history) {
  const sig_text& have = history.current().sig_have;
  return std::any_of(history.versions.begin(), history.versions.end(),
                     [&](const file_version_struct& version) { return have == version.sig_want; });
}

verdict ask_user(const file_version_struct& file, int gone, folder_answers& answers) {
  const std::string location = install_location(file.path);
  const std::string_view folder = path_folder(location);
  if (answers.overwrite.contains(folder)) return act_on_it;
  if (answers.keep.contains(folder)) return leave_it;

  xer << "File: " << location << "  sig_want=" << file.sig_want
      << "  sig_have=" << file.sig_have.view() << '\n';
  switch (ask_about_modified(location, gone)) {
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

verdict judge(const file_history_struct& history, int gone, bool same, folder_answers& answers) {
  if (history.current().sig_have == sig_none) return gone ? leave_it : act_on_it;
  if (same) return leave_it;
  if (is_ours(history)) return act_on_it;
  return ask_user(history.current(), gone, answers);
}

// --- files below a file -----------------------------------------------------------------------
// A release may ship a link where an earlier one shipped a folder, and a damaged or hostile
// manifest may list both. What lies below such a path is reached through the link, so it is
// somebody else's: nothing there may be fetched or deleted.
class shipped_files {
 public:
  shipped_files() {
    for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
      const file_history_struct& history = sim_info[i];
      if (history.current().sig_want == sig_gone) continue;
      if (want_this_f(i, static_cast<int>(history.versions.size()) - 1)) {
        places_.insert(installed_part(history.current().path));
      }
    }
  }

  // Whether a folder on the way to `path` is itself a file of the release.
  bool stand_above(std::string_view path) {
    const std::string_view folder = path_folder(installed_part(path));
    if (folder == last_folder_) return last_answer_;  // neighbours lie in one folder
    last_folder_ = folder;
    last_answer_ = false;
    for (size_t slash = folder.find('/'); slash != folder.npos;
         slash = folder.find('/', slash + 1)) {
      if (places_.contains(folder.substr(0, slash))) last_answer_ = true;
    }
    return last_answer_;
  }

 private:
  std::unordered_set<std::string_view> places_;  // installed parts of what is wanted
  std::string_view last_folder_ = "/";           // no folder of a manifest
  bool last_answer_ = false;
};

// Where on the way from 0 to 1 each file begins, by installed size.
void share_progress() {
  double total = 0;
  for (const file_history_struct& history : sim_info)
    if (history.current().need_fetch) total += history.current().raw_kb;
  double sum = 0;
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    current.progress_start = total > 0 ? static_cast<float>(sum / total) : 0.5f;
    if (current.need_fetch) sum += current.raw_kb;
  }
}

}  // namespace

void set_install_filter(int want_sim, int want_global) {
  g_want_sim = want_sim;
  g_want_global = want_global;
}

int want_this_f(int history, int version) {
  const file_version_struct& record = sim_info[history].versions[version];
  if (record.is_global ? !g_want_global : !g_want_sim) return 0;
  return record.os == stg.target_os || record.os == os_every ||
         (record.os == os_linux_of_all && stg.target_os == target_linux);
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
    if (current.is_global && !(current.sig_have == sig_none))
      stg.sector_selected[sector_cell(current.lon_index, current.lat_index)] = 1;
  }
}

int choose_files() {
  folder_answers answers;
  // All of them first, so that a cancelled run leaves nothing of an earlier one behind.
  for (file_history_struct& history : sim_info) {
    history.current().need_fetch = 0;
    history.current().need_delete = 0;
  }

  shipped_files shipped;
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    file_history_struct& history = sim_info[i];
    file_version_struct& current = history.current();
    if (!want_this_f(i, static_cast<int>(history.versions.size()) - 1)) continue;
    if (shipped.stand_above(current.path)) {
      if (current.sig_want != sig_gone) {
        xer << "WARNING: leaving alone a file below another file: " << current.path << '\n';
      }
      continue;
    }

    int gone = current.sig_want == sig_gone;
    bool same = current.sig_have == current.sig_want;
    // A tile of a sector that the user has taken away is a file that the release has dropped.
    if (current.is_global && !sector_is_selected(current)) {
      gone = 1;
      same = false;
    }
    const verdict decision = judge(history, gone, same, answers);
    if (decision == cancelled) return 0;
    current.need_fetch = decision == act_on_it && !gone;
    current.need_delete = decision == act_on_it && gone;
  }
  share_progress();
  return 1;
}

int dropped_files_left() {
  int count = 0;
  shipped_files shipped;
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_history_struct& history = sim_info[i];
    const file_version_struct& current = history.current();
    if (current.sig_want != sig_gone || current.sig_have == sig_none) continue;
    if (!want_this_f(i, static_cast<int>(history.versions.size()) - 1)) continue;
    if (is_ours(history) && !shipped.stand_above(current.path)) ++count;
  }
  return count;
}

// Steps: the files, a few milliseconds' worth at a time; the folders that they have left empty, and
// those that every copy has; the copy's own folder; the list of copies; a look at what is left. All
// deletions go through the gate. A removal that was stopped goes on when it is run again.
//
// Main thread. Writes removal, and sig_have and sig_match of deleted files.

#include "Installer-f/engine/utils_remove.h"

#include <algorithm>
#include <cerrno>
#include <set>

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_guard.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

removal_record removal;

namespace {

std::set<std::string> emptied;  // folders, of the present job

bool is_ours(const file_history_struct& history) {
  return is_known_state(history, history.current().sig_have);
}

void remove_one(file_history_struct& history) {
  file_version_struct& file = history.current();
  const std::string location = location_on_disk(file.path);
  const std::shared_ptr<gate_class> gate = copy_gate();
  int code = guard_lets_go(location, history) ? 0 : code_changed;
  if (code == 0)
    code =
        gate ? gate->remove_file(std::string_view(location).substr(dest_dir_path.size())) : ENOENT;
  if (stg.log_actions || code != 0)
    xer << "DELETING  file " << location << ", with result=" << code << ".\n";
  if (code != 0 && code != ENOENT) {
    ++removal.failed;
    return;
  }
  ++removal.removed;
  file.sig_match = 0;
  file.sig_have = sig_none;
  note_emptied_folders(location, emptied);
}

bool remove_own_folder() {
  const std::string path = dest_dir_path.substr(0, dest_dir_path.size() - 1);
  gate_class above;
  return above.open(std::string(path_folder(path))) == 0 &&
         above.remove_folder(path_leaf(path)) == 0;
}

void finish_removal() {
  note_fixed_folders(emptied);
  remove_emptied_folders(emptied);
  emptied.clear();
  removal.is_gone = remove_own_folder();
  if (removal.failed == 0) {
    unregister_skyvane(dest_dir_path);
    copy_forget(dest_dir_path);
  }
  if (!removal.is_gone) removal.left = PLT_files_below(dest_dir_path);
}

}  // namespace

int files_to_remove() {
  return static_cast<int>(std::count_if(sim_info.begin(), sim_info.end(), is_ours));
}

int remove_copy(int& index, float& progress) {
  constexpr uint64_t step_us = 10000;
  if (index == 0) {
    removal = {};
    emptied.clear();
    open_copy_gate();
  }
  const uint64_t start = PLT_microseconds();
  const int count = static_cast<int>(sim_info.size());
  while (index < count && PLT_microseconds() - start < step_us) {
    file_history_struct& history = sim_info[static_cast<size_t>(index++)];
    if (is_ours(history)) remove_one(history);
  }
  progress = count > 0 ? static_cast<float>(index) / static_cast<float>(count) : 1;
  if (index < count) return 0;
  finish_removal();
  return 1;
}

// Main thread. Writes dest_dir_path.

#include "Installer-f/wizard/main_remove.h"

#include <algorithm>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_remove.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_busy.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xer.h"
#include "corekit/files/io_utils.h"
#include "corekit/window/hl_mnw.h"

namespace {

constexpr UTL_text remove_title = "Remove Skyvane 9";

int next_file = 0;  // of the scan, then of the removal

// One on the list counts in any state: a removal that was stopped is gone on with.
bool is_a_copy(const std::string& folder) {
  locate_all_skyvanes();
  return std::count(all_skyroots.begin(), all_skyroots.end(), folder) != 0 || path_is_to_a_sim();
}

std::string give_copy_to_remove() {
  dest_dir_path = answers.copy;
  if (answers.copy.empty()) return tr("--uninstall wants the copy named: --copy=FOLDER");
  return is_a_copy(dest_dir_path)
             ? ""
             : str_fill(tr("There is no installed copy at %s."), {dest_dir_path});
}

int show_start(int, wizard_screen& screen) {
  screen.title = tr(remove_title);
  screen.next = remove_scan;
  return 0;
}

int show_scan(int first_time, wizard_screen& screen) {
  static constexpr check_flow flow = {
      remove_title,
      nullptr,
      "I am contacting the Skyvane web site to find an update server.",
      "I am downloading patch info from ",
      "I am processing information about the available patches.",
  };
  if (first_time) {
    next_file = 0;
    set_install_filter(1, 1);
  }
  if (!check_servers(flow, first_time, screen)) return 0;
  if (!copy_is_free(nullptr, screen)) return 0;
  screen.kill_proc = screen.leave_proc = checksum_directory_kill;
  if (checksum_directory(next_file, screen.progress)) {
    screen.next = remove_confirm;
    return 1;
  }
  frame_soon = frame_at_once;
  return 0;
}

int show_confirm(int first_time, wizard_screen& screen) {
  static int count = 0;
  if (first_time) count = files_to_remove();
  screen.title = tr(remove_title);
  screen.text = str_fill(tr("%s: %d files to delete, as some release has shipped them."),
                         {dest_dir_path, std::to_string(count)});
  screen.next = remove_files;
  return 0;
}

int show_files(int first_time, wizard_screen& screen) {
  if (first_time) next_file = 0;
  screen.title = tr(remove_title);
  frame_soon = frame_at_once;
  if (!remove_copy(next_file, screen.progress)) return 0;
  screen.next = remove_done;
  return 1;
}

void say_left() {
  constexpr size_t most_told = 20;
  for (const std::string& path : removal.left)
    say_event("left", json_line("path", path));
  if (say_is_json() || removal.left.empty()) return;
  say(str_fill(tr("%d files are not of any release, or changed by you, and stay:"),
               {std::to_string(removal.left.size())}));
  for (size_t i = 0; i < std::min(most_told, removal.left.size()); ++i)
    say("    " + removal.left[i]);
  for (size_t i = most_told; i < removal.left.size(); ++i)
    xer << "    " << removal.left[i] << '\n';
  if (removal.left.size() > most_told) {
    say(str_fill(tr("and %d more, which are in the log"),
                 {std::to_string(removal.left.size() - most_told)}));
  }
}

int show_done(int first_time, wizard_screen& screen) {
  if (first_time) say_left();
  screen.title = tr(remove_title);
  screen.next = wizard_quit;
  const UTL_text text = removal.failed > 0 ? "%s: %d files deleted, but not all could be."
                        : removal.is_gone  ? "%s: %d files deleted, and the folder."
                                           : "%s: %d files deleted. The folder stays.";
  screen.text = str_fill(tr(text), {dest_dir_path, std::to_string(removal.removed)});
  return 0;
}

}  // namespace

const wizard_page remove_start = {page_choice, show_start, {"--copy=FOLDER", give_copy_to_remove}};
const wizard_page remove_scan = {page_job, show_scan};
const wizard_page remove_confirm = {page_choice, show_confirm};
const wizard_page remove_files = {page_removal, show_files};
const wizard_page remove_done = {page_last_removal, show_done};

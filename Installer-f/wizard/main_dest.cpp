// Main thread. Writes dest_dir_path.

#include "Installer-f/wizard/main_dest.h"

#include <algorithm>
#include <cerrno>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_platform.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_busy.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/butn_file.h"

namespace {

constexpr int name_limit = 256;

// The folder does not exist, so there is nothing to hash.
void work_out_sizes() {
  settle_platform();
  mark_all_absent();
  set_install_filter(1, 1);
  scenery_take_all();
  recalc_disk_sizes();
}

// --- an installation that was interrupted -------------------------------------------------------

bool is_listed(const std::string& copy) {
  return std::find(all_skyroots.begin(), all_skyroots.end(), copy) != all_skyroots.end();
}

bool is_of_earlier_release(const file_history_struct& history) {
  const file_version_struct& current = history.current();
  return !current.sig_match &&
         std::any_of(history.versions.begin(), history.versions.end(),
                     [&](const auto& version) { return current.sig_have == version.sig_want; });
}

// Whether the folder that was scanned lacks files of the present release and has none of an earlier
// one. The latter is a copy to be updated, and another program's business.
bool was_interrupted() {
  bool lacks_files = false;
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_history_struct& history = sim_info[i];
    if (!want_this_f(i, static_cast<int>(history.versions.size()) - 1)) continue;
    if (is_of_earlier_release(history)) return false;
    if (history.current().sig_have == sig_none && history.current().sig_want != sig_gone) {
      lacks_files = true;
    }
  }
  return lacks_files;
}

// One step of the scan of the folder at the place chosen, which is on the list of copies. True when
// it is over, with choice.goes_on set.
bool scan_old_copy(page_function back, new_copy_choice& choice, wizard_screen& screen) {
  if (choice.is_scanned) return true;
  if (!copy_is_free(back, screen)) return false;
  if (choice.scanned == 0) {
    choice.changed = 0;
    set_install_filter(1, 1);
    scenery_take_all();
  }
  screen.kill_proc = screen.leave_proc = checksum_directory_kill;
  if (!checksum_directory(choice.scanned, screen.progress)) {
    screen.text = tr("I am scanning ") + dest_dir_path + tr(" to see what files need updating.");
    screen.progress_text =
        str_fill(tr("Scanning %d of %d files."),
                 {std::to_string(choice.scanned), std::to_string(sim_info.size())});
    return false;
  }
  screen.progress = -1;
  choice.is_scanned = 1;
  choice.goes_on = was_interrupted();
  recalc_disk_sizes();
  return true;
}

// The place chosen is taken. True when the installation there is to be gone on with; else Next is
// shut, and the text says why.
bool judge_taken_place(const new_copy_flow& flow, const std::string& name, new_copy_choice& choice,
                       wizard_screen& screen) {
  if (flow.may_go_on && is_listed(dest_dir_path)) {
    if (!scan_old_copy(flow.back, choice, screen)) {
      screen.next = nullptr;
      return false;
    }
    if (choice.goes_on) {
      screen.text = tr("I will go on with the installation in the folder '") + name +
                    tr("' in the directory '") + choice.parent_dir + tr("'.");
      return true;
    }
  }
  // Any other folder is never reused: it may hold anything.
  screen.next = nullptr;
  screen.text = tr("The folder '") + name + tr("' already exists in the dir '") +
                choice.parent_dir + tr("'.\n\nPlease change the install name or destination.");
  return false;
}

// Fills the name in, and follows when another release or language is chosen, until the user has a
// name of his own.
void propose_name(const new_copy_flow& flow, new_copy_choice& choice) {
  std::string name = install_name;
  // It comes from a server; it may name a folder, and not a way to another one.
  std::replace(name.begin(), name.end(), '/', '-');
  if (flow.name_suffix) name += " " + tr(flow.name_suffix);
  const bool is_free =
      choice.named ? choice.install_folder == choice.proposed : choice.install_folder.empty();
  if (is_free && choice.install_folder != name) {
    choice.install_folder = name;
    choice.changed = 1;
  }
  choice.proposed = name;
  choice.named = 1;
}

void show_new_place(const std::string& name, new_copy_choice& choice, wizard_screen& screen) {
  screen.text = tr("I will create the folder '") + name + tr("' in the directory '") +
                choice.parent_dir + tr("'.");
  if (choice.parent_dir == choice.desktop_f) {
    screen.text += tr("\n\n(The folder ") + name + " " + tr("will appear on your desktop.)");
  }
  if (choice.changed || choice.scanned) work_out_sizes();
  choice.changed = choice.goes_on = choice.scanned = choice.is_scanned = 0;
}

// Draws the folder and name entries; true when the user edited one.
bool edit_choice(const new_copy_flow& flow, new_copy_choice& choice) {
  bool edited = false;
  if (BTN_action(300, 203, -1, 0, 1, tr("Change Destination"), "")) {
    std::string picked;
    if (GetFilePathFromUser(2, tr(flow.prompt), tr("Select"), 1, choice.parent_dir, picked)) {
      if (picked != "/") picked += '/';
      choice.parent_dir = picked;
      edited = true;
    }
  }
  if (BTN_enterstring(420, 200, &choice.install_folder, name_limit, tr("Install Name:"), 340, 0)) {
    edited = true;
  }
  return edited;
}

}  // namespace

int eula_page(const eula_flow& flow, wizard_screen& screen) {
  screen.title = tr("End User License Agreement (EULA)");
  screen.text =
      tr("Use Skyvane for whatever you like.\n\n") +
      tr("You agree to not make copies of Skyvane.\n\n") +
      tr("You agree to not distribute the artwork from Skyvane, OR ANY DERIVATIVE OF THAT ARTWORK, "
         "without permission from Tessaron Labs.");
  screen.text_is_framed = true;
  screen.back = flow.back;
  screen.next = *flow.accepted ? flow.next : nullptr;
  if (wizard_label(250, 100, tr("I accept this agreement."), 560)) *flow.accepted = !*flow.accepted;
  BTN_bool(230, 100, flow.accepted, "", 0);
  return 0;
}

std::string give_new_copy(new_copy_choice& choice) {
  if (!answers.dest.empty()) choice.parent_dir = answers.dest;
  if (!answers.name.empty()) choice.install_folder = answers.name;
  choice.changed = 1;
  return "";
}

int pick_new_copy(const new_copy_flow& flow, new_copy_choice& choice, wizard_screen& screen) {
  if (choice.parent_dir.empty()) {
    get_OS_abs_path(os_dir_default_apps, choice.parent_dir);
    choice.changed = 1;
  }
  propose_name(flow, choice);

  screen.title = tr("Pick Install Destination.");
  screen.back = flow.back;
  screen.next = flow.next;
  if (edit_choice(flow, choice)) choice.changed = 1;
  if (choice.changed) {
    checksum_directory_kill();
    unlock_copy();
    choice.goes_on = choice.scanned = choice.is_scanned = 0;
  }

  // What was typed is Latin-1; a name that a server or a command line gave may be UTF-8 already.
  const std::string& typed = choice.install_folder;
  const std::string name = PLT_is_utf8(typed) ? typed : PLT_utf8_from_latin1(typed);
  const std::string& parent = choice.parent_dir;
  if (name.empty()) {
    dest_dir_path = parent;
    screen.next = nullptr;
    screen.text = tr("Please pick a name for your Skyvane 9 installation...");
    return 0;
  }
  // No default folder, as without a home; or longer than what any service takes.
  const int wrong = parent.empty()                                                ? ENOENT
                    : app_path.size() + parent.size() + name.size() >= path_limit ? ENAMETOOLONG
                                                                                  : 0;
  if (wrong != 0) {
    dest_dir_path = parent;
    screen.next = nullptr;
    screen.text = UTL_translate_string(error_str(wrong)) + ": " + parent + name;
    return 0;
  }
  dest_dir_path = parent + name + "/";
  if (dir_exists(dest_dir_path) || file_exists(parent + name)) {
    if (!judge_taken_place(flow, name, choice, screen)) return 0;
  } else {
    show_new_place(name, choice, screen);
  }
  if (!UTIL_disk_space(tr(flow.enough_text), tr(flow.short_text)) && flow.space_decides) {
    screen.next = nullptr;
  }
  return 0;
}

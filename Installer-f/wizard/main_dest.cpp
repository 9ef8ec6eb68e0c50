// Main thread. Writes dest_dir_path.

#include "Installer-f/wizard/main_dest.h"

#include <algorithm>

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/files/io_utils.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/butn_file.h"

namespace {

constexpr int name_limit = 256;

// The folder does not exist, so nothing is hashed: the pass only marks every file as absent.
void work_out_sizes() {
  int index = 0;
  float progress = 0;
  while (!checksum_directory(index, progress)) {
  }
  set_install_filter(1, 1);
  scenery_take_all();
  recalc_disk_sizes();
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
  screen.back = flow.back;
  screen.next = *flow.accepted ? flow.next : nullptr;
  wizard_note(250, 100, tr("I accept this agreement."), 560);
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
  if (choice.install_folder.empty() && !choice.named) {
    choice.install_folder = install_name;
    // The name comes from a server; it may name a folder, and not a way to another one.
    std::replace(choice.install_folder.begin(), choice.install_folder.end(), '/', '-');
    if (flow.name_suffix) choice.install_folder += " " + tr(flow.name_suffix);
    choice.changed = 1;
  }
  choice.named = 1;

  screen.title = tr("Pick Install Destination.");
  screen.back = flow.back;
  screen.next = flow.next;
  if (edit_choice(flow, choice)) choice.changed = 1;

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
  dest_dir_path = parent + name + "/";
  // An existing folder is never reused: it may hold anything.
  if (dir_exists(dest_dir_path) || file_exists(parent + name)) {
    screen.next = nullptr;
    screen.text = tr("The folder '") + name + tr("' already exists in the dir '") + parent +
                  tr("'.\n\nPlease change the install name or destination.");
    return 0;
  }
  screen.text =
      tr("I will create the folder '") + name + tr("' in the directory '") + parent + tr("'.");
  if (parent == choice.desktop_f) {
    screen.text += tr("\n\n(The folder ") + name + " " + tr("will appear on your desktop.)");
  }
  if (choice.changed) {
    work_out_sizes();
    choice.changed = 0;
  }
  if (!UTIL_disk_space(tr(flow.enough_text), tr(flow.short_text)) && flow.space_decides) {
    screen.next = nullptr;
  }
  return 0;
}

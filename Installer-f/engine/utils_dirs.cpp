// Folders: made before the transfer, removed when a deletion has left them empty.
//
// Steps of make_dirs: the destination, parent by parent; the folders of the files to be fetched,
// parents first; the fixed folders; room for the links of the plug-in frameworks. All of it goes
// through the gate of the copy, which a job opens here. A symbolic link of the user's in place of a
// folder counts as that folder: what then arrives goes where the link leads, which is how a user
// moves, say, the scenery to another disk.
//
// Main thread. Writes sig_have and sig_match of deleted files, and stg.activity.

#include "Installer-f/engine/utils_dirs.h"

#include <cerrno>
#include <memory>
#include <vector>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_guard.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"

namespace {

// Every copy has these, whether or not a file needs them.
constexpr const char* fixed_folders[] = {
    "Output",    "Output/FMS plans",      "Output/logbooks", "Output/movies", "Output/situations",
    "Resources", "Resources/preferences",
};

// Frameworks of which early releases shipped folders where the present one ships links.
constexpr const char* frameworks[] = {
    "Resources/plugins/KVLM.framework/",
    "Resources/plugins/KVWidgets.framework/",
};

// Makes a folder of the copy; reports a real failure and returns its code, else 0.
int make_or_report(gate_class& gate, std::string_view folder) {
  const int code = gate.make_folder(folder);
  // Below a link of the release nothing is made, and what the manifest has there is not put there.
  if (!show_make_dir_err(code) || code == gate_below_link) return 0;
  make_dir_error(dest_dir_path + std::string(folder), code);
  return code;
}

// The gate of the copy; null, with the code in `code`, after the user has been told why.
std::shared_ptr<gate_class> make_destination(int& code) {
  std::string failed;
  code = gate_make_destination(dest_dir_path, failed);
  if (code == 0) {
    if (auto gate = open_copy_gate()) return gate;
    code = errno;
    failed = dest_dir_path;
  }
  make_dir_error(failed, code);
  return nullptr;
}

// The folders that the files to be fetched need, below the destination. In byte order a folder
// comes ahead of its content.
std::set<std::string_view> folders_to_fetch_into() {
  std::set<std::string_view> folders;
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_version_struct& current = sim_info[i].current();
    if (!current.need_fetch) continue;
    if (!want_this_f(i, static_cast<int>(sim_info[i].versions.size()) - 1)) continue;
    std::string_view folder = installed_part(current.path);
    for (size_t slash = folder.rfind('/'); slash != std::string_view::npos;
         slash = folder.rfind('/')) {
      folder = folder.substr(0, slash);
      // One that is in the set already has brought its parents with it.
      if (folder.empty() || !folders.insert(folder).second) break;
    }
  }
  return folders;
}

// Moves `name` aside unless it is the link that belongs there. Nothing is deleted, and a failure
// means that there is nothing to move, or that an earlier run has moved it.
void clear_for_link(gate_class& gate, const std::string& folder, const std::string& name) {
  if (gate.is_no_link(folder + name)) gate.rename(folder + name, "_" + name);
}

}  // namespace

int make_dirs() {
  int code = 0;
  const auto gate = make_destination(code);
  if (!gate) return code;
  for (const std::string_view folder : folders_to_fetch_into())
    if ((code = make_or_report(*gate, folder)) != 0) return code;

  for (const char* folder : fixed_folders)
    make_or_report(*gate, folder);  // the copy is of use without them

  for (const char* framework : frameworks)
    clear_for_link(*gate, std::string(framework) + "Versions/", "Current");
  for (const char* framework : frameworks)
    clear_for_link(*gate, framework, "Resources");
  trust_note_copy(dest_dir_path);
  log_gate_notes(*gate);
  return 0;
}

void delete_files() {
  std::set<std::string> folders;
  const auto gate = copy_gate();
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    if (!current.need_delete) continue;

    const std::string location = location_on_disk(current.path);
    stg.activity = activity_deleting;
    const std::string_view inside = std::string_view(location).substr(dest_dir_path.size());
    const int code = !guard_lets_go(location, history) ? code_changed
                     : gate                            ? gate->remove_file(inside)
                                                       : ENOENT;
    if (stg.log_actions) xer << "DELETING  file " << location << ", with result=" << code << ".\n";
    note_emptied_folders(location, folders);
    if (show_del_err(code)) {
      __MACIBM_alert(mnw.win_id, "Could not delete a file that I no longer want to have!", location,
                     "", "", t_alert, at_file_not_deleted);
    }
    current.sig_match = 0;
    if (code == 0 || code == ENOENT ||
        code == gate_below_link) {  // what is below a link is not ours
      current.sig_have = sig_none;
    } else {
      xer << "WARNING: I could not delete " << location << ": " << error_str(code) << '\n';
    }
  }
  remove_emptied_folders(folders);
}

void remove_unused_folders() {
  std::set<std::string> folders;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    if (current.need_fetch && current.sig_have == sig_none) {
      note_emptied_folders(install_location(current.path), folders);
    }
  }
  remove_emptied_folders(folders);
}

void make_dir_error(const std::string& path, int code) {
  __MACIBM_alert(mnw.win_id,
                 "I am unable to install or update Skyvane. An error occurred while "
                 "creating new folders. Make sure you are installing to a directory "
                 "that you have access to!",
                 UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                 UTL_translate_string("Install Location: ") + dest_dir_path,
                 UTL_translate_string("Install Path:") + path, t_alert, at_folder_not_made);
}

void note_emptied_folders(std::string_view location, std::set<std::string>& folders) {
  std::string_view folder = path_folder(location);
  while (folder.size() > dest_dir_path.size()) {
    if (!folders.emplace(folder).second) return;  // and its parents came with it
    folder.remove_suffix(1);
    folder = path_folder(folder);
  }
}

void note_fixed_folders(std::set<std::string>& folders) {
  for (const char* const folder : fixed_folders)
    folders.insert(dest_dir_path + folder + "/");
}

void remove_emptied_folders(const std::set<std::string>& folders) {
  const auto gate = copy_gate();
  std::vector<std::string> names;
  std::vector<int> is_folder;
  for (auto folder = folders.rbegin(); gate && folder != folders.rend(); ++folder) {
    // A hidden file does not show here, but it makes the removal fail, and so the folder stays.
    if (opensave_getitems(*folder, 0, names, is_folder) != 0) continue;
    std::string_view inside = *folder;
    inside.remove_prefix(dest_dir_path.size());
    inside.remove_suffix(1);
    const int code = gate->remove_folder(inside);
    if (stg.log_actions)
      xer << "cleanup: DELETING  file " << *folder << ", with result=" << code << ".\n";
  }
  if (gate) log_gate_notes(*gate);
}

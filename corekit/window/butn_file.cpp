// Path rows, and the folder picker: the desktop's own, or else the program's browser.
//
// Main thread. Writes the caller's path. The picker is modal; while the desktop's is up, window 998
// says so, and frames go on.

#include "corekit/window/butn_file.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "corekit/Platform/PLT_picker.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/io_utils.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_text.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

namespace {

// --- path rows -----------------------------------------------------------------------------------

constexpr int folder_mode = 2;  // of GetFilePathFromUser: choose a folder

void bad_argument(const char* what, const char* kind, alert_source source) {
  MACIBM_fault(source, str_format("Bad %s arg to BTN_select_file_%s!", what, kind));
}

// False after the alert.
bool check_arguments(int open_save, int file_type, const char* kind) {
  if (open_save != win_file_open && open_save != win_file_save) {
    bad_argument("open_save", kind, at_select_open_save);
    return false;
  }
  if (file_type < 0 || file_type > file_type_limit) {
    bad_argument("file_type", kind, at_select_file_type);
    return false;
  }
  return true;
}

// How much of a path is its folder; a "/" at the very end belongs to the last part.
size_t length_of_folder(const std::string& path) {
  if (path.size() < 2) return 0;
  const size_t slash = path.rfind('/', path.size() - 2);
  return slash == std::string::npos ? 0 : slash + 1;
}

bool edit_path(float x, float y, int file_type, std::string* path, const void* owner,
               int max_length, const std::string& label, float dx, int auto_focus) {
  const bool whole = file_type == file_type_prefix || file_type == file_type_command;
  const size_t folder = whole ? 0 : length_of_folder(*path);
  std::string part = path->substr(folder);
  if (!BTN_enter_text(x, y, &part, owner, max_length - static_cast<int>(folder), label, dx,
                      auto_focus)) {
    return false;
  }
  path->replace(folder, std::string::npos, part);
  return true;
}

int path_row(float x, float y, int file_type, std::string* path, const void* owner, int max_length,
             const std::string& label, float dx, int auto_focus) {
  constexpr float button_x = 17, button_half = 13, button_u = 221, button_v = 146;
  if (!ogl_inited) return 0;
  std::string left, right, help;
  BTN_expand_label(label, &left, &right, &help);
  const float middle_x = x - button_x, middle_y = y + 3;
  BTN_util_draw_label(x - 32, y, 0, left, 0);
  BTN_util_draw_label(x + dx + 6, y, 2, right, 0);
  BTN_util_element(middle_x, middle_y, button_u, button_v, button_half, button_half, 0);

  const std::string field_label = help.empty() ? std::string() : "{ " + help;
  bool changed = edit_path(x, y, file_type, path, owner, max_length, field_label, dx, auto_focus);
  if (BTN_click_in(middle_x - button_half, middle_y - button_half, middle_x + button_half,
                   middle_y + button_half)) {
    std::string picked;
    if (GetFilePathFromUser(folder_mode, tr("Please pick an Sky-Root to update"), tr("Update"), 1,
                            *path, picked) &&
        picked != *path) {
      *path = picked;
      changed = true;
    }
  }
  return changed;
}

}  // namespace

int BTN_select_path_stl(float x, float y, int open_save, int file_type, std::string* path,
                        int max_length, const std::string& label, float dx, int auto_focus) {
  if (!check_arguments(open_save, file_type, "stl")) return 0;
  return path_row(x, y, file_type, path, path, max_length, label, dx, auto_focus);
}

int BTN_select_path_chr(float x, float y, int open_save, int file_type, char* path, int max_length,
                        const std::string& label, float dx, int auto_focus) {
  if (!check_arguments(open_save, file_type, "chr")) return 0;
  const size_t capacity = static_cast<size_t>(std::max(max_length, 0));
  std::string as_string(path, strnlen(path, capacity));
  const int changed =
      path_row(x, y, file_type, &as_string, path, max_length - 1, label, dx, auto_focus);
  if (as_string.size() >= capacity) {
    __MACIBM_alert(mnw.win_id, "String too long!", "", "", "", t_exit, at_select_too_long);
    return 0;
  }
  if (changed) std::memcpy(path, as_string.c_str(), as_string.size() + 1);
  return changed;
}

int BTN_select_file_chr(float x, float y, int open_save, int file_type, char* path,
                        std::string* name, int max_length, const std::string& label, float dx) {
  const int changed =
      BTN_select_path_chr(x, y, open_save, file_type, path, max_length, label, dx, 0);
  const std::string as_string = path;
  *name = as_string.substr(length_of_folder(as_string));
  return changed;
}

// --- folder picker -------------------------------------------------------------------------------

namespace {

enum wait_result { wait_chosen, wait_cancelled, wait_browse };

// Says that the desktop's window is up, and waits for it: frames go on, and the user can give it
// up, or choose in this window instead.
wait_result wait_for_picker(const std::string& prompt, std::string* path) {
  constexpr float dx = 360, dy = 110;
  MACIBM_startwind(win_file_open, 0);
  wait_result result = wait_cancelled;
  while (mnw.win_id == win_file_open && !app_done) {
    const int state = PLT_picker_poll(path);
    if (state != plt_picker_running) {
      result = state == plt_picker_chosen ? wait_chosen
               : state == plt_picker_none ? wait_browse
                                          : wait_cancelled;
      break;
    }
    stls.window_title = prompt;
    MACIBM_plot_behind();
    BTN_fillwin(1, inner_none);
    const float x = std::round((mnw.win_dx - dx) / 2), y = std::round((mnw.win_dy - dy) / 2);
    BTN_frame2(box_group, x, y, dx, dy, "");
    OGL_string(col_label, x + dx / 2, y + 70, tr("Waiting for the folder window..."), 9999,
               charset_text, just_centre);
    const int browse = BTN_action(x + dx / 2 - 80, y + 30, 120, 0, 1, tr("Choose Here"), "");
    const int cancel = BTN_action(x + dx / 2 + 80, y + 30, 120, 0, 1, tr("Cancel"), "");
    MACIBM_event_proc();
    if (browse || cancel || escape_hit) {
      result = browse ? wait_browse : wait_cancelled;
      break;
    }
  }
  PLT_picker_cancel();
  return_hit = escape_hit = 0;
  return result;
}

// The nearest folder of `path` that exists, with "/" at its end; empty for a relative one.
std::string nearest_folder(std::string path) {
  if (path.empty() || path[0] != '/') return "";
  if (path.back() != '/') path += '/';
  while (path.size() > 1 && (path.size() > path_limit || !dir_exists(path)))
    path.resize(path.rfind('/', path.size() - 2) + 1);
  return path;
}

// What the program can work in. The user is told why not.
bool can_be_used(const std::string& folder) {
  constexpr size_t longest_name = 256;  // of what will be made in it
  UTL_text trouble = nullptr;
  if (folder.find_first_of(":\\") != std::string::npos) {
    trouble = "A folder with \":\" or \"\\\" in its path cannot be used.";
  } else if (folder.size() + longest_name > path_limit) {
    trouble = "The path of this folder is too long.";
  } else if (!dir_exists(folder)) {
    trouble = "This folder does not exist.";
  }
  if (!trouble) return true;
  __MACIBM_alert(mnw.win_id, trouble, folder, "", "", t_alert, at_picked_folder);
  return false;
}

}  // namespace

int GetFilePathFromUser(int mode, const std::string& prompt, const std::string& action,
                        int /*flags*/, const std::string& start_in, std::string& out) {
  if (!ogl_inited || mode != folder_mode) return 0;
  const int window = mnw.win_id;
  std::string path = nearest_folder(start_in);
  wait_result result = wait_browse;
  if (PLT_picker_start(PLT_utf8_from_latin1(prompt), path) == plt_picker_running) {
    result = wait_for_picker(prompt, &path);
  }
  if (result == wait_browse) {
    result = BTN_opensave(win_file_open, file_type_folder, &path, prompt, action) ? wait_chosen
                                                                                  : wait_cancelled;
  }
  if (mnw.win_id != window) MACIBM_startwind(window, 0);
  if (result != wait_chosen) return 0;
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  if (!can_be_used(path)) return 0;
  out = path;
  return 1;
}

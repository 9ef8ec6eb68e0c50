// The program's own browser: a modal dialog with the folder's path as a popup list, the usual
// places, the items, and a preview where the family has one.
//
// Main thread. The browser that is up is one record; it writes the caller's path only when the user
// confirms.

#include "corekit/window/butn_file.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_lines.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/hl_init.h"
#include "corekit/window/hl_mnw.h"

namespace {

// --- preview -------------------------------------------------------------------------------------

constexpr int preview_ref = 408;
constexpr float right_x = 331, right_dx = 220, head_y = 300, head_dy = 120, rim = 10;

// What the panel shows of one file; read anew when the path is another.
struct preview_record {
  std::string path, text;
  bool has_picture = false;
};
preview_record preview;

bool has_preview(int open_save, int file_type) {
  return open_save == win_file_open && (file_type == 3 || file_type == 8 || file_type == 20);
}

// The line of the record COMM; empty if there is none.
std::string read_comment(const std::string& path) {
  constexpr int versions[] = {900, 840, 0};
  xmap_class map(path);
  if (!map.file_start || !map.check_file(ouf_text, versions, nullptr, nullptr)) return "";
  std::string token, line;
  while (map.cursor < map.file_end) {
    map.TXT_str_scan_space(&token);
    map.TXT_str_scan_eoln(&line);
    if (token == "COMM") return line;
  }
  return "";
}

void read_preview(const std::string& path) {
  preview = {path, "", false};
  const std::string_view all = path;
  if (!all.ends_with(".acf") && !all.ends_with(".ACF") && !all.ends_with(".fdr")) return;
  preview.text = read_comment(path);
  const std::string icon = path.substr(0, path.size() - 4) + "_icon.png";
  if (!file_exists(icon)) return;
  tman.load_texture(tex_fail_silent, preview_ref, tex_rgba | tex_full_size, tex_load_now, icon);
  preview.has_picture = true;
}

void plot_preview(const std::string& path) {
  if (path != preview.path) read_preview(path);
  BTN_frame2(box_dark, right_x, 70, right_dx, 220, "");
  BTN_frame2(box_dark, right_x, head_y, right_dx, head_dy, "");
  if (preview.has_picture) {
    OGL_2dquad_d(preview_ref, col_as_is, 1, right_x + rim, 310, 0, 0, right_dx - 2 * rim,
                 head_dy - 2 * rim, 1, 1, blend_mix);
  }
  if (!preview.text.empty()) OGL_string(col_light, 341, 270, preview.text, 200);
}

float width_of_browser(int open_save, int file_type) {
  return has_preview(open_save, file_type) ? right_x - 2 * rim : mnw.win_dx - 2 * rim;
}

// --- the folder shown ----------------------------------------------------------------------------

struct browser_record {
  int open_save = 0, file_type = 0;
  std::string folder;  // ends in "/"
  std::vector<std::string> names;
  std::vector<int> folders;
  int top = 0, selected = -1;
  std::string search;
  std::string name;        // in the save window: of the file
  bool is_naming = false;  // a new folder is being named,
  std::string new_name;    //   so
};
browser_record browser;

bool chooses_folder() {
  return browser.file_type == file_type_folder;
}

// Folders that are reached by a link are folders to the user.
void follow_links() {
  for (size_t i = 0; i < browser.names.size(); ++i) {
    if (browser.folders[i]) continue;
    const std::string path = browser.folder + browser.names[i];
    if (is_sim_link(path.c_str(), nullptr) && dir_exists(path)) browser.folders[i] = 1;
  }
}

void drop_files() {
  size_t kept = 0;
  for (size_t i = 0; i < browser.names.size(); ++i) {
    if (!browser.folders[i]) continue;
    browser.names[kept] = browser.names[i];
    browser.folders[kept++] = 1;
  }
  browser.names.resize(kept);
  browser.folders.resize(kept);
}

void list_folder() {
  // Links are no folders to the lister, which would drop them: everything is asked for.
  opensave_getitems(browser.folder, chooses_folder() ? 0 : browser.file_type, browser.names,
                    browser.folders);
  if (browser.file_type != file_type_command) follow_links();
  if (chooses_folder()) drop_files();
}

void go_to(const std::string& folder) {
  // Longer paths could be shown, but nothing else of the program could take them.
  if (folder.size() > path_limit || !dir_exists(folder)) return;
  browser.folder = folder;
  browser.top = 0;
  browser.selected = -1;
  browser.search.clear();
  list_folder();
}

std::string parent_of(const std::string& folder) {
  if (folder.size() < 2) return folder;
  return folder.substr(0, folder.rfind('/', folder.size() - 2) + 1);
}

std::string selected_name() {
  return BTN_name_from_vector(browser.selected, &browser.names);
}

bool folder_is_selected() {
  return BTN_type_from_vector(browser.selected, &browser.folders) != 0;
}

std::string chosen_path() {
  if (chooses_folder()) {
    return browser.selected >= 0 ? browser.folder + selected_name() + '/' : browser.folder;
  }
  return browser.folder + (browser.open_save == win_file_save ? browser.name : selected_name());
}

// Starts in the folder of `path`, or the nearest above it that is there.
void begin(int open_save, int file_type, const std::string& path) {
  browser = browser_record();
  browser.open_save = open_save;
  browser.file_type = file_type;
  std::string folder(path_folder(path));
  browser.name = path_leaf(path);
  if (folder.empty() || folder[0] != '/') folder = PLT_home_folder();
  if (folder.empty()) folder = "/";
  while (folder.size() > 1 && (folder.size() > path_limit || !dir_exists(folder)))
    folder = parent_of(folder);
  go_to(folder);
  const auto found = std::find(browser.names.begin(), browser.names.end(), browser.name);
  if (!browser.name.empty() && found != browser.names.end()) {
    browser.selected = static_cast<int>(found - browser.names.begin());
  }
}

// --- a frame -------------------------------------------------------------------------------------

enum browse_state { browse_on, browse_confirmed, browse_cancelled };

// The folders from this one up to the root, as a popup list.
void path_popup(float x, float y) {
  std::vector<std::string> above = {browser.folder};
  while (above.back().size() > 1)
    above.push_back(parent_of(above.back()));
  std::string items;
  for (const std::string& folder : above) {
    constexpr size_t longest = 40;  // characters that the list has room for
    std::string name = folder.size() > 1 ? folder.substr(parent_of(folder).size()) : folder;
    if (PLT_is_utf8(name)) name = PLT_latin1_from_utf8(name, '?');
    if (name.size() > 1) name.pop_back();
    if (name.size() > longest) name.replace(longest - 3, name.npos, "...");
    // These mean something to the list.
    std::replace(name.begin(), name.end(), '|', '!');
    if (name[0] == '-' || name[0] == '=') name.insert(0, " ");
    items += '|' + name;
  }
  int level = 0;
  if (BTN_textlist(x, y, &level, items, "") && level > 0) go_to(above[static_cast<size_t>(level)]);
}

void plot_path(float dx) {
  constexpr size_t most_lines = 4;  // that the panel has room for
  // Of a folder that is to be chosen, what Select would give.
  const std::string shown = chooses_folder() ? chosen_path() : browser.folder;
  const float wrap = dx - 2 * rim;
  std::vector<std::string> lines = BTN_lines(shown, wrap);
  BTN_cut_middle(lines, most_lines, wrap);
  BTN_plot_lines(col_light, 2 * rim, head_y + head_dy - 55, lines);
}

// Buttons of one width, which is what the longest of their words asks.
void plot_places(float dx) {
  constexpr float y = head_y + 15, least_dx = 68, label_rim = 21, gap = 5;
  const struct {
    UTL_text label;
    std::string folder;
  } places[] = {{"Up", parent_of(browser.folder)},
                {"Home", PLT_home_folder()},
                {"Desktop", PLT_desktop_folder()},
                {"Root", std::string(1, '/')}};
  constexpr float count = std::size(places);
  float widest = least_dx - label_rim;
  for (const auto& place : places)
    widest = std::max(widest, static_cast<float>(OGL_string_width(tr(place.label))));
  const float place_dx =
      std::min(widest + label_rim, std::floor((dx - 2 * rim - (count - 1) * gap) / count));
  float x = 2 * rim + place_dx / 2;
  for (const auto& place : places) {
    if (BTN_action(x, y, place_dx, 0, 0, tr(place.label), "") && !place.folder.empty()) {
      go_to(place.folder);
    }
    x += place_dx + gap;
  }
}

// A name that the file system and the rest of the program can take, and that would be listed.
bool good_name(const std::string& name) {
  return !name.empty() && name[0] != '.' && name.find_first_of("/\\:") == std::string::npos;
}

void make_new_folder() {
  const auto complain = [](const std::string& why) {
    __MACIBM_alert(browser.open_save, "This folder cannot be made.", browser.new_name, why, "",
                   t_alert, at_folder_name);
  };
  if (!good_name(browser.new_name)) {
    return complain(
        tr("A name may not begin with \".\", and \"/\", \"\\\" and \":\" are not for "
           "names."));
  }
  const std::string name = PLT_utf8_from_latin1(browser.new_name);
  const std::string folder = browser.folder + name + '/';
  if (folder.size() > path_limit) return complain(tr("The path of this folder is too long."));
  if (const int code = make_folder(folder)) return complain(tr(error_str(code)));
  browser.is_naming = false;
  go_to(folder);
}

// Where a field begins: at `x`, or as far right as its label asks, which ends 12 in front of it.
float behind(const std::string& label, float x) {
  constexpr float label_gap = 12;
  return std::max(x, rim + label_gap + static_cast<float>(OGL_string_width(label)));
}

// The row below the list: the name of a new folder, or of the file to save.
void plot_name_row(float dx) {
  constexpr float y = 48;
  constexpr int name_limit = 128;
  if (browser.is_naming) {
    const std::string label = tr("New folder");
    const float x = behind(label, 90);
    BTN_enterstring(x, y, &browser.new_name, name_limit, "-" + label, dx - 150 - x, 1);
    if (BTN_action(dx - 105, y + 3, 70, 0, 0, tr("Create"), "") || return_hit) {
      make_new_folder();
    } else if (BTN_action(dx - 25, y + 3, 70, 0, 0, tr("Discard"), "")) {
      browser.is_naming = false;
    }
  } else if (browser.open_save == win_file_save && !chooses_folder()) {
    const std::string label = tr("Name");
    const float x = behind(label, 60);
    BTN_enterstring(x, y, &browser.name, name_limit, "-" + label, dx - x, 1);
  } else if (BTN_action(2 * rim + 50, y + 3, 100, 0, 0, tr("New Folder"), "")) {
    browser.is_naming = true;
    browser.new_name.clear();
    BTN_unfocus_any();  // the field takes the focus when nothing has it
  }
}

// What Select means just now.
browse_state confirm() {
  if (folder_is_selected() && !chooses_folder()) {
    go_to(browser.folder + selected_name() + '/');
    return browse_on;
  }
  if (chooses_folder()) return browse_confirmed;
  if (browser.open_save == win_file_save) {
    return good_name(browser.name) ? browse_confirmed : browse_on;
  }
  return browser.selected >= 0 ? browse_confirmed : browse_on;
}

browse_state plot_browser(const std::string& prompt, const std::string& action) {
  constexpr float list_y = 70, list_dy = 220, buttons_y = 24;
  stls.window_title = prompt;
  const float dx = width_of_browser(browser.open_save, browser.file_type), right = rim + dx;
  stand_io_dialog(browser.open_save, browser.file_type, browser.folder + selected_name());
  path_popup(2 * rim, head_y + head_dy - 30);
  plot_path(dx);
  plot_places(dx);

  const int before = browser.selected;
  const int listed =
      BTN_list_and_search(0, rim, list_y, dx, list_dy, &browser.top, &browser.selected,
                          !browser.is_naming, &browser.search, browser.names, &browser.folders);
  if (browser.names.empty()) {
    OGL_string(col_note, rim + dx / 2, list_y + list_dy / 2,
               tr(chooses_folder() ? "(no folders here)" : "(no files here)"), 0, charset_text,
               just_centre);
  }
  if (browser.selected != before && !folder_is_selected()) browser.name = selected_name();
  plot_name_row(dx);

  browse_state state = browse_on;
  if (listed == list_chosen) {
    if (folder_is_selected()) {
      go_to(browser.folder + selected_name() + '/');
    } else {
      state = confirm();
    }
  }
  if (BTN_main_action(right - 130, buttons_y, 80, action) || (return_hit && !browser.is_naming)) {
    state = confirm();
  }
  if (BTN_action(right - 40, buttons_y, 80, 0, 1, tr("Cancel"), "")) state = browse_cancelled;
  return state;
}

// Escape leaves the naming of a new folder first.
bool escape_leaves() {
  if (!escape_hit) return false;
  if (!browser.is_naming) return true;
  browser.is_naming = false;
  return false;
}

}  // namespace

void stand_io_dialog(int open_save, int file_type, const std::string& path) {
  if (!ogl_inited) return;
  MACIBM_plot_behind();
  BTN_fillwin(1, inner_none);
  const UTL_text title = file_type == file_type_folder ? "Folder"
                         : open_save == win_file_save  ? "Save"
                                                       : "Open";
  BTN_frame2(box_dark, rim, head_y, width_of_browser(open_save, file_type), head_dy, tr(title));
  if (has_preview(open_save, file_type)) plot_preview(path);
}

int BTN_opensave(int open_save, int file_type, std::string* path) {
  const bool save = open_save == win_file_save;
  return BTN_opensave(open_save, file_type, path, "", tr(save ? "Save" : "Open"));
}

int BTN_opensave(int open_save, int file_type, std::string* path, const std::string& prompt,
                 const std::string& action) {
  const int window = mnw.win_id;
  MACIBM_startwind(open_save, 0);
  if (mnw.win_id != open_save) return 0;
  begin(open_save, file_type, *path);
  // The key that opened the browser must not confirm it, nor the one that confirms it do more.
  return_hit = escape_hit = 0;
  browse_state state = browse_on;
  while (state == browse_on) {
    state = plot_browser(prompt.empty() ? tr("Choose a file") : prompt, action);
    if (state != browse_on) break;
    MACIBM_event_proc();
    // Closed from outside, by the window's own button or because the program is to end.
    if (mnw.win_id != open_save || app_done || escape_leaves()) state = browse_cancelled;
  }
  return_hit = escape_hit = 0;
  if (mnw.win_id == open_save) MACIBM_startwind(window, 0);
  if (state != browse_confirmed) return 0;
  *path = chosen_path();
  return 1;
}

// The scenes of dialogs and widgets, in the states that somebody brings them into.
//
// Main thread.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_prefs.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/oglp.h"
#include "corekit/net/http.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/window/butn_file.h"
#include "corekit/window/hl_alert_draw.h"
#include "corekit/window/hl_mnw.h"
#include "gallery/gallery.h"
#include "gallery/gallery_scenes.h"

namespace {

// --- widgets ------------------------------------------------------------------------------------

constexpr float section_top = 540;

void draw_ground() {
  colr.assign(col_picture, 1, 1, 1);
  OGL_plot_back_col();
  BTN_frame2(box_page, section_left, 20, section_dx, 560, "");
}

template <void (*section)(float)>
void show() {
  scene_frame = [] {
    draw_ground();
    section(section_top);
  };
}

// --- dialogs ------------------------------------------------------------------------------------

void open_settings(int streams) {
  stg = stg_record();
  stg.stream_count = streams;
  http._proxy_host.clear();
  http._proxy_port.clear();
  handle_prefs();
}

void ask_modified(const char* location, int gone) {
  select_alert(location, gone);
}

void ask_to_quit(const std::string& question) {
  abort_alert(question, "Cancel", "the demo installation and delete what was installed.",
              "Continue", "the demo installation process.");
}

std::string numbered_lines(int lines) {
  std::string text = "Are you sure?";
  for (int i = 1; i < lines; ++i)
    text += "\nLine " + std::to_string(i);
  return text;
}

void browse(int open_save, int type, const char* path) {
  std::string chosen = path;
  BTN_opensave(open_save, type, &chosen);
}

const char* const long_line =
    "A line that is so long that it runs on over the places of the lines behind it, where these "
    "are "
    "empty, and that is cut where they are not, since nothing may be written over them";

std::string endless() {
  std::string text = long_line;
  for (int i = 0; i < 20; ++i)
    text += std::string(". ") + long_line;
  return text;
}

constexpr char shelf[] = "/proc/self/cwd/shelf/";

}  // namespace

std::vector<gallery_scene> state_scenes() {
  return {
      {"actions", show<draw_actions>, "", nullptr},
      {"actions_over", show<draw_actions>, "240,520 rest", nullptr},
      {"actions_held", show<draw_actions>, "100,520 press", nullptr},
      {"actions_box_over", show<draw_actions>, "100,452", nullptr},
      {"actions_tab", show<draw_actions>, "220,434 click tab", nullptr},
      {"actions_focus", show<draw_actions>, "tab tab tab space 540,452 click", nullptr},
      {"values", show<draw_values>, "", nullptr},
      {"values_over_digit", show<draw_values>, "176,520", nullptr},
      {"values_focus", show<draw_values>, "tab right up", nullptr},
      {"values_cursor", show<draw_values>, "220,365 click end left", nullptr},
      {"values_marked", show<draw_values>,
       "220,365 click home right shift+right shift+right shift+right", nullptr},
      {"values_too_long", show<draw_values>,
       "480,365 click type=a_text_that_is_a_good_deal_longer_than_the_field left left", nullptr},
      {"choices", show<draw_choices>, "", nullptr},
      {"choices_popup", show<draw_choices>, "120,513 click", nullptr},
      {"choices_popup_over", show<draw_choices>, "130,513 press 130,480", nullptr},
      {"choices_least", show<draw_choices>, "180,450 press 105,450", nullptr},
      {"choices_most", show<draw_choices>, "180,450 press 335,450", nullptr},
      {"choices_bar_end", show<draw_choices>, "410,418 press 410,200", nullptr},
      {"choices_list", show<draw_choices>, "600,400 wheel=-3 click", nullptr},
      {"choices_list_keys", show<draw_choices>, "600,400 click down down type=re", nullptr},

      {"settings", [] { open_settings(0); }, "", nullptr},
      {"settings_streams", [] { open_settings(3); }, "tab", nullptr},
      {"settings_proxy", [] { open_settings(0); }, "tab tab tab tab tab type=proxy.example",
       nullptr},
      {"settings_popup", [] { open_settings(0); }, "345,342 press 345,300", nullptr},
      {"changed_file", [] { ask_modified("/home/pilot/Skyvane/Resources/a.txt", 0); }, "", nullptr},
      {"dropped_file", [] { ask_modified("/home/pilot/Skyvane/Resources/a.txt", 1); }, "tab tab",
       nullptr},
      {"changed_file_long",
       [] {
         ask_modified(
             "/home/pilot/a folder with a name that is so long that the path has no room on one "
             "line "
             "of it/and another such folder, so that the path has no room on two lines either, and "
             "on no more/Resources/a.txt",
             0);
       },
       "", nullptr},
      {"dropped_file_two_lines",
       [] {
         ask_modified(
             "/home/pilot/a folder with a name that is so long that the path has no room on one "
             "line of it, but on two/Resources/a.txt",
             1);
       },
       "", nullptr},
      {"changed_file_unbroken", [] { ask_modified(std::string(499, 'm').c_str(), 0); }, "",
       nullptr},
      {"question", [] { ask_to_quit("Are you sure?"); }, "", nullptr},
      {"question_over", [] { ask_to_quit("Are you sure?"); }, "146,228 rest", nullptr},
      {"question_held", [] { ask_to_quit("Are you sure?"); }, "146,300 press 146,228", nullptr},
      {"question_long", [] { ask_to_quit(numbered_lines(14)); }, "", nullptr},
      {"question_unbroken", [] { ask_to_quit(std::string(5000, 'm')); }, "", nullptr},
      {"alert",
       [] {
         __MACIBM_alert(win_main, "The first line", "The second", "The third", "The fourth",
                        t_alert, "gallery", 1);
       },
       "", nullptr},
      {"alert_long",
       [] { __MACIBM_alert(win_main, long_line, "", long_line, long_line, t_alert, "gallery", 1); },
       "400,200", nullptr},
      {"alert_one_text",
       [] { __MACIBM_alert(win_main, endless(), "", "", "", t_alert, "gallery", 1); }, "", nullptr},
      {"alert_two_texts",
       [] { __MACIBM_alert(win_main, endless(), "", "The third", "", t_alert, "gallery", 1); }, "",
       nullptr},
      {"alert_fatal",
       [] {
         draw_alert({alert_line("The end"), alert_line(), alert_line(long_line),
                     alert_line(long_line), "gallery", 1, t_exit},
                    "gallery, line 1");
       },
       "", nullptr},
      {"browser", [] { browse(win_file_open, 0, shelf); }, "", nullptr},
      {"browser_list", [] { browse(win_file_open, 0, shelf); }, "400,250 wheel=-4 click", nullptr},
      {"browser_above", [] { browse(win_file_open, 0, shelf); }, "165,460 click", nullptr},
      {"browser_preview", [] { browse(win_file_open, 3, shelf); }, "190,318 click", nullptr},
      {"browser_empty", [] { browse(win_file_open, 0, "/proc/self/cwd/empty/"); }, "", nullptr},
      {"browser_folder", [] { browse(win_file_open, file_type_folder, shelf); }, "", nullptr},
      {"browser_naming", [] { browse(win_file_open, 0, shelf); }, "186,116 click type=a", nullptr},
      {"browser_save", [] { browse(win_file_save, 0, "/proc/self/cwd/shelf/Readme.txt"); }, "",
       nullptr},
      {"folder_window",
       [] {
         std::string chosen;
         GetFilePathFromUser(2, "Please pick a folder", "Select", 1, shelf, chosen);
       },
       "", nullptr},
  };
}

void enter_shelf() {
  // No desktop is asked for a folder, but this program, which never answers.
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  setenv("HOME", "/proc/self/cwd", 1);
  setenv("XDG_CONFIG_HOME", "/proc/self/cwd/config", 1);
  setenv("PATH", "/proc/self/cwd/bin:/usr/bin:/bin", 1);
  if (chdir(temp_path.c_str()) != 0) return;
  for (const char* const folder : {"bin", "config", "empty", "shelf"})
    mkdir(folder, 0755);
  std::ofstream("bin/zenity") << "#!/bin/sh\nexec sleep 60\n";
  chmod("bin/zenity", 0755);
  for (const char* const folder :
       {"Aircraft", "Custom Scenery", "Instructions", "Output", "Resources"})
    mkdir((std::string("shelf/") + folder).c_str(), 0755);
  for (int i = 1; i <= 12; ++i)
    std::ofstream("shelf/Situation " + std::to_string(i) + ".sit") << "a";
  std::ofstream("shelf/Eagle.acf")
      << "I\n900 version\nACF\n\nCOMM A fine aircraft, of which much could be said\n";
  std::ofstream("shelf/Readme.txt") << "a";
}

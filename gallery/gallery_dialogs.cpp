// Pictures of the dialogs that no page of the installer opens.
//
// Each dialog is a loop of its own: a hook on the showing of its first picture saves that one, and
// takes the dialog away. Main thread. Writes `about`.

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_alert.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/butn_file.h"
#include "corekit/window/hl_about.h"
#include "corekit/window/hl_alert_draw.h"
#include "corekit/window/hl_mnw.h"
#include "gallery/gallery.h"
#include "gallery/gallery_scenes.h"

namespace {

// The box as it is when the list names this version as the public release; `installer` says
// whether it also says where to get it.
void open_about(int version_final, int version_beta, bool installer) {
  about = about_record();
  about.version_str_found = version_final > 0;
  about.version_str_net = "Skyvane 9.11";
  about.version_str_net_beta = "Skyvane 9.12b1";
  about.version_final = version_final;
  about.version_beta = version_beta;
  if (installer) about.final_installer = about.beta_installer = {"www.skyvane.example", "/new.zip"};
  MACIBM_about();
}

void open_browser(int open_save) {
  std::string path = "/usr/";
  BTN_opensave(open_save, 0, &path);
}

constexpr struct {
  const char* name;
  void (*open)();
} dialogs[] = {
    {"about_no_net", [] { open_about(-1, -1, false); }},
    {"about_latest", [] { open_about(91001, -1, true); }},
    {"about_newer", [] { open_about(91002, -1, true); }},
    {"about_newer_beta", [] { open_about(91000, 91002, true); }},
    {"about_newer_elsewhere", [] { open_about(91002, -1, false); }},
    {"language", [] { __MACIBM_alert(win_main, "-", "-", "-", "-", 0, "gallery", 1); }},
    {"nuke_alert", [] { MACIBM_nuke_alert("N172SP.acf", 1); }},
    {"browser_open", [] { open_browser(win_file_open); }},
    {"browser_save", [] { open_browser(win_file_save); }},
};

std::string picture_path;
bool all_written;

void take_picture() {
  if (mnw.win_id == win_main) return;
  if (!write_window(picture_path, false)) all_written = false;
  MACIBM_startwind(win_main, 0);
}

}  // namespace

std::vector<gallery_scene> dialog_scenes() {
  std::vector<gallery_scene> scenes;
  for (const auto& dialog : dialogs) {
    // The browser has scenes of its own, in a folder that is everywhere the same; and when the net
    // is found not to be there, is not the same each time.
    const std::string_view name = dialog.name;
    if (!name.starts_with("browser") && name != "about_no_net")
      scenes.push_back({dialog.name, dialog.open, "", nullptr});
  }
  return scenes;
}

bool write_dialogs(const std::string& folder) {
  all_written = true;
  PLT_swap_hook = take_picture;
  for (const auto& dialog : dialogs) {
    picture_path = folder + "/dialog_" + dialog.name + ".png";
    dialog.open();
  }
  return all_written;
}

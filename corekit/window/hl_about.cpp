// The about box. Each frame takes the download of the list or the self-update a step on, then
// draws.
//
// Main thread. Writes `about`, the files "serverlist9.txt" and "installer.zip" below
// "Resources/preferences/" or, where that cannot be, in the working folder, and what the
// installer's archive holds into the working folder.

#include "corekit/window/hl_about.h"

#include <unistd.h>

#include <cerrno>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/hl_url.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "corekit/net/http.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/hl_mnw.h"

about_record about;

namespace {

constexpr int list_slot = 0, installer_slot = 1;
constexpr int64_t list_budget = 1'000'000;  // bytes
constexpr char list_name[] = "serverlist9.txt";
constexpr char zip_name[] = "installer.zip";

constexpr float text_x = 35, text_top = 250, line_dy = 14, state_y = 50, button_y = 17;

// Where what is fetched goes. The folder beside the program is there in a whole installation; an
// installer on its own has to make it, and where it may not, the working folder serves.
std::string download_folder() {
  std::string beside = "Resources/preferences/";
  if (!app_packaged) {
    make_folder("Resources/");
    make_folder(beside);
    if (access(beside.c_str(), W_OK) == 0) return beside;
  }
  return PLT_temp_folder();
}

std::string zip_path() {
  return download_folder() + zip_name;
}

// --- the list of releases -----------------------------------------------------------------------

std::string rest_of_line(xmap_class& map) {
  std::string text;
  map.TXT_str_scan_eoln(&text);
  return text;
}

// What net_check would end the program over is put right: the list is written by hand.
about_installer read_installer(xmap_class& map) {
  about_installer read;
  read.server = rest_of_line(map);
  read.path = rest_of_line(map);
  while (!read.server.empty() && (read.server.back() == '/' || read.server.back() == ' '))
    read.server.pop_back();
  if (!read.path.empty() && read.path.front() != '/') read.path.insert(0, "/");
  return read;
}

void read_line(xmap_class& map) {
  std::string key;
  map.TXT_str_scan_space(&key);
  if (key == "BETA") {
    about.version_str_net_beta = rest_of_line(map);
  } else if (key == "FINAL") {
    about.version_str_net = rest_of_line(map);
    about.version_str_found = 1;
  } else if (key == "BETA_INSTALLER_MAC") {
    about.beta_installer = read_installer(map);
  } else if (key == "FINAL_INSTALLER_MAC") {
    about.final_installer = read_installer(map);
  } else if (key == "BETA_VERSION") {
    about.version_beta = str_to_int(rest_of_line(map));
  } else if (key == "FINAL_VERSION") {
    about.version_final = str_to_int(rest_of_line(map));
  } else {
    map.TXT_str_scan_eoln(nullptr);
  }
}

// With keys, only what is signed is read. False, with the reason on show, if it is not.
bool take_signed_part(xmap_class& map) {
  about.is_signed = false;
  if (sign_keys().empty()) return true;
  const auto* const text = reinterpret_cast<const char*>(map.file_start);
  const std::string_view list(text, static_cast<size_t>(map.file_end - map.file_start));
  if (const sign_verdict verdict = sign_accept_list(list, about.statement)) {
    about.err_msg = tr("The list of servers cannot be trusted, and I do not use it.") + " " +
                    tr(error_str(verdict)) + ".";
    about.ins_state = about_settled;
    return false;
  }
  about.is_signed = true;
  sign_tell_expired(about.statement, mnw.win_id);
  const ptrdiff_t at = map.cursor - map.file_start;
  map.look_at(text + at, text + sign_list_body(list).size());
  return true;
}

// What the signature says of the installer on offer; null: nothing.
const sign_cover* cover_of_installer() {
  return about.statement.cover(about.is_beta ? "BETA_INSTALLER_MAC" : "FINAL_INSTALLER_MAC");
}

// Nothing that is fetched is opened, let alone started, unless it is what was signed for.
bool is_what_was_signed(const unsigned char* bytes, size_t size) {
  if (!about.is_signed) return true;
  const sign_cover* const cover = cover_of_installer();
  return cover && cover->bytes == size && cover->sha256 == sign_hash(bytes, size);
}

// --- the self-update ----------------------------------------------------------------------------

void settle(const std::string& message) {
  about.err_msg = message;
  about.ins_state = about_settled;
}

std::string with_code(const std::string& format, int code) {
  return str_fill(format, {tr(error_str(code)), std::to_string(code)});
}

void check_list() {
  constexpr float rest_sec = 5;  // a server whose answer is no list is not asked every frame
  const std::string list_path = download_folder() + list_name;
  if (xtim.now_sec < about.ask_again_sec) return;
  if (http.net_check(list_slot, APP.web_host, "/serverlist9.txt", list_path, list_budget) !=
      http_done) {
    return;
  }
  if (about_read_list(list_path)) return about_compare(skyvane_version);
  about.ask_again_sec = xtim.now_sec + rest_sec;
}

int code_of(single_outcome outcome) {
  switch (outcome) {
    case single_ok:
      return 0;
    case single_no_archive:
      return 20001;
    case single_no_memory:
      return ENOMEM;
    case single_unread:
      return errno;
    default:
      return 20002;
  }
}

int write_program(const std::string& path, const single_file& program) {
  io_handle file(PLT_open_own(path, plt_own_anew));
  if (!file) return errno;
  int failed = io_write_all(file.get(), program.bytes, program.size);
  if (!failed) failed = file.close();
  return failed ? failed : make_file_executable(path.c_str());
}

// Takes the one program out of the archive, into a new folder that is this user's alone: what
// stands beside this program may be somebody else's. 0 or a code for error_str.
int unpack_installer() {
  constexpr uint64_t most = 512u << 20;
  const io_handle archive(PLT_open_own(zip_path(), plt_own_read));
  if (!archive) return 20001;
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  single_file program;
  single_outcome outcome = io_load_archive(archive.get(), most, bytes, size);
  if (outcome == single_ok && !is_what_was_signed(bytes, size)) return sign_wrong;
  if (outcome == single_ok) outcome = io_read_single(bytes, size, most, program);
  if (outcome != single_ok) return code_of(outcome);
  const std::string leaf(path_leaf(program.name));
  if (program.is_link || leaf.empty() || leaf == "." || leaf == ".." ||
      leaf.find('\0') != std::string::npos) {
    return 20002;
  }
  const std::string folder = PLT_make_lasting_folder("skyvane-update-");
  if (folder.empty()) return errno;
  about.installer_app_name = folder + leaf;
  return write_program(about.installer_app_name, program);
}

void step_download() {
  const sign_cover* const cover = about.is_signed ? cover_of_installer() : nullptr;
  const int64_t most = cover ? int64_t(cover->bytes) : http_class::default_budget;
  switch (http.net_check(installer_slot, about.installer.server, about.installer.path, zip_path(),
                         most)) {
    case http_failed:
      delete_file(zip_path());
      settle(tr("I was unable to download the installer from the net."));
      return;
    case http_done:
      break;
    default:
      return;
  }
  const int code = unpack_installer();
  delete_file(zip_path());
  if (code != 0) {
    settle(with_code(tr("There was an error unzipping the installer: %s (%d)"), code));
    return;
  }
  std::string& name = about.installer_app_name;
  if (!name.empty() && name.back() == '/') name.pop_back();
  about.ins_state = about_launch;
}

void step_launch() {
  const int code = APP.launch(about.installer_app_name, app_path);
  settle(with_code(tr("There was an error launching the installer: %s (%d)"), code));
}

// --- drawing ------------------------------------------------------------------------------------

std::string version_line() {
  if (!about.version_str_found) {
    return str_fill(tr("I could not reach the Skyvane web site, %s."), {APP.web_host});
  }
  return tr("The current ") + (about.is_beta ? tr("beta version") : tr("version")) +
         tr(" of Skyvane is now ") +
         (about.is_beta ? about.version_str_net_beta : about.version_str_net) + ".";
}

std::string state_line() {
  if (about.ins_state == about_settled) return about.err_msg;
  if (about.ins_state != about_download && about.ins_state != about_launch) return "";
  std::string downloading = tr("Downloading the installer...");
  const int64_t length = http.slot_length(installer_slot);
  if (length <= 0) return downloading;
  const int64_t percent = http.slot_received(installer_slot) * 100 / length;
  return downloading + std::to_string(percent) + tr("% complete");
}

void plot_text() {
  const float wrap = mnw.win_dx - 2 * text_x;
  OGL_string(col_white, text_x, text_top, skyvane_version_title, wrap);
  float y = text_top - 2 * line_dy;
  const std::string lines[] = {
      tr("Skyvane, its scenery and this program are made by Tessaron Labs."),
      tr("Thanks to all who have flown the test releases."), "",
      std::string("http://") + APP.web_host + "/", version_line()};
  for (const std::string& line : lines) {
    OGL_string(col_light, text_x, y, line, wrap);
    y -= line_dy;
  }
  OGL_string(col_state, text_x, state_y, state_line(), wrap);
}

void plot_buttons() {
  constexpr float width = 180;
  if (BTN_action(191, button_y, width, 0, 1, tr("Skyvane Web Site"), "")) {
    go_to_URL(std::string("http://") + APP.web_host + "/");
  }
  if (about.ins_state != about_offer) return;
  const std::string label = about.is_beta ? tr(" Get New Beta! ") : tr("Update Skyvane!");
  if (BTN_action(492, button_y, width, 0, 1, label, "")) about.ins_state = about_download;
}

}  // namespace

int about_read_list(const std::string& path) {
  constexpr int versions[] = {820, 0};
  xmap_class map(path);
  if (!map.file_start || !map.check_file(ouf_text, versions, "SERVERS", nullptr)) return 0;
  if (!take_signed_part(map)) return 0;
  while (map.cursor < map.file_end)
    read_line(map);
  return about.version_str_found;
}

void about_compare(int version) {
  about.is_latest = 1;
  about.is_beta = 0;
  about.err_msg.clear();
  about.ins_state = about_settled;
  if (about.version_final == -1) {
    about.err_msg = tr("Can't connect to the net to find latest version.");
  } else if (about.version_final == version) {
    about.err_msg = tr("Your version of Skyvane is up to date.");
  } else if (about.version_final > version) {
    about.is_latest = 0;
  } else if (about.version_beta < version + 1) {
    about.err_msg = tr("You have the latest Skyvane beta.");
  } else {
    about.is_beta = 1;
    about.is_latest = 0;
  }
  if (about.is_latest) return;

  about.installer = about.is_beta ? about.beta_installer : about.final_installer;
  const bool may_be_fetched = !about.is_signed || cover_of_installer();
  if (may_be_fetched && !about.installer.server.empty() && !about.installer.path.empty()) {
    about.ins_state = about_offer;
    return;
  }
  // The two sentences stand crossed on purpose.
  const std::string sentence = about.is_beta
                                   ? tr("There is a new version of Skyvane.  Please visit %s.")
                                   : tr("There is a newer beta of Skyvane.  Please visit %s.");
  about.err_msg = str_fill(sentence, {APP.web_host});
}

void about_step_on() {
  if (!about.version_str_found && about.ins_state != about_settled) {
    check_list();
  } else if (about.ins_state == about_download) {
    step_download();
  } else if (about.ins_state == about_launch) {
    step_launch();
  } else {
    return;
  }
  frame_soon = frame_in_a_tick;
}

void MACIBM_about() {
  MACIBM_startwind(win_about, 0);
  if (about.version_str_found) {
    about_compare(skyvane_version);
  } else {
    about.ins_state = about_closed;  // a list that was not to be trusted may be another by now
  }
  while (mnw.win_id == win_about) {
    about_step_on();
    MACIBM_plot_behind();
    BTN_fillwin(1, inner_none);
    BTN_subwin(0, box_dark, -1, 35, -1, -1, "", nullptr, nullptr);
    plot_text();
    plot_buttons();
    MACIBM_event_proc();
    if (escape_hit && mnw.win_id == win_about) MACIBM_handleclick(1);
  }
  // A transfer would go on only while its box asks; the next opening begins it anew.
  http.drop(list_slot);
  http.drop(installer_slot);
}

// Main thread. Writes dvd_path, install_name, stg.server_count, current_disk.

#include "Installer-f/wizard/main_dvd_util.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_launch.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/window/butn_file.h"
#include "corekit/window/hl_mnw.h"

int current_disk = 0;
int want_file_disk = 0;

namespace {

constexpr char sim_program[] = "Skyvane.app";
constexpr float bytes_per_kb = 1000.0f;
constexpr float look_again_after = 0.5f;  // seconds between two looks at the same volumes

// The first of `volumes` that holds `marker`; empty without one.
std::string volume_with(const std::vector<std::string>& volumes, const std::string& marker) {
  for (const std::string& volume : volumes) {
    if (file_exists(volume + marker)) return volume;
  }
  return "";
}

// A file's place on its disc.
std::string path_on_disc(int index) {
  return install_name + "/" + std::string(sim_info[index].current().path) + suffix_for_file(index);
}

// One file may be missing from a disc; so many in a row are not there.
constexpr int enough = 20;

// The volume that has any of the wanted files from want_file_disk on, of its disc; empty for none.
std::string wanted_volume(const std::vector<std::string>& volumes) {
  const int disk = sim_info[want_file_disk].current().disk;
  std::string volume;
  int looked_at = 0;
  for (int index = want_file_disk; volume.empty() && looked_at < enough; ++index) {
    if (index >= static_cast<int>(sim_info.size())) break;
    const file_version_struct& file = sim_info[index].current();
    if (index != want_file_disk && (!file.need_fetch || file.disk != disk)) continue;
    volume = volume_with(volumes, path_on_disc(index));
    ++looked_at;
  }
  return volume;
}

// --- ejection ------------------------------------------------------------------------------------

// It takes seconds, so a general worker does it, while frames go on.
struct ejection {
  std::string volume;
  int failed = 0;  // what eject_dvd gave; the worker's until the call has finished
  THREAD_call* call = nullptr;
};
// Those under way. Not freed: when the program ends, a worker may still be at one.
auto& ejections = *new std::vector<std::unique_ptr<ejection>>;

void* run_ejection(void* argument) {
  auto* const job = static_cast<ejection*>(argument);
  job->failed = eject_dvd(job->volume);
  return nullptr;
}

void start_ejection(const std::string& volume) {
  ejections.push_back(std::make_unique<ejection>());
  ejection* const job = ejections.back().get();
  job->volume = volume;
  job->call = THREAD_run_async(run_ejection, job);
}

bool has_ended(const std::unique_ptr<ejection>& job) {
  if (!THREAD_is_done(job->call, queue_poll)) return false;
  THREAD_cleanup(job->call);
  if (job->failed) {
    xer << "WARNING: " << job->volume << " was not ejected: " << error_str(job->failed) << '\n';
  }
  return true;
}

// The volumes that may be discs, but for those on their way out.
std::vector<std::string> disc_volumes() {
  std::erase_if(ejections, has_ended);
  std::vector<std::string> volumes = PLT_disc_volumes();
  for (const auto& job : ejections)
    std::erase(volumes, job->volume);
  return volumes;
}

// --- what is on a disc ---------------------------------------------------------------------------

// While no disc is in, the volumes are asked again when one comes or goes, and else now and then:
// each look goes to every drive.
bool worth_a_look(const std::vector<std::string>& volumes) {
  static std::vector<std::string> seen;
  static double seen_at = -look_again_after;
  if (volumes == seen && xtim.now_sec - seen_at < look_again_after) return false;
  seen = volumes;
  seen_at = xtim.now_sec;
  return true;
}

// The disc's small label: lines that begin with a keyword, of which VERSION names the release.
void read_disc_label(const std::string& path) {
  constexpr int versions[] = {900, 0};
  xmap_class label(path);
  if (!label.file_start || label.check_file(ouf_text, versions, "DVD", nullptr) != 900) {
    return;
  }
  stg.server_count = 0;
  std::string keyword, rest;
  while (label.cursor < label.file_end) {
    label.TXT_str_scan_space(&keyword);
    label.TXT_str_scan_eoln(&rest);
    if (keyword == "VERSION" && release_is_plain(rest)) install_name = rest;
  }
}

// A disc that is not signed, where this program has the keys of those who sign.
bool may_use_unsigned() {
  const std::string question =
      tr("The list of files on this disc is not signed by the makers of Skyvane.\n\nIt may be an "
         "old disc, or one that somebody else has made. Install from it only if you know where it "
         "comes from.");
  if (stand_in) {
    complain(on_one_page(question));
    if (!answers.allow_unsigned) complain(tr("\"--allow_unsigned\" would use it all the same."));
    return answers.allow_unsigned;
  }
  return abort_alert(question, tr("Continue"), tr("with this disc, at my own risk."), tr("Cancel"),
                     tr("and use nothing of this disc.")) == 1;
}

// The manifest of the release in `folder`; `zip` receives the path of its archive. A disc that was
// signed long ago is as good as ever: it is what the user holds in his hand.
place_result place_disc_manifest(const std::string& folder, std::string& zip) {
  zip = folder + signed_manifest_archive;
  if (trust_is_on() && file_exists(zip)) return place_signed_manifest(zip, "");
  zip = folder + manifest_archive;
  if (trust_is_on() && !may_use_unsigned()) return {place_untrusted, sign_unsigned};
  return place_manifest(zip);
}

void end_by_manifest(int code, const std::string& zip) {
  const std::string plain = temp_path + "directory.txt";
  __MACIBM_alert(win_main, "DVD scan: The installer cannot extract a file.",
                 tr("Error: ") + tr(error_str(code)), tr("Compressed File/") + zip,
                 tr("Destination Path/") + plain, t_exit, at_disc_manifest_archive);
}

// Takes the last component off a folder's path; empty once nothing is left.
std::string parent_folder(std::string path) {
  if (!path.empty() && path.back() == '/') path.pop_back();
  return std::string(path_folder(path));
}

// The user picked a folder: a copy, or anything inside one, is registered and chosen. Any other
// leaves the choice as it was: an update of it would fill it with a whole copy.
void take_found_folder(const std::string& picked) {
  const std::string before = dest_dir_path;
  dest_dir_path = picked == "/" ? picked : picked + "/";
  const std::string chosen = dest_dir_path;
  while (!dest_dir_path.empty()) {
    if (path_is_to_a_sim()) {
      register_new_skyvane();
      locate_all_skyvanes();
      return;
    }
    const std::string shorter = parent_folder(dest_dir_path);
    if (shorter.size() >= dest_dir_path.size()) break;
    dest_dir_path = shorter;
  }
  dest_dir_path = before;
  __MACIBM_alert(win_main, "You selected the folder path:", chosen,
                 "But it does not appear to be an installed copy of Skyvane 9.",
                 "Please be sure to select the folder that contains the Skyvane application.",
                 t_alert, at_no_copy_there);
}

}  // namespace

void UTIL_scan_volumes(const std::string& marker) {
  dvd_path = volume_with(disc_volumes(), marker);
}

void UTIL_scan_dvd() {
  if (dvd_path.empty()) {
    const std::vector<std::string> volumes = disc_volumes();
    if (worth_a_look(volumes)) dvd_path = volume_with(volumes, disc_label_file);
  }
  if (!dvd_path.empty() && install_name == no_install_name) {
    const std::string label = dvd_path + disc_label_file;
    read_disc_label(label);
    // A disc that is none of ours makes room for the next one when it is taken out.
    if (install_name == no_install_name && !file_exists(label)) dvd_path.clear();
  }
  if (install_name == no_install_name || stg.directory_state != manifest_none) return;
  if (dvd_path.empty()) return;

  std::string zip;
  const int code = place_disc_manifest(dvd_path + install_name + "/", zip).code;
  if (code == sign_unsigned) {  // the user has said that he will not have it
    set_directory_state(manifest_refused);
    return;
  }
  if (code != 0) end_by_manifest(code, zip);
  const std::string plain = temp_path + "directory.txt";
  const directory_outcome outcome = read_directory(
      plain, UTL_translate_string(
                 "Scanning directory text file to see if you already have Skyvane installed..."));
  if (outcome == directory_loaded && !trust_take_sums()) end_by_manifest(sign_malformed, zip);
  if (const sign_statement* const statement = trust_statement())
    sign_tell_expired(*statement, win_main);
  // A disc whose list is none of ours is no disc of ours.
  set_directory_state(outcome == directory_loaded ? manifest_loaded : manifest_refused);
}

int UTIL_verify_disk() {
  const std::vector<std::string> volumes = disc_volumes();
  const std::string last = dvd_path;
  dvd_path = wanted_volume(volumes);
  if (!dvd_path.empty()) {
    current_disk = sim_info[want_file_disk].current().disk;
    return 1;
  }
  // The disc to eject is the one read last, or, after that has gone, a wrong one of the release. If
  // the last one was pulled out there is nothing to eject, whatever is in other drives.
  for (const std::string& volume : volumes) {
    const bool in_the_way = last.empty() ? dir_exists(volume + install_name) : volume == last;
    if (dvd_path.empty() && in_the_way) dvd_path = volume;
  }
  return 0;
}

int UTIL_switch_disk(int first_time) {
  if (first_time && !dvd_path.empty()) {
    start_ejection(dvd_path);
    dvd_path.clear();
  }
  // Whatever is put in now is looked at before anything is copied from it.
  current_disk = -1;
  return sim_info[want_file_disk].current().disk;
}

bool UTIL_wanted_disk_is_in() {
  return !wanted_volume(disc_volumes()).empty();
}

void UTIL_notice_lost_disk(int index) {
  int looked_at = 0;
  for (; index < static_cast<int>(sim_info.size()) && looked_at < enough; ++index) {
    const file_version_struct& file = sim_info[index].current();
    if (!file.need_fetch || file.disk != current_disk) continue;
    if (!dvd_path.empty() && file_exists(dvd_path + path_on_disc(index))) return;
    ++looked_at;
  }
  if (looked_at > 0) current_disk = -1;
}

void UTIL_pick_install() {
  constexpr int most_shown = 11, bar_copies = 2;
  constexpr float pitch = 25, label_dx = 500, bar_room = 30;
  static int top = 0;
  const int count = static_cast<int>(all_skyroots.size());
  const int shown = ogl_inited ? std::min(count, most_shown) : count;
  float y = 400;
  const float dy = pitch * static_cast<float>(shown);
  BTN_scroll_area(bar_copies, 232, y + 17 - dy, 552, dy, count, shown, &top);
  for (int i = top; i < top + shown; ++i) {
    const std::string& copy = all_skyroots[static_cast<size_t>(i)];
    if (wizard_label(280, y, copy, count > shown ? label_dx - bar_room : label_dx)) {
      dest_dir_path = copy;
    }
    int selected = copy == dest_dir_path;
    if (BTN_bool(250, y, &selected, "", 1)) dest_dir_path = copy;
    y -= pitch;
  }
  // The button stands at 605, or farther right where the words before it reach that far.
  constexpr float text_x = 230, gap = 10, button_x = 605, button_dx = 100;
  const std::string text =
      tr("Is the copy of Skyvane 9 you're looking for missing from this list?");
  wizard_note(text_x, y, text, 500);
  const float text_end = text_x + static_cast<float>(OGL_string_width(text));
  const float x = std::max(button_x, text_end + gap + button_dx / 2);
  if (BTN_action(x, y + 3, button_dx, 0, 1, tr("Find It"), "")) {
    std::string picked;
    if (GetFilePathFromUser(2, tr("Please select your Skyvane 9 folder."), tr("Select"), 1,
                            dest_dir_path, picked)) {
      take_found_folder(picked);
    }
  }
}

std::string give_copy() {
  if (!answers.copy.empty()) dest_dir_path = answers.copy;
  return "";
}

std::string give_listed_copy() {
  dest_dir_path = answers.copy;
  if (!path_is_to_a_sim()) return str_fill(tr("There is no installed copy at %s."), {answers.copy});
  if (!answers.check) register_new_skyvane();
  locate_all_skyvanes();
  if (answers.check) all_skyroots.push_back(answers.copy);  // for this run: it only looks
  return std::count(all_skyroots.begin(), all_skyroots.end(), answers.copy) != 0
             ? ""
             : str_fill(tr("This copy cannot be put on the list of installed copies: %s."),
                        {answers.copy});
}

int UTIL_disk_space(const std::string& enough_text, const std::string& short_text) {
  unsigned long long total = 0, available = 0;
  if (get_free_space(dest_dir_path, &total, &available) != 0) return 1;
  const float total_kb = static_cast<float>(total) / bytes_per_kb;
  const float free_kb = static_cast<float>(available) / bytes_per_kb;
  const bool too_small = stg.todo_raw_kb > free_kb;

  const std::string text =
      str_fill(UTL_translate_string(
                   "Disk size: %s\nFree disk space: %s\nDisk space needed to install: %s.\n\n%s"),
               {size_string(total_kb), size_string(free_kb), size_string(stg.todo_raw_kb),
                too_small ? short_text + "\n" + dest_dir_path : enough_text});
  wizard_note(220, 130, text, 560);
  // What needs no room, such as a removal, has enough of it on a full disk.
  return stg.todo_raw_kb <= 0 || free_kb > stg.todo_raw_kb ? 1 : 0;
}

bool UTIL_sim_can_start() {
  const std::string missing = missing_program(dest_dir_path + sim_program);
  if (missing.empty()) return true;
  __MACIBM_alert(win_main,
                 "I can not start Skyvane, because there is no program to run here:", missing,
                 "This copy may be incomplete, or it may be for another operating system.", "",
                 t_alert, at_nothing_to_start);
  return false;
}

const wizard_page dvd_do_run_sim = {page_job,
                                    [](int, wizard_screen&) {
                                      launch_app(dest_dir_path + sim_program, "");
                                      return 0;
                                    },
                                    {},
                                    UTIL_sim_can_start};

// Preference files: the reader and writer, and the lists of what goes in which file.
//
// Main thread only. Writes the variables that the lists name, and `ouf`. A file is written beside
// the old one and takes its place once it is whole, so that a full disk costs no settings.

#include "corekit/files/pref.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

pref_class pref;

namespace {

constexpr int pref_version = 9002;
constexpr int accepted_versions[] = {pref_version, 0};
constexpr char no_note[] = "no-copyright-string";
constexpr char new_suffix[] = ".new";

constexpr char resolution_path[] = "Resources/preferences/Res Sky-Root.prf";
constexpr char installer_name[] = "Skyvane Installer.prf";
constexpr char calibration_path[] = "Resources/preferences/Cal Skyvane.prf";

constexpr int screen_least = 600;
constexpr int screen_most = 9999;

// Tags of the resolution file that this program only carries: kept for the sibling programs.
struct sibling_settings {
  int x_res_req_PLN = 0;
  int y_res_req_PLN = 0;
  int x_res_req_WRL = 0;
  int y_res_req_WRL = 0;
  int x_res_req_ALL = 0;
  int y_res_req_ALL = 0;
  int set_res = 0;
  int keylist_up = 0;
  int prefs_found = 0;
};
sibling_settings siblings;

// The integer at the start of `value`, as atoi reads it but with defined bounds.
int leading_int(const std::string& value) {
  const long number = std::strtol(value.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

// The value that the command line gives to `tag` for this run.
bool overridden(const std::string& tag, std::string* value) {
  const std::string flag = "--pref:" + tag;
  if (!cmdline.has_option(flag.c_str())) return false;
  *value = cmdline.get_option(flag.c_str());
  return true;
}

void read_tags(const std::string& path, std::map<std::string, std::string>& tags) {
  xmap_class map(path);
  if (!map.file_start) return;
  if (map.check_file(ouf_text, accepted_versions, nullptr, nullptr) == 0) return;
  std::string tag, value;
  while (map.cursor < map.file_end) {
    map.TXT_str_scan_space(&tag);
    map.TXT_str_scan_eoln(&value);
    if (!tag.empty()) tags[tag] = value;
  }
}

void io_resolution(scan_class& scan) {
  if (scan.direction == pref_write) {
    siblings.x_res_req_ALL = mnw.req_dx;
    siblings.y_res_req_ALL = mnw.req_dy;
  }
  scan.int_io(&siblings.x_res_req_PLN, "_x_res_req_PLN");
  scan.int_io(&siblings.y_res_req_PLN, "_y_res_req_PLN");
  scan.int_io(&siblings.x_res_req_WRL, "_x_res_req_WRL");
  scan.int_io(&siblings.y_res_req_WRL, "_y_res_req_WRL");
  scan.int_io(&siblings.x_res_req_ALL, "_x_res_req_ALL");
  scan.int_io(&siblings.y_res_req_ALL, "_y_res_req_ALL");
  scan.int_io(&mnw.req_depth, "_col_res_req");
  scan.int_io(&siblings.set_res, "_set_res");
  scan.int_io(&mnw.language, "_lang");
  scan.int_io(&mnw.alias_req, "_alias_req");
  scan.int_io(&siblings.keylist_up, "_keylist_up");
  scan.int_io(&mnw.sec_mon_inuse, "_sec_mon_inuse");
  scan.int_io(&siblings.prefs_found, "_prefs_found");
  if (scan.direction == pref_read) {
    mnw.req_dx = siblings.x_res_req_ALL;
    mnw.req_dy = siblings.y_res_req_ALL;
    if (mnw.req_dx < screen_least || mnw.req_dx > screen_most) mnw.req_dx = 1024;
    if (mnw.req_dy < screen_least || mnw.req_dy > screen_most) mnw.req_dy = 768;
  }
}

// Empty if the system names no folder for preferences.
std::string installer_path() {
  std::string folder;
  if (get_OS_abs_path(os_dir_prefs, folder) != 0) return {};
  return folder + installer_name;
}

}  // namespace

// --- one file -----------------------------------------------------------------------------------

scan_class::scan_class(const std::string& file_path, int io_direction)
    : direction(io_direction), path(file_path) {
  if (direction == pref_write && !path.empty()) turn.emplace(path);
  // A writer needs the old file too: what was overridden for this run goes back as it was.
  read_tags(path, tags);
  if (direction != pref_write || path.empty()) return;
  delete_file(path + new_suffix);  // of a run that was stopped, or somebody's link
  open = ouf_open(path + new_suffix, ouf_text, pref_version, no_note) != 0;
}

scan_class::~scan_class() {
  if (!open) return;
  const std::string leaf(path_leaf(path));
  int error = ouf_close();
  if (error == 0) error = rename_file(std::string(path_folder(path)), leaf + new_suffix, leaf);
  if (error == 0) return;
  delete_file(path + new_suffix);
  xer << "WARNING: the file " << path << " stays as it was: " << error_str(error) << ".\n";
}

bool scan_class::int_io(int* value, const std::string& tag) {
  std::string text;
  if (direction == pref_write) {
    if (overridden(tag, &text) && leading_int(text) == *value) return write_back(tag);
    return write(tag, std::to_string(*value));
  }
  if (!find(tag, &text)) return false;
  *value = leading_int(text);
  return true;
}

bool scan_class::string_io(std::string* value, const std::string& tag) {
  std::string text;
  if (direction == pref_write) {
    if (overridden(tag, &text) && text == *value) return write_back(tag);
    return !value->empty() && write(tag, *value);
  }
  if (!find(tag, &text)) return false;
  *value = text;
  return true;
}

bool scan_class::find(const std::string& tag, std::string* value) const {
  if (overridden(tag, value)) return true;
  const auto found = tags.find(tag);
  if (found == tags.end()) return false;
  *value = found->second;
  return true;
}

bool scan_class::write(const std::string& tag, const std::string& value) {
  if (!open) return false;
  // A line end within a value would make a tag of its own of what follows.
  ouf << tag << ' ' << value.substr(0, value.find_first_of(std::string("\r\n\0", 3))) << '\n';
  return true;
}

// The value of this run is not the user's: the file keeps its own, or none.
bool scan_class::write_back(const std::string& tag) {
  const auto found = tags.find(tag);
  return found != tags.end() && write(tag, found->second);
}

// --- the files of the family --------------------------------------------------------------------

void pref_class::IO_set(int kind, int direction) {
  switch (kind) {
    case pref_kind_resolution: {
      scan_class scan(resolution_path, direction);
      io_resolution(scan);
      break;
    }
    case pref_kind_installer: {
      scan_class scan(installer_path(), direction);
      APP.prefs_io(scan);
      break;
    }
    case pref_kind_calibration: {
      const scan_class scan(calibration_path, direction);
      break;
    }
    default:
      break;
  }
}

int pref_class::IO_sta(int, int, const std::string&) {
  return 0;
}

// The reader of directory.txt (docs/manifest.md).
//
// Steps: check the header; take the lines one by one, adding a record for each "FILE" line to the
// history of its path, which is the last one of the table or a new one; when a history is whole,
// note which sectors and which kinds of file it adds to the offer.
//
// Most of the time goes by in the lines that begin a history, and most of what is to be known of a
// path is known of its folder: so that is found out once a folder, and of a name only whether it is
// an ordinary one.
//
// Main thread. Writes sim_info, deleted_files, and in stg the sectors on offer, the has_ flags, the
// totals, and through new_format the two states that end the program.

#include "Installer-f/engine/utils_manifest.h"

#include <algorithm>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest_lines.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_url.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"

manifest_table sim_info;
std::set<std::string> deleted_files;
std::map<std::string, int32_t, std::less<>> sim_info_index;

namespace {

constexpr int format_versions[] = {840, 900, 0};
constexpr int warnings_logged = 100;      // of records left out; a hostile file could hold millions
constexpr size_t most_records = 2000000;  // many times any release; bounds what a file can allocate
constexpr size_t usual_history = 80;  // bytes of text that one takes up, for a first reservation
constexpr int32_t most_discs = 100;

// Two old data sets that old manifests still list and that must not be installed any more.
constexpr std::string_view withdrawn[] = {"900 red terrain", "Earth Orbit Textures"};

bool is_withdrawn(std::string_view path) {
  for (const std::string_view old_set : withdrawn)
    if (str_holds(path, old_set)) return true;
  return false;
}

// --- from lines to histories --------------------------------------------------------------------

struct manifest_reader {
  std::string folder;     // of the last "DIR" line; cut where no file could be in it any more
  bool is_plain = false;  // the folder is sound, and ends so that nothing of a name can change that
  bool is_same = false;   // it is the folder of the path in hand
  int32_t disk = 0;       // of the last "DISK" line
  size_t records = 0;
  int left_out = 0;
};

void enter_folder(manifest_reader& reader, std::string_view folder) {
  reader.folder = folder.substr(0, path_limit + 1);
  reader.is_plain = reader.folder.size() < path_limit && reader.folder.ends_with('/') &&
                    !is_withdrawn(reader.folder) && manifest_path_is_safe(reader.folder + "x");
  reader.is_same = false;
}

void warn_left_out(manifest_reader& reader, const char* why, std::string_view name) {
  ++reader.left_out;
  if (reader.left_out > warnings_logged) return;
  xer << "WARNING: the directory lists a file " << why << ": " << reader.folder
      << name.substr(0, path_limit) << '\n';
  if (reader.left_out == warnings_logged)
    xer << "WARNING: further files of that kind are left out without a line here.\n";
}

// Whether folder and name make up the path of the line before, without joining them.
bool continues_history(const manifest_reader& reader, std::string_view name) {
  if (sim_info.empty()) return false;
  const std::string_view path = sim_info.back().current().path;
  if (path.size() != reader.folder.size() + name.size() || !path.ends_with(name)) return false;
  return reader.is_same || path.starts_with(reader.folder);
}

// What the pages may offer: by current versions, for those alone are ever installed.
void note_offer() {
  if (sim_info.empty()) return;
  const file_version_struct& current = sim_info.back().current();
  if (current.is_global) {
    stg.sector_available[sector_cell(current.lon_index, current.lat_index)] = 1;
    stg.has_global_files = 1;
  } else {
    stg.has_sim_files = 1;
  }
}

// Whether a path may stand in the table. Says in the log why not; says nothing of old data sets.
bool is_wanted(manifest_reader& reader, std::string_view name) {
  if (reader.is_plain && !name.empty() && name[0] != '.' && name.find('/') == name.npos &&
      reader.folder.size() + name.size() <= path_limit)
    return !is_withdrawn(name);

  if (reader.folder.size() + name.size() > path_limit) {
    warn_left_out(reader, "that cannot be installed below the destination", name);
    return false;
  }
  const std::string path = reader.folder + std::string(name);
  if (is_withdrawn(path)) return false;
  if (!path.empty() && path_has_no_file(path)) {
    __MACIBM_alert(mnw.win_id,
                   "I am reading the directory text file and found a path that has no file!",
                   "This is impossible to download or delete!", "It is:", path, t_exit,
                   at_manifest_names_folder);
  }
  if (manifest_path_is_safe(path)) return true;
  warn_left_out(reader, "that cannot be installed below the destination", name);
  return false;
}

// Behind the keyword of a "FILE" line. A line that breaks off leaves 0 in the fields that it lacks.
void read_file_line(manifest_reader& reader, manifest_line line) {
  file_version_struct record;
  line.token();  // reserved
  record.os = std::clamp(line.number(), 0, 6);
  record.version = line.number();
  record.zip_kb = static_cast<float>(line.number());
  record.raw_kb = static_cast<float>(line.number());
  if (!line.digest(record.sig_want)) record.sig_want = line.token();
  const std::string_view name = line.rest();
  record.disk = reader.disk;

  // One that names a folder is not left out: it ends the program below, as a manifest that was cut.
  const bool is_signed = record.sig_want.is_digest() || record.sig_want == sig_gone;
  if (!is_signed && !path_has_no_file(name.empty() ? std::string_view(reader.folder) : name)) {
    warn_left_out(reader, "whose signature is none", name);
    return;
  }
  const bool continues = continues_history(reader, name);
  if (!continues && !is_wanted(reader, name)) return;
  ++reader.records;
  if (continues) {
    const file_version_struct& earlier = sim_info.back().current();
    record.path = earlier.path;
    record.is_global = earlier.is_global;
    record.lat_index = earlier.lat_index;
    record.lon_index = earlier.lon_index;
    sim_info.back().versions.push_back(record);
    return;
  }
  note_offer();
  record.path = manifest_path(reader.folder, name);
  int32_t lon = 0, lat = 0;
  if (is_global_scenery_f(record.path) && find_sector(lon, lat, record.path)) {
    record.is_global = 1;
    record.lon_index = lon;
    record.lat_index = lat;
  }
  sim_info.emplace_back().versions.push_back(record);
  reader.is_same = true;
}

void read_lines(manifest_lines& lines, const std::string& path) {
  manifest_reader reader;
  for (manifest_line line; lines.next(line);) {
    line.skip_blanks();
    if (line.keyword("FILE")) {
      read_file_line(reader, line);
    } else if (line.keyword("DIR")) {
      enter_folder(reader, line.rest());
    } else if (line.keyword("DISK")) {
      reader.disk = std::clamp(line.number(), 0, most_discs - 1);
    }
    if (reader.records > most_records) {
      __MACIBM_alert(mnw.win_id, "This directory file lists more files than any release holds!",
                     "It is damaged, or it is not one of ours.", "The file is:", path, t_exit,
                     at_manifest_too_long);
    }
  }
  note_offer();
}

void complain_of_no_file(const std::string& path) {
  __MACIBM_alert(mnw.win_id, "I tried to read a directory file that does not exist!", "",
                 "The file is:", path, t_exit, at_manifest_missing);
}

}  // namespace

directory_outcome read_directory(const std::string& path, const std::string&) {
  deleted_files.clear();
  stg.todo_zip_kb = 0;
  stg.todo_raw_kb = 0;
  stg.todo_install_count = 0;
  stg.todo_delete_count = 0;
  sim_info.clear();
  std::fill(std::begin(stg.sector_available), std::end(stg.sector_available), 0);
  stg.has_global_files = 0;
  stg.has_sim_files = 0;

  manifest_lines lines(path);
  if (!lines.is_open() || lines.size() == 0) {
    complain_of_no_file(path);
    return directory_foreign;
  }
  const auto header = lines.take_header(format_versions, "INSTALLER");
  if (lines.has_failed()) complain_of_no_file(path);
  switch (header) {
    case header_foreign:
      return directory_foreign;
    case header_other_version:
      new_format(path);
      return directory_refused;
    case header_ours:
      break;
  }
  sim_info.reserve(std::min<size_t>(lines.size() / usual_history + 1, most_records));
  sim_info.begin_fill(lines.size());
  read_lines(lines, path);
  sim_info.end_fill();
  if (lines.has_failed()) {  // half a manifest is none
    sim_info.clear();
    complain_of_no_file(path);
  }
  return sim_info.empty() ? directory_foreign : directory_loaded;
}

void new_format(const std::string& path) {
  xer << "WARNING: the directory file is of a format that I do not know: " << path << '\n';
  __MACIBM_alert(
      mnw.win_id, "The servers now hold files in a newer format than this installer understands.",
      "In other words, you need to get a new installer!",
      "You can get one from the download section of our web site.", "", t_alert, at_new_format);
  go_to_URL("http://" + std::string(product_web_host) + "/demo.html");
  set_directory_state(manifest_refused);
  stg.new_format_state = 2;
  app_done = 1;
}

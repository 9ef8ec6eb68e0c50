// The reader of directory.txt (docs/manifest.md) and the table that it fills.
//
// Steps: map the file and check its header; walk the lines in place, copying only the paths and
// signatures that stay; gather adjacent lines of one path into a history; last, note which sectors
// and which kinds of file the manifest offers.
//
// Main thread. Writes sim_info, deleted_files, the text store behind them, and in stg the sectors
// on offer, the has_ flags, the totals, and through new_format the two states that end the program.

#include "Installer-f/engine/utils_manifest.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_url.h"
#include "corekit/base/mnw.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

std::vector<file_history_struct> sim_info;
std::set<std::string> deleted_files;
std::map<std::string, int32_t, std::less<>> sim_info_index;

namespace {

constexpr int format_versions[] = {840, 900, 0};
constexpr int warnings_logged = 100;      // of records left out; a hostile file could hold millions
constexpr size_t most_records = 2000000;  // many times any release; bounds what a file can allocate
constexpr int most_discs = 1000;          // a disc is asked for by its number
constexpr size_t usual_history = 128;  // bytes of text a history takes up, for a first reservation

// Two old data sets that old manifests still list and that must not be installed any more.
constexpr std::string_view withdrawn[] = {"900 red terrain", "Earth Orbit Textures"};

// The text that the table's views look into: blocks that are only ever added to, so that no view
// moves, and dropped together.
class text_store {
 public:
  void clear() {
    blocks_.clear();
    free_ = nullptr;
    left_ = 0;
  }

  // One text of two parts.
  std::string_view keep(std::string_view head, std::string_view tail) {
    const size_t size = head.size() + tail.size();
    if (size == 0) return {};
    if (size > left_) {
      left_ = size > block_size ? size : block_size;
      blocks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
      free_ = blocks_.back().get();
    }
    char* const text = free_;
    if (!head.empty()) std::memcpy(text, head.data(), head.size());
    if (!tail.empty()) std::memcpy(text + head.size(), tail.data(), tail.size());
    free_ += size;
    left_ -= size;
    return {text, size};
  }

  // Gives the text of the last keep back.
  void undo(std::string_view last) {
    free_ -= last.size();
    left_ += last.size();
  }

 private:
  static constexpr size_t block_size = 256 * 1024;

  std::vector<std::unique_ptr<char[]>> blocks_;
  char* free_ = nullptr;
  size_t left_ = 0;
};

text_store manifest_text;

// --- the text, walked in place ------------------------------------------------------------------

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

bool is_line_end(char c) {
  return c == '\n' || c == '\r' || c == '\0';
}

struct text_walk {
  const char* at;
  const char* end;

  void skip_blanks() {
    while (at != end && is_blank(*at))
      ++at;
  }

  // The bytes up to the next blank or line end; empty when the line has no more.
  std::string_view token() {
    skip_blanks();
    const char* const start = at;
    while (at != end && !is_blank(*at) && !is_line_end(*at))
      ++at;
    return {start, static_cast<size_t>(at - start)};
  }

  // The rest of the line, blanks within and behind it included. Leaves the walk at the first
  // character of the next line that has any.
  std::string_view rest_of_line() {
    skip_blanks();
    const char* const start = at;
    while (at != end && !is_line_end(*at))
      ++at;
    const std::string_view rest(start, static_cast<size_t>(at - start));
    while (at != end && (is_line_end(*at) || is_blank(*at)))
      ++at;
    return rest;
  }

  // Steps over `word` if a blank follows it, so that "FILES" is not taken for "FILE".
  bool keyword(std::string_view word) {
    if (static_cast<size_t>(end - at) <= word.size()) return false;
    if (std::memcmp(at, word.data(), word.size()) != 0 || !is_blank(at[word.size()])) return false;
    at += word.size();
    return true;
  }
};

// --- from lines to histories --------------------------------------------------------------------

struct manifest_reader {
  std::string_view folder;               // of the last "DIR" line; looks into the file
  int32_t disk = 0;                      // of the last "DISK" line
  std::vector<file_version_struct> run;  // the history that is being gathered
  size_t records = 0;
  int left_out = 0;
};

// A history gets its vector in one piece, of the exact size, once its last line is known.
void close_run(manifest_reader& reader) {
  if (reader.run.empty()) return;
  sim_info.emplace_back().versions.assign(reader.run.begin(), reader.run.end());
  reader.run.clear();
}

void warn_left_out(manifest_reader& reader, std::string_view folder, std::string_view name) {
  ++reader.left_out;
  if (reader.left_out > warnings_logged) return;
  xer << "WARNING: the directory lists a file that cannot be installed below the destination: "
      << folder.substr(0, path_limit) << name.substr(0, path_limit) << '\n';
  if (reader.left_out == warnings_logged)
    xer << "WARNING: further files of that kind are left out without a line here.\n";
}

bool is_withdrawn(std::string_view path) {
  for (const std::string_view old_set : withdrawn)
    if (str_holds(path, old_set)) return true;
  return false;
}

// Whether folder and name make up the path of the line before, without joining them.
bool continues_run(const manifest_reader& reader, std::string_view name) {
  if (reader.run.empty()) return false;
  const std::string_view path = reader.run.back().path;
  return path.size() == reader.folder.size() + name.size() && path.starts_with(reader.folder) &&
         path.ends_with(name);
}

// Gives `record` its path and what follows from it, and begins a new history. Returns false when
// the file has no place in the table.
bool begin_run(manifest_reader& reader, std::string_view name, file_version_struct& record) {
  if (reader.folder.size() + name.size() > path_limit) {
    warn_left_out(reader, reader.folder, name);
    return false;
  }
  record.path = manifest_text.keep(reader.folder, name);
  if (is_withdrawn(record.path)) {
    manifest_text.undo(record.path);
    return false;
  }
  if (!record.path.empty() && path_has_no_file(record.path)) {
    __MACIBM_alert(mnw.win_id,
                   "I am reading the directory text file and found a path that has no file!",
                   "This is impossible to download or delete!", "It is:", std::string(record.path),
                   t_exit, at_manifest_names_folder);
  }
  if (!manifest_path_is_safe(record.path)) {
    warn_left_out(reader, reader.folder, name);
    manifest_text.undo(record.path);
    return false;
  }
  record.is_global = is_global_scenery_f(record.path);
  if (!find_sector(record.lon_index, record.lat_index, record.path)) record.is_global = 0;
  close_run(reader);
  return true;
}

bool is_signature(std::string_view text) {
  if (text == sig_gone) return true;
  return text.size() == 32 &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c); });
}

// Behind the keyword of a "FILE" line. A line that breaks off leaves 0 and empty text in the fields
// that it lacks; without a signature it is left out.
void read_file_line(manifest_reader& reader, text_walk& walk) {
  file_version_struct record;
  walk.token();  // reserved
  record.os = str_to_int(walk.token());
  if (record.os < 0) record.os = 0;
  if (record.os > 6) record.os = 6;
  record.version = str_to_int(walk.token());
  record.zip_kb = static_cast<float>(str_to_int(walk.token()));
  record.raw_kb = static_cast<float>(str_to_int(walk.token()));
  const std::string_view signature = walk.token();
  const std::string_view name = walk.rest_of_line();
  record.disk = reader.disk;
  if (!is_signature(signature) && !path_has_no_file(name)) {
    warn_left_out(reader, reader.folder, name);
    return;
  }

  if (continues_run(reader, name)) {
    const file_version_struct& earlier = reader.run.back();
    record.path = earlier.path;
    record.is_global = earlier.is_global;
    record.lat_index = earlier.lat_index;
    record.lon_index = earlier.lon_index;
  } else if (!begin_run(reader, name, record)) {
    return;
  }
  record.sig_want = manifest_text.keep(signature, {});
  reader.run.push_back(record);
  ++reader.records;
}

void read_body(text_walk walk, const std::string& path) {
  manifest_reader reader;
  while (walk.at != walk.end) {
    walk.skip_blanks();
    if (walk.keyword("DIR")) {
      reader.folder = walk.rest_of_line();
    } else if (walk.keyword("DISK")) {
      reader.disk = std::clamp(str_to_int(walk.token()), 0, most_discs);
      walk.rest_of_line();
    } else if (walk.keyword("FILE")) {
      read_file_line(reader, walk);
    } else {
      walk.rest_of_line();
    }
    if (reader.records > most_records) {
      __MACIBM_alert(mnw.win_id, "This directory file lists more files than any release holds!",
                     "It is damaged, or it is not one of ours.", "The file is:", path, t_exit,
                     at_manifest_too_long);
    }
  }
  close_run(reader);
}

// What the pages may offer: by current versions, for those alone are ever installed.
void note_offer() {
  for (int& cell : stg.sector_available)
    cell = 0;
  stg.has_global_files = 0;
  stg.has_sim_files = 0;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    if (current.is_global) {
      stg.sector_available[sector_cell(current.lon_index, current.lat_index)] = 1;
      stg.has_global_files = 1;
    } else {
      stg.has_sim_files = 1;
    }
  }
}

}  // namespace

int read_directory(const std::string& path, std::string) {
  deleted_files.clear();
  stg.todo_zip_kb = 0;
  stg.todo_raw_kb = 0;
  stg.todo_install_count = 0;
  stg.todo_delete_count = 0;
  sim_info.clear();  // before the text that it looks into
  manifest_text.clear();

  xmap_class map(path);
  if (map.file_start == nullptr || map.cursor == map.file_end) {
    __MACIBM_alert(mnw.win_id, "I tried to read a directory file that does not exist!", "",
                   "The file is:", path, t_exit, at_manifest_missing);
    return 2;
  }
  if (map.check_file(ouf_text, format_versions, "INSTALLER", nullptr) == 0) {
    new_format(path);
    return 2;
  }

  const text_walk body{reinterpret_cast<const char*>(map.cursor),
                       reinterpret_cast<const char*>(map.file_end)};
  const size_t expected = static_cast<size_t>(body.end - body.at) / usual_history;
  sim_info.reserve(expected < most_records ? expected : most_records);
  read_body(body, path);
  note_offer();
  return 3;
}

int is_global_scenery_f(std::string_view path) {
  constexpr std::string_view suffix = ".dsf";
  if (path.size() <= suffix.size()) return 0;
  const std::string_view tail = path.substr(path.size() - suffix.size());
  for (size_t i = 0; i < suffix.size(); ++i) {
    const char c = tail[i];
    if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != suffix[i]) return 0;
  }
  return str_holds(path, "Global Scenery/") || str_holds(path, "/-global overlays-/") ||
         str_holds(path, "/-global terrain-/") || str_holds(path, "/default scenery/DSF 820");
}

int find_sector(int32_t& lon_index, int32_t& lat_index, std::string_view path) {
  if (path.ends_with('/')) path.remove_suffix(1);
  const std::string_view name = path_leaf(path);
  const int lat = str_to_int(name.substr(0, 3));
  const int lon = name.size() > 3 ? str_to_int(name.substr(3, 4)) : 0;
  // Truncating, not rounding down: a corner just outside the first row or column still falls in it.
  const int lat_at = (lat + 90) / 10;
  const int lon_at = (lon + 180) / 10;
  if (lat_at < 0 || lat_at >= sector_rows || lon_at < 0 || lon_at >= sector_columns) return 0;
  lat_index = lat_at;
  lon_index = lon_at;
  return 1;
}

const char* suffix_for_file(int index) {
  return str_holds(sim_info[index].current().path, "Global Scenery") ? ".7z" : ".zip";
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

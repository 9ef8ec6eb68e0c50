// The server list and the manifest's download, a step a call: the list, the manifest's archive, its
// unpacking, its reading.
//
// Main thread. Writes server_name, server_path, server_desc, install_name, and of stg the fields
// server_count and server_index.

#include "Installer-f/engine/utils_servers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_math.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "corekit/net/http.h"
#include "corekit/window/hl_alert.h"

std::string server_name[server_limit + 1];
std::string server_path[server_limit + 1];
std::string server_desc[server_limit + 1];

namespace {

constexpr int list_slot = 0;
constexpr float list_pause = 2.0f;  // frame clock: from a list that leads nowhere to the next try
constexpr int64_t list_budget = 1'000'000;  // bytes
constexpr int manifest_slot = 1;
// Bytes of the packed manifest: some 1.2 million lines, five times what a table of every release so
// far could hold.
constexpr int64_t manifest_budget = 64'000'000;
constexpr int list_version = 820;

// --- list ----------------------------------------------------------------------------------------

// Steps over `word` if the cursor stands on it and a delimiter or the end of the file follows.
bool take_keyword(xmap_class& map, std::string_view word) {
  const std::string_view rest(reinterpret_cast<const char*>(map.cursor),
                              static_cast<size_t>(map.file_end - map.cursor));
  if (!rest.starts_with(word)) return false;
  constexpr std::string_view delimiters(" \t\r\n\0", 5);
  if (rest.size() > word.size() && delimiters.find(rest[word.size()]) == rest.npos) return false;
  map.cursor += word.size();
  return true;
}

void skip_blanks(xmap_class& map) {
  while (map.cursor < map.file_end && (*map.cursor == ' ' || *map.cursor == '\t'))
    ++map.cursor;
}

// Never holds a CR or LF, so nothing of it can end a line of a request.
std::string rest_of_line(xmap_class& map) {
  std::string text;
  map.TXT_str_scan_eoln(&text);
  return text;
}

// A list is written by hand, and net_check ends the program over a slash in the wrong place.
void tidy_mirror(std::string& name, std::string& path) {
  while (!name.empty() && (name.back() == '/' || name.back() == ' ' || name.back() == '\t')) {
    name.pop_back();
  }
  if (path.empty() || path.front() != '/') path.insert(path.begin(), '/');
}

void read_mirror(xmap_class& map) {
  const int at = stg.server_count;
  server_name[at] = rest_of_line(map);
  server_path[at] = rest_of_line(map) + install_name + "/";
  server_desc[at] = rest_of_line(map);
  tidy_mirror(server_name[at], server_path[at]);
  stg.server_count = std::min(stg.server_count + 1, server_limit);
}

float list_not_before = 0;  // frame clock

// Who wants the test release while there is none has to say so: nothing is fetched in its place
// that was not asked for. Told once a run.
void tell_no_beta() {
  static bool told = false;
  if (told) return;
  told = true;
  __MACIBM_alert(0, "There is no beta of Skyvane 9 at the moment.",
                 "Go back to the first page, choose options and uncheck the beta option.", "", "",
                 t_alert, "Installer-f/utils", 1188);
}

// As if the list had not come: it leads nowhere, and is fetched again, though not at once.
void drop_list() {
  stg.server_count = -1;
  list_not_before = xtim.now_sec + list_pause;
}

void fetch_list() {
  if (xtim.now_sec < list_not_before) return;
  const std::string list = temp_path + "serverlist9.txt";
  if (http.net_check(list_slot, product_web_host, "/serverlist9.txt", list, list_budget) !=
      http_done)
    return;
  switch (read_server_list(list)) {
    case list_refused:
      new_format(list);
      return;
    case list_lacks_beta:
      tell_no_beta();
      drop_list();
      return;
    default:
      break;
  }
  if (stg.server_count == 0) {  // no mirror to go to
    drop_list();
    return;
  }
  draw_server();
  http.drop(manifest_slot);  // whatever runs there came from the list before
}

// --- manifest ------------------------------------------------------------------------------------

// A whole number from 0 to count - 1, each as likely.
int uniform_server(int count) {
  if (count < 1) {
    MACIBM_fault("GenH/hl_math", 61, "int rand range negative!",
                 str_format("lo=%1.0f hi=%1.0f", 0.0, count - 1.0));
    return 0;
  }
  return std::rand() % count;
}

void fetch_manifest() {
  const std::string zip = temp_path + "directory.txt.zip";
  const int server = std::clamp(stg.server_index, 0, stg.server_count - 1);
  switch (http.net_check(manifest_slot, server_name[server],
                         server_path[server] + "directory.txt.zip", zip, manifest_budget)) {
    case http_failed:
      stg.server_index = uniform_server(stg.server_count);
      return;
    case http_done:
      break;
    default:
      return;
  }
  const int code = place_manifest(zip).code;
  if (code == 0) {
    set_directory_state(manifest_unpacked);
  } else {
    __MACIBM_alert(0, "The installer cannot extract a file.",
                   UTL_translate_string("Error: ") + UTL_translate_string(error_str(code)),
                   UTL_translate_string("Compressed File/") + zip,
                   UTL_translate_string("Destination Path/") + temp_path, t_alert,
                   "Installer-f/utils", 1203);
  }
  delete_file(zip);
}

}  // namespace

int read_server_list(const std::string& path) {
  constexpr int versions[] = {list_version, 0};
  xmap_class map(path);
  if (map.file_start == nullptr || map.check_file(ouf_text, versions, "SERVERS", nullptr) == 0) {
    return list_refused;
  }
  stg.server_count = 0;
  std::string beta, release;
  while (map.cursor < map.file_end) {
    skip_blanks(map);
    if (take_keyword(map, "BETA")) {
      beta = rest_of_line(map);
      if (stg.beta_flag != 0) install_name = beta;
    } else if (take_keyword(map, "FINAL")) {
      release = rest_of_line(map);
      if (stg.beta_flag == 0) install_name = release;
    } else if (take_keyword(map, "SERVER")) {
      read_mirror(map);
    } else if (take_keyword(map, "ENDOFLIST")) {
      break;
    } else {
      map.TXT_str_scan_eoln(nullptr);
    }
  }
  return stg.beta_flag != 0 && beta.empty() && !release.empty() ? list_lacks_beta : list_read;
}

int biased_server(float fraction, int count) {
  const int drawn = static_cast<int>(static_cast<float>(count) * std::pow(fraction, 1.5f));
  return std::clamp(drawn, 0, std::max(count - 1, 0));
}

void draw_server() {
  stg.server_index = biased_server(rand_fraction(), stg.server_count);
}

void UTL_download_directory() {
  if (stg.server_count < 1) {
    fetch_list();
  } else if (stg.directory_state == manifest_none) {
    fetch_manifest();
  } else if (stg.directory_state == manifest_unpacked) {
    set_directory_state(
        read_directory(temp_path + "directory.txt",
                       UTL_translate_string("Scanning directory text file to see if you already "
                                            "have the latest version...")));
  }
}

// The server list as a file: what it says goes into the arrays and install_name.
//
// A list comes over a line that nobody vouches for. What is not of our making is told from what is
// too new, and an entry that no server can have is left out.
//
// Main thread. Writes server_name, server_path, server_desc, install_name and stg.server_count;
// draw_server also stg.server_index.

#include "Installer-f/engine/utils_servers_list.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "Installer-f/engine/utils_trust.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_math.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

std::string server_name[server_limit + 1];
std::string server_path[server_limit + 1];
std::string server_desc[server_limit + 1];

namespace {

constexpr int list_version = 820;
constexpr char list_keyword[] = "SERVERS";

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

bool has_control(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
}

// A host as the name service knows it, or a number. Empty is what a list gives that has the name on
// another line: a mirror that never answers.
bool is_host_name(std::string_view name) {
  constexpr size_t longest = 253;  // RFC 1035
  return name.size() <= longest && std::all_of(name.begin(), name.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '.' || c == '-' || c == '_';
         });
}

void leave_out(const char* what, const std::string& text) {
  constexpr size_t most_shown = 100;
  xer << "WARNING: leaving out " << what
      << " of the server list: " << str_printable(std::string_view(text).substr(0, most_shown))
      << "\n";
}

void read_mirror(xmap_class& map) {
  constexpr size_t longest_path = 1000;
  constexpr size_t longest_description = 500;
  std::string name = rest_of_line(map);
  std::string path = rest_of_line(map);
  std::string description = rest_of_line(map);
  tidy_mirror(name, path);
  if (!is_host_name(name) || path.size() > longest_path || has_control(path)) {
    leave_out("a mirror", name + path);
    return;
  }
  const int at = stg.server_count;
  server_name[at] = name;
  server_path[at] = path + install_name + "/";
  server_desc[at] = str_printable(description.substr(0, longest_description));
  stg.server_count = std::min(stg.server_count + 1, server_limit);
}

std::string read_release(xmap_class& map) {
  std::string name = rest_of_line(map);
  if (name.empty() || release_is_plain(name)) return name;
  leave_out("a release", name);
  return "";
}

// What the file is by its header: list_read, list_refused for a version that is none of ours, or
// list_foreign.
int read_header(xmap_class& map) {
  constexpr int our_versions[] = {list_version, 0};
  if (map.file_start == nullptr || map.file_end - map.file_start > server_list_budget) {
    return list_foreign;
  }
  switch (map.check_maker(our_versions, list_keyword)) {
    case header_ours:
      return list_read;
    case header_other_version:
      return list_refused;
    default:
      return list_foreign;
  }
}

sign_verdict verdict = sign_good;

// Only what is signed is read, and nothing before its signature has been found good.
bool take_signed_part(xmap_class& map) {
  verdict = sign_good;
  if (!trust_is_on()) return true;
  const auto* const text = reinterpret_cast<const char*>(map.file_start);
  const std::string_view list(text, static_cast<size_t>(map.file_end - map.file_start));
  sign_statement statement;
  verdict = sign_accept_list(list, statement);
  if (verdict != sign_good) return false;
  sign_tell_expired(statement, 0);
  const ptrdiff_t at = map.cursor - map.file_start;
  map.look_at(text + at, text + sign_list_body(list).size());
  return true;
}

}  // namespace

sign_verdict list_verdict() {
  return verdict;
}

bool release_is_plain(std::string_view name) {
  constexpr size_t longest = 255;
  return !name.empty() && name.size() <= longest && name != "." && name != ".." &&
         name.find_first_of("/\\:") == name.npos && !has_control(name);
}

int read_server_list(const std::string& path) {
  xmap_class map(path);
  if (const int kind = read_header(map); kind != list_read) return kind;
  if (!take_signed_part(map)) return list_untrusted;
  stg.server_count = 0;
  std::string beta, release;
  while (map.cursor < map.file_end) {
    skip_blanks(map);
    if (take_keyword(map, "BETA")) {
      beta = read_release(map);
      if (stg.beta_flag != 0 && !beta.empty()) install_name = beta;
    } else if (take_keyword(map, "FINAL")) {
      release = read_release(map);
      if (stg.beta_flag == 0 && !release.empty()) install_name = release;
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

int uniform_server(int count) {
  if (count < 1) {
    MACIBM_fault(at_random_range, "int rand range negative!",
                 str_format("lo=%1.0f hi=%1.0f", 0.0, count - 1.0));
    return 0;
  }
  return std::rand() % count;
}

void draw_server() {
  stg.server_index = biased_server(rand_fraction(), stg.server_count);
}

// Main thread. Writes the file.

#include "Installer-f/engine/utils_copies.h"

#include <algorithm>

#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/files/io_own.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

namespace {

constexpr int version = 900;
constexpr char keyword[] = "COPIES";
constexpr const char* platforms[] = {"", "mac", "windows", "linux"};

// Empty when the system has no preferences folder.
std::string facts_path() {
  std::string path;
  if (get_OS_abs_path(os_dir_prefs, path) != 0 || path.empty()) return "";
  return path + "skyvane_copies.txt";
}

std::vector<copy_facts> read_facts(const std::string& path) {
  constexpr int versions[] = {version, 0};
  std::vector<copy_facts> facts;
  xmap_class map(path);
  if (!map.file_start || !map.check_file(ouf_text, versions, keyword, nullptr)) return facts;
  std::string tag, value;
  while (map.cursor < map.file_end) {
    map.TXT_str_scan_space(&tag);
    map.TXT_str_scan_eoln(&value);
    if (tag == "COPY") {
      facts.push_back({value, "", "", ""});
    } else if (facts.empty()) {
      continue;
    } else if (tag == "RELEASE") {
      facts.back().release = value;
    } else if (tag == "PLATFORM") {
      facts.back().platform = value;
    } else if (tag == "EDITION") {
      facts.back().edition = value;
    }
  }
  return facts;
}

void write_facts(const std::string& path, const std::vector<copy_facts>& facts) {
  std::string text = "I\n" + std::to_string(version) + " version\n" + keyword + "\n\n";
  for (const copy_facts& copy : facts) {
    text += "COPY " + copy.path + "\n";
    if (!copy.release.empty()) text += "RELEASE " + copy.release + "\n";
    if (!copy.platform.empty()) text += "PLATFORM " + copy.platform + "\n";
    if (!copy.edition.empty()) text += "EDITION " + copy.edition + "\n";
  }
  if (!io_own_replace(path, text)) xer << "WARNING: could not write " << path << '\n';
}

// A path that is not one line, or that a reader would trim, would be read back as another.
bool can_be_kept(const std::string& path) {
  return path.starts_with('/') && path.ends_with('/') && path.find_first_of("\n\r") == path.npos;
}

}  // namespace

std::vector<copy_facts> copies_on_list() {
  locate_all_skyvanes();
  const std::string path = facts_path();
  std::vector<copy_facts> known;
  if (!path.empty()) known = read_facts(path);
  std::sort(known.begin(), known.end(),
            [](const copy_facts& a, const copy_facts& b) { return a.path < b.path; });
  std::vector<copy_facts> listed;
  for (const std::string& copy : all_skyroots) {
    const auto found = std::lower_bound(
        known.begin(), known.end(), copy,
        [](const copy_facts& facts, const std::string& wanted) { return facts.path < wanted; });
    const bool is_known = found != known.end() && found->path == copy;
    listed.push_back(is_known ? *found : copy_facts{copy, "", "", ""});
  }
  return listed;
}

void copy_note_release(const char* edition) {
  const std::string path = facts_path();
  if (path.empty() || !can_be_kept(dest_dir_path)) return;
  const io_own_turn turn(path);
  std::vector<copy_facts> facts = read_facts(path);
  auto copy = std::find_if(facts.begin(), facts.end(),
                           [](const copy_facts& known) { return known.path == dest_dir_path; });
  if (copy == facts.end()) copy = facts.insert(facts.end(), {dest_dir_path, "", "", ""});
  copy->release = install_name;
  copy->platform = platforms[stg.target_os];
  if (*edition) copy->edition = edition;
  write_facts(path, facts);
}

void copy_forget(const std::string& path) {
  const std::string file = facts_path();
  if (file.empty()) return;
  const io_own_turn turn(file);
  std::vector<copy_facts> facts = read_facts(file);
  const size_t removed =
      std::erase_if(facts, [&](const copy_facts& known) { return known.path == path; });
  if (removed > 0) write_facts(file, facts);
}

// The faults of a build. Main thread; the list is this file's own.

#include "Installer-f/builder/make_installer_fault.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "Installer-f/builder/make_installer_say.h"
#include "corekit/base/hl_string.h"

namespace {

constexpr int most_told = 50;

struct fault_rule {
  const char* name;    // in a count
  const char* rule;    // why it is one; "%s" is the detail
  const char* remedy;  // what to do about it
};

// In the order of fault_kind.
constexpr fault_rule rules[] = {
    {"blank at the end of a name", "other platforms cannot have a name that ends in a blank",
     "Rename it"},
    {"\":\" or \"\\\" in a name", "these characters part folders on other platforms", "Rename it"},
    {"line end in a name", "it would make two lines of the manifest out of one", "Rename it"},
    {"blank before a name", "whoever reads the manifest skips the blanks before a file's name",
     "Rename it"},
    {"path too long", "a path may have 499 characters, and %s has more", "Shorten it"},

    {"copy", "nothing with \"copy\" in its path ships, as it may be a leftover",
     "Rename it, or take it out of the tree"},
    {"source code", "source code never ships, nor what is named like it",
     "Rename it, or take it out of the tree"},
    {"preferences", "a user's preferences never ship", "Take it out of the tree"},
    {"file of a sibling product", "this file belongs to another product and never ships",
     "Take it out of the tree"},

    {"file in All/", "All/ holds folders only", "Move the file into one of its folders"},
    {"foreign folder in All/",
     "All/ may hold Aircraft, Airfoils, Custom Scenery, Global Scenery, install_pfc Aircraft, "
     "Instructions, Output, Resources and Weapons, and nothing else",
     "Move it into one of these, or take it out of the tree"},
    {"neither of All/ nor of a platform",
     "what ships lies in All/, Macintosh/, Windows/ or Linux/ at the root of the tree",
     "Move it into one of these, or take it out of the tree"},
    {"place missing", "the tree must have this %s, spelled so", "Put it there"},
    {"nothing of the type", "%s", "Put the files there, or build another --type"},

    {"program that cannot be patched",
     "every .exe in Windows/ is made large-address-aware, and this one cannot be: %s",
     "Replace it, make it writable, or take it out of the tree"},
    {"link too long", "a link may say at most 498 characters",
     "Let it lead there by a shorter way"},
    {"file too large", "a zip archive holds less than 4 GB",
     "Put an archive made by hand beside it, named like it with .7z behind"},
    {"archive without a place", "its archive would lie where the folder %s is to lie",
     "Rename one of the two"},
    {"archive on another volume", "it is taken into the master by a hard link%s",
     "Build to an --output on the volume of the tree"},
    {"folder that cannot be read", "nothing of it would ship: %s", "Make it readable"},
    {"too many discs", "%s", "Raise --disk_kb"},

    {"previous manifest", "%s",
     "Give the manifest of the release before, as directory.txt or directory.txt.zip, by "
     "--previous=FILE; a first release says --previous=none"},
    {"file twice in the previous manifest", "the builder never lists a file in two places",
     "Give the manifest as the builder wrote it"},
    {"release built before", "the previous manifest holds release %s already",
     "Give this build a number of its own, above all earlier ones, by --release=N"},
    {"output folder", "%s", "Remove it, or build to another --output"},

    {"failure", "%s", "Mend the cause and build again"},
    {"stop", "a key ended the build", "Build again"},
};
static_assert(std::size(rules) == fault_kinds);

struct fault {
  fault_kind kind;
  std::string said;   // one line or two
  std::string plain;  // one line
};

std::vector<fault> faults;
std::set<std::pair<int, std::string>> known;  // kind and place

// A name with a line end in it must not look like two.
std::string in_one_line(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c == '\n' || c == '\r'; }, '?');
  return text;
}

// As a plain alert shows its four lines.
std::string join(const std::vector<std::string>& said) {
  std::string text;
  for (size_t i = 0; i < said.size(); ++i) {
    if (said[i].empty()) continue;
    if (!text.empty()) text += i % 2 == 0 ? '\n' : ' ';
    text += in_one_line(builder_text(said[i]));
  }
  return text;
}

// How many faults of each kind may be told, so that some of every kind are: the greatest number
// with which all told are not more than most_told.
int share_of_a_kind(const int (&count)[fault_kinds]) {
  for (int share = 1;; ++share) {
    int told = 0, left = 0;
    for (const int one : count) {
      told += std::min(one, share + 1);
      left += one > share ? 1 : 0;
    }
    if (left == 0 || told > most_told) return share;
  }
}

void tell_counts(const int (&count)[fault_kinds], int told) {
  std::string line = str_format("%zu %s", faults.size(), faults.size() == 1 ? "fault" : "faults");
  if (told < static_cast<int>(faults.size()))
    line += str_format(", of which %d are shown; the log has all of them", told);
  const char* before = ": ";
  for (int kind = 0; kind < fault_kinds; ++kind) {
    if (count[kind] == 0) continue;
    line += str_format("%s%s %d", before, rules[kind].name, count[kind]);
    before = ", ";
  }
  builder_notice(line + ".");
}

}  // namespace

void add_fault(fault_kind kind, const std::vector<std::string>& said, const std::string& place,
               const std::string& detail) {
  if (!known.emplace(kind, place).second) return;
  const fault_rule& rule = rules[kind];
  std::string plain = place + ": " + str_fill(rule.rule, {detail}) + ". " + rule.remedy + ".";
  faults.push_back({kind, join(said), in_one_line(std::move(plain))});
}

int fault_count() {
  return static_cast<int>(faults.size());
}

void tell_faults() {
  int count[fault_kinds] = {}, seen[fault_kinds] = {};
  for (const fault& one : faults)
    ++count[one.kind];
  const int share = share_of_a_kind(count);
  int told = 0;
  for (const fault& one : faults) {
    const bool shown = ++seen[one.kind] <= share;
    told += shown ? 1 : 0;
    (shown ? builder_notice : builder_log)(one.said);
    (shown ? builder_notice : builder_log)("  " + one.plain);
  }
  tell_counts(count, told);
}

void clear_faults() {
  faults.clear();
  known.clear();
}

// The translation table: its entries, and looking up. The file of them is read in the floor above
// (corekit/files/UTL_translate_load.cpp).
//
// Main thread only. Writes the table below, and the log.

#include "corekit/base/UTL_translate.h"

#include <unordered_map>
#include <unordered_set>

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/xer.h"

namespace {

constexpr char splitter[] = "====";
constexpr size_t splitter_length = 4;

std::unordered_map<std::string, std::string> dictionary;  // English to the other language
std::unordered_map<std::string, std::string> indented;    // the same, keys without leading blanks
std::unordered_set<std::string> logged;                   // missing texts already in the log
bool has_translation = false;                             // a file was read to its end
bool log_missing = false;

}  // namespace

void UTL_translate_add(const std::string& line) {
  const size_t split = line.find(splitter);
  if (split == std::string::npos) {
    xer << "ERROR: language file line " << line << " missing ==== splitter.\n";
    return;
  }
  // A translation of a single character counts as missing too: kept as it is on purpose.
  if (split + splitter_length + 1 >= line.size()) {
    xer << "ERROR: language file line " << line << " missing right side translation.\n";
    return;
  }
  std::string key = line.substr(0, split);
  std::string translation = line.substr(split + splitter_length);
  STR_unescape(key);
  STR_unescape(translation);
  const auto [entry, entered] = dictionary.try_emplace(key, translation);
  if (entered) {
    const size_t first = key.find_first_not_of(" \t");
    if (first != 0 && first != std::string::npos)
      indented.try_emplace(key.substr(first), translation);
  } else {
    xer << "ERROR: language line " << line << " is a second translation of " << key
        << "====" << entry->second << '\n';
  }
}

void UTL_translate_use(bool is_whole) {
  has_translation = true;
  log_missing = is_whole && cmdline.has_option("--missing_strings");
}

std::string UTL_translate_string(const std::string& text) {
  if (!has_translation) return text;
  if (const auto found = dictionary.find(text); found != dictionary.end()) return found->second;
  // Lines whose texts are lined up with blanks are entries for the texts without them.
  if (const auto found = indented.find(text); found != indented.end()) return found->second;
  if (log_missing && logged.insert(text).second) {
    std::string written = text;
    STR_replace_all(written, "\r", "\\r");
    STR_replace_all(written, "\n", "\\n");
    xer << "STRING " << written << splitter << written << '\n';
  }
  return text;
}

void UTL_translate_clear() {
  dictionary.clear();
  indented.clear();
  logged.clear();
  has_translation = false;
  log_missing = false;
}

void STR_unescape(std::string& text) {
  STR_replace_all(text, "\\r", "\r");
  STR_replace_all(text, "\\n", "\n");
}

void STR_replace_all(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  const size_t step = to.find(from) == std::string::npos ? 0 : to.size();
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + step))
    text.replace(at, from.size(), to);
}

// The language files that ship, against the texts of the program as script/texts lists them.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <span>

#include "corekit/base/UTL_translate.h"
#include "corekit/draw/oglp.h"
#include "corekit/files/UTL_translate_load.h"
#include "tests/unit/test_runtime_util.h"

namespace {

constexpr char root[] = TESTS_FOLDER "/..";
// English has what differs from the keys, and the builder's texts, which no other language has.
constexpr const char* all_languages[] = {"french",  "german",    "italian",
                                         "spanish", "portugese", "english"};

std::string file_of(const std::string& language) {
  return std::string(root) + "/Resources/text/" + language + "/Installer2.txt";
}

const std::vector<std::string>& program_texts() {
  static std::vector<std::string> lines;
  if (!lines.empty()) return lines;
  std::FILE* const pipe = popen(("'" + std::string(root) + "/script/texts'").c_str(), "r");
  char line[4096];
  while (pipe && std::fgets(line, sizeof line, pipe))
    lines.emplace_back(line, std::strlen(line) - 1);
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_GT(lines.size(), 300u);
  return lines;
}

struct entry {
  std::string key, translation;  // as written, with \n and \r in two characters
};

// Reads a language file in other words than the program does.
std::vector<entry> entries_of(const std::string& language) {
  const std::string content = content_of(file_of(language));
  EXPECT_EQ(content.rfind("I\n900 version\nTRANSLATION\n", 0), 0u) << language;
  std::vector<entry> entries;
  for (size_t at = 0, end; (end = content.find('\n', at)) != std::string::npos; at = end + 1) {
    const std::string line = content.substr(at, end - at);
    if (line.rfind("STRING ", 0) != 0) continue;
    const size_t split = line.find("====");
    if (split == std::string::npos) {
      ADD_FAILURE() << language << ": " << line;
      continue;
    }
    entries.push_back({line.substr(7, split - 7), line.substr(split + 4)});
  }
  return entries;
}

// The places of a format, such as "%s%d%s".
std::string places_of(const std::string& text) {
  std::string places;
  for (size_t at = 0; (at = text.find('%', at)) != std::string::npos; ++at) {
    const char kind = at + 1 < text.size() ? text[at + 1] : ' ';
    if (kind == 's' || kind == 'd') places += std::string("%") + kind;
  }
  return places;
}

// What joins a text to its neighbours: its blanks and line breaks at the left, and at the right.
std::string edge_of(const std::string& text, bool right) {
  std::string plain = text;
  STR_unescape(plain);
  const size_t first = plain.find_first_not_of(" \n\r"), last = plain.find_last_not_of(" \n\r");
  return first == std::string::npos ? plain
         : right                    ? plain.substr(last + 1)
                                    : plain.substr(0, first);
}

// The signs of a widget's label: "-" at its front keeps it in one line, "|" parts left from right.
std::string label_marks(const std::string& text) {
  const std::string front = text.find_first_of("-|") == 0 ? text.substr(0, 1) : "";
  return front + std::to_string(std::count(text.begin(), text.end(), '|'));
}

// The first byte that the font has no cell for; 0 if there is none.
int unshowable_in(const std::string& text) {
  std::string plain = text;
  STR_unescape(plain);
  for (const char c : plain) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte != '\n' && byte != '\r' && OGL_char_width(byte) == 0) return byte;
  }
  return 0;
}

}  // namespace

TEST(TranslationFiles, EveryTextHasAnEntryAndEveryEntryAText) {
  const std::set<std::string> texts(program_texts().begin(), program_texts().end());
  for (const char* language : std::span(all_languages).first(5)) {
    std::map<std::string, int> keys;
    for (const entry& e : entries_of(language))
      ++keys[e.key];
    for (const std::string& text : texts)
      EXPECT_TRUE(keys.count(text)) << language << " lacks: " << text;
    for (const auto& [key, count] : keys) {
      EXPECT_TRUE(texts.count(key)) << language << " translates what nobody says: " << key;
      EXPECT_EQ(count, 1) << language << " translates twice: " << key;
    }
  }
}

TEST(TranslationFiles, EnglishPutsRightWhatSomebodySays) {
  std::string said;
  for (const std::string& text : program_texts())
    said += text + "\n";
  for (const auto& file :
       std::filesystem::directory_iterator(std::string(root) + "/Installer-f/builder"))
    said += content_of(file.path());
  // The parts of a literal, joined as the compiler joins them.
  for (size_t at = 0, next; (at = said.find('"', at)) != std::string::npos;
       at = at < next ? at : at + 1) {
    next = said.find_first_not_of(" \n", at + 1);
    if (next != std::string::npos && said[next] == '"' && said[at + 1] == '\n')
      said.erase(at, next - at + 1);
    else
      next = at;
  }
  for (const entry& e : entries_of("english")) {
    EXPECT_TRUE(str_holds(said, e.key)) << "nobody says: " << e.key;
    EXPECT_NE(e.key, e.translation);
  }
}

TEST(TranslationFiles, KeepTheFormOfTheEnglish) {
  for (const char* language : all_languages) {
    for (const auto& [key, translation] : entries_of(language)) {
      const std::string label = std::string(language) + ": " + key;
      EXPECT_EQ(places_of(translation), places_of(key)) << label;
      EXPECT_EQ(edge_of(translation, false), edge_of(key, false)) << label;
      EXPECT_EQ(edge_of(translation, true), edge_of(key, true)) << label;
      EXPECT_EQ(label_marks(translation), label_marks(key)) << label;
      const bool is_list = key.find(' ') == std::string::npos && key.find('-') != std::string::npos;
      if (is_list) {
        EXPECT_EQ(std::count(translation.begin(), translation.end(), '-'),
                  std::count(key.begin(), key.end(), '-'))
            << label;
      }
      EXPECT_EQ(unshowable_in(translation), 0) << label;
    }
  }
}

TEST(TranslationFiles, AreReadWithoutComplaint) {
  log_capture log;
  for (const char* language : all_languages) {
    UTL_translate_load(file_of(language));
    for (entry e : entries_of(language)) {
      STR_unescape(e.key);
      STR_unescape(e.translation);
      EXPECT_EQ(UTL_translate_string(e.key), e.translation) << language;
    }
  }
  UTL_translate_clear();
  EXPECT_EQ(log.text(), "");
}

// Labels that stand in a place of a fixed size: a button's face less its rims, a row of the step
// list, the space that the Options dialog leaves.
TEST(TranslationFiles, FitTheirPlaces) {
  constexpr int rims = 6;
  const std::pair<int, std::vector<const char*>> places[] = {
      {68 - rims, {"Up", "Home", "Desktop", "Root"}},
      {70 - rims, {"Create", "Discard"}},
      {80 - rims, {"Cancel", "Select", "Open", "Save", "Update"}},
      {100 - rims, {"Continue", "Stop", "Find It", "New Folder"}},
      {120 - rims, {"Choose Here"}},
      {160 - rims, {"DELETE THE OLD FILE", "OVERWRITE THE OLD FILE", "KEEP THE OLD FILE"}},
      {260 - rims,
       {"DELETE EVERY OLD FILE IN THIS DIRECTORY", "OVERWRITE EVERY OLD FILE IN THIS DIRECTORY",
        "KEEP EVERY OLD FILE IN THIS DIRECTORY"}},
      {200 - rims, {"CANCEL THE WHOLE INSTALLATION!"}},
      {250 - rims,
       {"Fly Skyvane 9 Now", "Fly Skyvane Now", "Run Skyvane Now", "Add Or Remove Scenery",
        "Repair Skyvane", "Install A Second Copy of Skyvane"}},
      {780 - 230 - 110, {"Is the copy of Skyvane 9 you're looking for missing from this list?"}},
      {180 - rims, {"Skyvane Web Site", " Get New Beta! ", "Update Skyvane!"}},
      {180,
       {"Welcome", "License", "Check Servers", "Pick Destination", "Install", "Finish",
        "Search for Updates", "Check Disk Space", "Install Updates", "Select Scenery",
        "Select Skyvane", "Scan Existing Scenery", "Install Scenery", "Confirm Repairs",
        "Select New Scenery", "Scan For Problems"}},
      // The Options dialog: the field's label, the slider's, and the box's two lines.
      {60, {"-proxy host", "-proxy port", "streams"}},
      {2 * 280,
       {"|manually set the number of download streams... typically leave this OFF, and the "
        "installer will find the best number of streams for you."}},
  };
  // The words of the wizard's own faces, with their chevrons, in the letters of the pictured ones.
  const std::tuple<int, const char*, const char*, const char*> faces[] = {
      {50, "", "Quit", ""},   {90, "", "Options", ""},     {89, "<", "Back", ""},
      {100, "", "Next", ">"}, {114, "", "Select All", ""}, {132, "", "Select None", ""},
  };
  // Wrapped texts, by how they begin, with something below them: at which width, and the most
  // lines.
  const std::tuple<float, int, const char*> blocks[] = {
      {540, 4, "Please pick the scenery you would like to install now.  You can use"},
      {540, 4, "Click on the world map to select what scenery you would like to install.  Scenery"},
      {560, 3, "You do not have enough free disk space to install the Skyvane 9 demo at"},
      {560, 3, "You do not have enough free disk space to install Skyvane 9 with the"},
      {378, 3, "I am unable to install or update Skyvane. An error occurred while creating"},
      {378, 3, "The servers now hold files in a newer format than this installer"},
  };
  for (const char* language : all_languages) {
    std::map<std::string, std::string> shown;
    if (std::strcmp(language, "english") == 0)
      for (const std::string& text : program_texts())
        shown[text] = text;
    for (const entry& e : entries_of(language))
      shown[e.key] = e.translation;
    for (const auto& [width, texts] : places) {
      for (const char* text : texts) {
        ASSERT_TRUE(shown.count(text)) << language << ": " << text;
        EXPECT_LE(OGL_string_width(shown[text]), width) << language << ": " << shown[text];
      }
    }
    for (const auto& [width, before, text, behind] : faces) {
      const std::string words = before + shown[text] + behind;
      EXPECT_TRUE(OGL_face_has(words)) << language << ": " << words;
      EXPECT_LE(OGL_string_width(words, charset_face), width - 8) << language << ": " << words;
    }
    for (const auto& [wrap, most_lines, text] : blocks) {
      const auto found = shown.lower_bound(text);
      ASSERT_TRUE(found != shown.end() && found->first.starts_with(text)) << text;
      STR_unescape(found->second);
      const int lines = static_cast<int>(-OGL_string(0, 0, 0, found->second, wrap)) / 10;
      EXPECT_LE(lines, most_lines) << language << ": " << found->second;
    }
  }
}

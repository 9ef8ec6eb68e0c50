// A run without a display: what it says on a terminal, and what it is told about the discs.

#include <gtest/gtest.h>

#include <numeric>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_unattended_disc.h"
#include "Installer-f/wizard/main_unattended_options.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_string.h"

TEST(UnattendedSay, WhatIsNoUtf8IsTakenForLatin1) {
  const struct {
    const char *label, *text, *shown;
  } rows[] = {
      {"plain", "Welcome", "Welcome"},
      {"empty", "", ""},
      {"a translated text", "instalaci\xF3n: \xBFqu\xE9?", "instalación: ¿qué?"},
      {"a path between", "en \xE1rbol: /home/jos\xC3\xA9/\xE2\x82\xAC/\xF0\x9F\x9B\xA9/ s\xED",
       "en árbol: /home/josé/€/\xF0\x9F\x9B\xA9/ sí"},
      {"at the end", "camb\xED", "cambí"},
      {"a sequence cut short", "\xE2\x82", "\xC3\xA2?"},
      {"an overlong one", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
      {"half of a pair", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0?"},
      {"what steers the terminal", "a\x1B[31m\x7F\xC2\x9B\rb\n\tc", "a?[31m???b\n\tc"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(PLT_terminal_text(row.text), row.shown) << row.label;
}

TEST(UnattendedSay, BlankLinesGo) {
  EXPECT_EQ(on_one_page("\n\na\n\n\nb\nc\n\n"), "a\nb\nc");
  EXPECT_EQ(on_one_page("\n\n"), "");
}

TEST(UnattendedSay, ObjectsOfJson) {
  json_line line("text", "\"a\\b\"\n\t\x1B/");
  line.add("latin", "\xE9t\xE9").add("utf", "\xC3\xA9").add("n", int64_t{-5}).add("f", 0.25);
  line.add("yes", true).add_null("none").add_raw("list", "[1]");
  EXPECT_EQ(line.text(),
            "{\"text\": \"\\\"a\\\\b\\\"\\u000a\\u0009?/\", \"latin\": \"\xC3\xA9t\xC3\xA9\", "
            "\"utf\": \"\xC3\xA9\", \"n\": -5, \"f\": 0.250, \"yes\": true, \"none\": null, "
            "\"list\": [1]}");
  EXPECT_EQ(json_line().text(), "{}");
}

namespace {

// What an administrator may slip on, each with the words that put him right.
TEST(UnattendedOptions, ASlipIsToldWithTheNearestOption) {
  const struct {
    const char* label;
    std::vector<const char*> arguments;
    const char* told;  // a part of it; empty for a command line that is good
  } rows[] = {
      {"all that there is",
       {"--unattended", "--accept_eula", "--dest=/opt", "--name=a=b", "--pref:_lang=4",
        "--no_vbos"},
       ""},
      {"handed over", {"-path", "/a b", "--unattended"}, ""},
      {"not first", {"--unattended", "-path", "/a"}, "no option '-path'"},
      {"unknown", {"--unattended", "--dry-run"}, "no option '--dry-run'"},
      {"misspelt", {"--acept_eula"}, "Did you mean --accept_eula?"},
      {"with a value", {"--cpoy=/opt"}, "Did you mean --copy=FOLDER?"},
      {"a setting", {"--pref:_strem_count=2"}, "Did you mean --pref:_stream_count=NUMBER?"},
      {"a port in words", {"--pref:_proxy_port_int=http"}, "wants 0-65535, not 'http'."},
      {"without its dashes",
       {"unattended"},
       "'unattended' is no option. Did you mean --unattended?"},
      {"a stray word", {"--unattended", "/opt/games"}, "'/opt/games' is no option."},
      {"a value for none", {"--accept_eula=no"}, "--accept_eula takes no value"},
      {"an empty one", {"--unattended="}, "--unattended takes no value"},
      {"none for a value", {"--dest"}, "'--dest' means --dest=FOLDER."},
      {"before another option", {"--dest", "--name=x"}, "'--dest' means --dest=FOLDER."},
      {"as a word of its own",
       {"--dest", "/opt"},
       "--dest wants its value behind \"=\": --dest=/opt"},
      {"empty", {""}, "'' is no option."},
  };
  for (const auto& row : rows) {
    std::vector<const char*> argv = {"program"};
    argv.insert(argv.end(), row.arguments.begin(), row.arguments.end());
    const std::string wrong = unattended_wrong_argument(static_cast<int>(argv.size()), argv.data());
    EXPECT_EQ(wrong.empty(), *row.told == '\0') << row.label << ": " << wrong;
    EXPECT_TRUE(str_holds(wrong, row.told)) << row.label << ": " << wrong;
  }
}

TEST(UnattendedOptions, Names) {
  const struct {
    std::string label, name;
    bool good;
  } rows[] = {
      {"plain", "Skyvane 9", true},
      {"as long as can be", std::string(255, 'n'), true},
      {"longer", std::string(256, 'n'), false},
      {"longer once stored", std::string(128, '\xE9'), false},
      {"empty", "", false},
      {"a way", "a/b", false},
      {"the folder itself", ".", false},
      {"the one above", "..", false},
      {"two lines", "a\nb", false},
      {"what steers a terminal", "a\x1B[2J", false},
      {"three dots", "...", true},
  };
  for (const auto& row : rows)
    EXPECT_EQ(unattended_wrong_name(row.name).empty(), row.good) << row.label;
}

TEST(DiscAnswers, Sectors) {
  const struct {
    const char* text;
    int count;  // of selected cells; -1 refused
    int cell;   // one of them
  } rows[] = {
      {"all", sector_count, 0},
      {"none", 0, -1},
      {"+30-120", 1, sector_cell(6, 12)},
      {"-90-180", 1, sector_cell(0, 0)},
      {"+80+170", 1, sector_cell(35, 17)},
      {"-10-010,+30-120", 2, sector_cell(17, 8)},
      {"", -1, -1},
      {"+30-120,", -1, -1},
      {"+31-120", -1, -1},
      {"+30-125", -1, -1},
      {"+90+000", -1, -1},
      {"+30-12O", -1, -1},
      {"+30--20", -1, -1},
  };
  for (const auto& row : rows) {
    int selected[sector_count];
    const std::string wrong = unattended_read_sectors(row.text, selected);
    EXPECT_EQ(wrong.empty(), row.count >= 0) << "'" << row.text << "': " << wrong;
    if (row.count < 0) continue;
    EXPECT_EQ(std::accumulate(selected, selected + sector_count, 0), row.count) << row.text;
    if (row.cell >= 0) {
      EXPECT_EQ(selected[row.cell], 1) << row.text;
    }
  }
}

TEST(DiscAnswers, SectorsThatAreNotThere) {
  int wanted[sector_count] = {}, offered[sector_count] = {};
  EXPECT_EQ(unattended_missing_sector(wanted, offered), "");
  wanted[sector_cell(6, 12)] = wanted[sector_cell(18, 9)] = wanted[sector_cell(0, 0)] = 1;
  offered[sector_cell(0, 0)] = offered[sector_cell(6, 12)] = 1;
  EXPECT_EQ(unattended_missing_sector(wanted, offered), "+00+000");
  offered[sector_cell(6, 12)] = offered[sector_cell(0, 0)] = 0;
  EXPECT_EQ(unattended_missing_sector(wanted, offered), "-90-180");
}

}  // namespace

// A run without a display: what it says on a terminal, and what it is told about the discs.

#include <gtest/gtest.h>

#include <numeric>

#include "Installer-f/wizard/main_unattended_disc.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/Platform/PLT_text.h"

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

namespace {

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

// What a run without a display is told about the discs.

#include <gtest/gtest.h>

#include <numeric>

#include "Installer-f/main_unattended_disc.h"

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
      {"All", -1, -1},
      {"+30-120,", -1, -1},
      {"+31-120", -1, -1},
      {"+30-125", -1, -1},
      {"+90+000", -1, -1},
      {"30-120", -1, -1},
      {"+30-12O", -1, -1},
      {"+30--20", -1, -1},
      {"+30-120.dsf", -1, -1},
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

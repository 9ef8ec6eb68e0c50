// Menu files: groups of numbered lines.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "corekit/GenC/hl_mnw.h"
#include "corekit/GenC/hl_mnw_menu.h"

namespace {

std::string write_menus(const char* folder, const std::string& text) {
  char root[] = "/tmp/menusXXXXXX";
  const std::string base = std::string(mkdtemp(root)) + "/";
  mkdir((base + "menus").c_str(), 0700);
  mkdir((base + "menus/" + folder).c_str(), 0700);
  std::ofstream(base + "menus/" + folder + "/Test.txt") << text;
  return base;
}

constexpr char header[] = "I\n900 version\nMENUS\n\n";

TEST(WindowMenuFile, GroupsAreMenus) {
  const std::string text = std::string(header) +
                           "4 File\n40  New file...\n41\tOpen\n42 ---\n\n"
                           "7   View menu\r\n70 Zoom in\r\n\r\n"
                           "1519 not a title\n-1 minus\n\n"
                           "9999 out of range\n1 lost\n\n"
                           "-3 negative\n2 lost too\n\n"
                           "5 Last";
  mnw.language = 2;
  MACIBM_clear_menus(1);
  MACIBM_read_menus(write_menus("german", text), "Test.txt");
  mnw.language = 0;
  ASSERT_EQ(menu.size(), size_t{menu_slots});
  EXPECT_EQ(menu[4].title, "File");
  ASSERT_EQ(menu[4].items.size(), 3u);
  EXPECT_EQ(menu[4].items[0].number, 40);
  EXPECT_EQ(menu[4].items[0].text, "New file...");
  EXPECT_EQ(menu[4].items[1].text, "Open");
  EXPECT_EQ(menu[7].title, "View menu");
  ASSERT_EQ(menu[7].items.size(), 1u);
  EXPECT_EQ(menu[7].items[0].text, "Zoom in");
  EXPECT_EQ(menu[5].title, "Last");
  size_t titles = 0;
  for (const menu_record& m : menu)
    titles += !m.title.empty();
  EXPECT_EQ(titles, 4u) << "a number out of range makes no menu";
  MACIBM_clear_menus(0);
}

TEST(WindowMenuFile, AFileThatCannotBeReadIsFatal) {
  const struct {
    const char* label;
    const char* text;
  } rows[] = {{"another keyword", "I\n900 version\nTRANSLATION\n"},
              {"another version", "I\n899 version\nMENUS\n"},
              {"empty", ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    const std::string base = write_menus("english", row.text);
    EXPECT_EXIT(MACIBM_read_menus(base, "Test.txt"), testing::ExitedWithCode(1),
                "Cannot open file!");
  }
  EXPECT_EXIT(MACIBM_read_menus("/nowhere/", "Test.txt"), testing::ExitedWithCode(1),
              "Trash this copy and re-install Skyvane.");
}

}  // namespace

// The list of installed copies, in a preferences folder of the test's own.

#include "Installer-f/utils_registry.h"

#include "corekit/Files/io_utils.h"
#include "engine_tree.h"

namespace {

class EngineRegistry : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", (root + "config").c_str(), 1), 0);
    ASSERT_EQ(get_OS_abs_path(os_dir_prefs, prefs), 0);
    ASSERT_TRUE(prefs.starts_with(root)) << prefs;
    list = prefs.substr(root.size()) + "skyvane_install.txt";
  }
  void TearDown() override {
    unsetenv("XDG_CONFIG_HOME");
    engine_tree::TearDown();
  }

  std::string make_copy(const std::string& name) {
    mkdir((root + name).c_str(), 0755);
    return root + name + "/";
  }

  std::string prefs;
  std::string list;  // below the root
};

TEST_F(EngineRegistry, OneLineACopy) {
  const std::string a = make_copy("a"), b = make_copy("b");
  for (const std::string& path : {b, a, b, a.substr(0, a.size() - 1), a}) {
    dest_dir_path = path;
    register_new_skyvane();
  }
  EXPECT_EQ(read(list), b + "\n" + a + "\n" + a.substr(0, a.size() - 1) + "\n");

  // After a line that was cut short, and where the copy's own has no end.
  write(list, "/somewhere/el");
  register_new_skyvane();
  EXPECT_EQ(read(list), "/somewhere/el\n" + a + "\n");
  write(list, a);
  register_new_skyvane();
  EXPECT_EQ(read(list), a);
}

TEST_F(EngineRegistry, ReadsWhatItFinds) {
  const std::string a = make_copy("a"), b = make_copy("b");
  const std::string a_file = write("file", "");
  const std::string gone = root + "gone/";
  const struct {
    const char* label;
    std::string content;
    std::vector<std::string> found;
  } rows[] = {
      {"no line end", a + "\n" + b, {a, b}},
      {"CR LF", a + "\r\n" + b + "\r\n", {a, b}},
      {"folder that has gone", gone + "\n" + a + "\n", {a}},
      {"a plain file", a_file + "\n" + a_file + "/\n" + a + "\n", {a}},
      {"NUL", a + std::string("\0junk", 5) + "\n" + b + "\n", {a, b}},
      {"longer than a path may be", "/" + std::string(600, 'x') + "\n" + a + "\n", {a}},
      {"2,047 characters are one line", "/" + std::string(2046, 'x') + "\n" + a + "\n", {a}},
      {"more are two", std::string(2047, 'x') + a + "\n" + b + "\n", {a, b}},
      {"two, but not at that place", std::string(2046, 'x') + a + "\n" + b + "\n", {b}},
  };
  for (const auto& row : rows) {
    write(list, row.content);
    locate_all_skyvanes();
    EXPECT_EQ(all_skyroots, row.found) << row.label;
    EXPECT_EQ(read(list), row.content) << row.label;  // a line for a folder that has gone stays
  }
}

TEST_F(EngineRegistry, PathsThatAreNoLine) {
  open_log();
  for (const std::string& path :
       {root + "a\nb/", root + std::string("a\0b/", 4), std::string(2048, 'x'), std::string()}) {
    dest_dir_path = path;
    register_new_skyvane();
  }
  EXPECT_FALSE(there(list));
  EXPECT_NE(log().find("WARNING: "), std::string::npos);
}

TEST_F(EngineRegistry, FailuresAreALineInTheLog) {
  open_log();
  ASSERT_EQ(mkdir((root + list).c_str(), 0755), 0);  // a folder in the file's place
  register_new_skyvane();
  EXPECT_EQ(log(), "WARNING: could not append registration file: " + root + list + "\n");
  locate_all_skyvanes();
  EXPECT_TRUE(all_skyroots.empty());

  setenv("XDG_CONFIG_HOME", write("no folder", "").c_str(), 1);
  locate_all_skyvanes();
  register_new_skyvane();
  const std::string text = log();
  const std::string warning = "WARNING: registration of this sky-root folder failed!\n";
  EXPECT_TRUE(text.ends_with(warning + warning)) << text;
}

TEST_F(EngineRegistry, WhatMakesACopy) {
  const struct {
    const char* label;
    std::vector<const char*> items;  // a trailing "/" makes a folder
    int is_copy;
  } rows[] = {
      {"names around them", {"My Airfoils/", "Instructions 2/", "xOutputx/", "Old Resources/"}, 1},
      {"one is missing", {"Airfoils/", "Instructions/", "Output/", "Custom Scenery/"}, 0},
      {"one is a file", {"Airfoils/", "Instructions/", "Output/", "Resources"}, 0},
      {"another case", {"airfoils/", "Instructions/", "Output/", "Resources/"}, 0},
      {"hidden", {".Airfoils/", "Instructions/", "Output/", "Resources/"}, 0},
  };
  int number = 0;
  for (const auto& row : rows) {
    const std::string name = "copy" + std::to_string(number++) + "/";
    dest_dir_path = root + name;
    for (const std::string item : row.items)
      write(name + item + (item.back() == '/' ? "x" : ""), "");
    EXPECT_EQ(path_is_to_a_sim(), row.is_copy) << row.label;
  }
  dest_dir_path.clear();
  EXPECT_EQ(path_is_to_a_sim(), 0);
}

}  // namespace

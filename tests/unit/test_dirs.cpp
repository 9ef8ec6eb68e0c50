// Folders made and removed, with what a user may have put in their way; the list of copies.

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_registry.h"
#include "engine_tree.h"

using namespace std::string_literals;

namespace {

class EngineDirs : public engine_tree {
 protected:
  void fetch(std::string_view path) { add(path, {"s"}).need_fetch = 1; }
  void drop(std::string_view path) {
    file_version_struct& current = add(path, {"s", "GONE"});
    current.need_delete = 1;
    current.sig_have = "s";
    current.sig_match = 1;
  }

  bool folder(const std::string& path) { return std::filesystem::is_directory(root + path); }
};

TEST_F(EngineDirs, WhatAJobThatWasGivenUpLeaves) {
  for (const char* const name : {"gone/deep", "kept"}) {
    here.folder("copy/" + std::string(name));
    fetch("ALL_os/" + std::string(name) + "/x");
    sim_info.back().current().sig_have = *name == 'g' ? sig_none : "s";
  }
  remove_unused_folders();
  EXPECT_FALSE(folder("copy/gone"));
  EXPECT_TRUE(folder("copy/kept")) << "a file of it was there before";
}

TEST_F(EngineDirs, MakesTheTree) {
  dest_dir_path = root + "x/y/z/";
  fetch("ALL_os/Resources/a/b/c.txt");
  fetch("ALL_os/top.txt");
  fetch("ALL_os/d e/f.txt");
  add("ALL_os/unneeded/g.txt", {"s"});
  fetch("IBM_os/windows/h.txt");
  sim_info.back().current().os = 2;
  EXPECT_EQ(make_dirs(), 0);
  for (const char* name : {"Resources/a/b", "d e", "Output/FMS plans", "Output/logbooks",
                           "Output/movies", "Output/situations", "Resources/preferences"})
    EXPECT_TRUE(folder("x/y/z/"s + name)) << name;
  for (const char* name : {"unneeded", "windows", "top.txt", "ALL_os"})
    EXPECT_FALSE(there(std::string("x/y/z/") + name)) << name;
  EXPECT_EQ(make_dirs(), 0);  // over what is there
}

TEST_F(EngineDirs, WhatIsInTheWay) {
  // What is a plain file, the destination, the code (0: told, and no more) and where it fails.
  const std::tuple<std::string, std::string, int, std::string> rows[] = {
      {"file", "file/x/", 20, "file/x"},
      {"copy/a", "copy/", 20, "copy/a/b"},
      {"other/Output", "other/", 0, "other/Output/movies"},
  };
  fetch("ALL_os/a/b/c.txt");
  for (const auto& [blocker, dest, code, failing] : rows) {
    write(blocker, "mine");
    dest_dir_path = root + dest;
    testing::internal::CaptureStderr();
    EXPECT_EQ(make_dirs(), code) << blocker;
    const std::string told = testing::internal::GetCapturedStderr();
    for (const std::string& part :
         {"An error occurred while creating new folders."s, "Error: Not a directory"s,
          "Install Location: " + dest_dir_path, "Install Path:" + root + failing})
      EXPECT_TRUE(str_holds(told, part)) << told;
    EXPECT_EQ(read(blocker), "mine");
    EXPECT_EQ(there(dest + "Output"), code == 0) << blocker;
  }
  EXPECT_TRUE(folder("other/Resources/preferences"));
  dest_dir_path.clear();
  EXPECT_NE(make_dirs(), 0);
}

TEST_F(EngineDirs, RoomForTheFrameworks) {
  const std::string one = "copy/Resources/plugins/KVLM.framework/";
  const std::string two = "copy/Resources/plugins/KVWidgets.framework/";
  write(one + "Versions/Current/old", "1");
  write(one + "Resources/old", "2");
  write(two + "Versions/A/new", "3");
  here.link(two + "Versions/Current", "A");
  write(two + "Resources", "4");
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(make_dirs(), 0);
    EXPECT_EQ(read(one + "Versions/_Current/old"), "1");
    EXPECT_EQ(read(one + "_Resources/old"), "2");
    EXPECT_FALSE(there(one + "Versions/Current"));
    EXPECT_FALSE(there(one + "Resources"));
    EXPECT_EQ(read(two + "Versions/Current/new"), "3");
    EXPECT_FALSE(there(two + "Versions/_Current"));
    EXPECT_EQ(read(two + "_Resources"), "4");
  }
  // A folder that comes back beside what was moved aside is not lost.
  write(one + "Resources/newer", "5");
  EXPECT_EQ(make_dirs(), 0);
  EXPECT_EQ(read(one + "Resources/newer"), "5");
  EXPECT_EQ(read(one + "_Resources/old"), "2");
}

TEST_F(EngineDirs, DeletesAndCleansUp) {
  open_log();
  stg.log_actions = 1;
  for (const char* path : {"copy/a/b/1", "copy/c/3", "copy/c/mine", "copy/d/4", "copy/d/.hidden",
                           "copy/top", "copy/e/5", "copy/f/UPPER", "elsewhere/6"})
    write(path, "s");
  write("elsewhere/7", "mine");
  here.link("copy/link", "../elsewhere");     // the user's, who keeps a folder on another disk
  here.link("copy/shipped", "../elsewhere");  // by its name one that the release ships
  for (const char* path : {"ALL_os/F/upper", "ALL_os/a/b/1", "ALL_os/c/3", "ALL_os/d/4",
                           "ALL_os/top", "ALL_os/link/6", "ALL_os/shipped/7", "ALL_os/absent/7"})
    drop(path);
  add("ALL_os/Shipped", {"s"});
  add("ALL_os/e/5", {"s"});

  delete_files();
  for (const char* gone : {"a", "c/3", "d/4", "top", "f"})
    EXPECT_FALSE(there(std::string("copy/") + gone)) << gone;
  for (const char* kept :
       {"copy", "copy/c/mine", "copy/d/.hidden", "copy/e/5", "copy/link", "elsewhere"})
    EXPECT_TRUE(there(kept)) << kept;
  EXPECT_FALSE(there("elsewhere/6"));
  EXPECT_EQ(read("elsewhere/7"), "mine");
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(sim_info[i].current().sig_have, sig_none);
    EXPECT_EQ(sim_info[i].current().sig_match, 0);
  }
  EXPECT_EQ(stg.activity, activity_deleting);
  for (const char* line : {"DELETING  file ", "a/b/1, with result=0.\n",
                           "absent/7, with result=2.\n", "shipped/7, with result=40.\n",
                           "is a link of the user's to ../elsewhere", "cleanup: DELETING  file "})
    EXPECT_TRUE(str_holds(log(), line)) << line;
  EXPECT_LT(log().find("cleanup: DELETING  file " + dest_dir_path + "a/b/,"),
            log().find("cleanup: DELETING  file " + dest_dir_path + "a/,"));
  const std::string before = log();
  stg.log_actions = 0;
  write("copy/top", "s");
  delete_files();
  EXPECT_FALSE(there("copy/top"));
  EXPECT_EQ(log(), before) << "actions are logged on request only";
}

class EngineRegistry : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    ASSERT_EQ(get_OS_abs_path(os_dir_prefs, prefs), 0);
    ASSERT_TRUE(prefs.starts_with(root)) << prefs;
    list = prefs.substr(root.size()) + "skyvane_install.txt";
  }

  std::string prefs;
  std::string list;  // below the root
};

TEST_F(EngineRegistry, OneLineACopy) {
  const std::string a = here.folder("a"), b = here.folder("b");
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
  // Taken off, and once more.
  write(list, "/gone/\n" + a + "\n" + b + "\n" + a);
  for (int i = 0; i < 2; ++i) {
    unregister_skyvane(a);
    EXPECT_EQ(read(list), "/gone/\n" + b + "\n");
  }
}

TEST_F(EngineRegistry, WhatIsKnownOfACopy) {
  const std::string a = here.folder("a"), b = here.folder(" b  c ");
  write(list, a + "\n" + b + "\n");
  const auto told = [&] {
    std::string text;
    for (const copy_facts& copy : copies_on_list())
      text += copy.path.substr(root.size()) + "|" + copy.release + "|" + copy.platform + "|" +
              copy.edition + "\n";
    return text;
  };
  EXPECT_EQ(told(), "a/|||\n b  c /|||\n");
  install_name = "Skyvane 9.00";
  stg.target_os = target_linux;
  for (const std::string& path : {b, a, root + "two\nlines/", std::string("relative/")}) {
    dest_dir_path = path;
    copy_note_release(path == b ? "demo" : "full");
  }
  install_name = "Skyvane 9.10";
  stg.target_os = target_mac;
  dest_dir_path = b;
  copy_note_release("");
  const std::string both = "a/|Skyvane 9.00|linux|full\n b  c /|Skyvane 9.10|mac|demo\n";
  EXPECT_EQ(told(), both);
  const std::string file = prefs.substr(root.size()) + "skyvane_copies.txt";
  const std::string text = read(file);
  write(file, text + "COLOUR blue\nCOPY " + root + "elsewhere/\n");
  EXPECT_EQ(told(), both) << "what is not known, or not on the list, is passed over";
  for (size_t length = 0; length < text.size(); ++length) {
    write(file, text.substr(0, length));
    EXPECT_EQ(copies_on_list().size(), 2u) << length;
  }
  write(file, text);
  copy_forget(a);
  EXPECT_EQ(told(), "a/|||\n b  c /|Skyvane 9.10|mac|demo\n");
}

TEST_F(EngineRegistry, ReadsWhatItFinds) {
  const std::string a = here.folder("a"), b = here.folder("b");
  const std::string a_file = write("file", "");
  const std::string gone = root + "gone/";
  const std::tuple<std::string, std::string, std::vector<std::string>> rows[] = {
      {"no line end", a + "\n" + b, {a, b}},
      {"no slash, by another hand", a.substr(0, a.size() - 1) + "\n" + b + "\n", {a, b}},
      {"folder that has gone", gone + "\n" + a + "\n", {a}},
      {"a plain file", a_file + "\n" + a_file + "/\n" + a + "\n", {a}},
      {"NUL", a + std::string("\0junk", 5) + "\n" + b + "\n", {a, b}},
      {"2,047 characters are one line", "/" + std::string(2046, 'x') + "\n" + a + "\n", {a}},
      {"more are two", std::string(2047, 'x') + a + "\n" + b + "\n", {a, b}},
      {"two, but not at that place", std::string(2046, 'x') + a + "\n" + b + "\n", {b}},
  };
  for (const auto& [label, content, found] : rows) {
    write(list, content);
    locate_all_skyvanes();
    EXPECT_EQ(all_skyroots, found) << label;
    EXPECT_EQ(read(list), content) << label;  // a line for a folder that has gone stays
  }
}

TEST_F(EngineRegistry, PathsThatAreNoLine) {
  open_log();
  for (const std::string& path : {root + "a\nb/", root + "a\0b/"s, std::string(2048, 'x'), ""s}) {
    dest_dir_path = path;
    register_new_skyvane();
  }
  EXPECT_FALSE(there(list));
  EXPECT_TRUE(str_holds(log(), "WARNING: "));
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
  const std::string warning = "WARNING: registration of this sky-root folder failed!\n";
  EXPECT_TRUE(log().ends_with(warning + warning)) << log();
}

TEST_F(EngineRegistry, WhatMakesACopy) {
  // A trailing "/" makes a folder.
  const std::tuple<const char*, std::vector<const char*>, int> rows[] = {
      {"names around them", {"My Airfoils/", "Instructions 2/", "xOutputx/", "Old Resources/"}, 1},
      {"one is missing", {"Airfoils/", "Instructions/", "Output/", "Custom Scenery/"}, 0},
      {"one is a file", {"Airfoils/", "Instructions/", "Output/", "Resources"}, 0},
      {"another case", {"airfoils/", "Instructions/", "Output/", "Resources/"}, 0},
      {"hidden", {".Airfoils/", "Instructions/", "Output/", "Resources/"}, 0},
  };
  int number = 0;
  for (const auto& [label, items, is_copy] : rows) {
    const std::string name = "copy" + std::to_string(number++) + "/";
    dest_dir_path = root + name;
    for (const std::string item : items)
      write(name + item + (item.back() == '/' ? "x" : ""), "");
    EXPECT_EQ(path_is_to_a_sim(), is_copy) << label;
  }
  dest_dir_path.clear();
  EXPECT_EQ(path_is_to_a_sim(), 0);
}

}  // namespace

// The walk over the source tree: what ends a build, what is left out, what passes.

#include <functional>

#include "tests/unit/builder_tree.h"

namespace {

class BuilderScan : public builder_test {};

// --- faults -------------------------------------------------------------------------------------
// What is said, the plain line with it, and that nothing has been written.
TEST_F(BuilderScan, BrokenTreesEndTheBuild) {
  const std::string missing = "YOU IDIOT! !found_", idiot = "YOU IDIOT! ";
  const auto with = [this](const char* path) { return [this, path] { put(path, state_a); }; };
  const auto without = [this](const char* path) { return [this, path] { drop(path); }; };
  const auto type = [](int number) { return [number] { bld.fog_fals = number; }; };
  const std::tuple<const char*, std::function<void()>, std::string, std::string> rows[] = {
      {"empty folder with a blank at its end",
       [this] { std::filesystem::create_directories(base + "src/All/Weapons/guns "); },
       idiot + "You tried to include a file or directory with a space at the end!",
       "src/All/Weapons/guns /: other platforms cannot"},
      {"colon", with("All/Weapons/a:b.wpn"), idiot + "found a  : in the path!",
       "All/Weapons/a:b.wpn: these characters part folders"},
      {"backslash", with("All/Weapons/a\\b/c.wpn"), idiot + "found a \\ in the path!",
       "All/Weapons/a\\b: these characters part folders"},
      {"line feed", with("All/Weapons/a\nFILE.wpn"), "found a LINE END in the path!",
       "a?FILE.wpn: it would make two lines"},
      {"blank before a file's name", with("All/Weapons/ a.wpn"), "with a space at the start!",
       "/ a.wpn: whoever reads the manifest skips"},
      {"copy that the filter would drop", with("All/Aircraft/a copy.bak"), "found a copy file!",
       "a copy.bak: nothing with \"copy\" in its path ships"},
      {"folder called a copy", with("All/Aircraft/photocopy/a.acf"), "found a copy file!",
       "All/Aircraft/photocopy: nothing"},
      {"source code inside a name", with("All/Weapons/gun.cpp.txt"), "found a .cpp file!",
       "gun.cpp.txt: source code never ships"},
      {"file in All", with("All/readme.txt"),
       "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!",
       "All/readme.txt: All/ holds folders only"},
      {"unknown folder in All", with("All/Movies/a.txt"),
       "What the hell is THIS doing in here!?!?!? Movies/", "All/Movies/: All/ may hold Aircraft,"},
      {"unknown platform", with("Amiga/a/b.txt"),
       "WHAT THE FUCK? I CAN'T TELL WHAT TYPE OF FILE THIS IS!", "src/Amiga: what ships lies in"},
      {"preferences", with("All/Resources/preferences/joystick.txt"),
       "YOU IGNORANT SLUT! I found this preferences file!",
       "joystick.txt: a user's preferences never ship"},
      {"sibling's file", with("All/Resources/bitmaps/sibling/cockpit_com.png"), " found_com_file",
       "belongs to another product"},
      {"Windows program that is none", with("Windows/Skyvane.exe"),
       "Oops! We could not make a windows exe file large-address-aware! error# 8.000000",
       "it has no header of a Windows program. Replace it"},
      {"link that is cut when read", [this] { link("All/Weapons/far", std::string(499, '/')); },
       "found a link that goes on and on!", "All/Weapons/far: a link may say at most 498"},
      {"path that is too long",
       [this] {
         const std::string deep = "All/Weapons/" + std::string(250, 'd') + "/";
         put(deep + std::string(497 - base.size() - 4 - deep.size(), 'f'), state_a);
       },
       "String too long!", "that of its archive, " + base + "out/disk_2/Test 9/All/"},
      {"archive's place taken by a folder",
       [this] {
         put("All/Weapons/gun.wpn", state_a);
         put("All/Weapons/gun.wpn.zip/inner.wpn", state_a);
       },
       "I could not zip a file!", "gun.wpn: its archive would lie where the folder"},
      {"file that no zip can hold",
       [this] {
         put("All/Weapons/big.wpn", state_a);
         std::filesystem::resize_file(base + "src/All/Weapons/big.wpn", uint64_t{1} << 32);
       },
       "I could not zip a file!", "big.wpn: a zip archive holds less than 4 GB"},
      {"no All", without("All"), missing + "all_fold", "All/: the tree must have this folder"},
      {"no Resources", without("All/Resources"), missing + "res_fold", "Put it there."},
      {"no menus", without("All/Resources/menus"), missing + "men_file",
       "Skyvane.txt: the tree must have this file, spelled so"},
      {"All is a link",
       [this] {
         std::filesystem::rename(base + "src/All", base + "All elsewhere");
         link("All", base + "All elsewhere");
       },
       missing + "all_fold", ""},
      {"no red terrain for Earth",
       [this] {
         drop("All/Resources/default scenery/900 red terrain");
         bld.fog_fals = install_earth;
       },
       missing + "redt\t ", ""},
      {"no Earth", type(install_earth), "There is no Earth scenery in this tree!",
       "--type=1 builds Earth scenery, and no file of it is there"},
      {"no Moon", type(install_moon), "There is no Moon scenery in this tree!",
       "All/Custom Scenery/DSF 900 Moon World-Wide.../: "},
      {"unknown install type", type(4), "I can not tell what type of install this is!", ""},
      {"ready archives for more discs than there are",
       [this] {
         for (const char* const name : {"a", "b", "c", "d"}) {
           put(std::string("All/Weapons/") + name, state_a);
           put(std::string("All/Weapons/") + name + ".7z", std::string(6000, '7'));
         }
         bld.disc_limit_kb = 5;
       },
       "This tree needs more discs than there can be!", "fill 4 discs of 0 MB, and a master has 3"},
  };
  for (const auto& [label, damage, said, plain] : rows) {
    SCOPED_TRACE(label);
    std::filesystem::remove_all(base + "src");
    SetUp();
    damage();
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1),
                literally(said) + ".*" + literally(plain));
    EXPECT_TRUE(nothing_left());
  }
}

TEST_F(BuilderScan, OutputFoldersThatAreTaken) {
  for (const char* const taken : {"out/disk_2/", "out/disk_0"}) {
    clear_output();
    here.file(std::string(taken) + "x", "mine");
    if (!std::string(taken).ends_with('/'))
      std::filesystem::rename(base + taken + "x", base + taken);
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1),
                "Could not make the dst_folder! THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY "
                "EXISTS THOUGH!.*no master is built over another. Remove it");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(base + "out"), {}), 1);
  }
  std::filesystem::remove_all(base + "out");
  here.file("out", "a file");
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1), "Could not make the dst_folder!");
  EXPECT_EQ(content_of(base + "out"), "a file");
}

// All at once: some of each kind, no more than can be read, and how many there are.
TEST_F(BuilderScan, EveryFaultIsToldInOneRun) {
  for (int i = 0; i < 300; ++i)
    put("All/Weapons/gun " + std::to_string(1000 + i) + " copy.wpn", state_a);
  for (int i = 0; i < 30; ++i)
    put("All/Output/copy/" + std::to_string(i) + ".txt", state_a);  // one to be mended
  for (int i = 0; i < 460; ++i)
    put("All/Aircraft/" + std::to_string(i) + ".cpp", state_a);
  put("All/Movies/a.txt", state_a);
  ASSERT_EQ(mkfifo((base + "src/All/Weapons/pipe").c_str(), 0600), 0);
  drop("All/Airfoils");
  put_previous("DIR outside\nFILE 0 0 90500 1 1 " + std::string(sig_a) +
               " x\nDIR All/W/\nFILE 0 0 91001 1 1 " + std::string(sig_a) + " x\n");
  bld.check_only = true;
  const std::string said = said_by_build(1);
  EXPECT_TRUE(
      str_holds(said,
                "765 faults, of which 50 are shown; the log has all of them: copy 301, source "
                "code 460, foreign folder in All/ 1, place missing 1, previous manifest 1, release "
                "built before 1."))
      << said;
  EXPECT_TRUE(str_holds(said, "WARNING: left out, as it cannot be read: " + base + "src/All/Weap"));
  EXPECT_TRUE(str_holds(said, "total files recursed: 500. will compress: ")) << "as it goes on";
  size_t plain = 0;
  for (size_t at = said.find("\n  /"); at != said.npos; at = said.find("\n  /", at + 1))
    ++plain;
  EXPECT_EQ(plain, 50u);
  for (const char* const one : {"/Movies/: All/ may", "Airfoils/: the tree must", "by --release=N.",
                                "/All/Output/copy: nothing", "/All/Aircraft/0.cpp: source"})
    EXPECT_TRUE(str_holds(said, one)) << one;
  EXPECT_TRUE(nothing_left());
}

// Each of these is a step away from a refusal or a filter.
TEST_F(BuilderScan, NearMissesAreBuilt) {
  const char* const kept[] = {"All/Weapons/d/d/d/d/d/d/d/d/d/d/d/deep.wpn",
                              "All/Aircraft/Skyvane Copy.acf",
                              "All/Aircraft/x.ac.txt",
                              "All/Aircraft/gun.Cpp",
                              "All/Weapons/ guns/a.wpn",
                              "All/Weapons/a.ovw2",
                              "All/Weapons/thumbs.db",
                              "All/Weapons/a_.txt",
                              "All/Resources/preference.txt",
                              "All/Output/a'b\"c 100%#?.txt",
                              "All/Output/caf\xE9.txt",
                              "All/Output/inner\ttab.txt"};
  const char* const left_out[] = {"All/Weapons/empty.wpn", "All/Resources/preferences/a.prf",
                                  "All/install_pfc Aircraft/a.acf", "All/Weapons/x.bak",
                                  "All/Weapons/.7/a.wpn"};
  for (const char* const path : kept)
    put(path, state_a);
  for (const char* const path : left_out)
    put(path, state_a);
  put("All/Weapons/empty.wpn", "");
  link("All/Weapons/dangling.wpn", "nowhere");
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "");
  for (const char* const path : kept)
    EXPECT_TRUE(is_there(std::string("out/disk_0/Test 9/") + path + ".zip")) << path;
  for (const char* const path : left_out)
    EXPECT_FALSE(is_there(std::string("out/disk_0/Test 9/") + path + ".zip")) << path;
  EXPECT_TRUE(is_there("out/disk_0/Test 9/All/Weapons/dangling.wpn.zip"));
  // Folders stand on all three discs, but none that holds only what was left out.
  for (const char* const disc : {"disk_0", "disk_1", "disk_2"}) {
    EXPECT_TRUE(is_there(std::string("out/") + disc + "/Test 9/All/Weapons/ guns")) << disc;
    EXPECT_FALSE(is_there(std::string("out/") + disc + "/Test 9/All/install_pfc Aircraft")) << disc;
  }
}

// --- the filter ---------------------------------------------------------------------------------
TEST_F(BuilderScan, FilterByPathAndType) {
  // Whether a file ships, by install type.
  const std::pair<const char*, const char*> rows[] = {
      {"All/Aircraft/Heron.acf", "YYNN"},
      {"All/Global Scenery/-global terrain-/a.dsf", "NYNN"},
      {"All/Global Scenery/-global terrain- 2/a.dsf", "NYNN"},
      {"All/Global Scenery/other/a.dsf", "YYNN"},
      {"All/Global Scenery/-global terrain-/a.dsf.7z", "NNNN"},
      {"All/Global Scenery/-global terrain-/a.dsf.txt", "NNNN"},
      {"All/Custom Scenery/DSF 900 Mars World-Wide/a.dsf", "NNYN"},
      {"All/Custom Scenery/DSF 900 Mars/a.dsf", "YYNN"},
      {"Linux/DSF 900 Mars World-Wide/a.dsf", "YYNN"},
      {"All/Resources/bitmaps/Earth Orbit Textures/a.png", "NYNN"},
      {"All/Resources/default scenery/900 red terrain/a.png", "NYNN"},
      {"All/install_pfc Aircraft/a.acf", "NNNN"},
      {"Macintosh/install_pfc Aircraft/a.acf", "YYNN"},
      {"All/Weapons/a.7z.txt", "NNNN"},
      {"All/Weapons/Thumbs.db", "NNNN"},
      {"All/Weapons/artworks.png", "YYNN"},
      {"All/Weapons/a._b", "NNNN"},
      {"All/Weapons/a.ovw", "NNNN"},
      {"All/Weapons/a.ac", "NNNN"},
      {"All/Resources/serverlist.txt", "NNNN"},
      {"All/Resources/serverlist9.txt", "YYNN"},
      {"All/Output/a.bak", "NNNN"},
      {"All/Output/a.bak2", "YYNN"},
  };
  for (const auto& [path, kept] : rows) {
    for (bld.fog_fals = 0; bld.fog_fals < 4; ++bld.fog_fals) {
      EXPECT_EQ(is_good_file(bld.src_fold + path, 0, 0), kept[bld.fog_fals] == 'Y')
          << path << ", type " << bld.fog_fals;
    }
  }
}

}  // namespace

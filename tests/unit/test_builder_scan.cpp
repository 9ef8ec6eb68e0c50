// The walk over the source tree: what ends a build, what is left out, what passes.

#include <gtest/gtest.h>

#include <functional>

#include "tests/unit/builder_tree.h"

namespace {

class BuilderScan : public builder_test {};

// --- refusals -----------------------------------------------------------------------------------
TEST_F(BuilderScan, BrokenTreesEndTheBuild) {
  struct refusal {
    const char* label;
    std::function<void()> damage;
    std::string text;
  };
  const std::string missing = "YOU IDIOT! !found_";
  const auto with = [this](const char* path) { return [this, path] { put(path, state_a); }; };
  const auto without = [this](const char* path) { return [this, path] { drop(path); }; };
  const refusal refusals[] = {
      {"file with a blank at its end", with("All/Weapons/gun.wpn "),
       "YOU IDIOT! You tried to include a file or directory with a space at the end!"},
      {"empty folder with a blank at its end",
       [this] { std::filesystem::create_directories(base + "src/All/Weapons/guns "); },
       "with a space at the end!"},
      {"colon", with("All/Weapons/a:b.wpn"), "YOU IDIOT! found a  : in the path!"},
      {"backslash", with("All/Weapons/a\\b.wpn"), "YOU IDIOT! found a \\ in the path!"},
      {"line feed", with("All/Weapons/a\nFILE.wpn"), "found a LINE END in the path!"},
      {"carriage return in a folder", with("All/Weapons/a\rb/c.wpn"), "found a LINE END"},
      {"blank before a file's name", with("All/Weapons/ a.wpn"), "with a space at the start!"},
      {"tab before a file's name", with("All/Weapons/\ta.wpn"), "with a space at the start!"},
      {"copy of a file", with("All/Aircraft/Skyvane copy.acf"), "YOU IDIOT! found a copy file!"},
      {"copy that the filter would drop", with("All/Aircraft/a copy.bak"), "found a copy file!"},
      {"folder called a copy", with("All/Aircraft/photocopy/a.acf"), "found a copy file!"},
      {"source code", with("All/Weapons/gun.cpp"), "YOU IDIOT! found a .cpp file!"},
      {"source code in capitals", with("All/Weapons/GUN.CPP"), "YOU IDIOT! found a .CPP file!"},
      {"source code inside a name", with("All/Weapons/gun.cpp.txt"), "found a .cpp file!"},
      {"file in All", with("All/readme.txt"),
       "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!"},
      {"unknown folder in All", with("All/Movies/a.txt"),
       "What the hell is THIS doing in here!?!?!? Movies/"},
      {"folder of All in another case", with("All/weapons/a.txt"),
       "What the hell is THIS doing in here!?!?!? weapons/"},
      {"unknown platform", with("Amiga/a.txt"),
       "WHAT THE FUCK? I CAN'T TELL WHAT TYPE OF FILE THIS IS!"},
      {"file in the root", with("readme.txt"), "WHAT THE FUCK?"},
      {"preferences", with("All/Resources/preferences/joystick.txt"),
       "YOU IGNORANT SLUT! I found this preferences file!"},
      {"sibling's file", with("All/Resources/bitmaps/sibling/cockpit_com.png"), " found_com_file"},
      {"Windows program that is none", with("Windows/Skyvane.exe"),
       "Oops! We could not make a windows exe file large-address-aware!"},
      {"name that holds the ending of a program", with("Windows/Skyvane.exe.txt"), "error# 8.000"},
      {"link that is cut when read", [this] { link("All/Weapons/far", std::string(499, '/')); },
       "found a link that goes on and on!"},
      {"archive's place taken by a folder",
       [this] {
         put("All/Weapons/gun.wpn", state_a);
         put("All/Weapons/gun.wpn.zip/inner.wpn", state_a);
       },
       "I could not zip a file!"},
      {"no All", without("All"), missing + "all_fold"},
      {"no Macintosh", without("Macintosh"), missing + "apl_fold"},
      {"no Windows", without("Windows"), missing + "win_fold"},
      {"no Linux", without("Linux"), missing + "X86_fold"},
      {"no Instructions", without("All/Instructions"), missing + "ins_fold"},
      {"no Weapons", without("All/Weapons"), missing + "wpn_fold"},
      {"no Airfoils", without("All/Airfoils"), missing + "afl_fold"},
      {"no Aircraft", without("All/Aircraft"), missing + "acf_fold"},
      {"no Resources", without("All/Resources"), missing + "res_fold"},
      {"no Output", without("All/Output"), missing + "out_fold"},
      {"no Custom Scenery", without("All/Custom Scenery"), missing + "cus_fold"},
      {"no Global Scenery", without("All/Global Scenery"), missing + "glo_fold"},
      {"no plugins", without("All/Resources/plugins"), missing + "plug\t "},
      {"no menus", without("All/Resources/menus"), missing + "men_file"},
      {"no text", without("All/Resources/text"), missing + "tex_file"},
      {"All is a link",
       [this] {
         std::filesystem::rename(base + "src/All", base + "All elsewhere");
         link("All", base + "All elsewhere");
       },
       missing + "all_fold"},
      {"disc 0 exists", [this] { mkdir((base + "out/disk_0").c_str(), 0755); },
       "Could not make the dst_folder! THIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS "
       "THOUGH!"},
      {"disc 2 exists", [this] { mkdir((base + "out/disk_2").c_str(), 0755); },
       "Could not make the dst_folder!"},
      {"output root is missing", [this] { rmdir((base + "out").c_str()); },
       "Could not make the dst_folder!"},
      {"unknown install type", [] { fog_fals = 4; },
       "I can not tell what type of install this is!"},
  };
  for (const refusal& row : refusals) {
    SCOPED_TRACE(row.label);
    TearDown();
    SetUp();
    row.damage();
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1), literally(row.text));
  }
}

TEST_F(BuilderScan, EarthSceneryNeedsItsPlaces) {
  for (const auto& [path, name] :
       {std::pair{"All/Resources/default scenery/900 red terrain", "!found_redt\t "},
        std::pair{"All/Resources/bitmaps/Earth Orbit Textures", "!found_orbt\t "}}) {
    SCOPED_TRACE(path);
    TearDown();
    SetUp();
    drop(path);
    fog_fals = install_earth;
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1), name);
    std::filesystem::remove_all(base + "out/disk_0");
    fog_fals = install_base;
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "");
  }
}

// Each of these is a step away from a refusal or a filter.
TEST_F(BuilderScan, NearMissesAreBuilt) {
  const char* const kept[] = {"All/Aircraft/Skyvane Copy.acf",
                              "All/Aircraft/a b.ac3",
                              "All/Aircraft/x.ac.txt",
                              "All/Aircraft/gun.Cpp",
                              "All/Weapons/ guns/a.wpn",
                              "All/Weapons/work",
                              "All/Weapons/a.ovw2",
                              "All/Weapons/thumbs.db",
                              "All/Weapons/prf",
                              "All/Weapons/a_.txt",
                              "All/Weapons/a.dsf",
                              "All/Resources/preference.txt",
                              "All/Output/a'b\"c.txt",
                              "All/Output/caf\xE9.txt",
                              "All/Output/\xE6\x97\xA5.txt",
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
  build();
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

TEST_F(BuilderScan, NamesThatTheWebCannotFetchAreWarnedOf) {
  put("All/Output/100%.txt", state_a);
  put("All/Weapons/No #1/a.wpn", state_a);
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "WARNING: .*100%.txt");
  std::filesystem::remove_all(base + "out");
  mkdir((base + "out").c_str(), 0755);
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "WARNING: .*No #1/");
}

// --- the filter ---------------------------------------------------------------------------------
TEST_F(BuilderScan, FilterByPathAndType) {
  struct row {
    const char* path;
    bool kept[4];  // by install type
  };
  const bool Y = true, N = false;
  const row rows[] = {
      {"All/Aircraft/Heron.acf", {Y, Y, N, N}},
      {"Macintosh/Skyvane.app/Contents/PkgInfo", {Y, Y, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf", {N, Y, N, N}},
      {"All/Global Scenery/-global overlays-/a.dsf", {N, Y, N, N}},
      {"All/Global Scenery/-global terrain- 2/a.dsf", {N, Y, N, N}},
      {"All/Global Scenery/other/a.dsf", {Y, Y, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf.7z", {N, N, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf.txt", {N, N, N, N}},
      {"All/Custom Scenery/DSF 900 Mars World-Wide/a.dsf", {N, N, Y, N}},
      {"All/Custom Scenery/DSF 900 Moon World-Wide/a.dsf", {N, N, N, Y}},
      {"All/Custom Scenery/DSF 900 Mars World-Wide/a.bak", {N, N, N, N}},
      {"All/Custom Scenery/DSF 900 Mars/a.dsf", {Y, Y, N, N}},
      {"Linux/DSF 900 Mars World-Wide/a.dsf", {Y, Y, N, N}},
      {"All/Resources/bitmaps/Earth Orbit Textures/a.png", {N, Y, N, N}},
      {"All/Resources/default scenery/900 red terrain/a.png", {N, Y, N, N}},
      {"All/Resources/default scenery/901 red terrain/a.png", {Y, Y, N, N}},
      {"All/install_pfc Aircraft/a.acf", {N, N, N, N}},
      {"Macintosh/install_pfc Aircraft/a.acf", {Y, Y, N, N}},
      {"All/Weapons/a.7z.txt", {N, N, N, N}},
      {"All/Weapons/Thumbs.db", {N, N, N, N}},
      {"All/Weapons/artwork.png", {N, N, N, N}},  // holds "work.", as blunt as ever
      {"All/Weapons/artworks.png", {Y, Y, N, N}},
      {"All/Weapons/a._b", {N, N, N, N}},
      {"All/Weapons/.DS_Store", {N, N, N, N}},
      {"All/Weapons/.sandboxinfo", {N, N, N, N}},
      {"Macintosh/Skyvane.xSYM/a", {N, N, N, N}},
      {"All/Weapons/a.ovw", {N, N, N, N}},
      {"All/Weapons/a.OVW", {Y, Y, N, N}},
      {"All/Weapons/a.ac", {N, N, N, N}},
      {"All/Weapons/a.acf", {Y, Y, N, N}},
      {"All/Weapons/a.ac/b", {Y, Y, N, N}},
      {"All/Resources/serverlist.txt", {N, N, N, N}},
      {"All/Resources/serverlist9.txt", {Y, Y, N, N}},
      {"All/Output/Skyvane Pilot.txt", {N, N, N, N}},
      {"All/Output/a.prf", {N, N, N, N}},
      {"All/Output/a.fms", {N, N, N, N}},
      {"All/Output/a.sit", {N, N, N, N}},
      {"All/Output/a.mov", {N, N, N, N}},
      {"All/Output/a.bak", {N, N, N, N}},
      {"All/Output/a.bak2", {Y, Y, N, N}},
  };
  for (const row& one : rows) {
    for (fog_fals = 0; fog_fals < 4; ++fog_fals) {
      EXPECT_EQ(is_good_file(src_fold + one.path, 0, 0), one.kept[fog_fals])
          << one.path << ", type " << fog_fals;
    }
  }
}

TEST_F(BuilderScan, FilterLooksIntoFilesOnRequest) {
  put("All/Weapons/empty.wpn", "");
  put("All/Weapons/full.wpn", state_a);
  mkfifo((src_fold + "All/Weapons/pipe.wpn").c_str(), 0644);
  link("All/Weapons/to empty.wpn", "empty.wpn");
  link("All/Weapons/to folder", "../Aircraft");
  link("All/Weapons/to nothing", "nowhere");
  struct row {
    const char* name;
    int is_folder;
    int check;
    bool kept;
  };
  for (const row& one : {row{"empty.wpn", 0, 1, false}, row{"empty.wpn", 0, 0, true},
                         row{"empty.wpn", 1, 1, true}, row{"full.wpn", 0, 1, true},
                         row{"missing.wpn", 0, 1, false}, row{"missing.wpn", 0, 0, true},
                         row{"pipe.wpn", 0, 1, false}, row{"to empty.wpn", 0, 1, true},
                         row{"to folder", 0, 1, true}, row{"to nothing", 0, 1, true}}) {
    EXPECT_EQ(is_good_file(src_fold + "All/Weapons/" + one.name, one.is_folder, one.check),
              one.kept)
        << one.name << " folder " << one.is_folder << " check " << one.check;
  }
}

TEST_F(BuilderScan, KeysAreNeutralOfTheSourceFolder) {
  struct row {
    const char* path;
    int os;
    const char* key;
  };
  for (const row& one : {row{"All/a/b", 0, "ALL_os/a/b"}, row{"ALL_os/a/b", 0, "ALL_os/a/b"},
                         row{"Macintosh/Skyvane.app/x", 1, "APL_os/Skyvane.app/x"},
                         row{"Windows/x", 2, "IBM_os/x"}, row{"Linux/x", 3, "LIN_os/x"},
                         row{"All/Resources/plugins/KVLM.so", 6, "/Resources/plugins/KVLM.so"},
                         row{"All/x", 4, "/x"}, row{"/x", 0, "ALL_os/x"}}) {
    std::string path = one.path;
    chop_platform(path, one.os);
    EXPECT_EQ(path, one.key) << one.path << " os " << one.os;
  }
  std::string bare = "readme.txt";
  EXPECT_EXIT(chop_platform(bare, 0), testing::ExitedWithCode(1),
              "Could not find the dir char! readme.txt");
}

// The climb from a file to the root stops at the first folder that is known; no level may be
// missed.
TEST_F(BuilderScan, FoldersOfDeepTrees) {
  std::string deep = "All/Weapons/";
  for (int i = 0; i < 40; ++i)
    deep += "d/";
  put(deep + "bottom.wpn", state_a);
  num_files_rec = num_files_use = 0;
  comp_files.clear();
  comp_paths.clear();
  pref_level(src_fold);
  EXPECT_EQ(comp_files.size(), 3u);  // and the two texts of the smallest tree
  for (int disc = 0; disc < 3; ++disc) {
    std::string folder = dst_fold_base + "disk_" + std::to_string(disc) + "/Test 9/" + deep;
    for (; folder.size() >= dst_fold_base.size();
         folder.resize(folder.rfind('/', folder.size() - 2) + 1))
      EXPECT_TRUE(comp_paths.contains(folder)) << folder;
  }
  EXPECT_FALSE(comp_paths.contains(base));
}

}  // namespace

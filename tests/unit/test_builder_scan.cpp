// The walk over the source tree: what ends a build, what is left out, what passes.

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
      {"empty folder with a blank at its end",
       [this] { std::filesystem::create_directories(base + "src/All/Weapons/guns "); },
       "YOU IDIOT! You tried to include a file or directory with a space at the end!"},
      {"colon", with("All/Weapons/a:b.wpn"), "YOU IDIOT! found a  : in the path!"},
      {"backslash", with("All/Weapons/a\\b.wpn"), "YOU IDIOT! found a \\ in the path!"},
      {"line feed", with("All/Weapons/a\nFILE.wpn"), "found a LINE END in the path!"},
      {"blank before a file's name", with("All/Weapons/ a.wpn"), "with a space at the start!"},
      {"copy that the filter would drop", with("All/Aircraft/a copy.bak"), "found a copy file!"},
      {"folder called a copy", with("All/Aircraft/photocopy/a.acf"), "found a copy file!"},
      {"source code inside a name", with("All/Weapons/gun.cpp.txt"), "found a .cpp file!"},
      {"file in All", with("All/readme.txt"),
       "I FOUND A FILE INSIDE THE 'ALL' FOLDER! WE SHOULD ONLY HAVE FOLDERS THERE!"},
      {"unknown folder in All", with("All/Movies/a.txt"),
       "What the hell is THIS doing in here!?!?!? Movies/"},
      {"unknown platform", with("Amiga/a.txt"),
       "WHAT THE FUCK? I CAN'T TELL WHAT TYPE OF FILE THIS IS!"},
      {"preferences", with("All/Resources/preferences/joystick.txt"),
       "YOU IGNORANT SLUT! I found this preferences file!"},
      {"sibling's file", with("All/Resources/bitmaps/sibling/cockpit_com.png"), " found_com_file"},
      {"Windows program that is none", with("Windows/Skyvane.exe"),
       "Oops! We could not make a windows exe file large-address-aware!"},
      {"link that is cut when read", [this] { link("All/Weapons/far", std::string(499, '/')); },
       "found a link that goes on and on!"},
      {"archive's place taken by a folder",
       [this] {
         put("All/Weapons/gun.wpn", state_a);
         put("All/Weapons/gun.wpn.zip/inner.wpn", state_a);
       },
       "I could not zip a file!"},
      {"no All", without("All"), missing + "all_fold"},
      {"no Resources", without("All/Resources"), missing + "res_fold"},
      {"All is a link",
       [this] {
         std::filesystem::rename(base + "src/All", base + "All elsewhere");
         link("All", base + "All elsewhere");
       },
       missing + "all_fold"},
      {"no red terrain for Earth",
       [this] {
         drop("All/Resources/default scenery/900 red terrain");
         bld.fog_fals = install_earth;
       },
       missing + "redt\t "},
      {"disc 2 exists", [this] { mkdir((base + "out/disk_2").c_str(), 0755); },
       "Could not make the dst_folder!"},
      {"output root cannot be made",
       [this] {
         rmdir((base + "out").c_str());
         put_at(base + "out", "a file");
       },
       "Could not make the dst_folder!"},
      {"unknown install type", [] { bld.fog_fals = 4; },
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
  struct row {
    const char* path;
    bool kept[4];  // by install type
  };
  const bool Y = true, N = false;
  const row rows[] = {
      {"All/Aircraft/Heron.acf", {Y, Y, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf", {N, Y, N, N}},
      {"All/Global Scenery/-global terrain- 2/a.dsf", {N, Y, N, N}},
      {"All/Global Scenery/other/a.dsf", {Y, Y, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf.7z", {N, N, N, N}},
      {"All/Global Scenery/-global terrain-/a.dsf.txt", {N, N, N, N}},
      {"All/Custom Scenery/DSF 900 Mars World-Wide/a.dsf", {N, N, Y, N}},
      {"All/Custom Scenery/DSF 900 Mars/a.dsf", {Y, Y, N, N}},
      {"Linux/DSF 900 Mars World-Wide/a.dsf", {Y, Y, N, N}},
      {"All/Resources/bitmaps/Earth Orbit Textures/a.png", {N, Y, N, N}},
      {"All/Resources/default scenery/900 red terrain/a.png", {N, Y, N, N}},
      {"All/install_pfc Aircraft/a.acf", {N, N, N, N}},
      {"Macintosh/install_pfc Aircraft/a.acf", {Y, Y, N, N}},
      {"All/Weapons/a.7z.txt", {N, N, N, N}},
      {"All/Weapons/Thumbs.db", {N, N, N, N}},
      {"All/Weapons/artworks.png", {Y, Y, N, N}},
      {"All/Weapons/a._b", {N, N, N, N}},
      {"All/Weapons/a.ovw", {N, N, N, N}},
      {"All/Weapons/a.ac", {N, N, N, N}},
      {"All/Resources/serverlist.txt", {N, N, N, N}},
      {"All/Resources/serverlist9.txt", {Y, Y, N, N}},
      {"All/Output/a.bak", {N, N, N, N}},
      {"All/Output/a.bak2", {Y, Y, N, N}},
  };
  for (const row& one : rows) {
    for (bld.fog_fals = 0; bld.fog_fals < 4; ++bld.fog_fals) {
      EXPECT_EQ(is_good_file(bld.src_fold + one.path, 0, 0), one.kept[bld.fog_fals])
          << one.path << ", type " << bld.fog_fals;
    }
  }
}

}  // namespace

// What a build leaves on the discs and in the manifest.

#include "Installer-f/builder/make_installer_places.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/engine/utils_manifest.h"
#include "tests/unit/builder_tree.h"
#include "tests/unit/test_archive_util.h"

namespace {

class BuilderBuild : public builder_test {
 protected:
  // Every version of a file in the manifest just built: "os version raw signature".
  std::vector<std::string> versions_of(const std::string& path) const {
    std::vector<std::string> lines;
    int runs = 0;
    for (const file_history_struct& history : sim_info) {
      if (history.current().path != path) continue;
      ++runs;
      for (const file_version_struct& one : history.versions) {
        lines.push_back(std::to_string(one.os) + " " + std::to_string(one.version) + " " +
                        std::to_string(static_cast<int>(one.raw_kb)) + " " +
                        std::string(one.sig_want));
      }
    }
    EXPECT_LE(runs, 1) << path << " has lines in two places";
    return lines;
  }
  void build_and_read() const {
    build();
    ASSERT_EQ(read_directory(base + "read/directory.txt", ""), 3);
  }
  ino_t inode(const std::string& path) const {
    struct stat info {};
    EXPECT_EQ(lstat((base + path).c_str(), &info), 0) << path;
    return info.st_ino;
  }
};

using lines = std::vector<std::string>;

// The whole text, by the format's own description.
TEST_F(BuilderBuild, ManifestToTheLetter) {
  put("All/Weapons/gun.wpn", state_abc);
  put("All/Weapons/big gun.wpn", std::string(2999, 'x'));
  put("Linux/run", state_a);
  put("Macintosh/a/b", state_a);
  EXPECT_EQ(build(),
            "I\n900 version\nINSTALLER\n\n"
            "\nDIR All/Resources/menus/English/\n"
            "FILE 0 0 91001 0 0 900150983cd24fb0d6963f7d28e17f72 Skyvane.txt\n"
            "\nDIR All/Resources/text/English/\n"
            "FILE 0 0 91001 0 0 900150983cd24fb0d6963f7d28e17f72 Skyvane.txt\n"
            "\nDIR All/Weapons/\n"
            // md5sum of 2999 times "x"
            "FILE 0 0 91001 0 2 d004f738cd66cce067f91f5a6430ca4e big gun.wpn\n"
            "FILE 0 0 91001 0 0 900150983cd24fb0d6963f7d28e17f72 gun.wpn\n"
            "\nDIR Linux/\n"
            "FILE 0 3 91001 0 0 0cc175b9c0f1b6a831c399e269772661 run\n"
            "\nDIR Macintosh/a/\n"
            "FILE 0 1 91001 0 0 0cc175b9c0f1b6a831c399e269772661 b\n");
  EXPECT_FALSE(is_there("out/disk_0/Test 9/directory.txt"));
  EXPECT_EQ(content_of(base + "out/disk_0/dvd_version.txt"),
            "I\n900 version\nDVD\n\nVERSION Test 9\n");
  ASSERT_EQ(zip_to_file(base + "out/disk_0/Test 9/Linux/run.zip", base + "read/", nullptr, 0), 0);
  EXPECT_EQ(content_of(base + "read/run"), "a");
}

TEST_F(BuilderBuild, HistoriesGoOn) {
  const std::string a = sig_a, abc = sig_abc, md = sig_md;
  const auto line = [](const std::string& rest) { return "FILE 0 0 " + rest + "\n"; };
  // The first half under the folder's own name, as this builder writes it, the second half under
  // the neutral word that old manifests have: both are the same files.
  put_previous(
      "DIR All/Weapons/\n" + line("90000 5 7 " + abc + " unchanged.wpn") +
      line("90000 5 7 " + a + " changed twice.wpn") +
      line("90500 6 8 " + md + " changed twice.wpn") + line("90000 5 7 " + a + " vanished.wpn") +
      line("90000 5 7 " + a + " gone.wpn") + line("90500 0 0 GONE gone.wpn") +
      "\nDIR ALL_os/Weapons/\n" + line("90000 5 7 " + abc + " same again.wpn") +
      line("90500 0 0 GONE same again.wpn") + line("90000 5 7 " + a + " other again.wpn") +
      line("90500 0 0 GONE other again.wpn") + line("90000 5 7 " + abc + " back to first.wpn") +
      line("90500 6 8 " + a + " back to first.wpn") + line("90000 5 7 " + a + " dropped.wpn.bak") +
      line("90000 5 7 " + a + " vanished there.wpn") +
      "\nDIR All/Resources/plugins/\nFILE 0 6 90000 5 7 " + a + " KVLM.so\n" +
      "DIR All/Global Scenery/-global terrain-/x/\n" + line("90000 5 7 " + a + " +34-118.dsf") +
      "DIR LIN_os/\nFILE 0 3 90000 5 7 " + a + " Skyvane\n");
  for (const char* const name :
       {"unchanged", "changed twice", "same again", "other again", "back to first", "new"})
    put(std::string("All/Weapons/") + name + ".wpn", state_abc);
  put("All/Resources/plugins/KVLM.so", state_abc);
  put("Linux/Skyvane", state_abc);
  build_and_read();

  const std::string now_abc = "0 91001 0 " + abc, was_a = "0 90000 7 " + a, gone = "0 91001 0 GONE",
                    was_gone = "0 90500 0 GONE";
  const std::map<std::string, lines> expected = {
      {"All/Weapons/unchanged.wpn", {now_abc}},
      {"All/Weapons/changed twice.wpn", {was_a, "0 90500 8 " + md, now_abc}},
      {"All/Weapons/vanished.wpn", {was_a, gone}},
      {"All/Weapons/gone.wpn", {was_a, was_gone}},
      {"All/Weapons/same again.wpn", {now_abc}},
      {"All/Weapons/other again.wpn", {was_a, now_abc}},
      {"All/Weapons/back to first.wpn", {"0 90500 8 " + a, now_abc}},
      {"All/Weapons/new.wpn", {now_abc}},
      {"All/Weapons/dropped.wpn.bak", {}},
      {"ALL_os/Weapons/vanished there.wpn", {was_a, gone}},
      {"All/Resources/plugins/KVLM.so", {"6 90000 7 " + a, "6 91001 0 " + abc}},
      {"All/Global Scenery/-global terrain-/x/+34-118.dsf", {}},
      {"Linux/Skyvane", {"3 90000 7 " + a, "3 91001 0 " + abc}},
  };
  for (const auto& [path, versions] : expected)
    EXPECT_EQ(versions_of(path), versions) << path;
}

TEST_F(BuilderBuild, BadHistoriesEndTheBuild) {
  const std::string a = sig_a;
  const auto line = [&a](int version, const char* name) {
    return "FILE 0 0 " + std::to_string(version) + " 1 1 " + a + " " + name + "\n";
  };
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"two runs of one path",
       "DIR All/W/\n" + line(90000, "x") + line(90000, "y") + line(90100, "x"),
       "WARNING: you appear to have a file TWICE in an old directory file. All/W/x"},
      {"one file under both words",
       "DIR All/W/\n" + line(90000, "x") + "DIR ALL_os/W/\n" + line(90000, "x"), "file TWICE"},
      {"this release", "DIR All/W/\n" + line(90000, "x") + line(91001, "x"),
       "You idiot! I already have a version: version_number 91001.000000"},
      {"no folder", line(90000, "x"), "Could not find the dir char! x"},
  };
  for (const auto& [label, body, text] : rows) {
    SCOPED_TRACE(label);
    put_previous(body);
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1), text);
    EXPECT_FALSE(is_there("out/disk_0"));
  }
  // Nor is anything else taken for a manifest, which would start the history over.
  here.file("prose.txt", "I\n900 version\nSERVERS\n");
  for (const char* const other : {"src/", "prose.txt"}) {
    bld.old_dir_path = base + other;
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1),
                "I could not read the old directory!.*--previous=none")
        << other;
    EXPECT_TRUE(nothing_left()) << other;
  }
  // A zip of one is read.
  put_previous("DIR All/Weapons/\n" + line(90000, "old.wpn"));
  file_to_zip(bld.old_dir_path, base + "previous.zip");
  bld.old_dir_path = base + "previous.zip";
  EXPECT_TRUE(str_holds(build(), "GONE old.wpn"));
  clear_output();
  // Only the base product carries the history on.
  put_previous("DIR All/Weapons/\n" + line(90000, "old.wpn"));
  bld.fog_fals = install_earth;
  put(earth_tile, state_a);
  EXPECT_FALSE(str_holds(build(), "old.wpn"));
}

TEST_F(BuilderBuild, HandMadeArchivesAreLinked) {
  put("All/Weapons/gun.wpn", std::string(3000, 'x'));
  put("All/Weapons/gun.wpn.7z", std::string(2500, '7'));
  put("All/Weapons/orphan.wpn.7z", "no file of that name");
  here.file("elsewhere", std::string(1500, '7'));
  put("All/Weapons/linked.wpn", state_a);
  link("All/Weapons/linked.wpn.7z", base + "elsewhere");
  const std::string manifest = build();
  EXPECT_EQ(inode("out/disk_0/Test 9/All/Weapons/gun.wpn.7z"), inode("src/All/Weapons/gun.wpn.7z"));
  EXPECT_EQ(inode("out/disk_0/Test 9/All/Weapons/linked.wpn.7z"), inode("elsewhere"));
  EXPECT_FALSE(is_there("out/disk_0/Test 9/All/Weapons/gun.wpn.zip"));
  EXPECT_FALSE(is_there("out/disk_0/Test 9/All/Weapons/orphan.wpn.7z"));
  EXPECT_TRUE(str_holds(manifest, "FILE 0 0 91001 2 3 ")) << manifest;
  EXPECT_FALSE(str_holds(manifest, ".7z")) << manifest;
}

// Stored data of 6,000 bytes and a little more: 6 units a file.
TEST_F(BuilderBuild, DiscsBreakBehindTheFileThatCrosses) {
  for (const char* const name : {"a", "b", "c", "d", "e"})
    put(std::string("All/Weapons/") + name, noise(6000, 1) + name);
  put("Linux/last", state_a);
  constexpr size_t first_gun = 2;  // in the manifest, behind the smallest tree's two texts
  // Two files make 12 units: the limit itself does not break.
  for (const auto& [limit, discs] : {std::pair{11, "00112"}, {12, "00011"}, {1000, "00000"}}) {
    bld.disc_limit_kb = static_cast<float>(limit);
    clear_output();
    build_and_read();
    for (int i = 0; i < 5; ++i) {
      const int disc = discs[i] - '0';
      const std::string path = std::string("All/Weapons/") + "abcde"[i];
      EXPECT_TRUE(is_there("out/disk_" + std::to_string(disc) + "/Test 9/" + path + ".zip"))
          << path << " limit " << limit;
      EXPECT_EQ(sim_info[static_cast<size_t>(i) + first_gun].current().disk, disc)
          << path << " limit " << limit;
    }
    EXPECT_TRUE(is_there("out/disk_0/dvd_version.txt"));
  }
  // A large one is packed first of all, and put on the disc that its turn is on.
  put("All/Weapons/d2", std::string(17000000, 'x'));
  bld.disc_limit_kb = 12;
  clear_output();
  build_and_read();
  EXPECT_TRUE(is_there("out/disk_1/Test 9/All/Weapons/d2.zip"));
  EXPECT_FALSE(is_there("out/disk_0/Test 9/All/Weapons/d2.zip"));
  // Four discs are more than there are folders for.
  bld.disc_limit_kb = 5;
  clear_output();
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(1),
              "I could not zip a file!.*3 discs of 0 MB are full.*Raise --disk_kb");
  EXPECT_TRUE(nothing_left());
}

// --- the same tree, the same master -------------------------------------------------------------
class BuilderAgain : public BuilderBuild {
 protected:
  void SetUp() override {
    BuilderBuild::SetUp();
    for (int i = 1; i < 40; ++i)
      put(gun(i), std::string(static_cast<size_t>(3000 * i), 'g'));
    put("All/Weapons/ready", state_a);
    put("All/Weapons/ready.7z", "made by hand");
    link("All/Weapons/link", "gun 1");
    // A record does not trust what has just been written.
    for (const auto& one : std::filesystem::recursive_directory_iterator(base + "src"))
      if (one.is_regular_file() && !one.is_symlink()) set_age(one.path(), 60);
  }
  static std::string gun(int number) { return "All/Weapons/gun " + std::to_string(number); }
  static void set_age(const std::filesystem::path& path, int minutes) {
    constexpr time_t from = 1709618828;  // 5 March 2024
    const timespec times[2] = {{from - 60 * minutes, 5}, {from - 60 * minutes, 5}};
    EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }
  void put_aged(const std::string& path, const std::string& bytes, int minutes) const {
    put(path, bytes);
    set_age(base + "src/" + path, minutes);
  }
  // The output as it stands now, moved out of the way: every file with its bytes.
  std::map<std::string, std::string> set_aside(const std::string& name) const {
    std::map<std::string, std::string> files;
    for (const auto& one : std::filesystem::recursive_directory_iterator(base + "out"))
      if (one.is_regular_file())
        files[one.path().lexically_relative(base + "out")] = content_of(one.path());
    std::filesystem::remove_all(base + name);
    std::filesystem::rename(base + "out", base + name);
    clear_output();
    return files;
  }
  // How many archives of "last" a build takes over, and what it makes.
  std::map<std::string, std::string> rebuild(int* taken_over) const {
    bld.reuse_fold = base + "last/";
    EXPECT_EQ(load_reuse(), "");
    build();
    bld.reuse_fold.clear();
    EXPECT_EQ(load_reuse(), "") << "and the record is closed";
    *taken_over = 0;
    for (const auto& one : std::filesystem::recursive_directory_iterator(base + "out"))
      if (one.path().extension() == ".zip" && one.hard_link_count() > 1) ++*taken_over;
    return set_aside("rebuilt");
  }
};

TEST_F(BuilderAgain, OnAnyNumberOfThreadsAndAtAnyTime) {
  bld.threads = 1;
  build();
  const auto first = set_aside("first");
  bld.threads = 7;
  const auto by_another = [] {
    umask(077);
    build_and_leave();
  };
  EXPECT_EXIT(by_another(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(set_aside("second"), first);

  bld.source_date = 1000000000;  // 9 September 2001
  build();
  for (const char* const zip : {"directory.txt", "All/Weapons/gun 2"}) {
    const std::string archive = base + "out/disk_0/Test 9/" + zip + ".zip";
    EXPECT_TRUE(str_holds(run("unzip -Z -T -s '" + archive + "'"), " 20010909.")) << zip;
  }
}

TEST_F(BuilderAgain, ArchivesAreTakenOver) {
  build();
  set_aside("last");
  const std::string old_archives = base + "last/disk_0/Test 9/";
  put_aged(gun(3), std::string(9000, 'h'), 50);   // other bytes
  set_age(base + "src/" + gun(4), 50);            // another date alone
  chmod((base + "src/" + gun(5)).c_str(), 0755);  // another mode
  std::filesystem::remove(old_archives + gun(6) + ".zip");
  std::filesystem::resize_file(old_archives + gun(7) + ".zip", 50);
  drop(gun(39));
  put_aged("All/Weapons/new", state_a, 50);
  build();
  const auto anew = set_aside("anew");
  int taken_over = 0;
  EXPECT_EQ(rebuild(&taken_over), anew);
  EXPECT_EQ(taken_over, 35);  // of 39 and the tree's two texts

  // Bytes that change behind an unchanged date and size, here and there: only a hash tells.
  put_aged(gun(8), std::string(24000, 'h'), 60);
  const std::string spoilt = old_archives + gun(9) + ".zip";
  std::string bytes = content_of(spoilt);
  bytes[bytes.size() / 2] ^= 1;
  overwrite(spoilt, bytes);
  build();
  const auto right = set_aside("anew");
  EXPECT_NE(rebuild(&taken_over), right);
  bld.verify_reuse = true;
  EXPECT_EQ(rebuild(&taken_over), right);
  EXPECT_EQ(taken_over, 33);

  // A record that is damaged here and there costs time and nothing else.
  std::string record = content_of(base + "last/build_record.txt");
  for (size_t at = record.find("\nFILE"); at < record.size(); at += 101)
    record[at] = ' ';
  here.file("last/build_record.txt", record);
  EXPECT_EQ(rebuild(&taken_over), right);
  EXPECT_LT(taken_over, 20);
}

// What was written a moment ago may be written once more within the same tick of the clock.
TEST_F(BuilderAgain, WhatIsFreshIsNotTrusted) {
  put("All/Weapons/fresh", state_a);
  build();
  EXPECT_FALSE(str_holds(content_of(base + "out/build_record.txt"), "fresh"));
}

// A volume that fills up while the manifest is written: half a manifest may not look like a whole.
TEST_F(BuilderBuild, FullVolumeIsNoticed) {
  for (int i = 0; i < 60; ++i)
    put("All/Weapons/gun " + std::to_string(i) + ".wpn", state_a);
  const auto build_in_little_room = [] {
    const small_disk full(1500);
    build_and_leave();
  };
  EXPECT_EXIT(build_in_little_room(), testing::ExitedWithCode(1),
              "I could not write all of this file!");
  EXPECT_TRUE(nothing_left());
}

// --- warnings -----------------------------------------------------------------------------------
TEST_F(BuilderBuild, FilesThatMeetWhenInstalledOrOnlyMoved) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"All/x/A.txt", "Linux/X/a.TXT", true},
      {"Macintosh/a.txt", "Windows/a.txt", false},
      {"All/a.txt", "All/b.txt", false},
      {"Windows/a.txt", "Windows/A.txt", true},
      {"All/Resources/plugins/KVLM.so", "Linux/Resources/plugins/KVLM.so", true},
      {"All/Resources/plugins/KVLM.so", "Windows/Resources/plugins/KVLM.so", false},
      {"All/caf\xC9.txt", "All/caf\xE9.txt", false}};
  for (const auto& [first, second, meet] : rows) {
    bld.comp_files.assign(2, {});
    for (size_t i = 0; i < 2; ++i) {
      bld.comp_files[i].relative = i == 0 ? first : second;
      bld.comp_files[i].os = platform_of(bld.comp_files[i].relative);
    }
    testing::internal::CaptureStderr();
    note_installed_places();
    const std::string said = testing::internal::GetCapturedStderr();
    const std::string both = std::string(": ") + first + " and " + second + "\n";
    EXPECT_EQ(str_holds(said, "WARNING: two files"), meet) << both << said;
    EXPECT_EQ(str_holds(said, both), meet) << both << said;
  }
  put_previous(std::string("DIR All/Weapons/\nFILE 0 0 90000 1 1 ") + sig_a + " Gun.wpn\n");
  put("All/Weapons/gun.wpn", state_a);
  EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "listed as gone, .*Gun.wpn");
}

}  // namespace

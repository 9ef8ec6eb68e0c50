// A source tree of the makers in a scratch folder, for the tests of the master builder.
#pragma once

#include "Installer-f/builder/make_installer.h"
#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_tree.h"
#include "corekit/base/hl_types.h"
#include "corekit/files/io_zip.h"
#include "tests/unit/test_files_scratch.h"

// States of a file, with their MD5 signatures from the test suite of RFC 1321.
inline constexpr char state_a[] = "a", sig_a[] = "0cc175b9c0f1b6a831c399e269772661";
inline constexpr char state_abc[] = "abc", sig_abc[] = "900150983cd24fb0d6963f7d28e17f72";
inline constexpr char state_md[] = "message digest", sig_md[] = "f96b697d7cb7938d525a2f31aaf161d0";

// What makes a tree one of Earth scenery.
inline constexpr char earth_tile[] = "All/Global Scenery/-global terrain-/+30-120/+34-118.dsf";

// The smallest tree of the base product, which lacks nothing but scenery for the other types, an
// output root beside it, and the builder's globals set to them.
class builder_test : public testing::Test {
 protected:
  void SetUp() override {
    clear_output();
    for (const char* const folder :
         {"Macintosh", "Windows", "Linux", "All/Instructions", "All/Weapons", "All/Airfoils",
          "All/Aircraft", "All/Output", "All/Custom Scenery", "All/Global Scenery",
          "All/Resources/plugins", "All/Resources/default scenery/900 red terrain",
          "All/Resources/bitmaps/Earth Orbit Textures"})
      here.folder(std::string("src/") + folder);
    put("All/Resources/menus/English/Skyvane.txt", state_abc);
    put("All/Resources/text/English/Skyvane.txt", state_abc);

    g_case_sensitive = 0;
    bld = {};
    bld.src_fold = base + "src/";
    bld.dst_fold_base = base + "out/";
    bld.old_dir_path.clear();
    bld.fog_fals = install_base;
    bld.release_version = skyvane_version;
    bld.disc_limit_kb = 630000;
    bld.reg = 0;
    bld.sim_name = "Test 9";
    place_names();
  }

  // Writes a file of the source tree, with the folders that it needs.
  void put(const std::string& path, const std::string& bytes) const {
    here.file("src/" + path, bytes);
  }
  void clear_output() const {
    std::filesystem::remove_all(base + "out");
    mkdir((base + "out").c_str(), 0755);
  }
  void drop(const std::string& path) const { std::filesystem::remove_all(base + "src/" + path); }
  void link(const std::string& path, const std::string& target) const {
    here.link("src/" + path, target);
  }
  // The previous release's manifest, below its header.
  void put_previous(const std::string& body) const {
    bld.old_dir_path = here.file("previous.txt", "I\n900 version\nINSTALLER\n\n" + body);
  }

  // A build ends the process or leaves found places behind, so each runs in one of its own.
  [[noreturn]] static void build_and_leave() {
    const int status = sub_install();
    std::fflush(nullptr);
    std::_Exit(status);
  }
  // Builds with standard error in a file, and returns that.
  std::string said_by_build(int status) const {
    const auto build_aside = [this] {
      if (!freopen((base + "said").c_str(), "w", stderr)) std::_Exit(99);
      build_and_leave();
    };
    EXPECT_EXIT(build_aside(), testing::ExitedWithCode(status), "");
    return content_of(base + "said");
  }
  // Builds, and returns the manifest's text.
  std::string build() const {
    EXPECT_EXIT(build_and_leave(), testing::ExitedWithCode(0), "");
    return manifest_text();
  }
  std::string manifest_text() const {
    mkdir((base + "read").c_str(), 0755);
    const std::string zip = base + "out/disk_0/Test 9/directory.txt.zip";
    EXPECT_EQ(zip_to_file(zip, base + "read/", nullptr, 0), 0) << zip;
    return content_of(base + "read/directory.txt");
  }
  bool is_there(const std::string& path) const { return ::is_there(base + path); }
  bool nothing_left() const { return std::filesystem::is_empty(base + "out"); }

  // Text as a pattern that matches it alone.
  static std::string literally(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
      if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) pattern += '\\';
      pattern += c;
    }
    return pattern;
  }

  const scratch_folder here;
  const std::string base = here.path();  // with a trailing "/"
};

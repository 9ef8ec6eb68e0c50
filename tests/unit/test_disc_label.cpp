// What a disc's label says.

#include "Installer-f/wizard/main_dvd_util.h"
#include "engine_tree.h"

using DiscLabel = engine_tree;

TEST_F(DiscLabel, NamesARelease) {
  dvd_path = here.folder("disc");
  const std::pair<const char*, const char*> rows[] = {
      {"I\n900 version\nDVD\nNOTE x\n \tVERSION\t Two  words\nEND\n", "Two  words"},
      {"I\r\n900 version\r\nDVD\r\nVERSION Nine\r\n", "Nine"},
      {"I\n900 version\nDVD\nVERSION Nine", "Nine"},
      {"I\n901 version\nDVD\nVERSION Nine\n", no_install_name},
      {"I\n900 version\nDVD\nVERSIONS Nine\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION ..\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION /etc\n", no_install_name},
      {"I", no_install_name},
  };
  for (const auto& [text, name] : rows) {
    write("disc/dvd_version.txt", text);
    install_name = no_install_name;
    stg.directory_state = manifest_loaded;  // the manifest itself is another matter
    UTIL_scan_dvd();
    EXPECT_EQ(install_name, name) << text;
  }
  // The last was none of ours: when it is taken out, the next disc is looked for.
  EXPECT_NE(dvd_path, "");
  std::filesystem::remove(root + "disc/dvd_version.txt");
  UTIL_scan_dvd();
  EXPECT_EQ(dvd_path, "");
}

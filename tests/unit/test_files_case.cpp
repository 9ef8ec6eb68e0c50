// Repair of a path's case, and the listing that it keeps between calls.

#include <ctime>
#include <filesystem>

#include "corekit/Files/io_utils.h"
#include "tests/unit/test_files_scratch.h"

namespace {
std::string repaired(std::string path) {
  findPath(path);
  return path;
}
}  // namespace

TEST(FilesCase, TakesTheSpellingOnDisk) {
  const scratch_folder here;
  here.file("Resources/Bitmaps/Caf\xe9 One.PNG");
  here.link("Resources/Link", "Bitmaps");
  here.link("Resources/Broken", "nowhere");

  for (const char* name : {"ab/x", "Ab/x", "aB/x", "AB/x"})
    here.file(name);
  const struct {
    const char *given, *expected;
  } rows[] = {
      {"RESOURCES/", "Resources/"},
      {"resources//BITMAPS/", "Resources//Bitmaps/"},
      {"resources/bitmaps/caf\xe9 one.png", "Resources/Bitmaps/Caf\xe9 One.PNG"},
      {"resources/./bitmaps", "Resources/./Bitmaps"},
      {"resources/bitmaps/../bitmaps", "Resources/Bitmaps/../Bitmaps"},
      {"resources/link/caf\xe9 ONE.png", "Resources/Link/Caf\xe9 One.PNG"},
      // The first part without a match ends the walk; what is before it is repaired.
      {"resources/bitmap/x", "Resources/bitmap/x"},
      {"resources/bitmaps/caf\xc9 one.png", "Resources/Bitmaps/caf\xc9 one.png"},
      {"resources/BROKEN/x", "Resources/Broken/x"},
      {"resources/bitmaps/caf\xe9 one.png/x", "Resources/Bitmaps/Caf\xe9 One.PNG/x"},
      {"missing/Resources", "missing/Resources"},
      // The exact spelling is preferred.
      {"ab/x", "ab/x"},
      {"AB/X", "AB/x"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(here / row.expected, repaired(here / row.given)) << row.given;
  }
  EXPECT_EQ("", repaired(""));
  EXPECT_EQ("/", repaired("/"));
  const auto before = std::filesystem::current_path();
  ASSERT_EQ(0, chdir(here.path().c_str()));
  EXPECT_EQ("Resources/Bitmaps", repaired("resources/BITMAPS"));
  EXPECT_EQ("./Resources", repaired("./RESOURCES"));
  std::filesystem::current_path(before);
}

TEST(FilesCase, SwitchedByOneFlag) {
  const scratch_folder here;
  here.file("File.txt", "123");
  here.folder("Folder");
  for (const int on : {1, 0, 1}) {
    g_case_sensitive = on;
    EXPECT_EQ(on, file_exists(here / "fILE.TXT"));
    EXPECT_EQ(on ? 3 : -1, APL_file_size(here / "fILE.TXT"));
    EXPECT_EQ(on, dir_exists(here / "folder/"));
    EXPECT_EQ(1, file_exists(here / "File.txt"));
  }
}

// The kept listing must never answer for a folder that has changed, at whatever speed it changes,
// and neither must that of a folder that another one has taken the place of.
TEST(FilesCase, SeesEveryChangeOfAFolder) {
  const scratch_folder here;
  here.folder("Sub");
  for (int i = 0; i < 300; ++i) {
    const std::string lower = here / ("sub/file" + std::to_string(i));
    EXPECT_EQ(0, file_exists(lower)) << i;
    here.file("Sub/File" + std::to_string(i));
    EXPECT_EQ(1, file_exists(lower)) << i;
  }

  // Old enough to be kept: a folder's time of change cannot be set, only waited for.
  const time_t settled = std::time(nullptr) + 4;
  while (std::time(nullptr) < settled)
    usleep(50'000);
  EXPECT_EQ(0, file_exists(here / "Sub/late"));
  EXPECT_EQ(1, file_exists(here / "Sub/file7"));
  here.file("Sub/Late");
  EXPECT_EQ(1, file_exists(here / "Sub/late"));
  unlink((here / "Sub/Late").c_str());
  EXPECT_EQ(0, file_exists(here / "Sub/late"));
  ASSERT_EQ(0, rename((here / "Sub").c_str(), (here / "Other").c_str()));
  here.folder("Sub");
  EXPECT_EQ(0, file_exists(here / "Sub/file7"));
  EXPECT_EQ(1, file_exists(here / "Other/file7"));
}

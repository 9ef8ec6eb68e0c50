// Folders: listing, recursive copy and deletion; repair of a path's case.

#include <atomic>
#include <ctime>
#include <thread>

#include "corekit/base/cmnd.h"
#include "tests/unit/test_files_scratch.h"

namespace {
// A listing as one text, folders with a "/": "a b/ c ".
std::string listing(const std::string& folder, int filter = 0) {
  std::vector<std::string> names = {"left over"};
  std::vector<int> flags = {1, 1};
  const int count = opensave_getitems(folder, filter, names, flags);
  EXPECT_EQ(static_cast<size_t>(count), names.size());
  EXPECT_EQ(names.size(), flags.size());
  std::string text;
  for (size_t i = 0; i < names.size(); ++i)
    text += names[i] + (flags[i] ? "/ " : " ");
  return text;
}
}  // namespace

TEST(FilesTree, ListsInByteOrderWithoutHiddenNames) {
  const scratch_folder here;
  for (const char* name : {"b", "B", "a b", "a", "a0", "\xe9t\xe9", "10", "9", "_"})
    here.file(name);
  here.folder("a.d");
  here.folder(".hidden folder");
  here.file(".DS_Store");
  here.link("to_folder", "a.d");
  here.link("broken", "nothing");
  EXPECT_EQ("10 9 B _ a a b a.d/ a0 b broken to_folder \xe9t\xe9 ", listing(here.path()));
  EXPECT_EQ("", listing(here / ".hidden folder/"));
  here.file("a.d/.DS_Store");
  EXPECT_EQ("", listing(here / "a.d/")) << "a folder with only hidden names counts as empty";
  EXPECT_EQ("", listing(here / "missing/"));
  EXPECT_EQ("", listing(here / "b/"));
}

TEST(FilesTree, ListsFilesOfOneKind) {
  const scratch_folder here;
  for (const char* name : {"a.afl", "b.AFL", "c.Obj", "d.hgt", "afl", ".obj", "e.objx"})
    here.file(name);
  here.folder("f.obj");
  const std::pair<int, const char*> rows[] = {{1, "a.afl b.AFL f.obj/ "},
                                              {4, "c.Obj f.obj/ "},
                                              {18, "d.hgt f.obj/ "},
                                              {12, "f.obj/ "},
                                              {19, "f.obj/ "},
                                              {20, ""}};
  for (const auto& [filter, expected] : rows)
    EXPECT_EQ(expected, listing(here.path(), filter)) << filter;
  int kind = -1;
  EXPECT_EQ(0, opensave_takeit(".obj", 0, 4, &kind));
  EXPECT_EQ(kind, 4);
  EXPECT_EQ(1, opensave_takeit("x.obj", 1, 1, &kind));
  EXPECT_EQ(0, kind) << "a folder is of none";
  cmnd.add_cmd("list/one", "");
  cmnd.add_cmd("list/two/three", "");
  EXPECT_EQ("one two ", listing("list", 21));
}

TEST(FilesTreeDeathTest, FolderPathsEndInASlash) {
  std::vector<std::string> names;
  std::vector<int> flags;
  EXPECT_EXIT(opensave_getitems("/tmp", 0, names, flags), testing::ExitedWithCode(1),
              "Working path does not appear to be a directory!");
  EXPECT_EXIT(recursive_delete_folder("/nothing/here"), testing::ExitedWithCode(1),
              "I need to end all paths with the directory indicator!");
  EXPECT_GT(opensave_getitems("/", 0, names, flags), 0);
  EXPECT_EQ(0, opensave_getitems("", 0, names, flags));
  EXPECT_EQ(0, opensave_getitems("x", 0, names, flags));
}

TEST(FilesTree, DeletesAllButWhatLinksLeadTo) {
  const scratch_folder here;
  here.file("outside/precious");
  here.file("tree/sub/deep/f");
  here.file("tree/caf\xe9 'x'");
  here.link("tree/to_folder", "../outside");
  here.link("tree/to_file", "../outside/precious");
  here.link("tree/dangling", "nowhere");
  here.link("tree/sub/up", "..");
  EXPECT_EQ(0, recursive_delete_folder(here / "tree/"));
  EXPECT_FALSE(is_there(here / "tree"));
  EXPECT_TRUE(is_there(here / "outside/precious"));
  here.link("link", "outside");
  EXPECT_EQ(20, recursive_delete_folder(here / "link/"));
  EXPECT_TRUE(is_there(here / "outside/precious"));
  EXPECT_TRUE(is_there(here / "link"));
}

// A folder that turns into a link to the outside and back while it is deleted.
TEST(FilesTree, DeletionIsNotLedAway) {
  const scratch_folder here;
  here.file("outside/f0", "precious");
  const std::string sub = here / "tree/sub", spare = here / "spare";
  std::atomic<bool> done = false;
  std::thread swapper([&] {
    while (!done)
      renameat2(AT_FDCWD, sub.c_str(), AT_FDCWD, spare.c_str(), RENAME_EXCHANGE);
  });
  for (int i = 0; i < 300; ++i) {
    for (const char* name : {"tree/sub/f0", "tree/sub/f1"})
      here.file(name);
    EXPECT_EQ(0, symlink((here / "outside").c_str(), spare.c_str()));
    recursive_delete_folder(here / "tree/");
    // The other thread renames meanwhile: what could not be removed is removed at the next look.
    std::error_code ignored;
    while (std::filesystem::exists(here / "tree", ignored) ||
           std::filesystem::is_symlink(std::filesystem::symlink_status(spare, ignored)) ||
           std::filesystem::exists(spare, ignored)) {
      std::filesystem::remove_all(here / "tree", ignored);
      std::filesystem::remove_all(spare, ignored);
    }
  }
  done = true;
  swapper.join();
  EXPECT_EQ(content_of(here / "outside/f0"), "precious");
}

TEST(FilesTree, DeletionStopsAtTheFirstFailure) {
  const scratch_folder here;
  here.file("tree/a");
  here.file("tree/b/.hidden");
  here.file("tree/c");
  EXPECT_EQ(ENOTEMPTY, recursive_delete_folder(here / "tree/"));
  EXPECT_FALSE(is_there(here / "tree/a"));
  EXPECT_TRUE(is_there(here / "tree/b/.hidden"));
  EXPECT_TRUE(is_there(here / "tree/c"));
  EXPECT_EQ(2, recursive_delete_folder(""));
  EXPECT_EQ(2, recursive_delete_folder(here / "missing/"));
  EXPECT_EQ(20, recursive_delete_folder(here / "tree/c/"));
  EXPECT_EQ(1, recursive_delete_folder("/"));
}

TEST(FilesTree, CopiesAFolderAndItsLinks) {
  const scratch_folder here;
  here.file("from/a", "alpha");
  here.file("from/sub/program", "run me");
  chmod((here / "from/sub/program").c_str(), 0755);
  here.file("from/.hidden", "not listed");
  here.link("from/to_a", "a");
  here.link("from/sub/up", "..");
  here.link("from/dangling", std::string(600, 'z'));
  for (const char* label : {"into nothing", "over the first copy"}) {
    EXPECT_EQ(0, copy_file_recursive(here / "from/", here / "to/")) << label;
    EXPECT_EQ("a dangling sub/ to_a ", listing(here / "to/")) << label;
    EXPECT_EQ("alpha", content_of(here / "to/a")) << label;
    EXPECT_EQ(0755u, mode_of(here / "to/sub/program")) << label;
    char text[1000] = {};
    EXPECT_EQ(600, readlink((here / "to/dangling").c_str(), text, sizeof text)) << label;
    EXPECT_EQ(std::string(600, 'z'), text) << label;
    EXPECT_EQ(2, readlink((here / "to/sub/up").c_str(), text, sizeof text)) << label;
    EXPECT_FALSE(is_there(here / "to/.hidden")) << label;
  }
  for (const char* into : {"from/", "from/sub/inner/"})
    EXPECT_NE(0, copy_file_recursive(here / "from/", here / into)) << "it would never end";
  EXPECT_FALSE(is_there(here / "from/sub/inner/sub/inner"));
  EXPECT_EQ(0, copy_file_recursive(here / "from/to_a", here / "single"));
  EXPECT_EQ("alpha", content_of(here / "single"));
}

TEST(FilesTree, DeepTreesAreDeletedButNotCopied) {
  // Deeper than a path can be long: each level is made from the one above it.
  const scratch_folder here;
  const std::string name(200, 'd');
  int level = open(here.folder("tree").c_str(), O_RDONLY | O_DIRECTORY);
  for (int depth = 0; depth < 30; ++depth) {
    ASSERT_EQ(0, mkdirat(level, name.c_str(), 0755)) << depth;
    const int below = openat(level, name.c_str(), O_RDONLY | O_DIRECTORY);
    close(level);
    level = below;
  }
  close(level);
  EXPECT_NE(0, copy_file_recursive(here / "tree/", here / "copy/"));
  EXPECT_EQ(0, recursive_delete_folder(here / "tree/"));
  EXPECT_FALSE(is_there(here / "tree"));
}

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
  const std::pair<const char*, const char*> rows[] = {
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
      {"ab/x", "ab/x"},
      {"AB/X", "AB/x"},
  };
  for (const auto& [given, expected] : rows) {
    EXPECT_EQ(here / expected, repaired(here / given)) << given;
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

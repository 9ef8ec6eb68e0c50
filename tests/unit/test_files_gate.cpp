// The gate, by both of its roads: what it puts into place, and what must not get past it.

#include "corekit/files/io_gate.h"

#include <sys/file.h>
#include <sys/wait.h>

#include <map>
#include <thread>

#include "test_files_scratch.h"

using namespace std::string_literals;

namespace {

// copy/ is the destination, outside/ must stay as it is, and the release ships `shipped`.
class FilesGate : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    dir.file("outside/mine.txt", "mine");
    dir.folder("copy");
    reopen();
  }
  void reopen() {
    ASSERT_EQ(gate.open(dir / "copy/",
                        [this](std::string_view path) {
                          for (const std::string& ship : shipped)
                            if (gate_same_path(ship, path)) return true;
                          return false;
                        }),
              0);
    gate.walk_only = GetParam();
  }
  int put(std::string_view path, const std::string& text = "new") {
    return gate.put_file(path, text.data(), text.size());
  }
  void expect_outside_whole(const std::string& label) {
    EXPECT_EQ(content_of(dir / "outside/mine.txt"), "mine") << label;
    EXPECT_EQ(items_in("outside"), 1) << label;
    EXPECT_EQ(items_in(""), 2) << label;
  }
  long items_in(const std::string& folder) {
    return std::distance(std::filesystem::directory_iterator(dir / folder), {});
  }
  // Names that begin as an unfinished file's, anywhere in the copy.
  int parts_left() {
    int count = 0;
    for (const auto& item : std::filesystem::recursive_directory_iterator(dir / "copy"))
      count += item.path().filename().string().starts_with(gate_part_prefix);
    return count;
  }

  scratch_folder dir;
  gate_class gate;
  std::vector<std::string> shipped;
};
INSTANTIATE_TEST_SUITE_P(Roads, FilesGate, testing::Bool(), [](const auto& road) {
  return road.param ? std::string("walk") : std::string("openat2");
});

TEST_P(FilesGate, PutsWholeFilesInPlace) {
  const std::string longest(255, 'n'), big(300'000, 'b');
  dir.file("copy/old.txt", "old");
  dir.file("copy/second", "kept");
  ASSERT_EQ(link((dir / "copy/second").c_str(), (dir / "copy/linked").c_str()), 0);
  dir.folder("copy/empty");
  dir.link("copy/dangling", "../outside/new");
  dir.link("copy/led", "../outside/mine.txt");
  ASSERT_EQ(mkfifo((dir / "copy/pipe").c_str(), 0600), 0);
  chmod((dir / "copy/old.txt").c_str(), 0400);
  std::string at_limit = "d";
  while (dir.path().size() + 5 + at_limit.size() < path_limit)
    at_limit += at_limit.size() % 100 == 99 ? "/x" : "d";
  at_limit.resize(path_limit - dir.path().size() - 5);
  for (const std::string& path : {"old.txt"s, "linked"s, "empty"s, "pipe"s, "dangling"s, "led"s,
                                  "a/b c/d\ne"s, longest, at_limit, "..a/..."s, " "s}) {
    for (const std::string& text : {""s, "text"s, big}) {
      EXPECT_EQ(put(path, text), 0) << path;
      EXPECT_TRUE(content_of(dir / ("copy/" + path)) == text) << path;
      struct stat info;
      ASSERT_EQ(lstat((dir / ("copy/" + path)).c_str(), &info), 0) << path;
      EXPECT_TRUE(S_ISREG(info.st_mode)) << path;
    }
  }
  EXPECT_EQ(content_of(dir / "copy/second"), "kept");
  EXPECT_EQ(put(at_limit + "x"), ENAMETOOLONG);
  EXPECT_EQ(put(longest + "n"), ENAMETOOLONG);
  EXPECT_EQ(parts_left(), 0);
  expect_outside_whole("put");

  const std::pair<mode_t, mode_t> modes[] = {
      {07777, 0755}, {0666, 0644}, {0, 0644}, {0022, 0400}, {0100755, 0755}};
  umask(022);
  for (const auto& [asked, given] : modes) {
    ASSERT_EQ(gate.put_file("moded", "x", 1, {asked, 1234567890}), 0);
    EXPECT_EQ(mode_of(dir / "copy/moded"), given) << std::oct << asked;
    EXPECT_EQ(std::filesystem::last_write_time(dir / "copy/moded"),
              std::chrono::file_clock::from_sys(
                  std::chrono::sys_seconds(std::chrono::seconds(1234567890))));
  }
}

TEST_P(FilesGate, PathsThatAreNone) {
  dir.file("copy/file", "kept");
  dir.file("copy/folder/inner", "kept");
  for (const std::string path :
       {"", "/", "/etc/x", "..", "../outside/mine.txt", "a/../../outside/mine.txt", "a/..", ".",
        "./a", "a/./b", "a//b", "a/", "folder/"}) {
    EXPECT_EQ(put(path), EINVAL) << path;
    EXPECT_EQ(gate.put_link(path, "a"), EINVAL) << path;
    EXPECT_EQ(gate.make_folder(path), EINVAL) << path;
    EXPECT_EQ(gate.remove_file(path), EINVAL) << path;
    EXPECT_EQ(gate.remove_folder(path), EINVAL) << path;
    EXPECT_EQ(gate.rename(path, "x"), EINVAL) << path;
    EXPECT_EQ(gate.rename("file", path), EINVAL) << path;
  }
  EXPECT_EQ(put(std::string("a\0b", 3)), EINVAL);
  EXPECT_EQ(gate.rename("file", "folder/x"), EINVAL);
  EXPECT_EQ(put("file/below"), ENOTDIR);
  EXPECT_EQ(put("folder"), EISDIR);
  EXPECT_EQ(gate.put_link("folder", "file"), EISDIR);
  EXPECT_EQ(gate.remove_file("folder"), EISDIR);
  EXPECT_EQ(gate.remove_folder("folder"), ENOTEMPTY);
  EXPECT_EQ(gate.remove_folder("file"), ENOTDIR);
  EXPECT_EQ(gate.remove_file("none/none"), ENOENT);
  EXPECT_EQ(gate.make_folder("none/none"), ENOENT);
  EXPECT_EQ(gate.make_folder("folder"), EEXIST);
  EXPECT_EQ(gate_class().put_file("x", "", 0), EBADF);
  EXPECT_EQ(gate_class().open(dir / "copy/file"), ENOTDIR);
  EXPECT_EQ(content_of(dir / "copy/file") + content_of(dir / "copy/folder/inner"), "keptkept");
  EXPECT_EQ(parts_left(), 0);
  expect_outside_whole("no paths");
}

TEST_P(FilesGate, LinksThatAReleaseMayShip) {
  dir.folder("copy/F/Versions/A/Resources");
  dir.file("copy/F/Versions/A/code", "c");
  dir.link("copy/out", "../outside");  // the user's
  dir.link("copy/in", "F/Versions");   // the user's as well
  dir.link("copy/loop", "loop");
  dir.link("copy/F/away", (dir / "outside").c_str());
  const auto expect_link = [this](const std::string& link, int code) {
    SCOPED_TRACE(link);
    const size_t arrow = link.find(" -> ");
    const std::string at = link.substr(0, arrow), target = link.substr(arrow + 4);
    EXPECT_EQ(gate.put_link(at, target), code);
    std::string have;
    EXPECT_EQ(is_sim_link((dir / ("copy/" + at)).c_str(), &have), code == 0);
    EXPECT_EQ(have, code == 0 ? target : "");
  };
  for (const char* link :
       {"F/Versions/Current -> A", "F/Resources -> Versions/Current/Resources",
        "F/code -> Versions/Current/code", "F/later -> Versions/B/not/there/yet",
        "F/Versions/A/up -> ../../..", "F/self -> .", "F/slashes -> .//Versions///A/",
        "F/... -> ...", "new/folder/l -> ../../F", "in/l -> A", "F/via -> ../in/A",
        "out/l -> mine.txt"})  // below the user's link, what stays there is inside
    expect_link(link, 0);
  for (const char* link :
       {"l -> ..", "l -> ../outside", "l -> ../copy/F", "l -> /etc/passwd", "l -> ", "F/l -> ../..",
        "F/Versions/A/l -> ../../../..", "l -> F/../../outside", "l -> none/../../outside",
        "l -> F/.."})  // a link may take the place of F
    expect_link(link, gate_leads_out);
  // By way of the user's links, of which it is not known where they will lead.
  for (const char* link : {"l -> out", "l -> out/mine.txt", "l -> F/away/mine.txt", "l -> loop/x",
                           "in/m -> ../A", "out/m -> ../copy/F"})
    expect_link(link, gate_leads_out);
  EXPECT_EQ(gate.put_link("l", std::string("a\0b", 3)), gate_leads_out);
  EXPECT_EQ(gate.put_link("l", std::string(5000, 'x')), gate_leads_out);  // a name of no place
  EXPECT_EQ(content_of(dir / "copy/F/code"), "c");
  EXPECT_EQ(put("F/Versions/Current"), 0);  // over a link, not through it
  EXPECT_EQ(gate.put_link("F/Versions/Current", "A"), 0);
  EXPECT_EQ(parts_left(), 0);
  unlink((dir / "outside/l").c_str());
  expect_outside_whole("links");
}

// Below what the release ships nothing is done; below the user's own links everything is.
TEST_P(FilesGate, LinksOnTheWay) {
  const std::tuple<std::string, std::string, std::string, bool> rows[] = {
      {"", "scenery", "scenery/x", true},
      {"", "a/b/scenery", "a/b/scenery/c/d/x", true},
      {"scenery/x", "scenery", "scenery/x", true},
      {"scenery", "scenery", "scenery/x", false},
      {"Scenery", "sCENERY", "sCENERY/x", false},
      {"Scenery", "Scenery", "Scenery/a/b/x", false},
      {"a/Scenery", "A", "A/x", true},
      {"a/L", "A/l", "A/l/x", false},
      {"\xC3\x89t\xC3\xA9", "\xC3\xA9t\xC3\x89", "\xC3\xA9t\xC3\x89/x", false},  // accents
      {"link", "lin\xE2\x84\xAA", "lin\xE2\x84\xAA/x", false},                   // the Kelvin sign
  };
  for (const auto& [ship, link, path, followed] : rows) {
    SCOPED_TRACE(ship + ": " + link);
    std::filesystem::create_directories(dir / std::string(path_folder("copy/" + link)));
    dir.file("moved/there", "kept");
    dir.link("copy/" + link, dir / "moved");
    shipped = {ship};
    reopen();
    const int refused = followed ? 0 : gate_below_link;
    EXPECT_EQ(put(path), refused);
    EXPECT_EQ(gate.put_link(link + "/l", "there"), refused);
    EXPECT_EQ(gate.make_folder(link + "/f"), refused);
    EXPECT_EQ(gate.make_folder(link + "/f/h"), refused);
    EXPECT_EQ(gate.remove_folder(link + "/f/h"), refused);
    EXPECT_EQ(gate.rename(link + "/there", "renamed"), refused);
    EXPECT_EQ(gate.remove_file(link + "/renamed"), refused);
    io_handle file;
    EXPECT_EQ(gate.open_file(path, file), refused);
    EXPECT_EQ(is_there(dir / "moved/there"), !followed);
    EXPECT_EQ(items_in("moved"), followed ? 3 : 1);  // x, l and f
    const std::vector<std::string> notes = gate.take_notes();
    ASSERT_EQ(notes.size(), 1u) << "once a link";
    EXPECT_EQ(notes[0].starts_with("WARNING: "), !followed) << notes[0];
    EXPECT_TRUE(str_holds(notes[0], link));
    // The link itself may be replaced by the release, and deleted.
    EXPECT_EQ(gate.remove_folder(link), ENOTDIR);
    EXPECT_EQ(gate.remove_file(link), 0);
    std::filesystem::remove_all(dir / "moved");
    std::filesystem::remove_all(dir / "copy");
    dir.folder("copy");
  }
  // Without anything that tells them apart, no link is the user's.
  dir.link("copy/l", "../outside");
  ASSERT_EQ(gate.open(dir / "copy/"), 0);
  EXPECT_EQ(put("l/x"), gate_below_link);
  expect_outside_whole("no release");
  reopen();
  EXPECT_TRUE(gate.take_notes().empty()) << "of the destination before";
}

// A folder that turns into a link to the outside and back while files are put below it.
TEST_P(FilesGate, AFolderSwappedForALink) {
  dir.folder("copy/a/b");
  dir.link("copy/a/link", "../../outside");
  const std::string a = dir / "copy/a/b", b = dir / "copy/a/link", spare = dir / "copy/a/spare";
  shipped = {"a/b", "a/link", "a/spare"};
  reopen();
  std::atomic<bool> done = false;
  std::thread swapper([&] {
    while (!done)
      renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
  });
  int put_there = 0, refused = 0;
  // A busy machine may give the swapper no turn, or stop it for a while.
  for (int i = 0; i < 1000 || (i < 1000000 && (!put_there || !refused)); ++i) {
    const std::string name = "a/b/f" + std::to_string(i % 7);
    if (i % 4 < 2) {
      const int code = put(name);
      put_there += code == 0;
      refused += code == gate_below_link;
    } else if (i % 4 == 2) {
      gate.put_link(name, "f0");
    } else {
      gate.remove_file("a/b/mine.txt");
      gate.remove_file(name);
    }
  }
  done = true;
  swapper.join();
  EXPECT_GT(put_there, 0);
  EXPECT_GT(refused, 0);
  EXPECT_EQ(parts_left(), 0);
  expect_outside_whole("swapped");
}

TEST_P(FilesGate, WhatStoppedProcessesLeave) {
  dir.file("copy/a/.skyvane_part", "from an earlier version");
  dir.file("copy/a/.skyvane_part_1_2_3", "gone");
  dir.link("copy/a/.skyvane_part_9", "../../outside/mine.txt");
  dir.file("copy/a/.skyvane_part_alive", "at work");
  dir.file("copy/a/.other", "the user's");
  dir.folder("copy/a/.skyvane_part_folder");
  dir.file("copy/b/.skyvane_part_5", "gone");
  const io_handle alive(open((dir / "copy/a/.skyvane_part_alive").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(alive.get(), LOCK_EX), 0);
  EXPECT_EQ(put("a/x"), 0);
  EXPECT_EQ(gate.remove_folder("b"), 0);
  // A folder that takes nothing but a link.
  dir.folder("copy/c");
  dir.link("copy/c/.skyvane_part_7", "x");
  EXPECT_EQ(gate.put_link("c/link", "x"), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(dir / "copy/c/.skyvane_part_7"));
  EXPECT_EQ(items_in("copy/a"), 4);
  for (const char* name : {".other", ".skyvane_part_alive", ".skyvane_part_folder", "x"})
    EXPECT_TRUE(is_there(dir / ("copy/a/"s + name))) << name;
  expect_outside_whole("left over");

  // Killed at any moment, and put again by several at once.
  const std::string text(300'000, 'n');
  for (int i = 0; i < 12; ++i) {
    dir.file("copy/k/file", "old");
    const pid_t child = fork();
    if (child == 0) {
      for (;;)
        put("k/file", text);
    }
    usleep(static_cast<useconds_t>(i * 400));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::string have = content_of(dir / "copy/k/file");
    ASSERT_TRUE(have == "old" || have == text) << have.size();
    reopen();
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
      threads.emplace_back([&] { EXPECT_EQ(put("k/file", text), 0); });
    for (std::thread& thread : threads)
      thread.join();
    EXPECT_TRUE(content_of(dir / "copy/k/file") == text);
    ASSERT_EQ(items_in("copy/k"), 1) << i;
  }
}

TEST_P(FilesGate, TwoProcessesOnOneFile) {
  const std::string texts[] = {std::string(200'000, 'a'), std::string(300'000, 'b')};
  pid_t children[2];
  for (int c = 0; c < 2; ++c) {
    children[c] = fork();
    if (children[c] != 0) continue;
    for (int i = 0; i < 100; ++i) {
      reopen();  // so that each sweeps, again and again
      if (put("race", texts[c]) != 0) _exit(1);
      if (gate.put_link("race-link", "race") != 0) _exit(2);
    }
    _exit(0);
  }
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  const std::string have = content_of(dir / "copy/race");
  EXPECT_TRUE(have == texts[0] || have == texts[1]);
  EXPECT_EQ(parts_left(), 0);
}

TEST_P(FilesGate, RenamesOverNothing) {
  dir.file("copy/Resources/old", "1");
  dir.file("copy/_Resources/mine", "2");
  EXPECT_EQ(gate.rename("Resources", "_Resources"), EEXIST);
  EXPECT_EQ(gate.rename("Resources", "other"), 0);
  EXPECT_EQ(content_of(dir / "copy/other/old") + content_of(dir / "copy/_Resources/mine"), "12");
  EXPECT_EQ(gate.rename("Resources", "other"), ENOENT);
}

// Failures of the disk, each by its own code, and with what was there before whole.
TEST_P(FilesGate, FailuresOfTheDisk) {
  dir.file("copy/a", "old");
  const std::string text(100'000, 'x');
  {
    const small_disk full(4096);
    EXPECT_EQ(put("a", text), EFBIG);
  }
  EXPECT_EQ(content_of(dir / "copy/a"), "old");
  EXPECT_EQ(parts_left(), 0);

  // A folder that takes no new file. The system's own user is not held up by it.
  dir.file("copy/shut/writable", "old");
  dir.file("copy/shut/two names", "old");
  dir.file("copy/shut/read only", "old");
  dir.link("copy/shut/link", "two names");
  ASSERT_EQ(link((dir / "copy/shut/two names").c_str(), (dir / "outside/second").c_str()), 0);
  for (const char* name : {"writable", "two names"})
    chmod((dir / ("copy/shut/"s + name)).c_str(), 0666);
  chmod((dir / "copy/shut").c_str(), 0555);
  chmod(dir.path().c_str(), 0755);
  const bool is_root = geteuid() == 0;
  {
    const ordinary_user user;
    EXPECT_EQ(put("shut/writable"), is_root ? EACCES : 0);  // one's own is opened, not another's
    for (const char* name : {"shut/two names", "shut/read only", "shut/link", "shut/new"})
      EXPECT_EQ(put(name), EACCES) << name;
    EXPECT_EQ(gate.remove_file("shut/writable"), EACCES);
  }
  chmod((dir / "copy/shut").c_str(), 0755);
  EXPECT_EQ(content_of(dir / "copy/shut/writable"), is_root ? "old" : "new");
  EXPECT_EQ(content_of(dir / "copy/shut/two names"), "old");
  EXPECT_EQ(parts_left(), 0);
}

TEST(FilesGateDestination, MadeParentsFirst) {
  scratch_folder dir;
  std::string failed;
  EXPECT_EQ(gate_make_destination(dir / "x/y/z/", failed), 0);
  EXPECT_EQ(gate_make_destination(dir / "x/y/z", failed), 0);
  EXPECT_EQ(gate_make_destination("/", failed), 0);
  EXPECT_TRUE(std::filesystem::is_directory(dir / "x/y/z"));
  dir.file("x/file");
  EXPECT_EQ(gate_make_destination(dir / "x/file/below/", failed), ENOTDIR);
  EXPECT_EQ(failed, dir / "x/file/below");
  EXPECT_EQ(gate_make_destination("", failed), ENOENT);
}

}  // namespace

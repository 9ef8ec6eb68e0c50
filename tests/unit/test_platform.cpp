// The operating system's half of the platform layer.

#include <pwd.h>
#include <sys/file.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>

#include <filesystem>
#include <iterator>
#include <map>
#include <optional>

#include "corekit/Platform/PLT_locale.h"
#include "corekit/Platform/PLT_system.h"
#include "tests/unit/test_files_scratch.h"

using namespace std::string_literals;

namespace {
void set_environment(const char* name, const std::optional<std::string>& value) {
  if (value)
    setenv(name, value->c_str(), 1);
  else
    unsetenv(name);
}

std::optional<std::string> environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? std::optional<std::string>(value) : std::nullopt;
}

// Gives a case's environment back at its end.
struct environment_guard {
  ~environment_guard() {
    for (const auto& [name, value] : before)
      set_environment(name, value);
  }
  const std::map<const char*, std::optional<std::string>> before = {
      {"HOME", environment("HOME")},
      {"XDG_CONFIG_HOME", environment("XDG_CONFIG_HOME")},
      {"TMPDIR", environment("TMPDIR")}};
};

// How many files, folders and connections this process has open.
long open_handles() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}
}  // namespace

TEST(Platform, MountTable) {
  const auto mounts = PLT_parse_mounts(
      "22 1 0:20 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "36 22 11:0 / /media/cd\\040rom\\134x rw,nosuid shared:19 master:2 propagate_from:3 - "
      "iso9660 /dev/sr0 ro\n"
      "37 22 0:44 / /srv/image\\0402 rw - fuse.fuseiso fuseiso rw\n"
      "38 22 0:45 / /a\\04x\\400\\0 rw - tmpfs none rw\n"
      "39 22 0:46 / /cut rw shared:1\n"
      "garbage\n\n"
      "40 22 0:47 / relative rw - ext4 /dev/sdb rw\n"
      "41 22 0:48 / /last rw - udf /dev/sr1");
  std::string text;
  for (const PLT_mount& mount : mounts)
    text += mount.point + " " + mount.fstype + ", ";
  EXPECT_EQ(mounts[1].device, makedev(11, 0));
  EXPECT_EQ(text,
            "/ ext4, /media/cd rom\\x iso9660, /srv/image 2 fuse.fuseiso, "
            "/a\\04x\\400\\0 tmpfs, /last udf, ");
}

TEST(Platform, DiscsAmongMounts) {
  const std::pair<PLT_mount, bool> rows[] = {
      {{"/cdrom", "iso9660"}, true},
      {{"/home/me/image", "fuse.fuseiso"}, true},
      {{"/media/me/STICK", "vfat"}, true},
      {{"/run/media/me/SKYVANE", "ext4"}, true},
      {{"/run/media", "tmpfs"}, false},
      {{"/run/mediax/me", "ext4"}, false},
      {{"/mnt", "ext4"}, true},
      {{"/mnt2", "ext4"}, false},
      {{"/mnt/server", "nfs4"}, false},
      {{"/media/me/A:B", "iso9660"}, false},
  };
  for (const auto& [volume, disc] : rows) {
    const auto discs = PLT_pick_discs({volume});
    const std::vector<std::string> expected(disc ? 1 : 0, volume.point + "/");
    EXPECT_EQ(expected, discs) << volume.point;
  }
  const auto twice = PLT_pick_discs({{"/mnt", "tmpfs"}, {"/mnt", "iso9660"}});
  EXPECT_EQ(std::vector<std::string>{"/mnt/"}, twice);
}

TEST(Platform, UserDirs) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"usual", "# a comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_X_DIR=\"$HOME/x\"\n",
       "/home/me/Desktop"},
      {"absolute", "XDG_DESKTOP_DIR=\"/data/my desk\"", "/data/my desk"},
      {"escapes", "  XDG_DESKTOP_DIR=\"$HOME/a\\\"b\\$c\"", "/home/me/a\"b$c"},
      {"the last one counts", "XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"", "/b"},
      {"commented out", "#XDG_DESKTOP_DIR=\"/a\"", ""},
      {"relative", "XDG_DESKTOP_DIR=\"Desktop\"", ""},
      {"another variable", "XDG_DESKTOP_DIR=\"$HOMEX/Desktop\"", ""},
      {"quote not closed", "XDG_DESKTOP_DIR=\"/a\nb\"", ""},
      {"ends in an escape", "XDG_DESKTOP_DIR=\"/a\\", ""},
  };
  for (const auto& [label, text, expected] : rows) {
    EXPECT_EQ(expected, PLT_parse_user_dir(text, "XDG_DESKTOP_DIR", "/home/me/")) << label;
  }
}

TEST(Platform, DesktopFolder) {
  const environment_guard guard;
  const scratch_folder home;
  set_environment("HOME", home.path());
  set_environment("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(home.path(), PLT_desktop_folder());
  EXPECT_FALSE(is_there(home / "Desktop")) << "none is made";
  home.folder("Desktop");
  EXPECT_EQ(home / "Desktop/", PLT_desktop_folder());
  home.file(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Bureau\"\n");
  EXPECT_EQ(home / "Desktop/", PLT_desktop_folder()) << "named but missing";
  home.folder("Bureau");
  EXPECT_EQ(home / "Bureau/", PLT_desktop_folder());
}

TEST(Platform, PrefsFolder) {
  const environment_guard guard;
  const scratch_folder home;
  umask(022);
  set_environment("HOME", home / "me");
  home.file("not a folder");
  const std::pair<std::optional<std::string>, std::string> rows[] = {
      // to nothing: none
      {std::nullopt, home / "me/.config/skyvane/"},
      {"relative", home / "me/.config/skyvane/"},  // is ignored; and the folder is there already
      {home / "a/b c", home / "a/b c/skyvane/"},
      {home / "not a folder", ""},
  };
  for (const auto& [config, expected] : rows) {
    set_environment("XDG_CONFIG_HOME", config);
    EXPECT_EQ(expected, PLT_prefs_folder());
    std::string path = "old";
    EXPECT_EQ(expected.empty() ? -120 : 0, get_OS_abs_path(os_dir_prefs, path));
    EXPECT_EQ(expected, path);
    if (!path.empty()) {
      EXPECT_EQ(0700u, mode_of(path)) << path;
    }
  }
  EXPECT_EQ(0700u, mode_of(home / "me/.config"));
}

TEST(Platform, TempFolder) {
  const environment_guard guard;
  const scratch_folder here;
  set_environment("TMPDIR", here.path());
  here.file("outside/precious");
  // What killed runs have left goes, and nothing that may be something else.
  const auto put = [&here](const std::string& name, mode_t mode) {
    here.file(name + "/sub/.file");
    chmod((here / name).c_str(), mode);
  };
  put("skyvane-run-left01", 0700);
  const std::vector<std::string> kept = {"skyvane-run-inuse1", "skyvane-run-open01",
                                         "skyvane-run-longer1", "skyvane-other-left1", "left01"};
  for (const std::string& name : kept)
    put(name, name == "skyvane-run-open01" ? 0755 : 0700);
  here.link("skyvane-run-link01", "outside");
  const int in_use = open((here / kept[0]).c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, flock(in_use, LOCK_EX | LOCK_NB));
  const long handles = open_handles();
  const std::string temp = PLT_temp_folder();
  EXPECT_EQ(handles + 1, open_handles()) << "the lock alone";
  EXPECT_FALSE(is_there(here / "skyvane-run-left01"));
  for (const std::string& name : kept)
    EXPECT_TRUE(is_there(here / (name + "/sub/.file"))) << name;
  EXPECT_TRUE(is_there(here / "outside/precious"));
  close(in_use);
  const int own = open(temp.c_str(), O_RDONLY | O_CLOEXEC);
  EXPECT_NE(0, flock(own, LOCK_EX | LOCK_NB)) << "this run's own is in use";
  close(own);

  EXPECT_EQ(0u, temp.rfind(here / "skyvane-", 0)) << temp;
  EXPECT_EQ('/', temp.back());
  EXPECT_EQ(0700u, mode_of(temp));

  ASSERT_EQ(0, symlink((here / "outside").c_str(), (temp + "link").c_str()));
  mkdir((temp + "sub").c_str(), 0700);
  std::ofstream(temp + "sub/.hidden") << "x";

  const pid_t child = fork();
  if (child == 0) {
    PLT_drop_temp_folder();
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(is_there(temp)) << "a child process does not remove it";

  PLT_drop_temp_folder();
  EXPECT_EQ(handles - 1, open_handles()) << "and the one that was in use";
  EXPECT_FALSE(is_there(temp));
  EXPECT_TRUE(is_there(here / "outside/precious"));
  PLT_drop_temp_folder();

  for (const std::string& unusable : {"/nothing/here"s, "relative"s, here.folder("a:b")}) {
    set_environment("TMPDIR", unusable);
    const std::string again = PLT_temp_folder();
    EXPECT_EQ(0u, again.rfind("/tmp/skyvane-", 0)) << unusable;
    EXPECT_TRUE(is_there(again)) << "made again when asked for again";
    PLT_drop_temp_folder();
  }
  EXPECT_EQ(ENOENT, PLT_remove_tree(here / "missing"));
}

// They outlive the run, and a later one knows them for what they are.
TEST(Platform, LastingFolders) {
  const environment_guard guard;
  const scratch_folder here;
  set_environment("TMPDIR", here.path());
  const std::string head = "skyvane-new-", folder = PLT_make_lasting_folder(head);
  EXPECT_EQ(0u, folder.rfind(here / head, 0)) << folder;
  PLT_drop_temp_folder();
  EXPECT_EQ(0700u, mode_of(folder));
  const std::string bare = folder.substr(0, folder.size() - 1);
  const long handles = open_handles();
  chmod(here.folder("skyvane-new-public").c_str(), 0755);
  chmod(here.folder("skyvane-new-longer7").c_str(), 0700);
  here.link("skyvane-new-linked", folder.substr(here.path().size()));
  here.file("skyvane-new-a_file", "");
  const std::pair<std::string, bool> rows[] = {
      {folder, true},
      {bare, false},
      {here / "skyvane-new-public/", false},
      {here / "skyvane-new-longer7/", false},
      {here / "skyvane-new-linked/", false},
      {here / "skyvane-new-a_file/", false},
      {here / "skyvane-new-gone00/", false},
  };
  for (const auto& [path, lasts] : rows)
    EXPECT_EQ(lasts, PLT_is_lasting_folder(path, head)) << path;
  EXPECT_FALSE(PLT_is_lasting_folder(folder, "skyvane-old-"));
  EXPECT_EQ(handles, open_handles());
}

// No link, nothing that has another name, nothing but a plain file; and nothing is cut before.
TEST(Platform, OwnFilesAreNobodyElses) {
  const scratch_folder here;
  for (const char* name : {"plain", "linked", "twice"})
    here.file(name, "old");
  here.link("link", "linked");
  here.folder("folder");
  ASSERT_EQ(0, link((here / "twice").c_str(), (here / "second").c_str()));
  ASSERT_EQ(0, mkfifo((here / "pipe").c_str(), 0600));
  const long handles = open_handles();
  for (const char* name : {"link", "twice", "second", "folder", "pipe", "none/x"}) {
    for (const auto mode : {plt_own_read, plt_own_anew, plt_own_append})
      EXPECT_EQ(-1, PLT_open_own(here / name, mode)) << name;
  }
  EXPECT_EQ(-1, PLT_open_own(here / "missing", plt_own_read));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, PLT_open_own(here / "twice", plt_own_anew));
  EXPECT_EQ(EPERM, errno);
  EXPECT_EQ(handles, open_handles());
  EXPECT_EQ("old", content_of(here / "linked") + content_of(here / "missing"));
  EXPECT_EQ("old", content_of(here / "twice"));
  for (const auto& [mode, after] : {std::pair{plt_own_append, "oldmore"}, {plt_own_anew, "more"}}) {
    const int file = PLT_open_own(here / "plain", mode);
    EXPECT_EQ(4, write(file, "more", 4));
    close(file);
    EXPECT_EQ(after, content_of(here / "plain"));
  }
  close(PLT_open_own(here / "new", plt_own_append));
  EXPECT_EQ(0u, mode_of(here / "new") & ~0644u);
}

TEST(Platform, VolumesAndTheHomeOfTheUser) {
  EXPECT_EQ("/proc", PLT_volume_of("/proc/self/status"));
  EXPECT_EQ("/proc", PLT_volume_of("/proc"));
  EXPECT_EQ("/", PLT_volume_of("/"));
  EXPECT_EQ("", PLT_volume_of("/missing"));
  const environment_guard guard;
  for (const std::optional<std::string>& home : {std::optional<std::string>(), {"relative"}}) {
    set_environment("HOME", home);
    EXPECT_EQ(getpwuid(getuid())->pw_dir + "/"s, PLT_home_folder());
  }
}

TEST(Platform, FoldersOfTheProgram) {
  const environment_guard guard;
  std::string folder, program;
  EXPECT_EQ(0, get_OS_abs_path(os_dir_this_app, folder));
  EXPECT_EQ(0, get_OS_abs_path(os_dir_this_bundle, program));
  EXPECT_EQ('/', folder.back());
  EXPECT_EQ(0u, program.rfind(folder, 0));
  EXPECT_NE('/', program.back());
  EXPECT_EQ(1, file_exists(program));
  EXPECT_EQ(-120, get_OS_abs_path(static_cast<os_dir_type>(6), folder));
  EXPECT_EQ("", folder);
  const scratch_folder home;
  set_environment("HOME", home.folder("a:b\\c"));
  set_environment("XDG_CONFIG_HOME", std::nullopt);
  for (const auto kind : {os_dir_desktop, os_dir_default_apps}) {
    EXPECT_EQ(0, get_OS_abs_path(kind, folder));
    EXPECT_EQ(home / "a/b/c/", folder) << "one separator only";
  }
}

TEST(Platform, FiguresOfTheMachine) {
  const PLT_machine figures = PLT_machine_figures();
  const auto page = static_cast<double>(sysconf(_SC_PAGESIZE));
  const double megabytes = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * page / (1 << 20);
  EXPECT_NEAR(figures.ram_mb, megabytes, 1);
  EXPECT_EQ(figures.system, "Linux");
}

TEST(Platform, WhatTheMachineTells) {
  std::string version[3];
  for (const auto& [release, parts] : {std::pair{"6.1.0-28-amd64", "6|1|0"},
                                       {"4.19", "4|19|?"},
                                       {"x6", "?|?|?"},
                                       {"5.", "5|?|?"}}) {
    PLT_parse_release(release, version);
    EXPECT_EQ(version[0] + '|' + version[1] + '|' + version[2], parts);
  }
  for (const auto& [info, mhz] : {std::pair{"cpu MHz\t\t: 2499.6\ncpu MHz: 1", 2500},
                                  {"a\ncpu MHz: 800", 800},
                                  {"cpu MHz", 0},
                                  {"the cpu MHz: 1", 0},
                                  {"cpu MHz: -1", 0},
                                  {"cpu MHz: 1000000", 0},
                                  {"", 0}}) {
    EXPECT_EQ(PLT_parse_cpu_mhz(info), mhz) << info;
  }
  // The first four characters.
  for (const auto& [machine, type] : {std::pair{"x86_64", 0x69787878u},
                                      {"i686", 0x69787878u},
                                      {"i286", 0x69323836u},
                                      {"ppc", 0x70706320u},
                                      {"", 0u}})
    EXPECT_EQ(PLT_parse_cpu_type(machine), type) << machine;
}

TEST(Platform, FreeSpace) {
  const scratch_folder here;
  unsigned long long total = 1, free = 2, total_later = 3, free_later = 4;
  EXPECT_EQ(0, get_free_space(here.path(), &total, &free));
  EXPECT_GT(total, 1u);
  EXPECT_GE(total, free);
  here.file("file");
  for (const char* name : {"not/yet/there/", "not", "file/below/"}) {
    EXPECT_EQ(0, get_free_space(here / name, &total_later, &free_later)) << name;
    EXPECT_EQ(total, total_later) << name;
  }
  EXPECT_EQ(0, get_free_space("nothing", nullptr, nullptr));
  EXPECT_EQ(ENOENT, get_free_space("", &total, &free));
  EXPECT_EQ(ENOENT, PLT_volume_space(here / "missing", nullptr, nullptr));
}

TEST(Platform, RunsProgramsWithinTheirTime) {
  const scratch_folder here;
  const std::string mark = here / "a b;touch x";
  const char* const touch[] = {"touch", mark.c_str(), nullptr};
  EXPECT_EQ(0, PLT_run_program(touch, 5));
  EXPECT_TRUE(is_there(mark)) << "the argument passes no shell";
  for (const auto& [script, status] : std::vector<std::pair<const char*, int>>{
           {"exit 7", 7}, {"kill -TERM $$", -1}, {"cat", 0}}) {  // the last one reads its input
    const char* const shell[] = {"sh", "-c", script, nullptr};
    EXPECT_EQ(status, PLT_run_program(shell, 5)) << script;
  }
  const char* const missing[] = {"no-such-program-here", nullptr};
  EXPECT_EQ(-1, PLT_run_program(missing, 5));
  const std::string child = here / "child";
  const std::string script = "sleep 60 & echo $! >'" + child + "'; wait";
  const char* const slow[] = {"sh", "-c", script.c_str(), nullptr};
  const uint64_t start = PLT_microseconds();
  EXPECT_EQ(-1, PLT_run_program(slow, 1));
  EXPECT_LT(PLT_microseconds() - start, 30'000'000u);
  EXPECT_TRUE(ends_soon(std::atoi(content_of(child).c_str()))) << "its children are killed too";
}

TEST(Platform, EjectsNothingButVolumes) {
  const scratch_folder here;
  for (const std::string& no_volume : {here.folder("plain"), here / "missing/", "/"s, ""s})
    EXPECT_EQ(EINVAL, eject_dvd(no_volume)) << no_volume;
}

TEST(Platform, LanguagesOfTheUser) {
  const char* const names[] = {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"};
  // The first of three that is set; a list goes ahead, but not of a program's language.
  const std::pair<std::vector<const char*>, const char*> rows[] = {
      {{"de_AT.UTF-8", "fr_FR", "es", ""}, "de "},
      {{"", "fr@euro", "es", ""}, "fr "},
      {{"", "", "PT-br", ""}, "pt "},
      {{"", "", "de_DE", "gsw:C:x:it_IT:de1"}, "gsw it de "},
      {{"C", "de", "de", "fr"}, ""},
      {{"", "", "", "fr"}, ""},
      {{"", "", "12", ""}, ""},
      {{"", "", "deutsch", ""}, ""},
  };
  for (const auto& [values, expected] : rows) {
    for (size_t i = 0; i < std::size(names); ++i)
      setenv(names[i], values[i], 1);
    std::string found;
    for (const std::string& code : PLT_user_languages())
      found += code + " ";
    EXPECT_EQ(expected, found) << testing::PrintToString(values);
  }
  for (const char* const name : names)
    unsetenv(name);
}

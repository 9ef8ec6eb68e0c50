// The operating system's half of the platform layer.

#include <fcntl.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>

#include "corekit/Files/io_utils.h"
#include "corekit/Platform/PLT_system.h"
#include "tests/unit/test_files_scratch.h"

namespace {
uint32_t code_of(const char (&text)[5]) {
  uint32_t code = 0;
  for (int i = 0; i < 4; ++i)
    code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

// One variable of the environment, put back at the end.
class environment {
 public:
  environment(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) {
      old_ = old;
      had_ = true;
    }
    if (value)
      setenv(name, value, 1);
    else
      unsetenv(name);
  }
  ~environment() {
    if (had_)
      setenv(name_, old_.c_str(), 1);
    else
      unsetenv(name_);
  }
  environment(const environment&) = delete;
  environment& operator=(const environment&) = delete;

 private:
  const char* name_;
  std::string old_;
  bool had_ = false;
};

bool runs(const char* program) {
  return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}
}  // namespace

TEST(Platform, MountTable) {
  const auto mounts = PLT_parse_mounts(
      "22 1 0:20 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
      "36 22 11:0 / /media/cd\\040rom\\134x rw,nosuid shared:19 master:2 propagate_from:3 - "
      "iso9660 "
      "/dev/sr0 ro\n"
      "37 22 0:44 / /srv/image\\0402 rw - fuse.fuseiso fuseiso rw\n"
      "38 22 0:45 / /a\\04x\\400\\0 rw - tmpfs none rw\n"
      "39 22 0:46 / /cut rw shared:1\n"
      "garbage\n\n"
      "40 22 0:47 / relative rw - ext4 /dev/sdb rw\n"
      "41 22 0:48 / /last rw - udf /dev/sr1");
  const struct {
    const char* point;
    const char* fstype;
  } rows[] = {{"/", "ext4"},
              {"/media/cd rom\\x", "iso9660"},
              {"/srv/image 2", "fuse.fuseiso"},
              {"/a\\04x\\400\\0", "tmpfs"},
              {"/last", "udf"}};
  ASSERT_EQ(std::size(rows), mounts.size());
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(rows[i].point, mounts[i].point);
    EXPECT_EQ(rows[i].fstype, mounts[i].fstype) << rows[i].point;
  }
  EXPECT_TRUE(PLT_parse_mounts("").empty());
}

TEST(Platform, DiscsAmongMounts) {
  const struct {
    PLT_mount mount;
    bool disc;
  } rows[] = {
      {{"/", "ext4"}, false},
      {{"/home", "ext4"}, false},
      {{"/cdrom", "iso9660"}, true},
      {{"/srv/a b", "udf"}, true},
      {{"/home/me/image", "fuse.fuseiso"}, true},
      {{"/media/me/STICK", "vfat"}, true},
      {{"/run/media/me/SKYVANE", "ext4"}, true},
      {{"/run/media", "tmpfs"}, false},
      {{"/run/mediax/me", "ext4"}, false},
      {{"/mnt", "ext4"}, true},
      {{"/mnt/disc", "overlay"}, true},
      {{"/mnt2", "ext4"}, false},
      {{"/mnt/server", "nfs4"}, false},
      {{"/media/share", "cifs"}, false},
      {{"/media/me/A:B", "iso9660"}, false},
      {{"/media/me/A\\B", "iso9660"}, false},
      {{"/data/media/x", "ext4"}, false},
  };
  for (const auto& row : rows) {
    const auto discs = PLT_pick_discs({row.mount});
    const std::vector<std::string> expected(row.disc ? 1 : 0, row.mount.point + "/");
    EXPECT_EQ(expected, discs) << row.mount.point;
  }
  const auto twice = PLT_pick_discs({{"/mnt", "tmpfs"}, {"/mnt", "iso9660"}});
  EXPECT_EQ(std::vector<std::string>{"/mnt/"}, twice);
}

TEST(Platform, UserDirs) {
  const struct {
    const char* label;
    const char* text;
    const char* expected;
  } rows[] = {
      {"usual", "# a comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_X_DIR=\"$HOME/x\"\n",
       "/home/me/Desktop"},
      {"absolute", "XDG_DESKTOP_DIR=\"/data/my desk\"", "/data/my desk"},
      {"home itself", "XDG_DESKTOP_DIR=\"$HOME/\"", "/home/me"},
      {"home without a slash", "XDG_DESKTOP_DIR=\"$HOME\"", "/home/me"},
      {"escapes", "  XDG_DESKTOP_DIR=\"$HOME/a\\\"b\\$c\"", "/home/me/a\"b$c"},
      {"the last one counts", "XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"", "/b"},
      {"commented out", "#XDG_DESKTOP_DIR=\"/a\"", ""},
      {"longer key", "XDG_DESKTOP_DIRS=\"/a\"", ""},
      {"relative", "XDG_DESKTOP_DIR=\"Desktop\"", ""},
      {"another variable", "XDG_DESKTOP_DIR=\"$HOMEX/Desktop\"", ""},
      {"no quotes", "XDG_DESKTOP_DIR=/a", ""},
      {"quote not closed", "XDG_DESKTOP_DIR=\"/a\nb\"", ""},
      {"ends in an escape", "XDG_DESKTOP_DIR=\"/a\\", ""},
      {"empty", "", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.expected, PLT_parse_user_dir(row.text, "XDG_DESKTOP_DIR", "/home/me/"))
        << row.label;
  }
}

TEST(Platform, MachineTexts) {
  const struct {
    const char* release;
    const char* version[3];
  } releases[] = {{"6.1.0-18-amd64", {"6", "1", "0"}}, {"5.15", {"5", "15", "?"}},
                  {"6.8-rc3", {"6", "8", "?"}},        {"6.", {"6", "?", "?"}},
                  {"rolling", {"?", "?", "?"}},        {"", {"?", "?", "?"}}};
  for (const auto& row : releases) {
    std::string version[3];
    PLT_parse_release(row.release, version);
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(row.version[i], version[i]) << row.release << " " << i;
  }

  const struct {
    const char* cpuinfo;
    int mhz;
  } speeds[] = {
      {"processor\t: 0\ncpu MHz\t\t: 2799.998\ncache size\t: 1 KB\ncpu MHz\t\t: 1000.0\n", 2800},
      {"cpu MHz : 800", 800},
      {"my cpu MHz\t: 12\n", 0},
      {"cpu MHz\t\t: unknown\n", 0},
      {"cpu MHz\t\t: -5\n", 0},
      {"cpu MHz\t\t: 1e30\n", 1},
      {"cpu MHz", 0},
      {"", 0}};
  for (const auto& row : speeds)
    EXPECT_EQ(row.mhz, PLT_parse_cpu_mhz(row.cpuinfo)) << row.cpuinfo;

  const struct {
    const char* machine;
    uint32_t type;
  } types[] = {{"x86_64", code_of("ixxx")},
               {"i686", code_of("ixxx")},
               {"i386", code_of("ixxx")},
               {"aarch64", code_of("aarc")},
               {"ppc", code_of("ppc ")},
               {"ia64", code_of("ia64")},
               {"", 0}};
  for (const auto& row : types)
    EXPECT_EQ(row.type, PLT_parse_cpu_type(row.machine)) << row.machine;
}

TEST(Platform, MachineFiguresOfThisMachine) {
  const PLT_machine figures = PLT_machine_figures();
  EXPECT_FALSE(figures.system.empty());
  EXPECT_NE("?", figures.version[0]);
  EXPECT_NE(0u, figures.cpu_type);
  EXPECT_GT(figures.ram_mb, 64);
  EXPECT_GE(PLT_processor_count(), 1);
  const uint64_t before = PLT_microseconds();
  usleep(2000);
  EXPECT_GE(PLT_microseconds() - before, 2000u);
}

TEST(Platform, DesktopFolder) {
  const scratch_folder home;
  const environment h("HOME", home.path().c_str());
  const environment c("XDG_CONFIG_HOME", nullptr);
  EXPECT_EQ(home.path(), PLT_desktop_folder());
  EXPECT_FALSE(is_there(home / "Desktop")) << "none is made";
  home.folder("Desktop");
  EXPECT_EQ(home / "Desktop/", PLT_desktop_folder());
  home.folder(".config");
  home.file(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Bureau\"\n");
  EXPECT_EQ(home / "Desktop/", PLT_desktop_folder()) << "named but missing";
  home.folder("Bureau");
  EXPECT_EQ(home / "Bureau/", PLT_desktop_folder());
}

TEST(Platform, PrefsFolder) {
  const scratch_folder home;
  umask(022);
  const environment h("HOME", (home / "me").c_str());
  {
    const environment c("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(home / "me/.config/skyvane/", PLT_prefs_folder());
    EXPECT_EQ(0700u, mode_of(home / "me/.config"));
    EXPECT_EQ(0700u, mode_of(home / "me/.config/skyvane"));
    EXPECT_EQ(home / "me/.config/skyvane/", PLT_prefs_folder()) << "a second time";
  }
  {
    const environment c("XDG_CONFIG_HOME", (home / "a/b c").c_str());
    EXPECT_EQ(home / "a/b c/skyvane/", PLT_prefs_folder());
    EXPECT_TRUE(is_there(home / "a/b c/skyvane"));
  }
  {
    const environment c("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(home / "me/.config/skyvane/", PLT_prefs_folder()) << "relative is ignored";
  }
  {
    const environment c("XDG_CONFIG_HOME", home.file("not a folder").c_str());
    EXPECT_EQ("", PLT_prefs_folder());
    std::string path = "old";
    EXPECT_EQ(-120, get_OS_abs_path(os_dir_prefs, path));
    EXPECT_EQ("", path);
  }
  const environment none("HOME", nullptr);
  const std::string by_table = PLT_home_folder();
  EXPECT_TRUE(by_table.empty() || (by_table.front() == '/' && by_table.back() == '/')) << by_table;
}

TEST(Platform, TempFolder) {
  const scratch_folder here;
  const environment t("TMPDIR", here.path().c_str());
  const std::string temp = PLT_temp_folder();
  EXPECT_EQ(0u, temp.rfind(here / "skyvane-", 0)) << temp;
  EXPECT_EQ('/', temp.back());
  EXPECT_EQ(temp, PLT_temp_folder());
  EXPECT_EQ(0700u, mode_of(temp));
  std::string path;
  EXPECT_EQ(0, get_OS_abs_path(os_dir_temp, path));
  EXPECT_EQ(temp, path);

  here.folder("outside");
  here.file("outside/precious");
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
  EXPECT_FALSE(is_there(temp));
  EXPECT_TRUE(is_there(here / "outside/precious"));
  PLT_drop_temp_folder();

  const std::string second = PLT_temp_folder();
  EXPECT_TRUE(is_there(second)) << "made again when asked for again";
  PLT_drop_temp_folder();

  for (const char* unusable : {"/nothing/here", "relative"}) {
    const environment bad("TMPDIR", unusable);
    EXPECT_EQ(0u, PLT_temp_folder().rfind("/tmp/skyvane-", 0)) << unusable;
    PLT_drop_temp_folder();
  }
  const environment colon("TMPDIR", here.folder("a:b").c_str());
  EXPECT_EQ(0u, PLT_temp_folder().rfind("/tmp/skyvane-", 0)) << "no path can name it";
  PLT_drop_temp_folder();
}

TEST(Platform, RemoveTree) {
  const scratch_folder here;
  here.folder("outside");
  here.file("outside/precious");
  here.link("link", "outside");
  EXPECT_EQ(0, PLT_remove_tree(here / "link/"));
  EXPECT_TRUE(is_there(here / "outside/precious"));
  EXPECT_FALSE(is_there(here / "link"));
  EXPECT_EQ(ENOENT, PLT_remove_tree(here / "missing"));
}

TEST(Platform, FoldersOfTheProgram) {
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
  const environment h("HOME", home.folder("a:b\\c").c_str());
  const environment c("XDG_CONFIG_HOME", nullptr);
  std::string desktop, apps;
  EXPECT_EQ(0, get_OS_abs_path(os_dir_desktop, desktop));
  EXPECT_EQ(0, get_OS_abs_path(os_dir_default_apps, apps));
  EXPECT_EQ(home / "a/b/c/", desktop) << "one separator only";
  EXPECT_EQ(desktop, apps);
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
  EXPECT_EQ(0, get_free_space(here.path(), nullptr, nullptr));
  EXPECT_EQ(0, get_free_space("/nothing/here/", &total, &free));
  EXPECT_EQ(0, get_free_space("nothing", &total, &free));
  EXPECT_EQ(ENOENT, get_free_space("", &total, &free));
  EXPECT_EQ(ENOENT, PLT_volume_space(here / "missing", nullptr, nullptr));

  small_volume volume(here.folder("volume"), "size=1m");
  if (volume.mounted()) {
    EXPECT_EQ(0, get_free_space(here / "volume/not/yet/", &total, &free));
    EXPECT_EQ(1048576u, total);
    EXPECT_EQ(1048576u, free);
  }
}

TEST(Platform, RunsProgramsWithinTheirTime) {
  const scratch_folder here;
  const std::string mark = here / "a b;touch x";
  const char* const touch[] = {"touch", mark.c_str(), nullptr};
  EXPECT_EQ(0, PLT_run_program(touch, 5));
  EXPECT_TRUE(is_there(mark)) << "the argument passes no shell";
  const char* const fails[] = {"sh", "-c", "exit 7", nullptr};
  EXPECT_EQ(7, PLT_run_program(fails, 5));
  const char* const killed[] = {"sh", "-c", "kill -TERM $$", nullptr};
  EXPECT_EQ(-1, PLT_run_program(killed, 5));
  const char* const missing[] = {"no-such-program-here", nullptr};
  EXPECT_EQ(-1, PLT_run_program(missing, 5));
  const char* const reads[] = {"cat", nullptr};  // would wait for input
  EXPECT_EQ(0, PLT_run_program(reads, 5));

  const std::string late = here / "late";
  const std::string script = "sleep 2 && touch '" + late + "' & wait";
  const char* const slow[] = {"sh", "-c", script.c_str(), nullptr};
  const uint64_t start = PLT_microseconds();
  EXPECT_EQ(-1, PLT_run_program(slow, 1));
  EXPECT_LT(PLT_microseconds() - start, 1'800'000u);
  while (PLT_microseconds() - start < 2'500'000)
    usleep(20'000);
  EXPECT_FALSE(is_there(late)) << "its children are killed too";
}

TEST(Platform, EjectsWhatIsMounted) {
  const scratch_folder here;
  EXPECT_EQ(EINVAL, eject_dvd(here.folder("plain")));
  EXPECT_EQ(EINVAL, eject_dvd(here / "missing/"));
  EXPECT_EQ(EINVAL, eject_dvd("/"));
  EXPECT_EQ(EINVAL, eject_dvd(""));

  const std::string point = here.folder("a volume");
  small_volume volume(point, "size=64k");
  if (!volume.mounted()) return;
  here.file("a volume/file");
  {
    const int busy = open((point + "file").c_str(), O_RDONLY);
    EXPECT_EQ(EBUSY, eject_dvd(point));
    close(busy);
  }
  EXPECT_EQ(0, eject_dvd(point));
  EXPECT_FALSE(is_there(point + "file"));
  EXPECT_EQ(EINVAL, eject_dvd(point)) << "a second time";
}

// A real disc image, served by a program: the way in which a disc is tried without a drive.
TEST(Platform, FindsAndEjectsADiscImage) {
  if (!runs("xorriso") || !runs("fuseiso") || access("/dev/fuse", R_OK | W_OK) != 0) {
    left_out("no disc image can be made and mounted");
    return;
  }
  const scratch_folder here;
  here.folder("content");
  here.file("content/dvd_version.txt", "label");
  const std::string point = here.folder("the disc");
  const std::string make = "xorriso -as mkisofs -quiet -R -J -V LABEL -o '" + here / "disc.iso" +
                           "' '" + here / "content" + "' >/dev/null 2>&1 && fuseiso '" +
                           here / "disc.iso" + "' '" + point + "' 2>/dev/null";
  if (std::system(make.c_str()) != 0) {  // a container that has the programs may still refuse
    left_out("no disc image can be made and mounted");
    return;
  }
  const auto discs = PLT_disc_volumes();
  EXPECT_NE(discs.end(), std::find(discs.begin(), discs.end(), point));
  EXPECT_EQ(1, file_exists(point + "dvd_version.txt"));
  EXPECT_EQ(0, eject_dvd(point));
  EXPECT_EQ(0, file_exists(point + "dvd_version.txt"));
  const auto after = PLT_disc_volumes();
  EXPECT_EQ(after.end(), std::find(after.begin(), after.end(), point));
}

// The builder's flags, and the server list.

#include "Installer-f/builder/make_installer_cmdline.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_servers.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/window/hl_init.h"
#include "tests/unit/builder_tree.h"
#include "tests/unit/test_archive_util.h"

namespace {

class BuilderCmdline : public builder_test {
 protected:
  void SetUp() override {
    builder_test::SetUp();
    start_folder = base;
  }
  // The program's life with these flags, from the command line to the exit status.
  [[noreturn]] static void run_and_leave(const std::vector<std::string>& flags) {
    std::vector<const char*> arguments = {"installer"};
    for (const std::string& flag : flags)
      arguments.push_back(flag.c_str());
    cmdline.init_unix(static_cast<int>(arguments.size()), arguments.data());
    int keys[2];  // a "q" ends a build on a terminal alone
    if (pipe(keys) != 0 || write(keys[1], "q", 1) != 1 || dup2(keys[0], 0) != 0) std::_Exit(99);
    std::_Exit(run_master_builder());
  }
  static void expect(int status, const std::vector<std::string>& flags, const std::string& text) {
    EXPECT_EXIT(run_and_leave(flags), testing::ExitedWithCode(status), literally(text));
  }
  // Flags of a build that would succeed, and one more, which goes last and so wins.
  static std::vector<std::string> build_flags(const std::string& more) {
    return {"--build_master", "--source=src", "--output=out", "--previous=none", "--type=0", more};
  }
};

TEST_F(BuilderCmdline, FlagsThatMakeNoSense) {
  std::filesystem::create_directories(base + "a copy/src");
  std::filesystem::create_directories(base + "a:b");
  here.file("a file", "x");
  const std::pair<const char*, std::string> rows[] = {
      {"--type=4", "--type needs a whole number from 0 to 3, not \"4\"."},
      {"--type=1x", "--type needs"},
      {"--type=99999999999999999999", "--type needs"},
      {"--disk_kb=63e4", "--disk_kb needs"},
      {"--release=0", "--release needs"},
      {"--name=", "--name needs a plain folder name: \"\" is empty."},
      {"--name=..", "is no name"},
      {"--name=a/b", "holds a separator"},
      {"--name=a ", "has a blank at an end"},
      {"--name=a\nb", "holds a control character"},
      {"--source", "--source needs a path"},
      {"--source=nowhere", "The source folder does not exist: "},
      {"--source=a copy/src", "whose own path holds \"copy\": "},
      {"--output=", "--output needs a path"},
      {"--output=nowhere/out", "There is no folder to make the output folder in: "},
      {"--output=a file", "The output folder is a file: "},
      {"--output=a:b", "holds a \":\""},
      {"--output=out/../src/All", "The output folder lies within the source tree: "},
      {"--previous=", "--previous needs a path"},
      {"--relese=5", "There is no flag \"--relese\""},
      {"extra", "There is no flag \"extra\""},
      {"--threads=0", "--threads needs a whole number from 1 to 256"},
      {"--reuse=src",
       "--reuse needs the output folder of a build, and there is no record of one: " + base +
           "src/" + build_record_name},
      {"--write_server_list", "--write_server_list needs a path"},
      {"--write_server_list=list.txt", "A server list needs at least one mirror"},
  };
  for (const auto& [flag, text] : rows) {
    SCOPED_TRACE(flag);
    expect(2, build_flags(flag), text);
    EXPECT_FALSE(is_there("out/disk_0"));
  }
  EXPECT_FALSE(is_there("list.txt"));
}

// No date on the master is later than what the environment says.
TEST_F(BuilderCmdline, SourceDateEpoch) {
  for (const char* const wrong : {"soon", "-1", "1e9", "99999999999999999999"}) {
    setenv("SOURCE_DATE_EPOCH", wrong, 1);
    expect(2, build_flags("--threads=1"), "SOURCE_DATE_EPOCH needs a number of seconds");
  }
  setenv("SOURCE_DATE_EPOCH", "1000000000", 1);  // 9 September 2001
  setenv("TZ", "UTC", 1);
  expect(0, build_flags("--name=Test 9"), "OK compression is done.");
  unsetenv("SOURCE_DATE_EPOCH");
  for (const char* const zip : {"directory.txt", "All/Resources/text/English/Skyvane.txt"})
    EXPECT_TRUE(str_holds(run("unzip -Z -T -s '" + base + "out/disk_0/Test 9/" + zip + ".zip'"),
                          " 20010909.014640 "))
        << zip;
}

TEST_F(BuilderCmdline, TimeLeft) {
  constexpr int64_t mb = 1000 * 1000;
  const std::tuple<int64_t, int64_t, double, const char*> rows[] = {
      {0, 10 * mb, 5, "0 of 10 MB"},
      {5 * mb, 10 * mb, 0.9, "5 of 10 MB"},
      {5 * mb, 10 * mb, 1, "5 of 10 MB, 1 s left"},
      {5 * mb, 10 * mb, 59.5, "5 of 10 MB, 1 min 0 s left"},
      {mb, 10 * mb, 10, "1 of 10 MB, 1 min 30 s left"},
      {mb, 361 * mb, 10, "1 of 361 MB, 1 h 0 min left"},
      {mb, 1001 * mb, 10, "1 of 1001 MB, 2 h 46 min left"},
      {1, 1001 * mb, 10, "0 of 1001 MB, 99 h 59 min left"}};
  for (const auto& [done, all, seconds, text] : rows)
    EXPECT_EQ(builder_rate(done, all, seconds), text);
}

TEST_F(BuilderCmdline, PreviousManifest) {
  expect(1, {"--build_master", "--source=src", "--output=out", "--type=0", "--previous=no"},
         "I could not read the old directory!");
  std::string in_the_way;
  ASSERT_EQ(get_OS_abs_path(os_dir_temp, in_the_way), 0);
  std::filesystem::create_directory(in_the_way += "previous directory.txt");
  here.file("list", "I");
  run("cd '" + base + "' && zip -q made.zip list");
  expect(1, build_flags("--previous=made.zip"),
         "Is a directory. Give the manifest of the release before, as directory.txt or "
         "directory.txt.zip, by --previous=FILE; a first release says --previous=none.\n1 fault: ");
  std::filesystem::remove(in_the_way);
  put(earth_tile, state_a);
  expect(0, {"--build_master", "--source=src", "--output=out", "--type=1", "--previous=no"},
         "The previous manifest is not used: only a build of type 0 carries the history on.\n"
         "WARNING: 1 files below Global Scenery have no .7z");
  expect(1, build_flags("--disk_kb=100"), "Could not make the dst_folder!");
  expect(2, {"--check", "--sign_master=out", "--sign=key"},
         "--check is of a --build_master alone.");
}

TEST_F(BuilderCmdline, ChecksAndSumsUp) {
  std::vector<std::string> flags = build_flags("--check");
  flags.emplace_back("--json");
  const auto run_to_file = [&] {
    ASSERT_NE(freopen((base + "said.json").c_str(), "w", stdout), nullptr);
    run_and_leave(flags);
  };
  const auto summary = [&](int status, const std::string& said) {
    EXPECT_EXIT(run_to_file(), testing::ExitedWithCode(status), said);
    EXPECT_TRUE(nothing_left());
    return content_of(base + "said.json");
  };
  const std::string rest =
      ", \"packed\": 0, \"taken_over\": 0, \"gone\": 0, \"archive_bytes\": 0, "
      "\"discs\": 0, \"faults\": ";
  const std::string head = "\"name\": \"Skyvane 9\", \"output\": \"" + base +
                           "out/\", \"release\": 91001, \"type\": 0, \"files_seen\": ";
  EXPECT_EQ(summary(0, "Nothing is wrong, and nothing was written."),
            "{\"result\": \"checked\", \"status\": 0, " + head + "2, \"files\": 2, \"bytes\": 6" +
                rest + "0, \"warnings\": 0}\n");
  put("All/Weapons/a:b", state_a);
  EXPECT_EQ(summary(1, "1 fault: "), "{\"result\": \"failed\", \"status\": 1, " + head +
                                         "3, \"files\": 3, \"bytes\": 7" + rest +
                                         "1, \"warnings\": 0}\n");
  flags.emplace_back("--name=\"");
  flags.emplace_back("--release=0");
  EXPECT_EQ(summary(2, "--release needs"),
            "{\"result\": \"flags\", \"status\": 2, \"why\": \"--release needs a whole number from "
            "1 to 2147483647, not \\\"0\\\".\"}\n");
}

// --- the server list ----------------------------------------------------------------------------
TEST_F(BuilderCmdline, ServerListsThatAnInstallerWouldMisread) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "A server list needs at least one mirror"},
      {"a,b,c,d,e,f,g,h,i,j,k", "An installer reads 10 mirrors, and --mirrors names 11."},
      {",a", "an entry without a host"},
      {"/updates", "an entry without a host"},
      {"http://a/updates", "needs bare host names"},
      {"a:8080", "needs bare host names"},
      {"a b/c", "needs bare host names"},
      {"a\nENDOFLIST", "needs bare host names"},
      {"a/b\nc", "a path that an installer cannot ask for"},
  };
  for (const auto& [mirrors, text] : rows) {
    SCOPED_TRACE(mirrors);
    expect(2, {"--write_server_list=list.txt", std::string("--mirrors=") + mirrors}, text);
    EXPECT_FALSE(is_there("list.txt"));
  }
  EXPECT_EQ(server_list_complaint("a,b,c,d,e,f,g,h,i,j"), "");
}

TEST_F(BuilderCmdline, ServerListWithABuild) {
  // An output root beside the tree, with the tree's name at its start, is not within it.
  std::vector<std::string> both = build_flags("--write_server_list=src 2/serverlist9.txt");
  both.insert(both.end(), {"--output=src 2", "--mirrors=a/pub/sky vane/"});
  expect(0, both, "");
  EXPECT_TRUE(str_holds(content_of(base + "src 2/serverlist9.txt"),
                        "SERVER a\n/pub/sky vane/\nMirror 1: a\n\nENDOFLIST\n"));
  EXPECT_TRUE(is_there("src 2/disk_0/Skyvane 9/directory.txt.zip"));
  const auto in_little_room = [] {
    const small_disk full(500);
    run_and_leave({"--write_server_list=list.txt", "--mirrors=a/" + std::string(600, 'p')});
  };
  EXPECT_EXIT(in_little_room(), testing::ExitedWithCode(1),
              "The server list could not be written whole");
}

}  // namespace

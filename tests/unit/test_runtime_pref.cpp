// Preference files: round trips, damaged files, overrides on the command line, failed writes.

#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/files/pref.h"
#include "corekit/net/http.h"
#include "corekit/window/hl_mnw.h"
#include "tests/unit/test_runtime_util.h"

namespace {

constexpr char header[] = "I\n9002 version\n";

// The variables of a small application.
struct settings {
  int streams = 7;
  int log = 7;
  std::string host = "unset";
  bool found[3] = {};

  void io(scan_class& scan) {
    found[0] = scan.int_io(&streams, "_streams");
    found[1] = scan.string_io(&host, "_host");
    found[2] = scan.int_io(&log, "_log");
  }
};

class RuntimePref : public testing::Test {
 protected:
  void SetUp() override { forget(); }
  void TearDown() override {
    std::filesystem::current_path(before);
    forget();
  }
  // The family's file, empty, in the working folder.
  std::string resolution_file() const {
    std::filesystem::current_path(log.folder.path());
    return log.folder.file("Resources/preferences/Res Sky-Root.prf", "");
  }
  // What the installer's own file holds starts as at the program's start.
  static void forget() {
    cmdline = UTL_cmdline();
    stg = stg_record();
    http._proxy_host.clear();
    http._proxy_port.clear();
    http._proxy_port_int = 0;
  }

  settings read(settings start = {}) const {
    scan_class scan(path, pref_read);
    start.io(scan);
    return start;
  }
  std::string write(settings values) const {
    {
      scan_class scan(path, pref_write);
      values.io(scan);
    }
    return content_of(path);
  }
  static void override(const char* flags) {
    cmdline = UTL_cmdline();
    cmdline.init_win(flags);
  }

  log_capture log;
  const std::string path = log.folder / "Test.prf";
  const std::filesystem::path before = std::filesystem::current_path();
};

}  // namespace

TEST_F(RuntimePref, WhatIsWrittenIsRead) {
  EXPECT_EQ(write({.streams = 3, .log = -1, .host = "proxy.example with blanks"}),
            std::string(header) + "_streams 3\n_host proxy.example with blanks\n_log -1\n");
  const settings got = read();
  EXPECT_EQ(got.streams, 3);
  EXPECT_EQ(got.log, -1);
  EXPECT_EQ(got.host, "proxy.example with blanks");
  EXPECT_EQ(write({.streams = 2147483647, .log = -2147483647 - 1, .host = ""}),
            std::string(header) + "_streams 2147483647\n_log -2147483648\n");
  const settings bounds = read();
  EXPECT_EQ(bounds.streams, 2147483647);
  EXPECT_EQ(bounds.log, -2147483647 - 1);
  EXPECT_EQ(bounds.host, "unset") << "no line for an empty string: it stays as it was";
  EXPECT_TRUE(bounds.found[0]);
  EXPECT_FALSE(bounds.found[1]);
  EXPECT_EQ(write({.streams = 1, .log = 1, .host = "evil\n_log 5\r"}),
            std::string(header) + "_streams 1\n_host evil\n_log 1\n")
      << "a line end in a value makes no tag";
}

TEST_F(RuntimePref, ReadsWhatOthersWrote) {
  const std::string h = header;
  const std::tuple<std::string, std::string, int, int, const char*> rows[] = {
      {"of Windows", "I\r\n9002 version\r\n_streams 2\r\n_host a b\r\n_log 1\r\n", 2, 1, "a b"},
      {"tabs and blanks around", h + "\n\n \t_streams\t \t2\n\t\n_host  a \n", 2, 7, "a "},
      {"the last of two, without a line end", h + "_streams 2\n_log 1\n_streams 4", 4, 1, "unset"},
      {"unknown", h + "_other 9\n_stream 9\n_streamss 9\nstreams 9\n_streams 2\n", 2, 7, "unset"},
      {"tag without value", h + "_streams\n_host\n_log 1\n", 0, 1, ""},
      {"junk for a number", h + "_streams x2\n_log 3x4\n", 0, 3, "unset"},
      {"numbers too large", h + "_streams 99999999999999999999\n_log -3000000000\n", 2147483647,
       -2147483647 - 1, "unset"},
      {"a NUL ends a line", h + std::string("_streams 2\0_log 1\n", 17), 2, 1, "unset"},
      {"newer version", "I\n9003 version\n_streams 2\n", 7, 7, "unset"},
      {"no header", "_streams 2\n", 7, 7, "unset"},
      {"empty", "", 7, 7, "unset"},
      {"junk", std::string("\xff\0\x01I\n\n\xfe", 7), 7, 7, "unset"},
  };
  for (const auto& [label, content, streams, logs, host] : rows) {
    overwrite(path, content);
    const settings got = read();
    EXPECT_EQ(got.streams, streams) << label;
    EXPECT_EQ(got.log, logs) << label;
    EXPECT_EQ(got.host, host) << label;
  }
  unlink(path.c_str());
  EXPECT_EQ(read().streams, 7) << "missing file";
}

TEST_F(RuntimePref, CommandLineWinsForOneRunAndLeavesTheFile) {
  const std::tuple<const char*, const char*, const char*, int, const char*, const char*> rows[] = {
      {"over a value", "--pref:_streams=3", "_streams 1\n_host a\n_log 7\n", 3, "a",
       "_streams 1\n_host a\n_log 7\n"},
      {"over no value", "--pref:_streams=3 --pref:_host=b", "_log 7\n", 3, "b", "_log 7\n"},
      {"empty over string", "--pref:_host=", "_streams 1\n_host a\n_log 7\n", 1, "",
       "_streams 1\n_host a\n_log 7\n"},
      {"without a value", "--pref:_streams", "_streams 1\n_log 7\n", 0, "unset",
       "_streams 1\n_host unset\n_log 7\n"},
      {"value in another spelling", "--pref:_streams=03x", "_streams 01\n_log 7\n", 3, "unset",
       "_streams 01\n_host unset\n_log 7\n"},
      {"near misses", "--pref:_stream=3 --pref:streams=3 -pref:_streams=3 _streams=3",
       "_streams 1\n_log 7\n", 1, "unset", "_streams 1\n_host unset\n_log 7\n"},
  };
  for (const auto& [label, flags, file, streams, host, rewritten] : rows) {
    overwrite(path, std::string(header) + file);
    override(flags);
    const settings got = read();
    EXPECT_EQ(got.streams, streams) << label;
    EXPECT_EQ(got.host, host) << label;
    for (const char* time : {"first", "second"})
      EXPECT_EQ(write(got), std::string(header) + rewritten) << label << ", " << time;
  }
  overwrite(path, std::string(header) + "_streams 1\n_host a\n");
  override("--pref:_streams=3 --pref:_host=b");
  settings got = read();
  got.streams = 2;
  got.host = "c";
  EXPECT_EQ(write(got), std::string(header) + "_streams 2\n_host c\n_log 7\n");
}

TEST_F(RuntimePref, AFailedWriteKeepsTheOldFile) {
  const std::string old = std::string(header) + "_streams 1\n";
  overwrite(path, old);
  // Where the new file should go stands a folder.
  std::filesystem::create_directory(path + ".new");
  overwrite(path + ".new/inside", "");
  EXPECT_EQ(write({.streams = 3}), old);
  EXPECT_TRUE(str_holds(log.text(), "I could not save the file!"));
  std::filesystem::remove_all(path + ".new");
  // A link there is no way to a file elsewhere.
  const std::string elsewhere = log.folder / "elsewhere";
  overwrite(elsewhere, "mine");
  ASSERT_EQ(symlink(elsewhere.c_str(), (path + ".new").c_str()), 0);
  EXPECT_NE(write({.streams = 3}), old);
  EXPECT_EQ(content_of(elsewhere), "mine");
  overwrite(path, old);
  {
    const small_disk full(20);
    EXPECT_EQ(write({.streams = 3}), old);
  }
  EXPECT_TRUE(str_holds(log.text(), "WARNING: the file " + path + " stays as it was"));
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
  const std::string deep = log.folder / "new/Test.prf";
  {
    scan_class scan(deep, pref_write);
    settings().io(scan);
  }
  EXPECT_NE(content_of(deep), "");
}

TEST_F(RuntimePref, InstallerFileHoldsItsTagsInOrder) {
  setenv("XDG_CONFIG_HOME", log.folder.path().c_str(), 1);
  mnw = mnw_record();
  mnw.language = 2;
  override("--pref:_get_beta=1");
  pref.IO_set(pref_kind_installer, pref_read);
  pref.IO_set(pref_kind_installer, pref_write);
  std::string file;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(log.folder.path()))
    if (entry.path().filename() == "Skyvane Installer.prf") file = entry.path().string();
  EXPECT_EQ(content_of(file),
            std::string(header) + "_stream_count 0\n_log_actions 0\n_proxy_port_int 0\n_lang 2\n")
      << file;
  overwrite(file, std::string(header) + "_lang 5\r\n_proxy_host proxy.example\r\n");
  pref.IO_set(pref_kind_installer, pref_read);
  EXPECT_EQ(mnw.language, 5);
  cmdline = UTL_cmdline();
  pref.IO_set(pref_kind_installer, pref_write);
  EXPECT_EQ(content_of(file), std::string(header) +
                                  "_stream_count 0\n_log_actions 0\n_proxy_host proxy.example\n"
                                  "_proxy_port_int 0\n_get_beta 1\n_lang 5\n");
}

TEST_F(RuntimePref, AScreenOutOfRangeIsTheUsualOne) {
  const std::string file = resolution_file();
  const std::tuple<int, int, int, int> rows[] = {{600, 9999, 600, 9999},
                                                 {9999, 600, 9999, 600},
                                                 {599, 10000, 1024, 768},
                                                 {10000, 599, 1024, 768}};
  for (const auto& [x, y, dx, dy] : rows) {
    overwrite(file, header + str_format("_x_res_req_ALL %d\n_y_res_req_ALL %d\n", x, y));
    mnw = mnw_record();
    pref.IO_set(pref_kind_resolution, pref_read);
    EXPECT_EQ(mnw.req_dx, dx);
    EXPECT_EQ(mnw.req_dy, dy);
  }
}

// What this program has no use for it carries, since its sibling programs read it.
TEST_F(RuntimePref, TheFamilysFileIsWrittenWhole) {
  const std::string file = resolution_file();
  const auto text = [](const char* form) {
    std::string filled = header;
    int number = 1;
    for (const char* tag : {"_x_res_req_PLN", "_y_res_req_PLN", "_x_res_req_WRL", "_y_res_req_WRL",
                            "_x_res_req_ALL", "_y_res_req_ALL", "_col_res_req", "_set_res", "_lang",
                            "_alias_req", "_keylist_up", "_sec_mon_inuse", "_prefs_found"}) {
      const bool ours = std::string_view(tag).ends_with("_ALL");
      filled += str_format("%s %d\n", tag, ours ? 800 + number : *form == '0' ? 0 : number);
      ++number;
    }
    return filled;
  };
  mnw = mnw_record();
  mnw.req_dx = 805;
  mnw.req_dy = 806;
  mnw.req_depth = mnw.language = mnw.alias_req = mnw.sec_mon_inuse = 0;
  pref.IO_set(pref_kind_resolution, pref_write);
  EXPECT_EQ(content_of(file), text("0"));
  overwrite(file, text("1"));
  pref.IO_set(pref_kind_resolution, pref_read);
  EXPECT_EQ(mnw.req_depth, 7);
  EXPECT_EQ(mnw.alias_req, 10);
  unlink(file.c_str());
  pref.IO_set(pref_kind_resolution, pref_write);
  EXPECT_EQ(content_of(file), text("1"));
}

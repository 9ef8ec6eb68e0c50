// Verification over real trees: what is on disk against the table. Signatures are md5sum's.

#include <sys/types.h>

#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_md5_lanes.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/engine/utils_verify_pass.h"
#include "corekit/base/UTL_cmdline.h"
#include "engine_tree.h"

namespace {

constexpr char md5_of_nothing[] = "d41d8cd98f00b204e9800998ecf8427e";
constexpr char md5_of_abc[] = "900150983cd24fb0d6963f7d28e17f72";  // "abc"

class EngineVerify : public engine_tree {
 protected:
  // Runs a pass to its end; returns the steps it took.
  int run_pass() {
    int index = 0, steps = 1;
    float progress = -1;
    while (checksum_directory(index, progress) == 0) {
      EXPECT_GE(progress, 0.0f);
      EXPECT_LE(progress, 1.0f);
      usleep(200);
      ++steps;
    }
    EXPECT_EQ(index, static_cast<int>(sim_info.size()));
    EXPECT_EQ(checksum_workers, nullptr);
    return steps;
  }
};

TEST_F(EngineVerify, OneFile) {
  std::string big(3 * 256 * 1024 + 5, 'q');
  for (size_t i = 0; i < big.size(); i += 7)
    big[i] = static_cast<char>(i);
  write("empty", "");
  write("abc", "abc");
  write("one buffer", big.substr(0, 256 * 1024));
  write("big", big);
  write("folder/x", "abc");
  ASSERT_EQ(mkfifo((root + "fifo").c_str(), 0644), 0);
  here.link("to abc", "abc");
  here.link("dangling", "nowhere at all");
  here.link("loop", "loop");

  const std::pair<const char*, std::string> rows[] = {
      // with no sum: cannot be read
      {"empty", md5_of_nothing},
      {"abc", md5_of_abc},
      {"one buffer", "1f51faf7b9dcd36684fbb6eb5551da2f"},
      {"big", "cc98a9646a151835604524756d21a08b"},
      {"to abc", md5_of_abc},  // its text happens to be "abc"
      {"dangling", "a64223244747f2e41187761b9c60e81a"},
      {"loop", "e48b981fb62db33b98a27fc6cf8bf40a"},
      {"DangLing", "a64223244747f2e41187761b9c60e81a"},
      {"folder", ""},
      {"fifo", ""},
      {"abc/x", ""},
      {"", ""},
  };
  for (const auto& [name, expected] : rows) {
    std::string sig = "untouched";
    const std::string path = *name ? root + name : "";
    EXPECT_EQ(calc_file_md5(path, sig), expected.empty() ? 20006 : 0) << name;
    EXPECT_EQ(sig, expected.empty() ? "untouched" : expected) << name;
  }
  std::string sig;
  EXPECT_EQ(calc_file_md5(root + std::string(5000, 'n'), sig), 20006);

  g_case_sensitive = 0;
  EXPECT_EQ(calc_file_md5(root + "ABC", sig), 20006);
  g_case_sensitive = 1;
  // A file that this user may not read. The super-user may read all, so it steps down for that.
  ASSERT_EQ(chmod(root.c_str(), 0755), 0);
  ASSERT_EQ(chmod((root + "abc").c_str(), 0), 0);
  const ordinary_user user;
  EXPECT_EQ(calc_file_md5(root + "abc", sig), 20006);
  EXPECT_EQ(calc_file_md5(root + "big", sig), 0);
}

TEST_F(EngineVerify, APassOverATree) {
  for (const char* name :
       {"a/current", "a/dropped", "windows", "lib/1", "lib/2", "Spelt Otherwise", "shut", "twin"})
    write("copy/" + std::string(name), "abc");
  write("copy/a/changed", "abcd");
  ASSERT_EQ(mkfifo((root + "copy/fifo").c_str(), 0644), 0);
  std::filesystem::create_hard_link(root + "copy/twin", root + "copy/TWIN");
  here.link("copy/link", "abc");
  here.link("copy/loop", "loop");
  // The path, its platform and what the release has; what is found, and whether that is it.
  const std::tuple<const char*, int, const char*, const char*, int> rows[] = {
      {"ALL_os/a/current", 0, md5_of_abc, md5_of_abc, 1},
      {"ALL_os/a/changed", 0, md5_of_abc, "e2fc714c4727ee9395f324cd2e7f331f", 0},
      {"ALL_os/a/dropped", 0, "GONE", md5_of_abc, 0},
      {"ALL_os/a/absent", 0, md5_of_abc, "NONE", 0},
      {"IBM_os/windows", 2, md5_of_abc, "", 0},  // of no copy for this machine
      {"ALL_os/spelt otherwise", 0, md5_of_abc, md5_of_abc, 1},
      {"ALL_os/a", 0, md5_of_abc, "NONE", 0},            // a folder in its place
      {"ALL_os/a/current/x", 0, md5_of_abc, "NONE", 0},  // a file in its folder's place
      {"ALL_os/none/x", 0, md5_of_abc, "NONE", 0},
      {"ALL_os/A/CURRENT", 0, md5_of_abc, "NONE", 0},  // answers for its own spelling only
      // One file under two names is the one that the release ships.
      {"LIN_os/a/current", 3, "GONE", "NONE", 0},
      {"ALL_os/TWIN", 0, "GONE", "NONE", 0},
      {"ALL_os/twin", 0, md5_of_abc, md5_of_abc, 1},
      // What this user may not read, and what is no file at all, is somebody's all the same.
      {"ALL_os/shut", 0, md5_of_abc, "UNREADABLE", 0},
      {"ALL_os/fifo", 0, md5_of_abc, "UNREADABLE", 0},
      {"ALL_os/link", 0, md5_of_abc, md5_of_abc, 1},
      {"ALL_os/loop/x", 0, md5_of_abc, "UNREADABLE", 0},
      {"LIN_os/lib/1", 3, md5_of_abc, md5_of_abc, 1},
      {"ALL_os/lib/2", 6, md5_of_abc, md5_of_abc, 1},
  };
  for (const auto& [path, os, shipped, found, matches] : rows)
    add(path, {"older", shipped}).os = os;
  ASSERT_EQ(chmod((root + "copy/shut").c_str(), 0), 0);
  ASSERT_EQ(chmod(root.c_str(), 0755), 0);
  {
    const ordinary_user user;
    run_pass();
  }
  for (size_t i = 0; i < std::size(rows); ++i) {
    const auto& [path, os, shipped, found, matches] = rows[i];
    EXPECT_EQ(sim_info[i].current().sig_have, found) << path;
    EXPECT_EQ(sim_info[i].current().sig_match, matches) << path;
  }
  write("copy/a/absent", "abc");
  ASSERT_EQ(unlink((root + "copy/a/current").c_str()), 0);
  run_pass();
  EXPECT_EQ(sim_info[0].current().sig_have, sig_none);
  EXPECT_EQ(sim_info[0].current().sig_match, 0);
  EXPECT_EQ(sim_info[3].current().sig_match, 1);
}

TEST_F(EngineVerify, NoDestination) {
  add("A/1", {"x"}).sig_match = 1;
  add("A/2", {"NONE"});
  int index = 0;
  float progress = -1;
  EXPECT_EQ(checksum_directory(index, progress), 1);
  EXPECT_EQ(checksum_workers, nullptr);
  EXPECT_EQ(sim_info[0].current().sig_have, sig_none);
  EXPECT_EQ(sim_info[0].current().sig_match, 0);
  EXPECT_EQ(sim_info[1].current().sig_match, 1);
  EXPECT_EQ(index, 2);
  sim_info.clear();
  mkdir(dest_dir_path.c_str(), 0755);
  EXPECT_LE(run_pass(), 2);
}

TEST_F(EngineVerify, ManyProcessorsLeaveFilesForEach) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  for (const auto& [files, processors, workers] :
       {std::tuple(1024, 8, 8), {1024, 128, 56}, {140, 8, 1}, {0, 8, 1}}) {
    const rlimit fewer = {static_cast<rlim_t>(files), limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &fewer);
    EXPECT_EQ(verify_workers(processors), workers) << files;
  }
  setrlimit(RLIMIT_NOFILE, &limit);
}

// More of them than may wait, in every set of instructions; the last and large ones are shared.
TEST_F(EngineVerify, ManySizes) {
  std::string big(1200000, 'q');
  for (size_t i = 0; i < big.size(); i += 3)
    big[i] = static_cast<char>(i >> 4);
  constexpr int count = 701;
  std::vector<std::string> sigs;
  for (int i = 0; i < count; ++i) {
    const size_t size = i > count - 6 ? 1000000 + i : i % 7 == 0 ? 0 : i * 7919 % 70000;
    const std::string name = std::to_string(i % 13) + "/" + std::to_string(i);
    write("copy/" + name, std::string_view(big).substr(static_cast<size_t>(i), size));
    ASSERT_EQ(calc_file_md5(root + "copy/" + name, sigs.emplace_back()), 0);
    add("A/" + name, {sigs.back()});
  }
  for (const MD5_lane_code& code : MD5_lane_codes()) {
    SCOPED_TRACE(code.name);
    const std::string option = std::string("--md5=") + code.name;
    const char* const words[] = {"test", option.c_str()};
    cmdline.init_unix(2, words);
    open_log();
    run_pass();
    EXPECT_TRUE(str_holds(log(), code.name));
    for (int i = 0; i < count; ++i) {
      file_version_struct& current = sim_info[i].current();
      EXPECT_EQ(current.sig_have, sigs[i]) << i;
      EXPECT_EQ(current.sig_match, 1) << i;
      current.sig_have = "";
      current.sig_match = 0;
    }
  }
}

// Whoever empties the table need not know that its findings are still being written.
TEST_F(EngineVerify, ATableThatGoesEndsThePass) {
  for (int i = 0; i < 300; ++i) {
    write("copy/" + std::to_string(i), std::string(5000, 'a'));
    add("A/" + std::to_string(i), {md5_of_abc});
  }
  int index = 0;
  float progress = 0;
  EXPECT_EQ(checksum_directory(index, progress), 0);
  EXPECT_EQ(read_directory(write("directory.txt", "I\n900 version\nINSTALLER\n\n"), ""),
            directory_foreign);
  EXPECT_EQ(checksum_workers, nullptr);
}

// Given up in the middle, begun again, and begun again without having been given up.
TEST_F(EngineVerify, AbandonedPasses) {
  for (int i = 0; i < 500; ++i) {
    write("copy/" + std::to_string(i), "abc");
    add("A/" + std::to_string(i), {md5_of_abc});
  }
  checksum_directory_kill();  // without a pass
  for (int round = 0; round < 20; ++round) {
    int index = 0;
    float progress = 0;
    for (int step = 0; step <= round % 3; ++step)
      checksum_directory(index, progress);
    if (round % 2) {
      checksum_directory_kill();
      EXPECT_EQ(checksum_workers, nullptr);
    }
  }
  // A page may have chosen another copy since: the new pass must look there.
  dest_dir_path = root + "other/";
  write("other/7", "abc");
  run_pass();
  for (int i = 0; i < 500; ++i)
    EXPECT_EQ(sim_info[i].current().sig_match, i == 7) << i;
}

}  // namespace

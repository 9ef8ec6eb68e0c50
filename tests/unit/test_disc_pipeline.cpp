// The disc pipeline over a folder that stands for a disc, with archives made by zip and 7z.

#include <sys/inotify.h>

#include <algorithm>
#include <ctime>

#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "corekit/base/UTL_thread.h"
#include "engine_tree.h"

namespace {

constexpr char some_sig[] = "00112233445566778899aabbccddeeff";

class DiscPipeline : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    for (const char* const folder : {"disc/Rel", "copy", "made"})
      here.folder(folder);
    dvd_path = root + "disc/";
    temp_path = here.folder("tmp");
    install_name = "Rel";
    // Without TZ the C library looks the zone up again for every date, under a lock of its own that
    // the thread sanitizer does not see.
    setenv("TZ", ":/etc/localtime", 0);
    tzset();
    std::string message;
    install_files_get_error(message);
  }
  void TearDown() override {
    install_files_kill();
    engine_tree::TearDown();
  }
  // Puts `content` as an archive on the disc and marks it as wanted there.
  void ship(const std::string& path, const std::string& content, int disk = 0) {
    const std::string leaf = path.substr(path.rfind('/') + 1);
    const std::string at = "'" + root + "disc/Rel/" + path + "'";
    std::string sig;
    calc_file_md5(write("made/" + leaf, content), sig);
    file_version_struct& file = add(path, {sig});
    file.need_fetch = 1;
    file.disk = disk;
    file.sig_have = sig_none;
    const bool tile = str_holds(path, "Global Scenery");
    const std::string pack = tile ? "7z a -t7z " + at + ".7z '" + leaf + "' >/dev/null"
                                  : "zip -qX " + at + ".zip '" + leaf + "'";
    shell("mkdir -p \"$(dirname " + at + ")\" && cd '" + root + "made' && " + pack);
    const size_t size =
        std::filesystem::file_size(root + "disc/Rel/" + path + (tile ? ".7z" : ".zip"));
    file.raw_kb = static_cast<float>(content.size() / 1000);
    file.zip_kb = static_cast<float>(size / 1000);
  }

  void shell(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }
  // Steps the pipeline until it reports anything.
  install_step run(int& index, int disk = 0) {
    for (;;) {
      const int step = install_files(index, disk);
      if (step != install_working) return static_cast<install_step>(step);
      usleep(50);
    }
  }
  // The failures of a whole job, each as its file's leaf and code.
  std::vector<std::pair<int, std::string>> run_over_failures() {
    std::vector<std::pair<int, std::string>> failures;
    int index = 0;
    for (;;) {
      const install_step step = run(index);
      if (step == install_done) return failures;
      EXPECT_EQ(step, install_failed);
      std::string message;
      const int code = install_files_get_error(message);
      failures.emplace_back(code, message);
    }
  }

  size_t left_in_temp() {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(root + "tmp"),
                                             std::filesystem::directory_iterator()));
  }
};

// More than may be on the way in memory.
TEST_F(DiscPipeline, LargeArchivesGoByTheHardDrive) {
  std::string content(70'000'000, 'l');
  unsigned seed = 1;
  for (char& c : content)
    c = static_cast<char>((seed = seed * 1664525 + 1013904223) >> 24);
  ship("All/large", content);
  ship("All/small", "small");
  int index = 0;
  size_t most = 0;
  while (install_files(index, 0) == install_working) {
    most = std::max(most, left_in_temp());
    usleep(50);
  }
  EXPECT_EQ(most, 1u);
  EXPECT_TRUE(read("copy/large") == content);
  EXPECT_EQ(read("copy/small"), "small");
  EXPECT_EQ(left_in_temp(), 0u);
}

// What the system sees of the disc: each archive is opened after the one before it is closed, in
// the manifest's order.
TEST_F(DiscPipeline, ReadsTheDiscSeriallyAndInOrder) {
  std::string want, seen;
  for (int i = 0; i < 50; ++i) {
    const std::string leaf = std::to_string((i * 7) % 50) + ".txt";
    ship("All/" + leaf, std::string(20000, 'x') + leaf);
    want += "+" + leaf + ".zip -" + leaf + ".zip ";
  }
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, (root + "disc/Rel/All").c_str(), IN_OPEN | IN_CLOSE), 0);
  int index = 0;
  EXPECT_EQ(run(index), install_done);
  alignas(inotify_event) char buffer[16384];
  for (ssize_t got; (got = ::read(watch, buffer, sizeof buffer)) > 0;) {
    for (const char* at = buffer; at < buffer + got;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      if (event->len > 0)
        seen.append(event->mask & IN_OPEN ? "+" : "-") += event->name + std::string(" ");
      at += sizeof *event + event->len;
    }
  }
  close(watch);
  EXPECT_EQ(seen, want);
}

// Which step ends the first call of a job on disc 0, and at which index.
TEST_F(DiscPipeline, AsksOnlyForDiscsThatAreNeeded) {
  ship("All/a.txt", "a");
  const std::string sig(sim_info[0].current().sig_want);
  // Each file by its disc and whether it is wanted.
  const std::tuple<const char*, std::vector<std::pair<int, int>>, install_step, int> rows[] = {
      {"nothing wanted", {{0, 0}, {1, 0}, {2, 0}}, install_done, 3},
      {"unwanted ones ahead of disc 2", {{0, 1}, {1, 0}, {1, 0}, {2, 1}}, install_needs_disc, 3},
      {"disc 1 at once", {{1, 1}, {0, 1}}, install_needs_disc, 0},
      {"back to an earlier disc", {{0, 1}, {1, 1}, {0, 1}}, install_needs_disc, 1},
      {"only unwanted ones of disc 1 at the end", {{0, 1}, {1, 0}}, install_done, 2},
  };
  for (const auto& [label, files, step, at] : rows) {
    sim_info.clear();
    for (const auto& [disk, fetch] : files) {
      file_version_struct& file = add("All/a.txt", {sig});
      file.disk = disk;
      file.need_fetch = fetch;
    }
    int index = 0;
    EXPECT_EQ(run(index), step) << label;
    EXPECT_EQ(index, at) << label;
    if (step == install_needs_disc) {
      ASSERT_NE(copy_pool, nullptr) << label;
      EXPECT_EQ(copy_pool->count_total_tasks() + unzip_pool->count_total_tasks(), 0) << label;
    }
    install_files_kill();
    EXPECT_EQ(copy_pool, nullptr) << label;
  }
}

// A disc is lost when many of its files in a row are not there.
TEST_F(DiscPipeline, ALostDiscIsNoticed) {
  // Missing files ahead of one that is there: how many, of which disc, wanted or not.
  const std::tuple<const char*, int, int, int, int> rows[] = {
      {"one file is missing", 1, 1, 1, 1},
      {"nineteen", 19, 1, 1, 1},
      {"twenty", 20, 1, 1, -1},
      {"files of another disc", 30, 2, 1, 1},
      {"files that nobody wants", 30, 1, 0, 1},
  };
  here.file("disc/Rel/All/there.zip");
  for (const auto& [label, ahead, disk, need_fetch, current] : rows) {
    sim_info.clear();
    for (int i = 0; i <= ahead; ++i) {
      file_version_struct& file = add(i < ahead ? "All/gone" : "All/there", {some_sig});
      file.disk = i < ahead ? disk : 1;
      file.need_fetch = i < ahead ? need_fetch : 1;
    }
    current_disk = 1;
    UTIL_notice_lost_disk(0);
    EXPECT_EQ(current_disk, current) << label;
  }
  current_disk = 1;
  UTIL_notice_lost_disk(static_cast<int>(sim_info.size()));
  EXPECT_EQ(current_disk, 1) << "none of it is to come";
  dvd_path.clear();
  UTIL_notice_lost_disk(0);
  EXPECT_EQ(current_disk, -1) << "the volume has gone";
}

TEST_F(DiscPipeline, FailuresAreToldAndTheRestIsInstalled) {
  for (int i = 0; i < 12; ++i)
    ship("All/f" + std::to_string(i) + ".txt", "whole");
  ship("All/Global Scenery/x/+30-120/+34-118.dsf", std::string(5000, 't'));
  const std::string disc = root + "disc/Rel/All/";
  write("copy/f5.txt", "old and whole");
  std::filesystem::remove(disc + "f2.txt.zip");
  sim_info[7].versions[0].sig_want = some_sig;  // a sound archive of another file
  ship("All/grown.txt", std::string(5000, 'g'));
  ship("All/bomb.txt", std::string(500'000, 'b'));
  sim_info[13].versions[0].zip_kb = -1;
  sim_info[14].versions[0].raw_kb = 498;  // more comes out than the manifest says
  std::swap(sim_info[4], sim_info[14]);
  std::filesystem::resize_file(disc + "f5.txt.zip", 30);
  std::filesystem::resize_file(disc + "Global Scenery/x/+30-120/+34-118.dsf.7z", 40);

  const auto failures = run_over_failures();
  // What fails in the same frame is told as one, the last of them; a success hides nothing.
  ASSERT_GE(failures.size(), 1u);
  ASSERT_LE(failures.size(), 5u);
  EXPECT_NE(failures.back().first, 0);
  for (int i = 0; i < 12; ++i) {
    const bool bad = i == 2 || i == 4 || i == 5 || i == 7;
    const file_version_struct& file = sim_info[i].current();
    EXPECT_EQ(file.sig_match, bad ? 0 : 1) << i;
    EXPECT_EQ(file.sig_have == file.sig_want, !bad) << i;
    const char* const left = i == 5 ? "old and whole" : bad && i != 4 ? "" : "whole";
    EXPECT_EQ(read("copy/f" + std::to_string(i) + ".txt"), left) << i;
  }
  EXPECT_EQ(read("copy/grown.txt").size(), 5000u);  // within the unit that is added
  EXPECT_FALSE(there("copy/bomb.txt"));
  EXPECT_EQ(left_in_temp(), 0u);
  for (file_history_struct& history : sim_info)
    history.current().need_fetch = &history == &sim_info[12];
  const auto again = run_over_failures();
  ASSERT_EQ(again.size(), 1u);
  EXPECT_EQ(again[0].second, "I was unable to unzip the file " + temp_path +
                                 std::string(sim_info[12].current().sig_want) +
                                 "_12..7z to the folder " + root +
                                 "copy/Global Scenery/x/+30-120/.");
}

// The file services end the program at a path of 500 characters; here that is one failed file.
TEST_F(DiscPipeline, PathsThatAreTooLong) {
  for (const size_t length : {path_limit - root.size() - 30, path_limit, size_t{5000}})
    add("All/" + std::string(length, 'x'), {some_sig}).need_fetch = 1;
  ship("All/short.txt", "s");
  const auto failures = run_over_failures();
  EXPECT_GE(failures.size(), 1u);
  EXPECT_EQ(read("copy/short.txt"), "s");
}

TEST_F(DiscPipeline, GivingUpLeavesWholeFilesOnly) {
  std::string content(30000, 'k');
  ship("All/0.txt", content);
  for (int i = 1; i < 200; ++i) {
    sim_info.push_back(sim_info[0]);
    sim_info[i].versions[0].path = "All/" + std::to_string(i) + ".txt";
    std::filesystem::copy_file(root + "disc/Rel/All/0.txt.zip",
                               root + "disc/Rel/All/" + std::to_string(i) + ".txt.zip");
  }
  for (int frames = 0; frames < 40; frames += 3) {
    for (file_history_struct& history : sim_info)
      history.current().sig_match = 0;
    int index = 0;
    for (int i = 0; i < frames; ++i) {
      install_files(index, 0);
      usleep(100);
    }
    install_files_kill();
    EXPECT_EQ(copy_pool, nullptr);
    EXPECT_EQ(unzip_pool, nullptr);
    EXPECT_EQ(left_in_temp(), 0u) << frames;
    if (there("copy/0.txt")) {
      EXPECT_EQ(read("copy/0.txt"), content) << frames;
    }
    install_files_kill();  // safe without a job
  }
  // A job after one that was given up ends, and takes no more room than its queues allow.
  int index = 0;
  size_t most = 0;
  while (install_files(index, 0) == install_working)
    most = std::max(most, left_in_temp());
  EXPECT_EQ(index, 200);
  EXPECT_LE(most, 2u * disc_queue_limit);
}

}  // namespace

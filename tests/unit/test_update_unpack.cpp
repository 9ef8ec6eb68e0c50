// Unpackers killed at all points of their work leave the old file or the new one.

#include <sys/wait.h>

#include <chrono>
#include <csignal>

#include "Installer-f/engine/utils_unpack.h"
#include "Installer-f/engine/utils_verify.h"
#include "corekit/files/io_zip.h"
#include "engine_tree.h"

namespace {

class UpdateUnpack : public engine_tree {
 protected:
  // The archive of `content` under the name of the installed file.
  void pack(const std::string& content) {
    write("packed/sheet.png", content);
    ASSERT_EQ(file_to_zip(root + "packed/sheet.png", root + "whole.zip"), 0);
  }
  // As a worker does it; 0 or the code.
  int unpack() {
    unpack_task task;
    task.archive_path = root + "0.zip";
    unlink(task.archive_path.c_str());
    EXPECT_EQ(link((root + "whole.zip").c_str(), task.archive_path.c_str()), 0);
    task.most_archive = task.most = 100'000'000;
    task.gate = copy_gate();
    task.path = "a/sheet.png";
    std::string sig;
    calc_file_md5(root + "packed/sheet.png", sig);
    task.sig_want = sig;
    task.do_it();
    EXPECT_FALSE(there("0.zip"));
    return task.result.code;
  }
};

TEST_F(UpdateUnpack, KilledAtAnyPointLeavesAWholeFile) {
  constexpr int kills = 60;
  std::string content(6 * 1000 * 1000, 'n');
  for (size_t i = 0; i < content.size(); i += 97)
    content[i] = static_cast<char>(i / 97);
  pack(content);
  write("copy/a/sheet.png", "old");

  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(unpack(), 0);
  const auto whole = std::chrono::steady_clock::now() - begin;
  ASSERT_TRUE(read("copy/a/sheet.png") == content);

  int old_ones = 0;
  for (int i = 0; i < kills; ++i) {
    write("copy/a/sheet.png", "old");
    const pid_t child = fork();
    if (child == 0) {
      unpack();
      _exit(0);
    }
    ASSERT_GT(child, 0);
    usleep(static_cast<useconds_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(whole * i / kills).count()));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    const std::string have = read("copy/a/sheet.png");
    old_ones += have == "old";
    ASSERT_TRUE(have == "old" || have == content) << "a part of " << have.size() << ", kill " << i;
  }
  EXPECT_GT(old_ones, 0);

  EXPECT_EQ(unpack(), 0);
  EXPECT_TRUE(read("copy/a/sheet.png") == content);
  EXPECT_FALSE(there("copy/a/.skyvane_part"));
}

}  // namespace

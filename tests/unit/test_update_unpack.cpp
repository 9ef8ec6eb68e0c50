// A file in its place is whole at every moment: unpackers that are killed at all points of their
// work leave the old file or the new one, and the next unpacking ends the job.

#include <sys/wait.h>

#include <chrono>
#include <csignal>

#include "Installer-f/utils_grab.h"
#include "Installer-f/utils_unpack.h"
#include "corekit/Files/io_utils.h"
#include "corekit/Files/io_zip.h"
#include "engine_tree.h"

namespace {

class UpdateUnpack : public engine_tree {
 protected:
  // The archive of `content` under the name of the installed file.
  void pack(const std::string& content) {
    write("packed/sheet.png", content);
    ASSERT_EQ(file_to_zip(root + "packed/sheet.png", root + "whole.zip"), 0);
  }

  // extract_and_delete_file takes its archive away; each call gets a link to the one.
  std::string archive() {
    const std::string path = root + "0.zip";
    unlink(path.c_str());
    EXPECT_EQ(link((root + "whole.zip").c_str(), path.c_str()), 0);
    return path;
  }
};

TEST_F(UpdateUnpack, KilledAtAnyPointLeavesAWholeFile) {
  constexpr int kills = 60;
  std::string content(24 * 1000 * 1000, 'n');
  for (size_t i = 0; i < content.size(); i += 97)
    content[i] = static_cast<char>(i / 97);
  pack(content);
  const std::string location = write("copy/a/sheet.png", "old");

  const auto begin = std::chrono::steady_clock::now();
  extract_and_delete_file(archive(), location, "");
  const auto whole = std::chrono::steady_clock::now() - begin;
  ASSERT_TRUE(read("copy/a/sheet.png") == content);

  int old_ones = 0;
  for (int i = 0; i < kills; ++i) {
    write("copy/a/sheet.png", "old");
    const std::string zip = archive();
    const pid_t child = fork();
    if (child == 0) {
      extract_and_delete_file(zip, location, "");
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

  extract_and_delete_file(archive(), location, "");
  EXPECT_TRUE(read("copy/a/sheet.png") == content);
  EXPECT_FALSE(there("copy/a/.skyvane_part"));
  EXPECT_EQ(stg.extract_failed, 0);
}

TEST_F(UpdateUnpack, WhatStandsInThePlace) {
  pack("new");
  const std::string location = root + "copy/a/sheet.png";
  const struct {
    const char* label;
    const char* command;  // in the folder that holds the copy
    bool succeeds;
  } rows[] = {
      {"a file that may not be written", "echo old >copy/a/sheet.png; chmod 0 copy/a/sheet.png",
       true},
      {"a link to a file", "echo mine >mine; ln -s ../../mine copy/a/sheet.png", true},
      {"an empty folder", "mkdir copy/a/sheet.png", true},
      {"a folder with a hidden file", "mkdir copy/a/sheet.png; echo mine >copy/a/sheet.png/.mine",
       false},
      {"no folder for it", "rmdir copy/a", true},
      {"a file for a folder", "rmdir copy/a; echo mine >copy/a", false},
      {"a part of an earlier run", "echo half >copy/a/.skyvane_part", true},
      {"a part that is a link", "echo mine >mine; ln -s ../../mine copy/a/.skyvane_part", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    stg.extract_failed = 0;
    grab_totals = {};
    const std::string setup =
        "cd '" + root + "' && rm -rf copy mine && mkdir -p copy/a && { " + row.command + "; }";
    ASSERT_EQ(std::system(setup.c_str()), 0);
    const std::string zip = archive();
    extract_and_delete_file(zip, location, "");
    EXPECT_EQ(stg.extract_failed, row.succeeds ? 0 : 1);
    EXPECT_EQ(grab_totals.fetched, row.succeeds ? 1 : 0);
    EXPECT_EQ(read("copy/a/sheet.png") == "new", row.succeeds);
    EXPECT_FALSE(there("copy/a/.skyvane_part"));
    EXPECT_FALSE(there("0.zip")) << "the archive stayed";
    for (const char* const mine :
         {"mine", "copy/a", "copy/a/sheet.png/mine", "copy/a/sheet.png/.mine"}) {
      struct stat info;
      const bool is_file = stat((root + mine).c_str(), &info) == 0 && S_ISREG(info.st_mode);
      EXPECT_TRUE(!is_file || read(mine) == "mine\n") << mine;
    }
    const std::string search = "grep -qr mine '" + root + "copy'";
    EXPECT_TRUE(row.succeeds || std::system(search.c_str()) == 0) << "the user's file is lost";
  }
}

}  // namespace

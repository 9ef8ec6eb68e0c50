// What the tests of the install engine share: a folder of their own, files in it, made-up tables.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/files/io_utils.h"

// A folder that starts empty and goes with the test; dest_dir_path is "copy/" in it, not yet made.
// The engine's globals start as at the program's start.
class engine_tree : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "engine_XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root = name + "/";
    dest_dir_path = root + "copy/";
    sim_info.clear();
    deleted_files.clear();
    stg = stg_record();
    set_install_filter(1, 1);
    g_case_sensitive = 1;
  }

  void TearDown() override {
    xer.close();
    sim_info.clear();
    const std::string command = "chmod -R u+rwx '" + root + "' && rm -rf '" + root + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
  }

  // Makes the folders above `path` (below the root) and writes the file; returns its full path.
  std::string write(const std::string& path, std::string_view content) {
    for (size_t slash = path.find('/'); slash != std::string::npos;
         slash = path.find('/', slash + 1))
      mkdir((root + path.substr(0, slash)).c_str(), 0755);
    std::ofstream(root + path, std::ios::binary) << content;
    return root + path;
  }

  std::string read(const std::string& path) {
    std::stringstream content;
    content << std::ifstream(root + path, std::ios::binary).rdbuf();
    return content.str();
  }

  // Whether there is anything of that name; a dangling link counts.
  bool there(const std::string& path) {
    struct stat info;
    return lstat((root + path).c_str(), &info) == 0;
  }

  void open_log() { ASSERT_TRUE(xer_open(root + "log.txt")); }
  std::string log() {
    xer.flush();
    return read("log.txt");
  }

  // A history whose versions have these signatures, oldest first.
  file_version_struct& add(std::string_view path, std::initializer_list<std::string_view> sigs) {
    file_history_struct& history = sim_info.emplace_back();
    for (const std::string_view sig : sigs) {
      file_version_struct& version = history.versions.emplace_back();
      version.path = path;
      version.sig_want = sig;
    }
    return history.current();
  }

  std::string root;  // with a trailing "/"
};

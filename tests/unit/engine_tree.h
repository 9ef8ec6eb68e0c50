// What the tests of the install engine share: a folder of their own, files in it, made-up tables.
#pragma once

#include <string_view>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "tests/unit/test_files_scratch.h"

// A folder that starts empty and goes with the test; dest_dir_path is "copy/" in it, not yet made.
// The engine's globals start as at the program's start.
class engine_tree : public testing::Test {
 protected:
  void SetUp() override {
    dest_dir_path = root + "copy/";
    setenv("XDG_CONFIG_HOME", (root + "config").c_str(), 1);
    sim_info.clear();
    deleted_files.clear();
    stg = stg_record();
    set_install_filter(1, 1);
    g_case_sensitive = 1;
  }

  void TearDown() override {
    unsetenv("XDG_CONFIG_HOME");
    engine_ask = kept_questions;
    xer.close();
    sim_info.clear();
    EXPECT_EQ(std::system(("chmod -R u+rwx '" + root + "'").c_str()), 0);
  }

  // Makes the folders above `path` (below the root) and writes the file; returns its full path.
  std::string write(const std::string& path, std::string_view content) {
    return here.file(path, std::string(content));
  }

  std::string read(const std::string& path) { return content_of(root + path); }

  // Whether there is anything of that name; a dangling link counts.
  bool there(const std::string& path) { return is_there(root + path); }

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

  const engine_questions kept_questions = engine_ask;
  const scratch_folder here;
  const std::string root = here.path();  // with a trailing "/"
};

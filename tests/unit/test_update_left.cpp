// The dropped files that are left, and a manifest of a hundred thousand files.

#include <chrono>

#include "Installer-f/engine/utils_dirs.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/engine/utils_verify.h"
#include "engine_tree.h"

namespace {

int refuse_question(const std::string& location, int) {
  ADD_FAILURE() << "asked about " << location;
  return answer_keep;
}

class UpdateLeft : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    engine_ask.modified = refuse_question;
  }
};

TEST_F(UpdateLeft, CountsWhatWouldGoWithoutAQuestion) {
  const std::tuple<const char*, const char*, const char*, const char*, int, int> rows[] = {
      {"an earlier version", "ALL_os/a.txt", "older", "GONE", 0, 1},
      {"gone already", "ALL_os/a.txt", "NONE", "GONE", 0, 0},
      {"the user's by now", "ALL_os/a.txt", "unheard of", "GONE", 0, 0},
      {"of another platform", "ALL_os/a.txt", "older", "GONE", 2, 0},
      {"still shipped", "ALL_os/a.txt", "older", "new", 0, 0},
      {"reached through a shipped link", "ALL_os/link/a.txt", "older", "GONE", 0, 0},
      {"beside a shipped link", "ALL_os/links/a.txt", "older", "GONE", 0, 1},
  };
  for (const auto& [label, path, have, want, os, left] : rows) {
    SCOPED_TRACE(label);
    sim_info.clear();
    add("ALL_os/link", {"new"}).sig_have = "new";
    file_version_struct& file = add(path, {"old", "older", want});
    file.sig_have = have;
    file.os = os;
    EXPECT_EQ(dropped_files_left(), left);
  }
}

// Flat and deep, few folders and many. The limit is a hundred times what a pass takes; a quadratic
// one would need 10^10 steps.
TEST_F(UpdateLeft, AHundredThousandFilesTakeNoTime) {
  constexpr int count = 100000;
  mkdir((root + "copy").c_str(), 0755);
  for (const int per_folder : {count, 20, 1}) {
    SCOPED_TRACE(per_folder);
    sim_info.clear();
    deleted_files.clear();
    for (int i = 0; i < count; ++i) {
      const int folder = i / per_folder;
      const std::string path = "ALL_os/Resources/" + std::to_string(folder % 100) + "/" +
                               std::to_string(folder) + "/file " + std::to_string(i) + ".png";
      add(path, {"old", "older", i % 2 ? "GONE" : "new"}).raw_kb = 1;
    }

    const auto begin = std::chrono::steady_clock::now();
    int index = 0;
    float progress = 0;
    while (!checksum_directory(index, progress)) {
    }
    int absent = 0;
    for (file_history_struct& history : sim_info) {
      absent += history.current().sig_have == sig_none;
      if (absent % 4 < 2) history.current().sig_have = "older";
    }
    recalc_disk_sizes();
    EXPECT_EQ(stg.todo_install_count, count / 2);
    EXPECT_EQ(dropped_files_left(), count / 4);
    ASSERT_EQ(choose_files(), 1);
    for (const file_history_struct& history : sim_info) {
      if (!history.current().need_delete) continue;
      note_emptied_folders(dest_dir_path + std::string(history.current().path.view().substr(7)),
                           deleted_files);
    }
    remove_emptied_folders(deleted_files);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(took.count(), 60);
  }
}

}  // namespace

// The update's pages as a user goes through them: Back in the midst of the transfer, and on again.

#include <sys/file.h>

#include <algorithm>
#include <set>

#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/wizard/main_ask.h"
#include "Installer-f/wizard/main_net.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "grab_fixture.h"

namespace {

constexpr int fetched_files = 24;  // missing from the copy, or modified and to be replaced

// The user, page by page.
struct scripted_user {
  int back_at = 0;                     // files fetched when Back is pressed, once; 0 never
  std::map<std::string, int> answers;  // by a file's name
  std::vector<std::string> asked;
  std::vector<int> files_to_go;  // each time that "Check Disk Space" was shown
  bool saw_busy = false;
  std::string last_text;
} user;

wizard_press press(page_function page, int first_time, const wizard_screen& screen, int result) {
  wizard_press hand;
  user.last_text = screen.text;
  if (result && screen.next) return hand;
  user.saw_busy |= screen.copy_is_busy;
  if (page == net_check_disk && first_time) user.files_to_go.push_back(stg.todo_install_count);
  if (page == net_run_patch) {
    hand.back = user.back_at > 0 && grab_totals.fetched >= user.back_at;
    if (hand.back) user.back_at = 0;
  } else if (page == net_done) {
    app_done = 1;
  } else {
    hand.next = static_cast<bool>(screen.next);
  }
  return hand;
}

int answer(const std::string& location, int) {
  const std::string name = location.substr(location.rfind('/') + 1);
  user.asked.push_back(name);
  return user.answers.at(name);
}

constexpr wizard_stand_in the_user = {press, answer, nullptr};

class UpdateBack : public Grab {
 protected:
  UpdateBack() {
    dest_dir_path = new_folder();
    user = {};
    stand_in = &the_user;
    engine_ask.modified = select_alert;
    cmd_line_path = dest_dir_path;
    app_done = 0;
    g_wizard = net_start;
    stg = stg_record();
    grab_totals = {};
    publish();
  }
  ~UpdateBack() override {
    stand_in = nullptr;
    engine_ask = kept_questions_;
    cmd_line_path.clear();
    unlock_copy();
    grab_kill();
    sim_info.clear();
  }

  // A release of 32 files, of which the copy lacks 23, holds 7, and has two that the user changed.
  void publish() {
    std::string manifest = "I\n900 version\nINSTALLER\nDIR ALL_os/Resources/\n";
    const std::string mirror = "http://mirror/rel/ALL_os/Resources/";
    for (int i = 0; i < 32; ++i) {
      const std::string name = "file" + std::to_string(i);
      const std::string content = "content of " + name;
      std::string sig;
      put("Resources/" + name, content);
      calc_file_md5(dest_dir_path + "Resources/" + name, sig);
      manifest += "FILE 0 0 91001 1 1 " + sig + " " + name + "\n";
      files_[mirror + name + ".zip"] = archive_of(name, content);
      contents_[name] = content;
      if (i >= 9) delete_file(dest_dir_path + "Resources/" + name);
      if (i < 2) put("Resources/" + name, "the user's own");
    }
    files_["http://mirror/rel/directory.txt.zip"] = archive_of("directory.txt", manifest);
    files_["http://" + std::string(product_web_host) + "/serverlist9.txt"] =
        "I\n820 version\nSERVERS\nFINAL rel\nSERVER mirror\n/\nMirror\nENDOFLIST\n";
  }

  // Frames until the last page is there, or fifteen seconds have gone.
  void go_through() {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (!app_done && std::chrono::steady_clock::now() < limit) {
      xtim.xtim_update();
      APP_update();
    }
    ASSERT_TRUE(app_done) << user.last_text;
  }

  std::map<std::string, std::string> files_, contents_;

 private:
  const engine_questions kept_questions_ = engine_ask;
};

TEST_F(UpdateBack, WhatIsFetchedIsKnownAndNothingIsAskedTwice) {
  mirror m(files_, 5);  // slow enough for more than one frame
  user.back_at = 9;
  user.answers = {{"file0", answer_keep}, {"file1", answer_overwrite}};
  go_through();

  EXPECT_EQ(user.asked, (std::vector<std::string>{"file0", "file1"}));
  ASSERT_EQ(user.files_to_go.size(), 2u);
  EXPECT_EQ(user.files_to_go[0], fetched_files + 1) << "the preview counts what is kept as well";
  const int before_back = fetched_files + 1 - user.files_to_go[1];
  EXPECT_GE(before_back, 9);
  EXPECT_EQ(grab_totals.fetched, fetched_files) << "each file once";

  std::map<std::string, int> requests;
  for (const std::string& head : m.requests())
    ++requests[head.substr(0, head.find('\r'))];
  int twice = 0;
  for (const auto& [line, count] : requests) {
    if (line.find(".zip ") == line.npos || str_holds(line, "directory")) continue;
    EXPECT_LE(count, 2) << line;
    twice += count > 1;
  }
  EXPECT_LE(twice, stream_limit) << "what was under way at most";

  contents_["file0"] = "the user's own";
  for (const auto& [name, content] : contents_)
    EXPECT_EQ(content_of(dest_dir_path + "Resources/" + name), content);
}

// Another program is at work on the copy: the page waits, and goes on by itself.
TEST_F(UpdateBack, WaitsForAnotherProgram) {
  mirror m(files_);
  user.answers = {{"file0", answer_keep}, {"file1", answer_keep_folder}};
  const int other = open(dest_dir_path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  for (const double give_up = xtim.now_sec + 60; xtim.now_sec < give_up && !user.saw_busy;) {
    xtim.xtim_update();
    APP_update();
  }
  EXPECT_TRUE(user.saw_busy);
  EXPECT_TRUE(g_wizard == net_get_updates);
  EXPECT_TRUE(str_holds(user.last_text, "at work on " + dest_dir_path));
  EXPECT_TRUE(sim_info.empty() || sim_info[0].current().sig_have.empty()) << "nothing is verified";
  close(other);
  go_through();
  EXPECT_EQ(grab_totals.fetched, fetched_files - 1);
}

TEST_F(UpdateBack, ALockMovesWithTheCopy) {
  const std::string second = new_folder();
  const auto free_to_others = [](const std::string& folder) {
    const int fd = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    const bool free = flock(fd, LOCK_SH | LOCK_NB) == 0;
    close(fd);
    return free;
  };
  EXPECT_EQ(lock_copy(dest_dir_path), copy_lock_ours);
  EXPECT_EQ(lock_copy(dest_dir_path), copy_lock_ours);
  EXPECT_FALSE(free_to_others(dest_dir_path));
  EXPECT_EQ(lock_copy(second), copy_lock_ours);
  EXPECT_TRUE(free_to_others(dest_dir_path));
  EXPECT_FALSE(free_to_others(second));
  EXPECT_EQ(lock_copy(second + "not made"), copy_lock_ours);
  // The folder is deleted and made anew under our hands.
  EXPECT_EQ(rmdir(second.c_str()), 0);
  EXPECT_EQ(mkdir(second.c_str(), 0755), 0);
  EXPECT_EQ(lock_copy(second), copy_lock_ours);
  EXPECT_FALSE(free_to_others(second));
  unlock_copy();
  EXPECT_TRUE(free_to_others(second));
}

}  // namespace

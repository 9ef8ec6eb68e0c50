// The pages of the disc flows, frame by frame, without a window; a question counts as giving up.

#include "Installer-f/engine/utils_disc.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/wizard/main_dvd.h"
#include "Installer-f/wizard/main_dvd_job.h"
#include "Installer-f/wizard/main_dvd_repair.h"
#include "Installer-f/wizard/main_dvd_scenery.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "engine_tree.h"

namespace {

constexpr char some_sig[] = "00112233445566778899aabbccddeeff";

class DiscPages : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    for (const char* const folder : {"disc", "tmp"})
      ASSERT_EQ(mkdir((root + folder).c_str(), 0755), 0);
    dvd_path = root + "disc/";
    temp_path = root + "tmp/";
    install_name = "Skyvane 9";
    current_disk = 0;
  }
  void TearDown() override {
    install_files_kill();
    engine_tree::TearDown();
  }

  wizard_screen show(page_function page, int first_time, int want_result) {
    wizard_screen screen;
    EXPECT_EQ(page(first_time, screen), want_result);
    return screen;
  }
  // A wanted file whose archive is not on the disc.
  void want_file(const std::string& path, int disk = 0) {
    file_version_struct& file = add(path, {some_sig});
    file.disk = disk;
    file.sig_have = sig_none;
  }
  // Runs a job's page until it leads on.
  wizard_screen run_job(page_function page) {
    for (int frames = 0; frames < 10000; ++frames) {
      wizard_screen screen;
      if (page(frames == 0, screen)) return screen;
      usleep(100);
    }
    ADD_FAILURE() << "the job never leads on";
    return {};
  }
};

TEST_F(DiscPages, DiscLabel) {
  const struct {
    const char *text, *name;
  } rows[] = {
      {"I\n900 version\nDVD\nNOTE x\n \tVERSION\t Two  words\nEND\n", "Two  words"},
      {"I\r\n900 version\r\nDVD\r\nVERSION Nine\r\n", "Nine"},
      {"I\n900 version\nDVD\nVERSION Nine", "Nine"},
      {"I\n901 version\nDVD\nVERSION Nine\n", no_install_name},
      {"I\n900 version\nDVD\nVERSIONS Nine\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION ..\n", no_install_name},
      {"I\n900 version\nDVD\nVERSION /etc\n", no_install_name},
      {"I", no_install_name},
  };
  for (const auto& row : rows) {
    write("disc/dvd_version.txt", row.text);
    install_name = no_install_name;
    stg.directory_state = manifest_loaded;  // the manifest itself is another matter
    UTIL_scan_dvd();
    EXPECT_EQ(install_name, row.name) << row.text;
  }
  // The last was none of ours: when it is taken out, the next disc is looked for.
  EXPECT_NE(dvd_path, "");
  std::filesystem::remove(root + "disc/dvd_version.txt");
  UTIL_scan_dvd();
  EXPECT_EQ(dvd_path, "");
}

// Only a copy that is listed is a choice; a destination that was given up is none.
TEST_F(DiscPages, PickingACopy) {
  all_skyroots = {root + "a/", root + "b/"};
  const page_function pages[] = {dvd_pick_scenery, dvd_pick_repair, dvd_pick_run_sim};
  for (const page_function page : pages) {
    dest_dir_path = root + "never made/";
    EXPECT_EQ(show(page, 1, 0).next, nullptr);
    dest_dir_path = root + "b/";
    EXPECT_NE(show(page, 1, 0).next, nullptr);
    EXPECT_EQ(dest_dir_path, root + "b/");
  }
  all_skyroots.pop_back();
  // A sole copy is started unseen, unless there is nothing in it to start.
  write("a/Skyvane.app/Contents/MacOS/Skyvane", "not executable");
  EXPECT_EQ(show(dvd_pick_run_sim, 1, 1).next, dvd_start);
  chmod((root + "a/Skyvane.app/Contents/MacOS/Skyvane").c_str(), 0755);
  const wizard_screen screen = show(dvd_pick_run_sim, 1, 1);
  EXPECT_EQ(screen.next, dvd_do_run_sim);
  EXPECT_EQ(screen.text, "");
  EXPECT_EQ(dest_dir_path, root + "a/");
}

// Giving up at an error: a first install asks once more on the page before, the others end there.
TEST_F(DiscPages, GivingUpAtAnError) {
  const struct {
    page_function page;
    int* running;
    page_function next;
    int running_after;
  } rows[] = {
      {dvd_run_install, &dvd_install_is_running, dvd_scenery_install, 1},
      {dvd_install_scenery, &scenery_install_is_running, dvd_done_scenery, 0},
      {dvd_install_repair, &repair_is_running, dvd_done_repair, 0},
  };
  want_file("All/Resources/missing.txt");
  write("disc/Skyvane 9/All/Resources/other.txt.zip", "");
  for (const auto& row : rows) {
    current_disk = 0;
    num_install_errors = 7;
    // Only so that the disc counts as being in.
    want_file("All/Resources/other.txt");
    const wizard_screen screen = run_job(row.page);
    EXPECT_EQ(screen.next, row.next);
    EXPECT_EQ(*row.running, row.running_after);
    EXPECT_EQ(num_install_errors, 1);
    EXPECT_EQ(copy_pool != nullptr, row.running_after != 0);
    EXPECT_NE(screen.kill_proc, nullptr);
    install_files_kill();
    *row.running = 0;
  }
  EXPECT_TRUE(there("copy/Resources/preferences")) << "nothing is rolled back here";
}

// A job whose disc is not in asks for it instead of failing file by file.
TEST_F(DiscPages, TheDiscIsLookedAtBeforeTheJob) {
  want_file("All/Resources/a.txt");
  for (const char* const disc : {"", "disc/"}) {  // taken out, or changed for another by hand
    dvd_path = *disc ? root + disc : "";
    EXPECT_EQ(run_job(dvd_install_repair).next, dvd_verify_disk_repair) << disc;
    EXPECT_EQ(want_file_disk, 0) << disc;
    EXPECT_EQ(num_install_errors, 0) << disc;
    install_files_kill();
    repair_is_running = 0;
  }
}

}  // namespace

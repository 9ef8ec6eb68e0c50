// The pages of the disc flows, a frame at a time, without a window: what they say, where they lead,
// and what they leave. A question that cannot be put counts as giving up.

#include <filesystem>

#include "Installer-f/main_dvd.h"
#include "Installer-f/main_dvd_job.h"
#include "Installer-f/main_dvd_repair.h"
#include "Installer-f/main_dvd_scenery.h"
#include "Installer-f/main_dvd_util.h"
#include "Installer-f/utils_disc.h"
#include "Installer-f/utils_registry.h"
#include "engine_tree.h"

namespace {

constexpr char some_sig[] = "00112233445566778899aabbccddeeff";
constexpr char release[] = "Skyvane 9";

class DiscPages : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", (root + "config").c_str(), 1), 0);
    for (const char* const folder : {"disc", "tmp"})
      ASSERT_EQ(mkdir((root + folder).c_str(), 0755), 0);
    dvd_path = root + "disc/";
    temp_path = root + "tmp/";
    install_name = release;
    current_disk = 0;
  }
  void TearDown() override {
    install_files_kill();
    unsetenv("XDG_CONFIG_HOME");
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

TEST_F(DiscPages, StartPage) {
  const struct {
    const char* label;
    const char* disc;  // mount path below the root; null for none
    const char* name;
    int state, sim, global, copies;
    const char* text;
    bool next;
    std::vector<std::string> buttons;
  } rows[] = {
      {"no disc",
       nullptr,
       release,
       manifest_loaded,
       1,
       1,
       0,
       "Please insert Skyvane 9 DVD number one to begin.",
       false,
       {}},
      {"no label",
       "disc/",
       no_install_name,
       manifest_none,
       0,
       0,
       0,
       "This DVD does not appear to be an Skyvane 9 DVD.",
       false,
       {}},
      {"manifest refused",
       "disc/",
       release,
       manifest_refused,
       1,
       1,
       1,
       "This DVD does not appear to be an Skyvane 9 DVD.",
       false,
       {}},
      {"first copy",
       "disc/",
       release,
       manifest_loaded,
       1,
       1,
       0,
       "Welcome to the Skyvane 9 Installer.  I will guide you through the proess of installing "
       "Skyvane 9.",
       true,
       {}},
      {"scenery alone, no copy",
       "disc/",
       "Mars",
       manifest_loaded,
       0,
       1,
       0,
       "This DVD (Mars) contains global scenery.  You must install the sim before you install the "
       "global scenery.",
       false,
       {}},
      {"a copy",
       "disc/",
       release,
       manifest_loaded,
       1,
       1,
       1,
       "You already have Skyvane 9 installed on this computer.  What would you like to do?",
       false,
       {"Run Skyvane Now", "Add Or Remove Scenery", "Repair Skyvane",
        "Install A Second Copy of Skyvane"}},
      {"a copy, scenery alone",
       "disc/",
       "Mars",
       manifest_loaded,
       0,
       1,
       1,
       "You already have Skyvane 9 installed on this computer.  What would you like to do?",
       false,
       {"Run Skyvane Now", "Add Or Remove Scenery"}},
      {"a copy, no scenery",
       "disc/",
       release,
       manifest_loaded,
       1,
       0,
       2,
       "You already have Skyvane 9 installed on this computer.  What would you like to do?",
       false,
       {"Run Skyvane Now", "Repair Skyvane", "Install A Second Copy of Skyvane"}},
  };
  for (const auto& row : rows) {
    dvd_path = row.disc ? root + row.disc : "";
    install_name = row.name;
    stg.directory_state = row.state;
    stg.has_sim_files = row.sim;
    stg.has_global_files = row.global;
    all_skyroots.assign(static_cast<size_t>(row.copies), root);
    const wizard_screen screen = show(dvd_start, 0, 0);
    EXPECT_EQ(screen.text, row.text) << row.label;
    EXPECT_EQ(screen.next, row.next ? dvd_pick_install : nullptr) << row.label;
    EXPECT_EQ(screen.button_names, row.buttons) << row.label;
    EXPECT_EQ(screen.button_pages.size(), row.buttons.size()) << row.label;
  }
}

TEST_F(DiscPages, DiscLabel) {
  const struct {
    const char* label;
    const char* text;
    const char* name;
  } rows[] = {
      {"as the makers write it", "I\n900 version\nDVD\n\nVERSION Skyvane 9\n", "Skyvane 9"},
      {"blanks and other lines", "I\n900 version\nDVD\nNOTE x\n \tVERSION\t Two  words\nEND\n",
       "Two  words"},
      {"line ends of another system", "I\r\n900 version\r\nDVD\r\nVERSION Nine\r\n", "Nine"},
      {"no line end", "I\n900 version\nDVD\nVERSION Nine", "Nine"},
      {"another version", "I\n901 version\nDVD\nVERSION Nine\n", no_install_name},
      {"another keyword", "I\n900 version\nCDROM\nVERSION Nine\n", no_install_name},
      {"no such line", "I\n900 version\nDVD\nVERSIONS Nine\n", no_install_name},
      {"no name", "I\n900 version\nDVD\nVERSION\n", no_install_name},
      {"a name that leads up", "I\n900 version\nDVD\nVERSION ..\n", no_install_name},
      {"a name that leads elsewhere", "I\n900 version\nDVD\nVERSION ../x\n", no_install_name},
      {"a path", "I\n900 version\nDVD\nVERSION /etc\n", no_install_name},
      {"nothing", "", no_install_name},
      {"one byte", "I", no_install_name},
  };
  for (const auto& row : rows) {
    write("disc/dvd_version.txt", row.text);
    install_name = no_install_name;
    stg.directory_state = manifest_loaded;  // the manifest itself is another matter
    UTIL_scan_dvd();
    EXPECT_EQ(install_name, row.name) << row.label;
  }
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

// Coming back to the page before: a first install that is given up leaves nothing, and its flag
// does not survive.
TEST_F(DiscPages, GivingUpAFirstInstall) {
  write("copy/part.txt", "x");
  dvd_install_is_running = 1;
  const wizard_screen screen = show(dvd_scenery_install, 1, 0);
  EXPECT_EQ(dvd_install_is_running, 0);
  EXPECT_FALSE(there("copy"));
  EXPECT_EQ(screen.back, dvd_eula_install);

  write("copy/part.txt", "x");
  scenery_install_is_running = repair_is_running = 1;
  show(dvd_edit_scenery, 1, 0);
  show(dvd_confirm_repair, 1, 0);
  EXPECT_EQ(scenery_install_is_running + repair_is_running, 0);
  EXPECT_TRUE(there("copy/part.txt")) << "only a new copy is deleted";
}

// A job whose disc is not in asks for it instead of failing file by file.
TEST_F(DiscPages, TheDiscIsLookedAtBeforeTheJob) {
  const struct {
    const char* label;
    const char* disc;
    int disk;
  } rows[] = {
      {"taken out before", "", 0},
      {"changed by hand", "disc/", 0},
      {"another number", "disc/", 1},
  };
  want_file("All/Resources/a.txt");
  for (const auto& row : rows) {
    dvd_path = *row.disc ? root + row.disc : "";
    current_disk = row.disk;
    EXPECT_EQ(run_job(dvd_install_repair).next, dvd_verify_disk_repair) << row.label;
    EXPECT_EQ(want_file_disk, 0) << row.label;
    EXPECT_EQ(num_install_errors, 0) << row.label;
    install_files_kill();
    repair_is_running = 0;
  }
}

TEST_F(DiscPages, ChangeOfDiscs) {
  want_file("All/Resources/a.txt", 0);
  want_file("All/Resources/b.txt", 2);
  want_file_disk = 1;
  dvd_path.clear();
  const struct {
    page_function page, back, next;
    const char* title;
  } rows[] = {
      {dvd_switch_disk_install, dvd_scenery_install, dvd_verify_disk_install,
       "Installing Skyvane - Please Change DVDs"},
      {dvd_switch_disk_scenery, dvd_edit_scenery, dvd_verify_disk_scenery,
       "Installing Scenery - Please change DVDs"},
      {dvd_switch_disk_repair, dvd_confirm_repair, dvd_verify_disk_repair,
       "Repairing Skyvane - Please Change DVDs"},
  };
  for (const auto& row : rows) {
    const wizard_screen screen = show(row.page, 1, 0);
    EXPECT_EQ(screen.title, row.title);
    EXPECT_EQ(screen.text, "Please insert DVD number 3 and click continue.");
    EXPECT_EQ(screen.back, row.back);
    EXPECT_EQ(screen.next, row.next);
    EXPECT_EQ(current_disk, -1);
    EXPECT_EQ(show(row.next, 1, 1).next, row.page) << "no such disc is mounted";
  }
}

TEST_F(DiscPages, LastPageOfTheSceneryFlow) {
  const struct {
    int installs, deletes, errors;
    const char* text;
  } rows[] = {
      {0, 0, 0, "I have successfully updated scenery to match your choices on the map."},
      {1, 1, 0, "I have successfully added and removed scenery to match your choices on the map."},
      {2, 0, 0, "I have successfully installed more scenery to match your choices on the map."},
      {0, 3, 0, "I have successfully removed scenery to match your choices on the map."},
      {0, 0, 1, "There were errors while updating your scenery; "},
      {1, 1, 1, "There were errors while adding and removing your scenery; "},
      {1, 0, 2, "There were errors while installing more your scenery; "},
      {0, 1, 3, "There were errors while removing your scenery; "},
  };
  for (const auto& row : rows) {
    stg.todo_install_count = row.installs;
    stg.todo_delete_count = row.deletes;
    num_install_errors = row.errors;
    const wizard_screen screen = show(dvd_done_scenery, 0, 0);
    EXPECT_TRUE(screen.text.starts_with(row.text)) << screen.text;
    EXPECT_EQ(screen.button_pages.size(), row.errors ? 0u : 1u) << row.text;
    EXPECT_EQ(screen.next, wizard_quit);
    EXPECT_EQ(screen.back, dvd_start);
  }
}

TEST_F(DiscPages, PickingACopy) {
  const struct {
    size_t copies;
    const char* chosen;
    const char* after;  // null: none
    const char* text;
  } rows[] = {
      {0, "", nullptr, "Please pick which copy of Skyvane 9 you would like to repair."},
      {1, "/elsewhere/", "/copy 0/",
       "Please pick which copy of Skyvane 9 you would like to repair."},
      {2, "", nullptr,
       "You have more than one copy of Skyvane 9 installed on this computer.  Please pick which "
       "copy of Skyvane 9 you would like to repair."},
      {2, "/copy 1/", "/copy 1/",
       "You have more than one copy of Skyvane 9 installed on this computer.  Please pick which "
       "copy of Skyvane 9 you would like to repair."},
  };
  for (const auto& row : rows) {
    all_skyroots.clear();
    for (size_t i = 0; i < row.copies; ++i)
      all_skyroots.push_back("/copy " + std::to_string(i) + "/");
    dest_dir_path = row.chosen;
    const wizard_screen screen = show(dvd_pick_repair, 0, 0);
    EXPECT_EQ(screen.text, row.text);
    EXPECT_EQ(screen.next, row.after ? dvd_scan_repair : nullptr) << row.copies;
    if (row.after) {
      EXPECT_EQ(dest_dir_path, row.after);
    }
  }
  // With one copy there is nothing to ask before it is started.
  all_skyroots = {"/copy 0/"};
  EXPECT_EQ(show(dvd_pick_run_sim, 1, 1).next, dvd_do_run_sim);
  all_skyroots.push_back("/copy 1/");
  EXPECT_EQ(show(dvd_pick_run_sim, 1, 0).next, dvd_do_run_sim);
}

TEST_F(DiscPages, ScanAndRepairCount) {
  write("copy/Resources/whole.txt", "abc");
  add("All/Resources/whole.txt", {"900150983cd24fb0d6963f7d28e17f72"});
  want_file("All/Resources/gone.txt");
  add("Windows/Resources/other system.txt", {some_sig}).os = target_windows;
  add("All/Global Scenery/x/+30-120/+34-118.dsf", {some_sig}).is_global = 1;
  wizard_screen screen;
  int frames = 0;
  while (!dvd_scan_repair(frames++ == 0, screen)) {
    EXPECT_EQ(screen.back, dvd_pick_repair);
    EXPECT_EQ(screen.next, nullptr);
    screen = wizard_screen();
    usleep(200);
  }
  EXPECT_EQ(screen.next, dvd_confirm_repair);
  EXPECT_EQ(screen.back, nullptr);
  const wizard_screen confirm = show(dvd_confirm_repair, 1, 0);
  EXPECT_TRUE(confirm.text.starts_with("I need to install approximately 1 files to repair " +
                                       dest_dir_path + "."))
      << confirm.text;
}

}  // namespace

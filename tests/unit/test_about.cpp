// The about box, operated by clicks on its buttons: from the list to the new installer's start.

#include <climits>
#include <optional>

#include "corekit/base/hl_app.h"
#include "corekit/base/hl_run.h"
#include "corekit/window/hl_about.h"
#include "net_scripted_server.h"
#include "tests/unit/sign_test_key.h"
#include "tests/unit/window_fixture.h"

namespace {

constexpr char list_head[] = "I\n820 version\nSERVERS\n";

TEST(AboutList, ReadsWhatItKnowsAndPassesOverTheRest) {
  const struct {
    std::string label, list;
    int found, version_final, version_beta;
    const char *name, *server, *path;
  } rows[] = {
      {"all keys among those of the mirrors",
       std::string(list_head) +
           "FINAL_VERSION 91005\nBETA_VERSION 91002\nFINAL Sky 9.11\nBETA Sky beta\n"
           "SERVER one.example\n/updates/\nOne\nFINAL_INSTALLER_MAC get.example\n/new.zip\n",
       1, 91005, 91002, "Sky 9.11", "get.example", "/new.zip"},
      {"CRLF, blanks, a slash too many and one too few",
       "I\r\n820 version\r\nSERVERS\r\n\r\n \tFINAL  Sky 9.11\r\nFINAL_INSTALLER_MAC g.example/\r\n"
       "new.zip\r\nFINAL_VERSION 91001",
       1, 91001, -1, "Sky 9.11", "g.example", "/new.zip"},
      {"a word that only begins like a key",
       std::string(list_head) + "FINALE x\nFINAL_VERSIONS 1\n", 0, -1, -1, "", "", ""},
      {"cut short in the midst of an installer",
       std::string(list_head) + "FINAL Sky\nFINAL_INSTALLER_MAC g.example", 1, -1, -1, "Sky",
       "g.example", ""},
      {"a page of a hotel's network", "<html>FINAL Sky</html>", 0, -1, -1, "", "", ""},
  };
  const std::string path = new_folder() + "list.txt";
  for (const auto& row : rows) {
    about = about_record();
    overwrite(path, row.list);
    EXPECT_EQ(about_read_list(path), row.found) << row.label;
    EXPECT_EQ(about.version_final, row.version_final) << row.label;
    EXPECT_EQ(about.version_beta, row.version_beta) << row.label;
    EXPECT_EQ(about.version_str_net, row.name) << row.label;
    EXPECT_EQ(about.final_installer.server, row.server) << row.label;
    EXPECT_EQ(about.final_installer.path, row.path) << row.label;
  }
  about = about_record();
  EXPECT_EQ(about_read_list(path + ".not there"), 0);
}

TEST(AboutList, ComparesReleases) {
  // What is said is told in part.
  const std::tuple<const char*, int, int, bool, int, int, const char*> rows[] = {
      {"unknown", -1, 95000, true, about_settled, 0, "Can't connect to the net"},
      {"the same", 91001, 95000, true, about_settled, 0, "is up to date"},
      {"newer by one", 91002, -1, true, about_offer, 0, ""},
      {"a test release, none known", 91000, -1, true, about_settled, 0, "latest Skyvane beta"},
      {"a test release, this one", 91000, 91001, true, about_settled, 0, "latest Skyvane beta"},
      {"a test release, the next one", 91000, 91002, true, about_offer, 1, ""},
      {"newer, nowhere to get", 91002, -1, false, about_settled, 0, "newer beta"},
      {"newer test release, nowhere to get", 91000, 91002, false, about_settled, 1, "new version"},
  };
  for (const auto& [label, version_final, version_beta, with_installers, state, is_beta, message] :
       rows) {
    about = about_record();
    about.version_final = version_final;
    about.version_beta = version_beta;
    if (with_installers) {
      about.final_installer = {"final.example", "/f.zip"};
      about.beta_installer = {"beta.example", "/b.zip"};
    }
    about_compare(91001);
    EXPECT_EQ(about.ins_state, state) << label;
    EXPECT_EQ(about.is_beta, is_beta) << label;
    EXPECT_TRUE(str_holds(about.err_msg, message)) << label << about.err_msg;
    EXPECT_EQ(about.err_msg.empty(), *message == '\0') << label;
    if (state != about_offer) continue;
    EXPECT_EQ(about.installer.server, is_beta ? "beta.example" : "final.example") << label;
  }
}

// --- the box itself -----------------------------------------------------------------------------

class AboutBox : public window_fixture {
 protected:
  void SetUp() override {
    window_fixture::SetUp();
    about = about_record();
    char here[PATH_MAX];
    home_ = getcwd(here, sizeof here);
    folder_ = new_folder();
    ASSERT_EQ(chdir(folder_.c_str()), 0);
    setenv("XDG_CONFIG_HOME", (folder_ + "config").c_str(), 1);
  }
  void TearDown() override {
    unsetenv("XDG_CONFIG_HOME");
    http._proxy_host.clear();
    http._proxy_port_int = 0;
    ASSERT_EQ(chdir(home_.c_str()), 0);
    window_fixture::TearDown();
  }

  static void click(int x, int y) { push_button(100 + x, 600 - (150 + y), true); }
  static void close() { click(12, 292); }
  static void press_update() { click(492, 17); }
  // The box, with `each_frame` done behind every picture of it that is shown.
  static void show(const std::function<void()>& each_frame) {
    step_by_step([] { MACIBM_about(); }, each_frame);
  }
  // Presses the offered button once, and closes the box when there is no more to do.
  static void show_to_its_end() {
    show([pressed = false]() mutable {
      if (about.ins_state == about_settled) close();
      if (about.ins_state != about_offer || pressed) return;
      pressed = true;
      press_update();
    });
  }
  // An installer's archive, made by another program.
  std::string installer_zip() {
    overwrite("New Installer", "#!/bin/sh\necho \"started with $# in $PWD\" >\"$ABOUT_MARK\"\n");
    EXPECT_EQ(std::system("chmod 755 'New Installer' && zip -q made.zip 'New Installer' && "
                          "rm 'New Installer'"),
              0);
    return content_of("made.zip");
  }

  static std::string zip_of_link() {
    EXPECT_EQ(std::system("ln -s /bin/sh link && zip -qy link.zip link && rm link"), 0);
    return content_of("link.zip");
  }

  std::string folder_, home_;
};

using AboutBoxDeathTest = AboutBox;

// A list with these versions and where their installers are.
std::string list_of(int version_final, int version_beta = -1) {
  return std::string(list_head) + "FINAL Skyvane 9.11\nBETA Skyvane 9.12b\n" + "FINAL_VERSION " +
         std::to_string(version_final) + "\nBETA_VERSION " + std::to_string(version_beta) +
         "\nFINAL_INSTALLER_MAC get.example\n/final.zip\n"
         "BETA_INSTALLER_MAC get.example\n/beta.zip\nENDOFLIST\n";
}
scripted_server::answer_function answers(const std::string& list, const scripted_reply& installer) {
  return [=](const std::string& request) {
    return str_holds(request, "/serverlist9.txt ") ? whole_answer(list) : installer;
  };
}

TEST_F(AboutBox, EveryOutcomeIsSaid) {
  const std::string zip = installer_zip(), newer = list_of(91002);
  const scripted_reply gone = whole_answer("gone", "404 Not Found"), program = whole_answer(zip);
  const auto signed_list = [&newer](const std::string& covered) {
    std::vector<sign_cover> covers;
    if (!covered.empty()) covers = {cover_of("FINAL_INSTALLER_MAC", covered)};
    return newer + signed_by_test_key(sign_statement_text(statement_of_list(newer, 7, covers)));
  };
  const std::string signed_newer = signed_list(zip);
  std::string changed = signed_newer, other = zip;
  changed[changed.find("91002")] = '8';
  other[10] = char(other[10] ^ 1);  // its date
  const struct {
    std::string label, list;
    scripted_reply installer;
    const char* asked;  // for the installer; null when it is not to be asked for
    const char* message;
    bool has_keys = false;
  } rows[] = {
      {"up to date", list_of(91001), {}, nullptr, "up to date"},
      {"newer, and no such file", newer, gone, "/final.zip ", "unable to download"},
      {"a damaged archive", newer, whole_answer(zip.substr(0, zip.size() / 2)), "/final.zip ",
       "There was an error unzipping the installer: We were unable to open a zip file."},
      {"a link in an archive", newer, whole_answer(zip_of_link()), "/final.zip ",
       "damaged (20002)"},
      {"no archive at all", newer, whole_answer("<html>"), "/final.zip ", "damaged (20001)"},
      {"a newer test release", list_of(91000, 91002), gone, "/beta.zip ", "unable to download"},
      // With keys: only a signed list, and only the very archive that it vouches for.
      {"an unsigned list", newer, program, nullptr, "cannot be trusted", true},
      {"a changed list", changed, program, nullptr, "cannot be trusted", true},
      {"nobody vouches for it", signed_list(""), program, nullptr, "newer beta", true},
      {"another installer", signed_newer, whole_answer(other), "/final.zip ",
       "not what the makers of Skyvane have signed", true},
      {"a longer installer", signed_newer, whole_answer(zip + "x"), "/final.zip ",
       "unable to download", true},
      {"a shorter installer", signed_newer, whole_answer(zip.substr(1)), "/final.zip ",
       "not what the makers", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    std::optional<built_in_keys> keys;
    if (row.has_keys) keys.emplace(test_public_key);
    about = about_record();
    scripted_server server(answers(row.list, row.installer));
    show_to_its_end();
    EXPECT_TRUE(str_holds(about.err_msg, row.message)) << about.err_msg;
    EXPECT_EQ(about.installer_app_name, "");
    EXPECT_EQ(mnw.win_id, win_main);
    const std::vector<std::string> requests = server.requests();
    ASSERT_EQ(requests.size(), row.asked ? 2u : 1u);
    EXPECT_TRUE(str_holds(requests[0], APP.web_host));
    if (row.asked) {
      EXPECT_TRUE(str_holds(requests[1], row.asked)) << requests[1];
    }
    EXPECT_FALSE(file_exists("New Installer"));
    EXPECT_FALSE(file_exists("Resources/preferences/installer.zip"));
    // A list that was not to be trusted may be another by now; what is known is not asked for.
    const bool is_known = about.version_str_found;
    if (is_known) {
      show([] { close(); });
    } else {
      show_to_its_end();
    }
    EXPECT_EQ(server.requests().size(), requests.size() + (is_known ? 0 : 1));
  }
}

// Of a package, beside whose program nothing is put.
TEST_F(AboutBox, WithoutANetworkItTriesOnUntilItIsClosed) {
  app_packaged = 1;
  use_proxy_port(closed_port());
  int frames = 0;
  show([&frames] {
    if (++frames >= 6) close();
  });
  EXPECT_GE(frames, 6);
  EXPECT_EQ(about.version_str_found, 0);
  EXPECT_EQ(about.ins_state, about_closed);
  scripted_server server(answers(list_of(91001), {}));
  show_to_its_end();
  EXPECT_EQ(about.version_str_found, 1);
  EXPECT_FALSE(dir_exists("Resources/"));
  app_packaged = 0;
}

TEST_F(AboutBox, ClosingItGivesTheDownloadUp) {
  const std::string part =
      "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(400, 'x');
  scripted_server server(answers(list_of(91002), {{part}, true}));
  bool pressed = false, came = false;
  show([&] {
    came = came || http.slot_received(1) == 400;
    if (came) return close();
    if (about.ins_state != about_offer || pressed) return;
    pressed = true;
    press_update();
  });
  EXPECT_TRUE(came);
  for (const int slot : {0, 1})
    EXPECT_FALSE(http.slot_active(slot)) << slot;
  EXPECT_FALSE(file_exists("New Installer"));
}

// The new installer is a script that leaves a mark where the test's own process looks for it.
TEST_F(AboutBoxDeathTest, TheNewInstallerTakesOver) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("ABOUT_MARK", (folder_ + "mark").c_str(), 0);
  const std::string mark = getenv("ABOUT_MARK");
  const auto update = [this] {
    scripted_server server(answers(list_of(91002), whole_answer(installer_zip())));
    show_to_its_end();
  };
  EXPECT_EXIT(update(), testing::ExitedWithCode(1), "");
  for (int tries = 0; tries < 500 && content_of(mark).empty(); ++tries)
    usleep(10000);
  EXPECT_EQ(content_of(mark).rfind("started with 0 in /", 0), 0u) << content_of(mark);
  unsetenv("ABOUT_MARK");
}

}  // namespace

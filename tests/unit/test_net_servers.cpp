// The server list and the manifest's download, against a scripted server.

#include "Installer-f/engine/utils_grab_mirrors.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_patch.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_zip.h"
#include "corekit/window/hl_init.h"
#include "net_scripted_server.h"
#include "tests/unit/sign_test_key.h"

using namespace std::string_literals;

namespace {

class NetServers : public testing::Test {
 protected:
  NetServers() {
    stg = {};
    app_done = 0;
    temp_path = new_folder();
    install_name = no_install_name;
    for (int slot = 0; slot < http_class::slot_count; ++slot)
      http.drop(slot);
  }

  // "m0", "m1" and so on.
  static void mirrors(int count) {
    stg.server_count = count;
    for (int i = 0; i < count; ++i) {
      server_name[i] = "m" + std::to_string(i);
      server_path[i] = "/p/";
    }
  }
  int read(const std::string& list) {
    const std::string path = temp_path + "list.txt";
    std::ofstream(path, std::ios::binary) << list;
    return read_server_list(path);
  }
};

constexpr char header[] = "I\n820 version\nSERVERS\n";

TEST_F(NetServers, ListIsReadWithTheReleaseOfTheUsersChoice) {
  const std::string list =
      "A anything\r\n820 version 2026\r\nSERVERS\r\n\r\n"
      "FINAL_VERSION 91001\r\nFINAL Skyvane_9_10\r\nBETA_VERSION 92001\r\nBETA "
      "Skyvane_9_20_beta\r\n"
      "BETA_INSTALLER_MAC www.example\r\n/b.zip\r\n\r\n"
      "  \tSERVER mirror-one.example\r\n/updates/\r\nMirror one, in Europe|help\r\n"
      "SERVERS none\r\nSERVER\tmirror-two.example\n\n\n  /pub/sky vane/\n\tMirror two\n"
      "ENDOFLIST\nSERVER mirror-three.example\n/x/\nnever read\n";
  for (const int beta : {0, 1}) {
    stg.beta_flag = beta;
    ASSERT_EQ(read(list), 1);
    const std::string release = beta ? "Skyvane_9_20_beta" : "Skyvane_9_10";
    EXPECT_EQ(install_name, release);
    const std::vector<std::string> expected = {
        "mirror-one.example", "/updates/" + release + "/",      "Mirror one, in Europe|help",
        "mirror-two.example", "/pub/sky vane/" + release + "/", "Mirror two"};
    ASSERT_EQ(stg.server_count, 2);
    EXPECT_EQ((std::vector{server_name[0], server_path[0], server_desc[0], server_name[1],
                           server_path[1], server_desc[1]}),
              expected);
  }
}

TEST_F(NetServers, WantedTestReleaseMayBeMissing) {
  const std::tuple<std::string, std::string, int> rows[] = {
      {"FINAL f\nBETA b\n", "b", list_read},
      {"BETA b\nFINAL f\n", "b", list_read},
      {"FINAL f\n", no_install_name, list_lacks_beta},
      {"", no_install_name, list_read},
  };
  stg.beta_flag = 1;
  for (const auto& [releases, taken, result] : rows) {
    install_name = no_install_name;
    EXPECT_EQ(read(header + releases + "SERVER a\n/\nd\n"), result) << releases;
    EXPECT_EQ(server_path[0], "/" + taken + "/") << releases;
  }
}

TEST_F(NetServers, OddLists) {
  // With the first mirror's host, path and words.
  const std::tuple<const char*, std::string, int, std::string> rows[] = {
      {"nothing", "", 0, "||"},
      {"no end of line", "FINAL f\nSERVER a\n/p/\nd", 1, "a|/p/f/|d"},
      {"cut behind the host", "FINAL f\nSERVER a", 1, "a|/f/|"},
      {"longer", "FINALE x\nFINAL f\nSERVERS a\nSERVER_X b\nSERVER c\n/p/\nd\n", 1, "c|/p/f/|d"},
      {"release below the mirror", "SERVER a\n/p/\nd\nFINAL f\n", 1, "a|/p/Not Yet Scanned/|d"},
      {"slashes, blanks round the host", "FINAL f\nSERVER  a.b// \t\n/p/\nd\n", 1, "a.b|/p/f/|d"},
      {"NUL ends a line", std::string("FINAL f\nSERVER a\0/p/\0d\0", 24), 1, "a|/p/f/|d"},
      {"a header in the host", "FINAL f\nSERVER a\rX: y\nd\n", 1, "a|/X: yf/|d"},
  };
  for (const auto& [label, body, count, first] : rows) {
    server_name[0] = server_path[0] = server_desc[0] = "";
    install_name = no_install_name;
    ASSERT_EQ(read(header + body), 1) << label;
    EXPECT_EQ(stg.server_count, count) << label;
    EXPECT_EQ(server_name[0] + '|' + server_path[0] + '|' + server_desc[0], first) << label;
  }
}

TEST_F(NetServers, WhatIsNoListOfOurs) {
  const std::pair<std::string, int> rows[] = {
      {"I\n821 version\nSERVERS\n", list_refused},
      {"A\r\n900 version of 2031\r\n\r\n SERVERS\r\nNEW x\r\n", list_refused},
      {"", list_foreign},
      {"X\n820 version\nSERVERS\n", list_foreign},
      {"I\n820 version\nSERVERSX\n", list_foreign},
      {"I\n820 version\n", list_foreign},
      {"I\n900 version\nINSTALLER\n", list_foreign},
      {"<!DOCTYPE html><html><body>Please log in.</body></html>", list_foreign},
      {"Internet access for guests:\nroom number\nSERVER\n", list_foreign},
      {std::string(header) + std::string(server_list_budget, '\n'), list_foreign},
  };
  for (const auto& [text, result] : rows) {
    EXPECT_EQ(read(text), result) << text.substr(0, 60);
    EXPECT_EQ(stg.server_count, -1);
  }
  EXPECT_EQ(read_server_list(temp_path + "none"), list_foreign);
}

// What cannot be meant is left out, and named in the log without its control characters.
TEST_F(NetServers, AbsurdEntriesAreLeftOut) {
  const std::tuple<std::string, std::string, std::string, bool> rows[] = {
      {"usual", "m-1_a.example", "/p q/\xe9%#?", true},
      {"a number", "127.0.0.1", "/", true},
      {"no name", "", "/p/", true},
      {"as long as a name may be", std::string(253, 'n'), "/", true},
      {"longer", std::string(254, 'n'), "/", false},
      {"a port", "m.example:8080", "/", false},
      {"a user", "a@m.example", "/", false},
      {"a path", "m.example/x", "/", false},
      {"a blank within", "m example", "/", false},
      {"a control character", "m\x1b[31mx", "/", false},
      {"one in the path", "m", "/\x07/", false},
      {"a path without end", "m", "/" + std::string(1000, 'x'), false},
      {"no letter", "m\xfc.example", "/", false},
  };
  for (const auto& [label, name, path, is_good] : rows) {
    xer_open(temp_path + "log.txt");
    ASSERT_EQ(read(header + ("SERVER " + name + "\n" + path + "\nde\x1b\x7fsc\n") +
                   "SERVER last\n/\nd\n"),
              list_read);
    xer.close();
    EXPECT_EQ(stg.server_count, is_good ? 2 : 1) << label;
    EXPECT_EQ(server_name[stg.server_count - 1], "last") << label;
    EXPECT_TRUE(!is_good || server_desc[0] == "de??sc") << label;
    const std::string log = content_of(temp_path + "log.txt");
    EXPECT_EQ(log.empty(), is_good) << label;
    EXPECT_EQ(log.find_first_of("\x1b\x07"), log.npos) << label;
  }
  for (const char* release : {"..", ".", "a/b", "C:", "a\\b", "a\x1b", ""}) {
    install_name = "before";
    EXPECT_EQ(read(header + ("FINAL "s + release + "\n")), list_read);
    EXPECT_EQ(install_name, "before") << release;
  }
  std::string many = header;
  for (int i = 0; i < 14; ++i)
    many += "SERVER s" + std::to_string(i) + "\n/p/\nd\n";
  ASSERT_EQ(read(many), list_read);
  EXPECT_EQ(stg.server_count, 10);
  EXPECT_EQ(server_name[9], "s9");
}

TEST(NetServerDraw, EarlyMirrorsGetMore) {
  const std::tuple<float, int, int> rows[] = {
      {0.0f, 4, 0},        {0.39f, 4, 0},       {0.40f, 4, 1},  // 4 r^1.5 is 1 at 0.39685
      {0.62f, 4, 1},       {0.64f, 4, 2},       {0.82f, 4, 2},  // 2 at 0.62996
      {0.83f, 4, 3},       {0.99999994f, 4, 3}, {1.0f, 4, 3},   // 3 at 0.82548
      {0.99999994f, 1, 0}, {0.5f, 0, 0},        {0.5f, -1, 0}, {0.99999994f, 10, 9},
  };
  for (const auto& [fraction, count, index] : rows) {
    EXPECT_EQ(biased_server(fraction, count), index) << fraction << " of " << count;
  }
}

TEST_F(NetServers, ListThenManifest) {
  std::string status = "404 Not Found", list, zip_bytes;
  scripted_server server([&](const std::string& request) {
    const bool is_list = request.starts_with("GET http://www.skyvane.example/serverlist9.txt ");
    const bool is_zip = request.starts_with("GET http://one/p%20q/rel/directory.txt.zip ");
    if (!is_list && !is_zip) return scripted_reply{};
    return whole_answer(is_list ? list : zip_bytes, status);
  });
  size_t expected_requests = 0;
  // Steps until one more request has been answered and judged.
  const auto one_fetch = [&](int slot) {
    ++expected_requests;
    xtim.now_sec += 3;  // longer than any rest before the next try
    while (server.requests().size() < expected_requests)
      UTL_download_directory();
    while (http.slot_active(slot))
      UTL_download_directory();
  };

  one_fetch(0);
  EXPECT_EQ(stg.server_count, -1) << "silently";

  status = "200 OK";
  list = std::string(header) + "FINAL rel\nENDOFLIST\n";
  one_fetch(0);
  EXPECT_EQ(stg.server_count, -1) << "a list without a mirror has not come";
  UTL_download_directory();
  EXPECT_FALSE(http.slot_active(0)) << "and is not asked for at once";

  list = std::string(header) + "FINAL rel\nSERVER one/\np q/\nThe one\n";
  one_fetch(0);
  EXPECT_EQ(stg.server_count, 1);
  EXPECT_EQ(stg.server_index, 0);
  EXPECT_EQ(stg.directory_state, manifest_none);

  const std::string zip = temp_path + "directory.txt.zip";
  zip_bytes = "no archive";
  testing::internal::CaptureStderr();
  one_fetch(1);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(str_holds(text, "Compressed File/" + zip)) << text;
  EXPECT_TRUE(str_holds(text, "Destination Path/" + temp_path)) << text;
  EXPECT_EQ(stg.directory_state, manifest_none);
  EXPECT_FALSE(file_exists(zip));
  std::ofstream(temp_path + "directory.txt")
      << "I\n900 version\nINSTALLER\n\nDIR ALL_os/\n"
         "FILE 0 0 91001 1 2 0123456789abcdef0123456789abcdef a.txt\n";
  ASSERT_EQ(file_to_zip(temp_path + "directory.txt", temp_path + "made.zip"), 0);
  zip_bytes = content_of(temp_path + "made.zip");
  one_fetch(1);
  EXPECT_EQ(stg.directory_state, manifest_unpacked);
  EXPECT_FALSE(file_exists(zip));
  UTL_download_directory();
  EXPECT_EQ(stg.directory_state, manifest_loaded);
  ASSERT_EQ(sim_info.size(), 1u);
  EXPECT_EQ(sim_info[0].current().path, "ALL_os/a.txt");
  UTL_download_directory();
  EXPECT_EQ(server.requests().size(), expected_requests) << "nothing more to do";
  mirror_failed(0, xtim.now_sec);
  EXPECT_FLOAT_EQ(mirror_rests_for(0), 0.5f) << "it has delivered: its rests begin anew";
}

TEST_F(NetServers, TheTestReleaseIsGoneOnWith) {
  stg.beta_flag = 1;
  const std::string list = std::string(header) + "FINAL f\nBETA b\nSERVER one\n/\nOne\n";
  scripted_server server([&](const std::string& request) {
    const bool is_list = str_holds(request, "serverlist9.txt");
    return whole_answer(is_list ? list : "", is_list ? "200 OK" : "404 Not Found");
  });
  EXPECT_TRUE(comes_true([&] {
    UTL_download_directory();
    return server.requests().size() > 1;
  }));
  EXPECT_TRUE(str_holds(server.requests()[1], "http://one/b/directory.txt.zip"));
}

// For the archive, whose folder has gone; then for the list in it.
TEST_F(NetServers, NoPlaceForTheListOfFiles) {
  std::ofstream(temp_path + "list") << "I\n900 version\nINSTALLER\n";
  ASSERT_EQ(file_to_zip(temp_path + "list", temp_path + "made.zip"), 0);
  std::filesystem::create_directories(temp_path + "directory.txt/full");
  const std::string zip = content_of(temp_path + "made.zip"), whole = temp_path;
  for (const std::string& place : {whole + "none/", whole}) {
    scripted_server server([&zip](const std::string&) { return whole_answer(zip); });
    mirrors(1);
    temp_path = place;
    xtim.now_sec += 100;
    testing::internal::CaptureStderr();
    for (int i = 0; i < 200; ++i) {
      UTL_download_directory();
      usleep(1000);
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(str_holds(said, "The installer cannot extract a file.")) << said;
    EXPECT_TRUE(str_holds(said, "Destination Path/" + temp_path)) << said;
    EXPECT_EQ(stg.directory_state, manifest_none);
  }
}

// The makers have signed it, but not what its files are to be.
TEST_F(NetServers, AListWithoutTheSumsOfItsFiles) {
  const built_in_keys keys(test_public_key);
  install_name = "Rel";
  const std::string list =
      "I\n900 version\nINSTALLER\nDIR All/\n"
      "FILE 0 0 91001 1 2 22af645d1859cb5ca6da0c484f1f37ea a\n";
  const std::string sums = "I\n900 version\nSUMS\n\n";
  sign_statement made;
  made.kind = sign_of_release;
  made.release = install_name;
  made.serial = 7;
  made.expires = "2030-01-31";
  made.covers = {cover_of("directory.txt", list), cover_of("directory.sum", sums)};
  std::ofstream(temp_path + "directory.txt") << list;
  std::ofstream(temp_path + "directory.sum") << sums;
  std::ofstream(temp_path + "directory.sig") << signed_by_test_key(sign_statement_text(made));
  ASSERT_EQ(std::system(("cd '" + temp_path + "' && zip -q made.zip directory.*").c_str()), 0);
  const std::string zip = content_of(temp_path + "made.zip");
  scripted_server server([&zip](const std::string&) { return whole_answer(zip); });
  mirrors(1);
  xtim.now_sec += 100;
  const int alerts_before = alerts_shown;
  EXPECT_TRUE(comes_true([&] {
    UTL_download_directory();
    return alerts_shown > alerts_before;
  }));
  EXPECT_EQ(stg.directory_state, manifest_none);
}

TEST_F(NetServers, ThePageShowsThatItWaits) {
  const check_flow flow = {"title", nullptr, "contacting", "downloading from ", "processing"};
  scripted_server server([](const std::string&) { return whole_answer("nothing yet"); }, true);
  const std::pair<int, std::string> rows[] = {{-1, "contacting"}, {1, "downloading from m0"}};
  for (const auto& [count, text] : rows) {
    if (count > 0) mirrors(count);
    wizard_screen screen;
    EXPECT_EQ(check_servers(flow, 0, screen), 0) << text;
    EXPECT_EQ(screen.text, text);
    EXPECT_TRUE(screen.is_busy) << text;
  }
}

TEST_F(NetServers, ThePageShowsThatItReads) {
  const check_flow flow = {"title", nullptr, "contacting", "downloading from ", "processing"};
  std::ofstream(temp_path + "directory.txt") << "I\n900 version\nINSTALLER\n";
  ASSERT_EQ(file_to_zip(temp_path + "directory.txt", temp_path + "made.zip"), 0);
  const std::string zip = content_of(temp_path + "made.zip");
  scripted_server server([&zip](const std::string&) { return whole_answer(zip); });
  mirrors(1);
  xtim.now_sec += 100;
  wizard_screen screen;
  EXPECT_TRUE(comes_true([&] {
    screen = wizard_screen();
    return check_servers(flow, 0, screen) != 0 || screen.text == flow.processing;
  }));
  EXPECT_EQ(screen.text, flow.processing);
  EXPECT_TRUE(screen.is_busy);
}

TEST_F(NetServers, AListOfANewerFormatEndsTheProgram) {
  scripted_server server(
      [](const std::string&) { return whole_answer("I\n900 version\nSERVERS\n"); });
  testing::internal::CaptureStderr();
  while (app_done == 0)
    UTL_download_directory();
  EXPECT_TRUE(str_holds(testing::internal::GetCapturedStderr(), "get a new installer!"));
  EXPECT_EQ(stg.server_count, -1);
}

// A hotel answers all with its log-in page: the fetch goes on, and the user is told once.
TEST_F(NetServers, ALogInPageIsAFailedFetch) {
  const std::string page = "\xEF\xBB\xBF \r\n<!DOCTYPE html><html>Log in</html>";
  for (const bool for_list : {true, false}) {
    mirrors(for_list ? -1 : 1);
    scripted_server server([&](const std::string&) { return whole_answer(page); });
    testing::internal::CaptureStderr();
    for (size_t fetches = 1; fetches <= 3; ++fetches) {
      while (server.requests().size() < fetches || http.slot_active(for_list ? 0 : 1))
        UTL_download_directory();
      UTL_download_directory();
      EXPECT_FALSE(http.slot_active(for_list ? 0 : 1)) << "not again at once";
      xtim.now_sec += 3;
    }
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.starts_with("A web page came in place of the list of servers."), for_list);
    EXPECT_EQ(told.find("A web page", 1), told.npos) << "once";
    EXPECT_EQ(stg.server_count, for_list ? -1 : 1);
    EXPECT_EQ(stg.directory_state, manifest_none);
    EXPECT_EQ(app_done, 0);
  }
}

// Each is asked once in a round, in any order, as likely; another round waits until one has rested.
TEST_F(NetServers, AMirrorIsDrawnAmongTheOthersAfterAFailure) {
  mirrors(3);
  use_proxy_port(closed_port());
  const auto step = [] {
    do {
      UTL_download_directory();
    } while (http.slot_active(1));
    return stg.server_index;
  };
  int after_the_first[3][3] = {};
  constexpr int rounds = 300;
  for (int round = 0; round < rounds; ++round) {
    const int asked[] = {step(), step(), step()};
    ASSERT_EQ(1 << asked[0] | 1 << asked[1] | 1 << asked[2], 7) << "each once";
    ++after_the_first[asked[0]][asked[1]];
    stg.server_index = (asked[2] + 1) % 3;  // asked at once, as the user's choice
    xtim.now_sec += 31;
  }
  for (const auto& row : after_the_first) {
    for (const int count : row)
      EXPECT_TRUE(count == 0 || std::abs(count - rounds / 6) < 25) << count;
  }
  for (int i = 0; i < 3; ++i)
    step();
  UTL_download_directory();
  EXPECT_FALSE(http.slot_active(1)) << "all of them rest";
}

// A manifest that is none is its mirror's failure, and the others are asked first.
TEST_F(NetServers, AWrongManifestIsThatMirrorsFailure) {
  const std::tuple<const char*, std::vector<const char*>, int> rows[] = {
      {"alone", {"wrong"}, 1},
      {"two of them", {"wrong", "wrong"}, 1},
      {"with one that has none", {"wrong", nullptr}, 1},
      {"none has any", {nullptr, nullptr}, 0},
  };
  for (const auto& [label, sent, alerts] : rows) {
    mirrors(static_cast<int>(sent.size()));
    scripted_server server([&sent = sent](const std::string& request) {
      const size_t mirror = static_cast<size_t>(request[12] - '0');
      return sent[mirror] ? whole_answer(sent[mirror]) : whole_answer("", "404 Not Found");
    });
    xtim.now_sec += 100;
    const int alerts_before = alerts_shown;
    testing::internal::CaptureStderr();
    while (server.requests().size() < sent.size() || http.slot_active(1)) {
      EXPECT_EQ(alerts_shown, alerts_before) << label << ": not before the last one";
      UTL_download_directory();
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(alerts_shown - alerts_before, alerts) << label;
    EXPECT_EQ(stg.directory_state, manifest_none);
  }
}

}  // namespace

// The desktop's services, played by bus-service on a real message bus.

#include <signal.h>
#include <sys/mount.h>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_notice.h"
#include "corekit/Platform/PLT_child.h"
#include "corekit/Platform/PLT_dbus.h"
#include "corekit/Platform/PLT_notice.h"
#include "corekit/Platform/PLT_picker.h"
#include "corekit/Platform/PLT_picker_kinds.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/xtim.h"
#include "tests/unit/test_files_scratch.h"

using namespace std::string_literals;

namespace {

// A bus of the test's own, with a zenity on PATH that the folder window falls back to.
class Bus : public testing::Test {
 protected:
  void SetUp() override {
    here.file("zenity", "#!/bin/sh\necho /by/zenity\n");
    chmod((here / "zenity").c_str(), 0755);
    old_path = getenv("PATH");
    setenv("PATH", (here.path() + ":" + old_path).c_str(), 1);
    const std::string address = "unix:path=" + (here / "bus");
    const std::string config = here.file(
        "bus.conf", "<busconfig><type>session</type><listen>" + address +
                        "</listen><policy context='default'><allow send_destination='*'/>"
                        "<allow receive_sender='*'/><allow own='*'/></policy></busconfig>");
    start(&daemon, {"dbus-daemon", "--config-file=" + config, "--nofork", "--print-address"},
          "unix:");
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
  }
  void TearDown() override {
    PLT_picker_cancel();
    PLT_child_end(&service, 0);
    PLT_child_end(&daemon, 0);
  }

  // Starts a program and waits until it says so.
  void start(PLT_child* child, const std::vector<std::string>& words, const std::string& sign) {
    std::vector<const char*> argv;
    for (const std::string& word : words)
      argv.push_back(word.c_str());
    argv.push_back(nullptr);
    PLT_child_end(child, 0);
    said.clear();
    ASSERT_TRUE(PLT_child_start(child, argv.data(), true));
    ASSERT_TRUE(says(*child, sign)) << words[0];
    said.clear();
  }
  void serve(std::vector<std::string> words) {
    std::string program = PLT_executable_path();
    program.replace(program.rfind('/') + 1, std::string::npos, "bus-service");
    words.insert(words.begin(), program);
    start(&service, words, "ready\n");
  }
  // Whether it says so within some seconds, with a `step` taken again and again.
  bool says(PLT_child& child, const std::string& text, const std::function<void()>& step = {}) {
    for (int i = 0; i < 600 && said.find(text) == std::string::npos; ++i) {
      if (step) step();
      PLT_child_read(&child, &said, 65536);
      usleep(5'000);
    }
    return str_holds(said, text);
  }
  // Polls the folder window for so long: what the user has chosen, or in words how it stands.
  std::string poll(uint64_t microseconds) {
    std::string path;
    int state = plt_picker_running;
    const uint64_t start_us = PLT_microseconds();
    do {
      usleep(5'000);
      const uint64_t before = PLT_microseconds();
      state = PLT_picker_poll(&path);
      EXPECT_LT(PLT_microseconds() - before, 3'000'000u) << "a frame has waited";
    } while (state == plt_picker_running && PLT_microseconds() - start_us < microseconds);
    const std::string states[] = {"none", "up", path, "cancelled"};
    return states[state];
  }
  std::string pick(uint64_t microseconds = 8'000'000) {
    EXPECT_EQ(PLT_picker_start("Pick \xC3\xA9", "/tmp/"), plt_picker_running);
    return poll(microseconds);
  }

  scratch_folder here;
  std::string old_path, said;
  PLT_child daemon, service;
};

}  // namespace

TEST(BusUri, OnlyFilesOfThisMachine) {
  EXPECT_EQ("/", plt_path_of_uri("file:///"));
  EXPECT_EQ("/a b/c%\xC3\xA9", plt_path_of_uri("file:///a%20b%2Fc%25%c3%A9"));
  EXPECT_EQ("/a", plt_path_of_uri("FILE://LocalHost/a"));
  EXPECT_EQ("/a+b c", plt_path_of_uri("file:/a+b c"));
  for (const char* const refused :
       {"file://server/a", "file://localhosts/a", "file:a", "files:///a", "file:///a%00b",
        "file:///a%2", "file:///a%", "file:///a%g0", "file:///a%0g", "file:///a?b", "file:///a#b",
        "/a", "file:", ""}) {
    EXPECT_EQ("", plt_path_of_uri(refused)) << refused;
  }
}

TEST_F(Bus, PortalIsTheFirstFolderWindow) {
  const auto expect_pick = [this](const std::string& portal, const std::string& picked,
                                  const std::string& heard) {
    SCOPED_TRACE(portal);
    serve({portal});
    EXPECT_EQ(pick(), picked);
    EXPECT_TRUE(says(service, heard)) << said;
    EXPECT_TRUE(heard != "Get" || said.find("OpenFile") == std::string::npos) << said;
  };
  expect_pick("file:///tmp/a%20b%23%C3%A9/", "/tmp/a b#\xC3\xA9",
              "Pick \xC3\xA9 handle_token skyvane_folder directory yes current_folder/tmp/");
  expect_pick("cancelled", "cancelled", "OpenFile");
  expect_pick("early", "/early", "OpenFile");
  for (const char* portal : {"http://server/a", "nothing", "ended", "fails", "dies"})
    expect_pick(portal, "/by/zenity", "OpenFile");
  expect_pick("elsewhere", "/by/zenity", "/other\n");  // what was not asked for is closed
  for (const char* portal : {"none", "old", "mute"})
    expect_pick(portal, "/by/zenity", "Get");
  expect_pick("silent", "/by/zenity", "Close /org/freedesktop/portal/desktop/request/1_");
}

TEST_F(Bus, UserMayTakeHisTime) {
  serve({"busy"});  // answers to another request
  EXPECT_EQ(pick(5'000'000), "up");
  PLT_picker_cancel();
  EXPECT_TRUE(says(service, "Close /org/freedesktop/portal/desktop/request/1_")) << said;
  EXPECT_EQ(poll(0), "none");
  EXPECT_EQ(pick(500'000), "up");
  PLT_child_end(&daemon, 0);
  EXPECT_EQ(poll(8'000'000), "/by/zenity") << "the bus has gone";
}

TEST_F(Bus, NobodyAnswers) {
  EXPECT_EQ(pick(), "/by/zenity") << "there is no portal";
  kill(daemon.pid, SIGSTOP);
  EXPECT_EQ(pick(), "/by/zenity") << "the bus says nothing";
}

TEST_F(Bus, DiskServiceEjects) {
  const std::string point = here.folder("a disc");
  const std::string asked = "GetManagedObjects /org/freedesktop/UDisks2\n";
  const std::string unmount = asked + "Unmount /block/2 auth.no_user_interaction yes\n";
  const std::string eject = unmount + "Eject /drives/2 auth.no_user_interaction yes\n";
  const std::tuple<const char*, const char*, int, std::string> rows[] = {
      {"good", "", 0, eject},
      {"forgets", "", 0, eject},  // to answer
      {"refuses", "", EBUSY, unmount},
      {"refuses", old_path.c_str(), 0, unmount},
      {"strange", old_path.c_str(), 0, asked},
  };
  for (const auto& [disk, path, result, heard] : rows) {
    SCOPED_TRACE(std::string(disk) + ", PATH=" + path);
    umount(point.c_str());  // of the row before
    if (mount("none", point.c_str(), "tmpfs", 0, "size=64k") != 0) {
      std::printf("rows left out: volumes cannot be mounted by this user\n");
      return;
    }
    struct stat info;
    stat(point.c_str(), &info);
    serve({"none", disk, std::to_string(info.st_dev), point});
    setenv("PATH", path, 1);
    EXPECT_EQ(result, PLT_eject(point));
    EXPECT_TRUE(says(service, heard)) << said;
    EXPECT_EQ(said, heard);
  }
  EXPECT_EQ(EINVAL, PLT_eject(point)) << "a second time";
}

TEST_F(Bus, FramesGoOnDuringAnEjection) {
  THREAD_init();
  THREAD_make_workers();
  const std::string point = here.folder("a disc");
  here.file("eject", "#!/bin/sh\ncd '" + here.path() +
                         "'\nfor i in $(seq 400); do [ -e go ] && break; sleep 0.05; done\n"
                         "touch ejected; umount \"$1\"\n");
  chmod((here / "eject").c_str(), 0755);
  if (mount("none", point.c_str(), "tmpfs", 0, "size=64k") == 0) {
    dvd_path = point;
    sim_info.emplace_back().versions.emplace_back();
    UTIL_switch_disk(1);
    EXPECT_FALSE(is_there(here / "ejected"));
    here.file("go");
    EXPECT_EQ(dvd_path, "");
  }
  THREAD_shutdown();
  EXPECT_EQ(PLT_mount_at(point.substr(0, point.size() - 1)).fstype, "") << "the end waits for it";
}

// The launcher hears of a job's progress, and the user of its end when he looks elsewhere.
TEST_F(Bus, DesktopIsToldOfAJob) {
  const auto page_of = [](page_kind kind) { return wizard_page(kind, nullptr); };
  const wizard_page choice = page_of(page_choice), job = page_of(page_transfer),
                    disc = page_of(page_disc), end = page_of(page_last);
  wizard_screen screen;
  const auto frame = [&](float at, const wizard_page& page, float progress) {
    xtim.now_sec = at;
    screen.title = "Fertig \xFC";
    screen.text = "1 < 2 & /H\xC3\xA4user";
    screen.progress = progress;
    wizard_tell_desktop(page, screen);
  };
  serve({"none"});
  frame(100, choice, -1);
  frame(101, job, 0.25f);
  const std::string entry =
      "application://example.skyvane.unit_tests.desktop progress 0.25 progress-visible yes\n";
  EXPECT_TRUE(says(service, entry, [&] { frame(101, job, 0.25f); })) << said;
  const std::tuple<float, const wizard_page*, float, const char*, const char*> rows[] = {
      {105, &end, -1, " progress 0.00 progress-visible no\n", "Notify"},  // a short one
      {110, &job, 0.5f, " progress 0.50 progress-visible yes\n", "Notify"},
      {130, &disc, -1, "Notify", "progress 0.50"},
      {131, &job, 0.75f, "progress 0.75", "Notify"},
      {132, &end, -1,
       "Notify /org/freedesktop/Notifications Skyvane Unit Tests unit-tests Fertig \xC3\xBC 1 &lt; "
       "2 "
       "&amp; /H\xC3\xA4user desktop-entry example.skyvane.unit_tests\n",
       "progress 0.75"},
      {133, &job, 0.1f, "progress 0.10", "Notify"},
      {160, &choice, -1, "progress-visible no", "Notify"},  // given up
      {161, &end, 0.2f, "progress 0.20", "Notify"},
  };
  for (const auto& [clock, page, progress, told, not_told] : rows) {
    SCOPED_TRACE(clock);
    said.clear();
    frame(clock, *page, progress);
    EXPECT_TRUE(says(service, told, PLT_notice_frame)) << said;
    EXPECT_FALSE(str_holds(said, not_told)) << said;
  }
  PLT_child_end(&daemon, 0);
  for (int i = 0; i < 10; ++i)
    frame(170, job, 0.1f * static_cast<float>(i));  // nobody hears it, and nothing waits
}

TEST_F(Bus, IsLookedForOnThisMachineOnly) {
  setenv("XDG_RUNTIME_DIR", here.path().c_str(), 1);
  const std::pair<const char*, bool> rows[] = {
      {nullptr, true}, {"autolaunch:", false}, {"tcp:host=localhost,port=1", false}};
  for (const auto& [address, found] : rows) {
    if (address)
      setenv("DBUS_SESSION_BUS_ADDRESS", address, 1);
    else
      unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(PLT_dbus_open(plt_session_bus) != nullptr, found) << (address ? address : "");
  }
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_EQ(PLT_dbus_open(plt_session_bus), nullptr);
}

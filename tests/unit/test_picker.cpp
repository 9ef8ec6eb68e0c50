// The desktop's folder window, played by small scripts that stand on PATH in its place.

#include "corekit/Platform/PLT_picker.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/window/butn_file.h"
#include "tests/unit/gl_fixture.h"
#include "tests/unit/test_files_scratch.h"

namespace {

// A PATH of one folder, with the scripts that a test puts there.
class fake_desktop {
 public:
  fake_desktop() {
    if (const char* path = getenv("PATH")) old_path = path;
    setenv("PATH", folder.c_str(), 1);
  }
  ~fake_desktop() {
    PLT_picker_cancel();
    setenv("PATH", old_path.c_str(), 1);
  }

  void put(const std::string& name, const std::string& script) const {
    const std::string head = "#!/bin/sh\nPATH=/usr/bin:/bin\nme='" + folder + "'\n";
    chmod(here.file(name, head + script + '\n').c_str(), 0755);
  }
  std::string content(const std::string& name) const { return content_of(folder + name); }
  // Waits until a script has said so by a file; no longer than some seconds.
  bool wait_for(const std::string& name) const {
    for (int i = 0; i < 1000; ++i) {
      if (is_there(folder + name)) return true;
      usleep(5'000);
    }
    return false;
  }

  const scratch_folder here;
  const std::string folder = here.path();
  std::string old_path;
};

int poll_to_the_end(std::string* path) {
  for (int i = 0; i < 2000; ++i) {
    const int state = PLT_picker_poll(path);
    if (state != plt_picker_running) return state;
    usleep(5'000);
  }
  return plt_picker_running;
}

TEST(Picker, AnswersAreRead) {
  const std::tuple<const char*, const char*, const char*, int, const char*> rows[] = {
      {"none installed", nullptr, nullptr, plt_picker_none, ""},
      {"the root", "echo /", nullptr, plt_picker_chosen, "/"},
      {"slashes behind it", "echo /tmp/x//", nullptr, plt_picker_chosen, "/tmp/x"},
      {"a newline in the name", "printf '/tmp/a\\nb\\n'", nullptr, plt_picker_chosen, "/tmp/a\nb"},
      {"closed", "exit 1", "echo /tmp/k", plt_picker_cancelled, ""},
      {"the first fails", "exit 5", "echo /tmp/k", plt_picker_chosen, "/tmp/k"},
      {"the first says nothing", "exit 0", "echo /tmp/k", plt_picker_chosen, "/tmp/k"},
      {"not a full path", "echo some/folder", nullptr, plt_picker_none, ""},
      {"a zero byte", "printf '/tmp/\\000x\\n'", nullptr, plt_picker_none, ""},
      {"endless", "exec yes /tmp/x", "echo /tmp/k", plt_picker_chosen, "/tmp/k"},
      {"more than a pipe holds", "head -c 200000 /dev/zero | tr '\\0' a; exit 0", nullptr,
       plt_picker_none, ""},
      {"its child has the pipe", "sleep 60 & echo /tmp/x", nullptr, plt_picker_chosen, "/tmp/x"},
  };
  for (const auto& [label, zenity, kdialog, expected, chosen] : rows) {
    SCOPED_TRACE(label);
    const fake_desktop desktop;
    if (zenity) desktop.put("zenity", zenity);
    if (kdialog) desktop.put("kdialog", kdialog);
    std::string path;
    int state = PLT_picker_start("Pick", "/tmp/");
    EXPECT_EQ(state, zenity || kdialog ? plt_picker_running : plt_picker_none);
    if (state == plt_picker_running) state = poll_to_the_end(&path);
    EXPECT_EQ(state, expected);
    EXPECT_EQ(path, chosen);
    EXPECT_EQ(PLT_picker_poll(&path), plt_picker_none) << "it is over";
  }
}

TEST(Picker, TitleAndFolderArriveAsTheyAre) {
  const fake_desktop desktop;
  const std::string title = "--odd; \"$HOME\" `id` title", start = "/tmp/it's a \"folder\"/";
  std::string path;
  const char* const script = "printf '%s\\n' \"$@\" > ${me}args; echo /tmp";
  desktop.put("zenity", script);
  PLT_picker_start(title, start);
  EXPECT_EQ(poll_to_the_end(&path), plt_picker_chosen);
  EXPECT_EQ(desktop.content("args"),
            "--file-selection\n--directory\n--title=" + title + "\n--filename=" + start + "\n");
  unlink((desktop.folder + "zenity").c_str());
  desktop.put("kdialog", script);
  PLT_picker_start(title, "");
  EXPECT_EQ(poll_to_the_end(&path), plt_picker_chosen);
  EXPECT_EQ(desktop.content("args"), "--title\n" + title + "\n--getexistingdirectory\n/\n");
}

TEST(Picker, CancelEndsItWithItsChildren) {
  constexpr char mild[] = "sleep 60 & echo $! > ${me}child; touch ${me}up; wait";
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"by request", mild, false},
      {"by force", "trap '' TERM; sleep 60 & echo $! > ${me}child; touch ${me}up; wait; wait",
       false},
      {"by the next one", mild, true},
  };
  for (const auto& [label, script, has_next] : rows) {
    SCOPED_TRACE(label);
    const fake_desktop desktop;
    desktop.put("zenity", script);
    std::string path = "as it was";
    ASSERT_EQ(PLT_picker_start("Pick", ""), plt_picker_running);
    ASSERT_TRUE(desktop.wait_for("up"));
    EXPECT_EQ(PLT_picker_poll(&path), plt_picker_running);
    const pid_t child = std::atoi(desktop.content("child").c_str());  // the next one has its own
    const uint64_t start = PLT_microseconds();
    if (has_next) {
      EXPECT_EQ(PLT_picker_start("Pick", ""), plt_picker_running);
    } else {
      PLT_picker_cancel();
    }
    EXPECT_LT(PLT_microseconds() - start, 20'000'000u);
    EXPECT_EQ(PLT_picker_poll(&path), has_next ? plt_picker_running : plt_picker_none);
    EXPECT_EQ(path, "as it was");
    ASSERT_GT(child, 0);
    EXPECT_TRUE(ends_soon(child)) << "its child lives on";
  }
}

// --- through the dialog --------------------------------------------------------------------------

int frames;
void (*each_frame)();

class PickerDialog : public gl_fixture {
 protected:
  void SetUp() override {
    gl_fixture::SetUp();
    frames = 0;
    each_frame = [] {};
    app_done = 0;
    PLT_swap_hook = [] {
      if (++frames > 400) app_done = 1;  // a test that hangs must end
      OGL_show_next();                   // each frame counts, whether or not it differs
      each_frame();
    };
  }
  void TearDown() override {
    app_done = 0;
    gl_fixture::TearDown();
  }

  int pick(const std::string& start_in, std::string* out) {
    return GetFilePathFromUser(2, "Pick a folder", "Select", 1, start_in, *out);
  }
};

TEST_F(PickerDialog, TakesWhatTheDesktopSays) {
  const fake_desktop desktop;
  const std::string folder = desktop.folder + "a folder";
  mkdir(folder.c_str(), 0755);
  mkdir((folder + "/odd:name").c_str(), 0755);
  const std::tuple<std::string, std::string, int, std::string> rows[] = {
      {"with a slash", folder + "/", 1, folder},
      {"one that is not there", folder + "/none", 0, "untouched"},
      {"a name that paths cannot hold", folder + "/odd:name", 0, "untouched"},
      {"far too long", "/" + std::string(480, 'x'), 0, "untouched"},
  };
  for (const auto& [label, answer, result, chosen] : rows) {
    SCOPED_TRACE(label);
    desktop.put("zenity", "echo '" + answer + "'");
    // The refusals are alerts: Return leaves them.
    each_frame = [] {
      if (mnw.win_id == win_alert) return_hit = 1;
    };
    std::string out = "untouched";
    EXPECT_EQ(pick(desktop.folder, &out), result);
    EXPECT_EQ(out, chosen);
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(app_done, 0) << "it hung";
  }
}

TEST_F(PickerDialog, CanBeGivenUp) {
  const fake_desktop desktop;
  desktop.put("zenity", "touch ${me}up; sleep 60");
  const std::pair<const char*, void (*)()> rows[] = {
      // The dialog is 561 by 474, its panel in the middle.
      {"Cancel", [] { click(361, 212); }},
      {"Escape", [] { escape_hit = 1; }},
      {"the window's own button", [] { MACIBM_startwind(win_main, 0); }},
      {"the program ends", [] { app_done = 1; }},
  };
  for (const auto& [label, act] : rows) {
    SCOPED_TRACE(label);
    frames = 0;
    app_done = 0;
    each_frame = act;
    std::string out = "untouched";
    EXPECT_EQ(pick("/", &out), 0);
    EXPECT_EQ(out, "untouched");
    EXPECT_EQ(mnw.win_id, win_main);
    EXPECT_EQ(escape_hit, 0) << "none is left for the page behind";
    EXPECT_LT(frames, 20);
  }
  // The program's own list comes in its place.
  frames = app_done = 0;
  each_frame = [] {
    if (frames < 10) return click(201, 212);
    MACIBM_startwind(win_main, 0);
  };
  std::string path;
  EXPECT_EQ(pick("/", &path), 0);
  EXPECT_EQ(frames, 10);
  EXPECT_EQ(PLT_picker_poll(&path), plt_picker_none) << "its program is gone";
}

}  // namespace

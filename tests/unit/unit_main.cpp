// The test program's own edition: what an edition supplies to the system (its start page and its
// title), and the start of the runner. A test begins in an empty working folder of its own.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "Installer-f/wizard/main_app.h"

namespace {

// What a test opens it closes. Only files count: threads, locks of a folder and the driver keep
// theirs.
class handle_watch : public testing::EmptyTestEventListener {
  using handles = std::map<std::string, std::string>;  // what each number is open on
  handles before_;

  static handles open_now() {
    handles out;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;  // the walk's own
      if (!std::filesystem::is_regular_file(entry, gone)) continue;
      out[entry.path().filename()] = std::filesystem::read_symlink(entry, gone);
    }
    return out;
  }

  void OnTestStart(const testing::TestInfo&) override { before_ = open_now(); }
  void OnTestEnd(const testing::TestInfo&) override {
    for (const auto& [number, what] : open_now()) {
      if (!before_.count(number)) ADD_FAILURE() << "left open: " << what;
    }
  }
};

}  // namespace

// The driver is not built with the sanitizer, which takes its threads' hand-over for a race.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "race:swrast_dri.so\n";
}

int main(int argc, char** argv) {
  // No test meets the desktop that it runs on.
  for (const char* const bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
    setenv(bus, "unix:path=/nonexistent", 1);
  for (const char* const proxy : {"http_proxy", "no_proxy"})
    unsetenv(proxy);
  wizard_serve(nullptr, "Skyvane Unit Tests", "unit-tests");
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new handle_watch);
  return RUN_ALL_TESTS();
}

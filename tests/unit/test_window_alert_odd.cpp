// Alerts at odd moments: from several threads at once, inside another alert, and before there is a
// window.

#include <set>
#include <thread>

#include "corekit/GenC/hl_alert.h"
#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/GenH/hl_types.h"
#include "corekit/OOPS_cpp/exce.h"
#include "corekit/Platform/PLT_gl.h"
#include "corekit/Thread/hl_thread.h"
#include "corekit/UTL/UTL_translate.h"
#include "tests/unit/test_runtime_util.h"
#include "tests/unit/window_fixture.h"

namespace {

class WindowAlertOdd : public window_fixture {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    window_fixture::SetUp();
  }
};
using WindowAlertOddDeathTest = WindowAlertOdd;

void raise(const std::string& text, int type = t_alert) {
  __MACIBM_alert(win_main, text, "", "", "", type, "tests/odd", 1);
}

TEST_F(WindowAlertOdd, AlertsOfManyThreadsAreShownOneByOne) {
  constexpr int threads = 4, each = 5;
  const int before = alerts_shown;
  static int answered;
  answered = 0;
  const std::string log = log_of([] {
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
      pool.emplace_back([t] {
        for (int i = 0; i < each; ++i)
          raise("alert " + std::to_string(t * each + i) + ".");
      });
    }
    // Return is pressed in each alert's own frames.
    mnw_keys.frame = [] {
      if (mnw.win_id != win_alert) return;
      ++answered;
      return_hit = 1;
    };
    for (std::thread& thread : pool)
      thread.join();
    for (int i = 0; i < 3; ++i)
      MACIBM_event_proc();
    mnw_keys = key_handlers();
  });
  EXPECT_EQ(alerts_shown - before, threads * each);
  EXPECT_EQ(answered, threads * each);
  for (int i = 0; i < threads * each; ++i) {
    const std::string line = "\nalert " + std::to_string(i) + ".\n";
    const size_t at = log.find(line);
    ASSERT_NE(at, std::string::npos) << line;
    EXPECT_EQ(log.find(line, at + 1), std::string::npos) << "twice: " << line;
  }
  EXPECT_EQ(mnw.win_id, win_main);
}

TEST_F(WindowAlertOddDeathTest, AFatalOneOfAThreadEndsTheProgramWhenItHasBeenShown) {
  const auto fatal = [] {
    std::thread([] {
      raise("the worker's end", t_exit);
      std::fputs("the worker goes on\n", stderr);
      std::_Exit(2);
    }).join();
    std::fputs("the main thread goes on\n", stderr);
    mnw_keys.frame = [] { return_hit = mnw.win_id == win_alert; };
    for (int i = 0; i < 5; ++i)
      MACIBM_event_proc();
    std::_Exit(0);
  };
  EXPECT_EXIT(fatal(), testing::ExitedWithCode(1), "the main thread goes on\n(.|\n)*the worker's");
}

TEST_F(WindowAlertOddDeathTest, OneInsideAnotherEndsTheProgram) {
  static std::string inner;
  for (const size_t size : {size_t{5}, size_t{499}, size_t{5000}}) {
    inner = std::string(size, 'i');
    const auto nested = [] {
      mnw_keys.frame = [] {
        mnw_keys.frame = nullptr;
        raise(inner);
      };
      raise("outer");
      std::_Exit(0);
    };
    EXPECT_EXIT(nested(), testing::ExitedWithCode(1), "outer\n(.|\n)*iiiii") << size;
  }
}

// The plain form joins two lines and takes 499 characters of them.
TEST(WindowNoneAlertDeathTest, BeforeTheWindowIsThere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ASSERT_EQ(ogl_inited, 0);
  const auto lines = [](size_t first, size_t third) {
    const std::string log = log_of([&] {
      __MACIBM_alert(win_main, std::string(first, 'a'), "b", std::string(third, 'c'), "d", t_alert,
                     "tests/odd", 2);
    });
    EXPECT_NE(log.find("\nb\n"), std::string::npos);
    EXPECT_NE(log.find("\nd\n(tests/odd line 2)\n"), std::string::npos);
  };
  lines(1, 1);
  lines(497, 497);
  EXPECT_EXIT(lines(498, 1), testing::ExitedWithCode(1), "String too long!");
  EXPECT_EXIT(lines(1, 5000), testing::ExitedWithCode(1), "String too long!");
}

TEST(WindowNoneAlert, LiteralsAreTranslatedWhenTheyAreShown) {
  const runtime_folder folder;
  write_file(folder.path + "words.txt",
             "I\n900 version\nTRANSLATION\nSTRING Bread====pa\xF1 \xE1\nSTRING made====no\n");
  UTL_translate_load(folder.path + "words.txt");
  testing::internal::CaptureStderr();
  const std::string log = log_of([] {
    __MACIBM_alert(0, "Bread", std::string("made"), "", "", t_alert, "tests/odd", 3);
    // A thread's alert comes as a record, in English.
    exce_class("", "", "Bread", "/Brot\xC3\xA9", "tests/odd", 4, t_alert).Report();
  });
  UTL_translate_clear();
  const std::string shown = testing::internal::GetCapturedStderr();
  EXPECT_NE(shown.find("pañ á made\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("pañ á /Broté\n"), std::string::npos) << shown;
  EXPECT_NE(log.find("\nBread\nmade\n"), std::string::npos) << log;
  EXPECT_NE(log.find("\nBread\n/Broté\n"), std::string::npos) << log;
}

}  // namespace

// Asynchronous calls, and the road of a failure from any kind of thread to the main one.

#include <atomic>
#include <new>
#include <stdexcept>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_thread.h"
#include "corekit/base/UTL_workers.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_thread.h"
#include "corekit/window/hl_init.h"
#include "tests/unit/test_runtime_util.h"

namespace {

void* add_one(void* argument) {
  return static_cast<char*>(argument) + 1;
}

void* wait_at_gate(void* gate) {
  return reinterpret_cast<void*>(
      UTL_message_queue_read(static_cast<UTL_message_queue*>(gate), queue_wait_forever));
}

// Runs `function` on a thread of its own to its end.
void* on_thread(UTL_thread_function function, void* argument, int want_ogl = 0) {
  UTL_thread_handle thread;
  UTL_thread_joiner join;
  UTL_thread_identity identity;
  THREAD_create(function, argument, &thread, &join, &identity, want_ogl);
  return UTL_thread_join(thread, join);
}

class RuntimeAsync : public testing::Test {
 protected:
  void SetUp() override {
    THREAD_init();
    THREAD_make_workers();
  }
  void TearDown() override { THREAD_shutdown(); }
  log_capture log;
};

// --- ways to fail -------------------------------------------------------------------------------

std::atomic<int> survived;   // a failing thread went on
std::atomic<int> destroyed;  // locals of failing threads

struct witness {
  ~witness() { ++destroyed; }
};

// Fails as it is said, with a local on its stack.
template <auto fail>
void* failing(void*) {
  const witness local;
  fail();
  ++survived;
  return nullptr;
}

// Hands on the record that it is given.
void* send(void* record) {
  THREAD_send_exception(*static_cast<exce_class*>(record));
  return nullptr;
}

struct failing_task : UTL_work_task {
  explicit failing_task(UTL_thread_function how) : fail(how) {}
  void do_it() override { fail(nullptr); }
  int check_error(std::string&) override { return 0; }
  UTL_thread_function fail;
};

// What a main loop does once a frame, without an end of its own.
[[noreturn]] void frames_until_the_end() {
  for (;;) {
    THREAD_check_exception(1);
    UTL_sleep(1);
  }
}

TEST(RuntimeThread, WithoutThreadsAFailureIsToldAtOnce) {
  const int alerts_before = alerts_shown;
  testing::internal::CaptureStderr();
  THREAD_send_exception(exce_class("nobody else", "", "", "", "Test/source", 7, t_alert));
  EXPECT_TRUE(str_holds(testing::internal::GetCapturedStderr(), "nobody else"));
  EXPECT_EQ(alerts_shown, alerts_before + 1);
}

}  // namespace

TEST_F(RuntimeAsync, RunsCallsAndRecyclesTheirRecords) {
  char base[300];
  THREAD_call* calls[300];
  const uint32_t before = next_cookie;
  for (int i = 0; i < 300; ++i)
    calls[i] = THREAD_run_async(add_one, base + i);
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(THREAD_is_done(calls[i], i % 2 ? queue_wait_forever : 60000), 1);
    EXPECT_EQ(THREAD_cleanup(calls[i]), base + i + 1);
  }
  EXPECT_EQ(next_cookie - before, 4u * 300) << "each call has one of its own";
  // The last record given back is the first one used again, with nothing left of its last call.
  THREAD_call* const again = THREAD_run_async(add_one, base + 1);
  EXPECT_EQ(again, calls[299]);
  ASSERT_EQ(THREAD_is_done(again, 60000), 1);
  EXPECT_EQ(THREAD_cleanup(again), base + 2);
}

// A thread that cannot have what it asks of OpenGL runs without it, and that is told.
TEST(RuntimeContexts, AreMadeBoundAndMissed) {
  static bool wanted, made, bound;
  static int failed;
  static constexpr THREAD_contexts fake = {
      [] { return wanted; }, []() -> void* { return made ? &made : nullptr; },
      [](void* context) -> int { return context == &made && bound; }, [] { ++failed; }};
  THREAD_use_contexts(&fake);
  for (int i = 0; i < 16; ++i) {
    const bool asked = i & 8;
    wanted = i & 4, made = i & 2, bound = i & 1;
    failed = 0;
    char base[2];
    EXPECT_EQ(on_thread(add_one, base, asked), base + 1) << i;
    EXPECT_EQ(failed, asked && wanted && !(made && bound)) << i;
  }
  THREAD_use_contexts(nullptr);
}

TEST(RuntimeSleep, LastsAsLongAsAsked) {
  const auto began = PLT_microseconds();
  UTL_sleep(1000);
  EXPECT_GE(PLT_microseconds() - began, 1'000'000u);
}

TEST_F(RuntimeAsync, IsNotDoneBeforeTheFunctionReturns) {
  EXPECT_TRUE(THREAD_is_main_thread());
  EXPECT_EQ(on_thread([](void* a) { return THREAD_is_main_thread() ? nullptr : a; }, this), this);
  UTL_message_queue* gate;
  UTL_message_queue_create(&gate);
  THREAD_call* const call = THREAD_run_async(wait_at_gate, gate);
  EXPECT_EQ(THREAD_is_done(call, queue_poll), 0);
  EXPECT_EQ(THREAD_is_done(call, 30), 0);
  UTL_message_queue_write(gate, 99);
  ASSERT_EQ(THREAD_is_done(call, queue_wait_forever), 1);
  EXPECT_EQ(THREAD_is_done(call, queue_poll), 0) << "the word of completion comes once";
  EXPECT_EQ(THREAD_cleanup(call), reinterpret_cast<void*>(99));
  UTL_message_queue_destroy(gate);
}

TEST_F(RuntimeAsync, FailuresWaitForTheirReaderBySeverity) {
  const std::string before = log.text();
  for (const int severity : {0, 1, 3, -1}) {
    exce_class record("severity " + std::to_string(severity), "", "", "", "Test/source", 5,
                      severity);
    on_thread(send, &record);
  }
  THREAD_check_exception(0);
  EXPECT_EQ(log.text(), before) << "a warning is not shown where fatal ones are looked for";
  const std::string shown = before + "\nseverity 1\n\n\n\n(Test/source line 5)\n";
  for (const char* label : {"shown", "once"}) {
    THREAD_check_exception(1);
    EXPECT_EQ(log.text(), shown) << label;
  }
  // One that comes too late to be shown is logged.
  THREAD_send_exception(exce_class("late", "", "", "", "Test/source", 6, t_alert));
  THREAD_shutdown();
  EXPECT_EQ(
      log.text().find("Logging fatal Exception thrown from file: Test/source, line 6.\nlate\n"),
      shown.size());
  EXPECT_TRUE(log.text().ends_with("Clean exit from threads.\n"));
}

// Every way to fail, on every kind of thread: the main thread tells the user and ends the program.
TEST(RuntimeFailureDeathTest, EndsTheProgramFromEveryKindOfThread) {
  const std::pair<UTL_thread_function, const char*> rows[] = {
      {failing<[] { __MACIBM_alert(0, "fatal one", "fatal two", "", "", t_exit, "Test", 77); }>,
       "fatal one fatal two"},
      {failing<[] { UTL_thread_check(22, "\"pthread_cond_timedwait\" OS error", at_queue_wait); }>,
       "\"pthread_cond_timedwait\" OS error err=22\\.000000"},
      {failing<[] { throw std::runtime_error("the reason"); }>,
       "Caught an unhandled C\\+\\+ exception the reason"},
      {failing<[] { throw std::bad_alloc(); }>, "There is no more memory, and I cannot go on\\."},
      {failing<[] { throw 5; }>, "Caught an unhandled unknown exception"},
      {failing<[] { throw exce_class("a mere warning", "", "", "", "Test", 78, t_alert); }>,
       "a mere warning"},
  };
  const std::pair<const char*, void (*)(UTL_thread_function)> threads[] = {
      {"of its own",
       [](UTL_thread_function fail) {
         on_thread(fail, nullptr);
         if (survived != 0 || destroyed != 1) std::_Exit(3);
         frames_until_the_end();
       }},
      {"of an asynchronous call that is waited for without end",
       [](UTL_thread_function fail) {
         THREAD_make_workers();
         THREAD_is_done(THREAD_run_async(fail, nullptr), queue_wait_forever);
       }},
      {"of a pool whose owner drains it",
       [](UTL_thread_function fail) {
         failing_task task(fail);
         UTL_worker_threads pool(2, 4);
         pool.enqueue_task(&task);
         pool.wait_retired_tasks();
       }},
      {"of a pool that is destroyed", [](UTL_thread_function fail) {
         failing_task task(fail);
         {
           UTL_worker_threads pool(2, 4);
           pool.enqueue_task(&task);
         }
         frames_until_the_end();
       }}};
  for (const auto& [fail, text] : rows) {
    for (const auto& [thread, fail_on_it] : threads) {
      EXPECT_EXIT(
          {
            THREAD_init();
            fail_on_it(fail);
          },
          testing::ExitedWithCode(1), text)
          << "thread " << thread;
    }
  }
}

TEST(RuntimeFailureDeathTest, TheFirstFatalGoesAheadOfEverything) {
  EXPECT_EXIT(
      {
        THREAD_init();
        for (const int number : {1, 2, 3}) {
          exce_class record("record " + std::to_string(number), "", "", "", "Test/source", number,
                            number == 1 ? t_alert : t_exit);
          on_thread(send, &record);
        }
        THREAD_check_exception(1);
      },
      testing::ExitedWithCode(1), "^[^r]*record 2[^r]*$");
}

// Threads, critical sections, the message queue and the worker pool, with real threads.

#include <atomic>
#include <chrono>
#include <memory>
#include <set>
#include <thread>

#include "corekit/base/UTL_queue.h"
#include "corekit/base/UTL_thread.h"
#include "corekit/base/UTL_workers.h"
#include "tests/unit/test_runtime_util.h"

namespace {

// A queue for the length of a test.
struct test_queue {
  test_queue() { UTL_message_queue_create(&queue); }
  ~test_queue() { UTL_message_queue_destroy(queue); }
  operator UTL_message_queue*() const { return queue; }
  UTL_message_queue* queue = nullptr;
};

TEST(RuntimeQueue, GivesWordsInTheOrderOfWriting) {
  const test_queue queue;
  EXPECT_EQ(UTL_message_queue_read(queue, queue_poll), 0);
  const UTL_message words[] = {7, -1, INTPTR_MIN, INTPTR_MAX, 7, 1};
  for (const UTL_message word : words)
    UTL_message_queue_write(queue, word);
  // Whatever the reader's patience, a word that is there comes at once.
  const int patience[] = {queue_poll, queue_wait_forever, 60000, queue_poll, 1, -7};
  for (size_t i = 0; i < std::size(words); ++i)
    EXPECT_EQ(UTL_message_queue_read(queue, patience[i]), words[i]) << "word " << i;
  EXPECT_EQ(UTL_message_queue_read(queue, queue_poll), 0);
}

TEST(RuntimeQueue, WaitsAsLongAsAskedAndNoLonger) {
  const test_queue queue;
  // Long enough that one of them crosses a second on the clock; -2 is no time-out and polls.
  for (const int timeout : {-2, 1, 40, 600, 600}) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(UTL_message_queue_read(queue, timeout), 0);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took.count(), timeout - 1);
    EXPECT_LT(took.count(), timeout + 5000);
  }
}

TEST(RuntimeQueue, WakesAReaderThatWaits) {
  for (const int timeout : {queue_wait_forever, 60000}) {
    const test_queue queue, answer;
    std::thread reader([&] {
      UTL_message_queue_write(answer, 1);
      UTL_message_queue_write(answer, UTL_message_queue_read(queue, timeout));
    });
    EXPECT_EQ(UTL_message_queue_read(answer, queue_wait_forever), 1);
    UTL_sleep(20);
    UTL_message_queue_write(queue, 42);
    EXPECT_EQ(UTL_message_queue_read(answer, queue_wait_forever), 42) << timeout;
    reader.join();
  }
  // A bare signal is read as 0, and only a wait without end can tell it from nothing.
  const test_queue queue;
  std::thread writer([&] { UTL_message_queue_write(queue, 0); });
  EXPECT_EQ(UTL_message_queue_read(queue, queue_wait_forever), 0);
  writer.join();
}

TEST(RuntimeQueue, GivesEachWordToOneOfManyReaders) {
  constexpr int writers = 3, readers = 4, words = 4000;
  const test_queue queue;
  std::vector<std::vector<UTL_message>> got(readers);
  std::vector<std::thread> threads;
  for (int r = 0; r < readers; ++r) {
    threads.emplace_back([&, r] {
      // Short and endless waits mixed, so that signals meet readers that are giving up.
      for (int turn = 0;; ++turn) {
        const int timeout = turn % 3 == 0 ? queue_wait_forever : turn % 3;
        const UTL_message word = UTL_message_queue_read(queue, timeout);
        if (word == -1) return;
        if (word != 0) got[r].push_back(word);
      }
    });
  }
  std::vector<std::thread> sources;
  for (int w = 0; w < writers; ++w) {
    sources.emplace_back([&, w] {
      for (int i = 1; i <= words; ++i)
        UTL_message_queue_write(queue, w * 100000 + i);
    });
  }
  for (std::thread& source : sources)
    source.join();
  for (int r = 0; r < readers; ++r)
    UTL_message_queue_write(queue, -1);
  for (std::thread& thread : threads)
    thread.join();

  std::vector<int> seen(writers * 100000, 0);
  for (const auto& list : got) {
    UTL_message last[writers] = {};
    for (const UTL_message word : list) {
      ++seen[word];
      EXPECT_GT(word, last[word / 100000]) << "one writer's words keep their order";
      last[word / 100000] = word;
    }
  }
  for (int w = 0; w < writers; ++w)
    for (int i = 1; i <= words; ++i)
      ASSERT_EQ(seen[w * 100000 + i], 1) << "writer " << w << " word " << i;
}

TEST(RuntimeThread, ExitUnwindsTheStackAndGivesTheResult) {
  static std::atomic<int> destroyed, came_back;
  struct witness {
    ~witness() { ++destroyed; }
  };
  UTL_thread_handle thread;
  UTL_thread_joiner join;
  UTL_thread_identity identity;
  UTL_thread_create(
      [](void* argument) -> void* {
        const witness on_the_stack;
        UTL_thread_exit(argument);
        ++came_back;
        return nullptr;
      },
      &thread, &thread, &join, &identity);
  EXPECT_EQ(UTL_thread_join(thread, join), &thread);
  EXPECT_FALSE(UTL_same_thread(identity, UTL_get_current_thread()));
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(came_back, 0);
}

TEST(RuntimeThread, CriticalSectionIsRecursiveAndExcludes) {
  UTL_critical_section section;
  UTL_critical_section_create(&section);
  const auto other_gets_it = [&] {
    bool got = false;
    std::thread([&] {
      got = pthread_mutex_trylock(&section) == 0;
      if (got) pthread_mutex_unlock(&section);
    }).join();
    return got;
  };
  UTL_critical_section_lock(&section);
  UTL_critical_section_lock(&section);
  EXPECT_FALSE(other_gets_it());
  UTL_critical_section_unlock(&section);
  EXPECT_FALSE(other_gets_it()) << "one unlock for two locks";
  UTL_critical_section_unlock(&section);
  EXPECT_TRUE(other_gets_it());
  UTL_critical_section_destroy(&section);
}

// Counts its runs in a plain field, which only the hand-over of the task protects.
struct counting_task : UTL_work_task {
  void do_it() override { ++runs; }
  int check_error(std::string& message) override {
    message = runs == 1 ? "" : "ran more than once";
    return runs == 1 ? 0 : 20002;
  }
  int runs = 0;
};

// Holds its thread until it is let go.
struct gated_task : counting_task {
  void do_it() override {
    UTL_message_queue_read(gate, queue_wait_forever);
    ++runs;
  }
  void let_go() { UTL_message_queue_write(gate, 1); }
  const test_queue gate;
};

TEST(RuntimeWorkers, RunsEveryTaskOnceAndGivesItBack) {
  constexpr int total = 3000, limit = 8;
  UTL_worker_threads pool(3, limit);
  int given = 0, taken = 0, most = 0;
  // The frame of an owner: feed while a slot is free, then take back what is ready.
  while (taken < total) {
    while (given < total && pool.has_free_slot()) {
      pool.enqueue_task(new counting_task);
      ++given;
    }
    most = std::max(most, pool.count_total_tasks());
    while (UTL_work_task* back = pool.check_retired_tasks()) {
      const std::unique_ptr<UTL_work_task> task(back);
      std::string message = "unset";
      EXPECT_EQ(task->check_error(message), 0);
      EXPECT_EQ(message, "");
      ++taken;
    }
  }
  EXPECT_EQ(most, limit);
  EXPECT_EQ(pool.count_total_tasks(), 0);
  EXPECT_EQ(pool.check_retired_tasks(), nullptr);
}

TEST(RuntimeWorkers, CountsATaskUntilItIsTakenBack) {
  gated_task tasks[3];
  UTL_worker_threads pool(1, 2);
  EXPECT_EQ(pool.wait_retired_tasks(), nullptr) << "nothing is out: does not wait";
  EXPECT_TRUE(pool.has_free_slot());
  pool.enqueue_task(&tasks[0]);
  EXPECT_TRUE(pool.has_free_slot());
  pool.enqueue_task(&tasks[1]);
  EXPECT_FALSE(pool.has_free_slot());
  pool.enqueue_task(&tasks[2]);  // past the limit, which is the caller's affair
  EXPECT_EQ(pool.count_total_tasks(), 3);
  EXPECT_EQ(pool.check_retired_tasks(), nullptr) << "the first one still runs";
  for (gated_task& task : tasks)
    task.let_go();
  EXPECT_EQ(pool.wait_retired_tasks(), &tasks[0]);
  EXPECT_FALSE(pool.has_free_slot()) << "two of two are still out";
  EXPECT_EQ(pool.wait_retired_tasks(), &tasks[1]);
  EXPECT_TRUE(pool.has_free_slot());
  EXPECT_EQ(pool.wait_retired_tasks(), &tasks[2]);
  EXPECT_EQ(pool.count_total_tasks(), 0);
  EXPECT_EQ(pool.wait_retired_tasks(), nullptr);
}

TEST(RuntimeWorkers, DestructionRunsWhatIsQueuedUnlessTheOwnerDrains) {
  for (const bool drains : {false, true}) {
    counting_task tasks[200];
    gated_task first[2];
    {
      UTL_worker_threads pool(2, 1);
      for (gated_task& task : first)
        pool.enqueue_task(&task);
      for (counting_task& task : tasks)
        pool.enqueue_task(&task);
      for (gated_task& task : first)
        task.let_go();
      int drained = 0;
      while (drains && pool.wait_retired_tasks() != nullptr)
        ++drained;
      EXPECT_EQ(drained, drains ? 202 : 0);
    }
    for (const counting_task& task : tasks)
      EXPECT_EQ(task.runs, 1);
  }
}

}  // namespace

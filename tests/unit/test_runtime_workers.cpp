// The worker pool: limits, hand-over, tear-down.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>

#include "corekit/UTL/UTL_queue.h"
#include "corekit/UTL/UTL_workers.h"

namespace {

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
  gated_task() { UTL_message_queue_create(&gate); }
  ~gated_task() override { UTL_message_queue_destroy(gate); }
  void do_it() override {
    UTL_message_queue_read(gate, queue_wait_forever);
    ++runs;
  }
  void let_go() { UTL_message_queue_write(gate, 1); }
  UTL_message_queue* gate = nullptr;
};

}  // namespace

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

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

TEST(RuntimeWorkers, OneThreadKeepsTheOrder) {
  counting_task tasks[50];
  UTL_worker_threads pool(1, 50);
  for (counting_task& task : tasks)
    pool.enqueue_task(&task);
  for (counting_task& task : tasks)
    EXPECT_EQ(pool.wait_retired_tasks(), &task);
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

TEST(RuntimeWorkers, WithoutThreadsTakesTasksAndNeverRunsThem) {
  for (const int threads : {0, -1}) {
    counting_task task;
    {
      UTL_worker_threads pool(threads, 1);
      pool.enqueue_task(&task);
      EXPECT_EQ(pool.count_total_tasks(), 1);
      EXPECT_EQ(pool.check_retired_tasks(), nullptr);
    }
    EXPECT_EQ(task.runs, 0);
  }
}

TEST(RuntimeWorkers, DestructionRunsWhatIsQueued) {
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
  }
  for (const counting_task& task : tasks)
    EXPECT_EQ(task.runs, 1);
}

TEST(RuntimeWorkers, ATaskGoesOnToASecondPool) {
  constexpr int total = 300;
  std::vector<counting_task> tasks(total);
  UTL_worker_threads read_pool(1, 30), write_pool(3, 30);
  int given = 0;
  std::set<UTL_work_task*> done;
  while (done.size() < total) {
    while (given < total && read_pool.has_free_slot())
      read_pool.enqueue_task(&tasks[static_cast<size_t>(given++)]);
    if (write_pool.has_free_slot())
      if (UTL_work_task* half = read_pool.check_retired_tasks()) write_pool.enqueue_task(half);
    if (UTL_work_task* whole = write_pool.check_retired_tasks()) done.insert(whole);
  }
  for (const counting_task& task : tasks)
    EXPECT_EQ(task.runs, 2);
}

TEST(RuntimeWorkers, AnOwnerThatGivesUpDrains) {
  UTL_worker_threads pool(2, 30);
  for (int i = 0; i < 30; ++i)
    pool.enqueue_task(new counting_task);
  int drained = 0;
  while (UTL_work_task* task = pool.wait_retired_tasks()) {
    delete task;
    ++drained;
  }
  EXPECT_EQ(drained, 30);
}

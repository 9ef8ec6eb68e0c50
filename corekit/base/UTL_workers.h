// The worker pool: runs task objects on a fixed number of threads for one owner, who feeds it a
// little in each frame and never waits.
//
// The owner's frame: while has_free_slot() and work remains, build a task and enqueue_task it; then
// until check_retired_tasks() gives null, check_error() each task, act on it, delete it. With all
// work given and count_total_tasks() at 0 the job is done, and the owner may delete the pool. An
// owner that gives up first drains with wait_retired_tasks() until null and deletes what it gets.
#pragma once

#include <string>
#include <vector>

#include "corekit/base/UTL_thread.h"

struct UTL_message_queue;

// One piece of work. It belongs to one thread at a time: the owner's until it is enqueued and after
// it has retired, a pool thread's in between. Tasks that run at once share no changing state.
class UTL_work_task {
 public:
  virtual ~UTL_work_task() = default;

  // The whole work, on a pool thread. The outcome goes into the task's own fields. Must not let an
  // exception escape: one that does loses the task and ends the program with a fatal alert. Must
  // not be noexcept either, for a fatal alert in it ends the thread by unwinding.
  virtual void do_it() = 0;

  // Once retired: the error number, 0 for none, with its message in English. Owner's thread.
  virtual int check_error(std::string& message) = 0;
};

// All calls are for the owner's thread only.
class UTL_worker_threads {
 public:
  // Starts `thread_count` threads. With none the pool takes tasks and never runs them. The limit
  // bounds the tasks that are out at once, and so the memory that they hold.
  UTL_worker_threads(int thread_count, int max_tasks_at_once);

  // Runs the tasks that are still queued to their end, then ends the threads. Tasks that nobody
  // has taken back are lost with the pool: drain it first.
  ~UTL_worker_threads();

  UTL_worker_threads(const UTL_worker_threads&) = delete;
  UTL_worker_threads& operator=(const UTL_worker_threads&) = delete;

  bool has_free_slot() const { return task_count < max_tasks; }
  int count_total_tasks() const { return task_count; }  // queued, running, and not yet taken back

  // Hands `task` over. Does not look at the limit. A task that came back from another pool may be
  // enqueued here: its do_it is called once more, and it knows by its own state what to do then.
  void enqueue_task(UTL_work_task* task);

  UTL_work_task* check_retired_tasks();  // a finished task, or null; does not wait
  UTL_work_task* wait_retired_tasks();   // waits for one; null once none is out
  // For an owner that waits for other things as well: becomes readable when a task finishes after
  // the last check_retired_tasks that gave null. -1 if the system has none to give.
  int retired_descriptor() const { return retired_event; }

 private:
  static void* thread_func(void* pool);
  static void* run_tasks(void* pool);

  UTL_message_queue* work_queue = nullptr;     // UTL_work_task pointers; 0 tells a thread to stop
  UTL_message_queue* retired_queue = nullptr;  // UTL_work_task pointers, in order of finishing
  int retired_event;                           // signalled once a task is in the retired queue
  int max_tasks;
  int task_count = 0;
  std::vector<UTL_thread_handle> threads;  // these three are parallel
  std::vector<UTL_thread_joiner> joiners;
  std::vector<UTL_thread_identity> identities;
};

// The worker pool: two queues and the threads between them.
//
// The owner writes tasks to the work queue; each thread reads one, runs it and writes it to the
// retired queue, from which the owner takes it back. The count of tasks is the owner's alone and
// has no lock. Writes no global.

#include "corekit/base/UTL_workers.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstring>

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_queue.h"
#include "corekit/base/hl_thread.h"
#include "corekit/base/xer.h"

namespace {

constexpr UTL_message stop_order = 0;

UTL_work_task* as_task(UTL_message word) {
  return reinterpret_cast<UTL_work_task*>(word);
}

}  // namespace

UTL_worker_threads::UTL_worker_threads(int thread_count, int max_tasks_at_once)
    : retired_event(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), max_tasks(max_tasks_at_once) {
  UTL_message_queue_create(&work_queue);
  UTL_message_queue_create(&retired_queue);
  const size_t count = thread_count > 0 ? static_cast<size_t>(thread_count) : 0;
  threads.resize(count);
  joiners.resize(count);
  identities.resize(count);
  for (size_t i = 0; i < count; ++i) {
    if (i == 0) {
      UTL_thread_create(thread_func, this, &threads[i], &joiners[i], &identities[i]);
      continue;
    }
    const int error = UTL_thread_try(thread_func, this, &threads[i], &joiners[i], &identities[i]);
    if (error == 0) continue;
    // A machine that gives no more does the work on those that there are.
    xer << "WARNING: a pool has " << i << " threads in place of " << count << ": "
        << std::strerror(error) << '\n';
    threads.resize(i);
    joiners.resize(i);
    identities.resize(i);
    break;
  }
}

UTL_worker_threads::~UTL_worker_threads() {
  // Each thread takes exactly one stop order, and the tasks queued before the orders come first.
  for (size_t i = 0; i < threads.size(); ++i)
    UTL_message_queue_write(work_queue, stop_order);
  for (size_t i = 0; i < threads.size(); ++i)
    UTL_thread_join(threads[i], joiners[i]);
  UTL_message_queue_destroy(work_queue);
  UTL_message_queue_destroy(retired_queue);
  if (retired_event >= 0) close(retired_event);
}

void UTL_worker_threads::enqueue_task(UTL_work_task* task) {
  ++task_count;
  UTL_message_queue_write(work_queue, reinterpret_cast<UTL_message>(task));
}

UTL_work_task* UTL_worker_threads::check_retired_tasks() {
  // Before the look at the queue: what is put there after it signals anew.
  eventfd_t count;
  if (retired_event >= 0) eventfd_read(retired_event, &count);
  UTL_work_task* const task = as_task(UTL_message_queue_read(retired_queue, queue_poll));
  if (task) --task_count;
  return task;
}

UTL_work_task* UTL_worker_threads::wait_retired_tasks() {
  if (task_count < 1) return nullptr;
  UTL_work_task* const task = as_task(THREAD_wait_message(retired_queue));
  --task_count;
  return task;
}

void* UTL_worker_threads::thread_func(void* pool) {
  return THREAD_guard(run_tasks, pool);
}

void* UTL_worker_threads::run_tasks(void* pool) {
  auto* const self = static_cast<UTL_worker_threads*>(pool);
  for (;;) {
    const UTL_message word = UTL_message_queue_read(self->work_queue, queue_wait_forever);
    if (word == stop_order) return nullptr;
    as_task(word)->do_it();
    UTL_message_queue_write(self->retired_queue, word);
    if (self->retired_event >= 0) eventfd_write(self->retired_event, 1);
    // The task is the owner's again: let it be taken now rather than at the next frame.
    PLT_wake();
  }
}

// The message queue: a list of words under a mutex, with a condition for readers that wait.
//
// Any thread. A writer signals one waiter for each word, while it holds the mutex. List nodes are
// made and freed outside the lock, which keeps it short and cannot leave it locked when memory runs
// out. Writes no global.

#include "corekit/base/UTL_queue.h"

#include <pthread.h>

#include <cerrno>
#include <list>

#include "corekit/base/UTL_thread.h"

struct UTL_message_queue {
  pthread_mutex_t mutex;  // guards everything below
  pthread_cond_t condition;
  std::list<UTL_message> messages;  // oldest first
  int32_t waiters = 0;              // threads inside a read that may wait
};

namespace {

void lock(UTL_message_queue* queue) {
  UTL_thread_check(pthread_mutex_lock(&queue->mutex), "\"pthread_mutex_lock\" OS error",
                   at_queue_lock);
}

void unlock(UTL_message_queue* queue) {
  UTL_thread_check(pthread_mutex_unlock(&queue->mutex), "\"pthread_mutex_unlock\" OS error",
                   at_queue_unlock);
}

// Waits for a signal, until `deadline` unless that is null. True when the time is up.
bool wait(UTL_message_queue* queue, const timespec* deadline) {
  // The monotonic clock, so that a clock that is set back does not stretch a time-out.
  const int error =
      deadline ? pthread_cond_clockwait(&queue->condition, &queue->mutex, CLOCK_MONOTONIC, deadline)
               : pthread_cond_wait(&queue->condition, &queue->mutex);
  if (error == 0) return false;
  if (error == ETIMEDOUT) return true;
  // The failure ends this thread, or the program, which must not find the queue locked.
  unlock(queue);
  UTL_thread_check(error, "\"pthread_cond_timedwait\" OS error", at_queue_wait);
  lock(queue);
  return false;
}

}  // namespace

timespec UTL_message_deadline(const timespec& now, int timeout) {
  timespec deadline = {now.tv_sec + timeout / 1000, now.tv_nsec + timeout % 1000 * 1000000L};
  if (deadline.tv_nsec > 999999999L) {
    deadline.tv_nsec -= 1000000000L;
    ++deadline.tv_sec;
  }
  return deadline;
}

void UTL_message_queue_create(UTL_message_queue** queue) {
  auto* made = new UTL_message_queue;
  UTL_thread_check(pthread_mutex_init(&made->mutex, nullptr), "\"::pthread_mutex_init\" OS error",
                   at_queue_init);
  UTL_thread_check(pthread_cond_init(&made->condition, nullptr), "\"::pthread_cond_init\" OS error",
                   at_queue_condition_init);
  *queue = made;
}

void UTL_message_queue_destroy(UTL_message_queue* queue) {
  UTL_thread_check(pthread_mutex_destroy(&queue->mutex), "\"::pthread_mutex_destroy\" OS error",
                   at_queue_destroy);
  UTL_thread_check(pthread_cond_destroy(&queue->condition), "\"::pthread_cond_desroy\" OS error",
                   at_queue_condition_destroy);
  delete queue;
}

void UTL_message_queue_write(UTL_message_queue* queue, UTL_message word) {
  std::list<UTL_message> node(1, word);
  lock(queue);
  // Before the word is there, which does no harm: the reader needs the mutex to look.
  if (queue->waiters > 0) {
    UTL_thread_check(pthread_cond_signal(&queue->condition), "\"pthread_cond_signal\" OS error",
                     at_queue_signal);
  }
  queue->messages.splice(queue->messages.end(), node);
  unlock(queue);
}

UTL_message UTL_message_queue_read(UTL_message_queue* queue, int timeout) {
  timespec deadline = {};
  if (timeout > 0) {
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline = UTL_message_deadline(deadline, timeout);
  }
  const bool may_wait = timeout > 0 || timeout == queue_wait_forever;

  std::list<UTL_message> taken;
  lock(queue);
  bool give_up = !may_wait;
  if (may_wait) ++queue->waiters;
  // A word that comes with the last moment of the wait is still taken.
  while (queue->messages.empty() && !give_up)
    give_up = wait(queue, timeout > 0 ? &deadline : nullptr);
  if (may_wait) --queue->waiters;
  if (!queue->messages.empty()) taken.splice(taken.end(), queue->messages, queue->messages.begin());
  unlock(queue);
  return taken.empty() ? 0 : taken.front();
}

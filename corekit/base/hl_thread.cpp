// The thread world of the program.
//
// Holds the two queues of failures, the general workers with their queue of calls, and the start
// handshake of a thread. Owned by the main thread, which starts and ends it; any thread sends
// failures and queues calls. Everything below is written in THREAD_init, THREAD_make_workers and
// THREAD_shutdown only, except for what the lock of the free records guards.

#include "corekit/base/hl_thread.h"

#include <cxxabi.h>

#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <vector>

#include "corekit/Platform/PLT_window.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"

struct THREAD_call {
  THREAD_call* next = nullptr;              // in free_calls
  UTL_message_queue* done_queue = nullptr;  // the worker posts the cookie here
  UTL_critical_section lock;                // guards result and done
  UTL_thread_function function = nullptr;
  void* argument = nullptr;
  void* result = nullptr;
  int32_t done = 0;     // set by THREAD_is_done, not by the worker
  uint32_t cookie = 0;  // never 0
};

uint32_t next_cookie = 0;

namespace {

constexpr UTL_message stop_order = -1;  // in call_queue
constexpr int wait_slice = 100;         // milliseconds between two looks for failures

UTL_thread_identity main_thread;
std::atomic<int> threads_inited = 0;
UTL_message_queue* warn_exce = nullptr;   // exce_class copies of severity t_alert; reader deletes
UTL_message_queue* quit_exce = nullptr;   // the same of severity t_exit
UTL_message_queue* call_queue = nullptr;  // THREAD_call pointers, and stop orders
UTL_critical_section free_calls_lock;     // guards free_calls and next_cookie
THREAD_call* free_calls = nullptr;        // records for reuse, never freed before the shutdown

const THREAD_contexts* contexts = nullptr;  // of the window layer; constant, not owned

// The general workers; the three are parallel.
std::vector<UTL_thread_handle> worker_threads;
std::vector<UTL_thread_joiner> worker_threads_join;
std::vector<UTL_thread_identity> worker_threads_id;

// What a new thread is told; lives on its creator's stack until the thread has answered.
struct thread_start {
  UTL_thread_function function;
  void* argument;
  UTL_message_queue* started;
  int want_ogl;  // in: a context is there; out: it is bound
  void* context;
};

std::unique_ptr<exce_class> take_failure(UTL_message_queue* queue) {
  return std::unique_ptr<exce_class>(
      reinterpret_cast<exce_class*>(UTL_message_queue_read(queue, queue_poll)));
}

// A failure that comes too late to be shown is at least in the log.
void drop_failures(UTL_message_queue*& queue) {
  while (const auto failure = take_failure(queue))
    failure->LogAndContinue();
  UTL_message_queue_destroy(queue);
  queue = nullptr;
}

THREAD_call* make_call() {
  auto* const call = new THREAD_call;
  UTL_message_queue_create(&call->done_queue);
  UTL_critical_section_create(&call->lock);
  return call;
}

void free_call(THREAD_call* call) {
  UTL_message_queue_destroy(call->done_queue);
  UTL_critical_section_destroy(&call->lock);
  delete call;
}

// The body of a general worker. Several read the one queue, and each call goes to one of them.
void* xtaskproc(void*) {
  for (;;) {
    const UTL_message word = UTL_message_queue_read(call_queue, queue_wait_forever);
    if (word == stop_order) return nullptr;
    auto* const call = reinterpret_cast<THREAD_call*>(word);
    void* const result = call->function(call->argument);
    UTL_critical_section_lock(&call->lock);
    call->result = result;
    UTL_critical_section_unlock(&call->lock);
    UTL_message_queue_write(call->done_queue, static_cast<UTL_message>(call->cookie));
  }
}

// A fault of the program: it stays English, for those who can mend it.
exce_class unhandled(const std::string& kind, const std::string& what, alert_source source) {
  return exce_class(kind, what, "", "", source, t_exit);
}

void* THREAD_launch(void* parameters) {
  auto* const start = static_cast<thread_start*>(parameters);
  if (start->want_ogl && !contexts->bind(start->context)) start->want_ogl = 0;
  const UTL_thread_function function = start->function;
  void* const argument = start->argument;
  UTL_message_queue_write(start->started, 0);
  // The parameters are gone from here on.
  return THREAD_guard(function, argument);
}

}  // namespace

// --- start and end ------------------------------------------------------------------------------

void THREAD_init() {
  main_thread = UTL_get_current_thread();
  UTL_message_queue_create(&warn_exce);
  UTL_message_queue_create(&quit_exce);
  UTL_critical_section_create(&free_calls_lock);
  UTL_message_queue_create(&call_queue);
  threads_inited = 1;
  static constexpr failure_post post = {[] { return !THREAD_is_main_thread(); },
                                        THREAD_send_exception};
  report_across(&post);
}

void THREAD_make_workers() {
  const int count = UTL_count_processors();
  xer << "CPU count        : " << count << '\n';
  for (int i = 0; i < count; ++i) {
    UTL_thread_handle thread;
    UTL_thread_joiner join;
    UTL_thread_identity identity;
    THREAD_create(xtaskproc, nullptr, &thread, &join, &identity, 1);
    worker_threads.push_back(thread);
    worker_threads_join.push_back(join);
    worker_threads_id.push_back(identity);
  }
}

void THREAD_shutdown() {
  if (!threads_inited) return;
  for (size_t i = 0; i < worker_threads.size(); ++i)
    UTL_message_queue_write(call_queue, stop_order);
  for (size_t i = 0; i < worker_threads.size(); ++i)
    UTL_thread_join(worker_threads[i], worker_threads_join[i]);
  worker_threads.clear();
  worker_threads_join.clear();
  worker_threads_id.clear();

  UTL_critical_section_destroy(&free_calls_lock);
  UTL_message_queue_destroy(call_queue);
  call_queue = nullptr;
  while (free_calls) {
    THREAD_call* const call = free_calls;
    free_calls = call->next;
    free_call(call);
  }
  drop_failures(warn_exce);
  drop_failures(quit_exce);
  threads_inited = 0;
  report_across(nullptr);
  xer << "Clean exit from threads.\n";
}

bool THREAD_is_inited() {
  return threads_inited != 0;
}

bool THREAD_is_main_thread() {
  return THREAD_is_inited() && UTL_same_thread(main_thread, UTL_get_current_thread());
}

// --- threads of one's own -----------------------------------------------------------------------

void THREAD_use_contexts(const THREAD_contexts* supplied) {
  contexts = supplied;
}

void THREAD_create(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                   UTL_thread_joiner* join, UTL_thread_identity* identity, int want_ogl) {
  const int asked = want_ogl && contexts && contexts->wanted();
  thread_start start = {function, argument, nullptr, asked, nullptr};
  if (asked) {
    start.context = contexts->make();
    if (!start.context) start.want_ogl = 0;
  }
  UTL_message_queue_create(&start.started);
  UTL_thread_create(THREAD_launch, &start, thread, join, identity);
  UTL_message_queue_read(start.started, queue_wait_forever);
  UTL_message_queue_destroy(start.started);
  // It was not to be made, or the thread could not bind it: the thread runs without.
  if (start.want_ogl != asked) contexts->failed();
}

// The C library's unwinding carries no object, so the reference to it below is bound to nothing. It
// is never looked at.
__attribute__((no_sanitize("null"))) void* THREAD_guard(UTL_thread_function function,
                                                        void* argument) {
  exce_class failure;
  try {
    return function(argument);
  } catch (abi::__forced_unwind&) {
    throw;  // the thread is ending by UTL_thread_exit, which must not be stopped
  } catch (exce_class& caught) {
    failure = caught;
    failure.MakeFatal();
  } catch (std::bad_alloc&) {
    failure = no_memory_failure(at_thread_exception);
  } catch (std::exception& caught) {
    failure = unhandled("Caught an unhandled C++ exception", caught.what(), at_thread_exception);
  } catch (...) {
    failure = unhandled("Caught an unhandled unknown exception", "", at_thread_throw);
  }
  THREAD_send_exception(failure);
  return nullptr;
}

// --- asynchronous calls -------------------------------------------------------------------------

THREAD_call* THREAD_run_async(UTL_thread_function function, void* argument) {
  UTL_critical_section_lock(&free_calls_lock);
  next_cookie += 4;
  if (next_cookie == 0) next_cookie = 4;
  const uint32_t cookie = next_cookie;
  THREAD_call* call = free_calls;
  if (call) free_calls = call->next;
  UTL_critical_section_unlock(&free_calls_lock);

  if (!call) call = make_call();
  call->next = nullptr;
  call->function = function;
  call->argument = argument;
  call->result = nullptr;
  call->done = 0;
  call->cookie = cookie;
  UTL_message_queue_write(call_queue, reinterpret_cast<UTL_message>(call));
  return call;
}

int THREAD_is_done(THREAD_call* call, int timeout) {
  THREAD_check_exception(0);
  const UTL_message word = timeout == queue_wait_forever
                               ? THREAD_wait_message(call->done_queue)
                               : UTL_message_queue_read(call->done_queue, timeout);
  THREAD_check_exception(0);
  if (word == 0) return 0;
  UTL_critical_section_lock(&call->lock);
  call->done = 1;
  UTL_critical_section_unlock(&call->lock);
  return 1;
}

void* THREAD_cleanup(THREAD_call* call) {
  THREAD_check_exception(0);
  UTL_critical_section_lock(&call->lock);
  if (!call->done) {
    MACIBM_fault(at_thread_call_not_done, "Thread cleanup called on not-done call.");
  }
  void* const result = call->result;
  UTL_critical_section_unlock(&call->lock);

  UTL_critical_section_lock(&free_calls_lock);
  call->next = free_calls;
  free_calls = call;
  UTL_critical_section_unlock(&free_calls_lock);
  return result;
}

// --- failures -----------------------------------------------------------------------------------

void THREAD_send_exception(const exce_class& failure) {
  if (failure.severity != t_alert && failure.severity != t_exit) return;
  if (!threads_inited) {
    failure.Report();  // there is no other thread to tell
    return;
  }
  UTL_message_queue_write(failure.severity == t_exit ? quit_exce : warn_exce,
                          reinterpret_cast<UTL_message>(new exce_class(failure)));
  PLT_wake();
  if (failure.severity == t_exit && !THREAD_is_main_thread()) UTL_thread_exit(nullptr);
}

void THREAD_check_exception(int all) {
  if (!threads_inited) return;
  while (const auto failure = take_failure(quit_exce))
    failure->Report();
  if (!all) return;
  while (const auto failure = take_failure(warn_exce))
    failure->Report();
}

UTL_message THREAD_wait_message(UTL_message_queue* queue) {
  if (!THREAD_is_main_thread()) return UTL_message_queue_read(queue, queue_wait_forever);
  for (;;) {
    if (const UTL_message word = UTL_message_queue_read(queue, wait_slice)) return word;
    THREAD_check_exception(0);
  }
}

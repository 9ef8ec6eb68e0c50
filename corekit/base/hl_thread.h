// The thread world of the program: start and end, the general workers and their asynchronous calls,
// and the two queues that carry failures from any thread to the main one.
//
// Order: THREAD_init once the log is open, THREAD_make_workers once the graphics stand,
// THREAD_shutdown in an orderly exit, when every other thread has been joined.
#pragma once

#include <cstdint>

#include "corekit/base/UTL_queue.h"
#include "corekit/base/UTL_thread.h"

class exce_class;
struct THREAD_call;

// --- start and end; main thread -----------------------------------------------------------------

void THREAD_init();          // makes the caller the main thread
void THREAD_make_workers();  // one general worker for each processor
void THREAD_shutdown();      // lets the workers finish their calls, joins them, frees everything

bool THREAD_is_inited();       // any thread
bool THREAD_is_main_thread();  // any thread; also false before THREAD_init

// What a thread needs that wants to load textures: an OpenGL context that shares with the window's.
// The window layer supplies them; without it no thread has one.
struct THREAD_contexts {
  bool (*wanted)();            // whether the driver can be used by several threads
  void* (*make)();             // null if that fails; main thread
  int (*bind)(void* context);  // to the calling thread; 0 if that fails
  void (*failed)();            // one could not be made or bound; main thread
};
void THREAD_use_contexts(const THREAD_contexts* contexts);  // before the threads that want them

// --- threads of one's own -----------------------------------------------------------------------

// Starts a thread and returns once it runs; its creator joins it. `want_ogl` non-zero asks for an
// OpenGL context that shares with the window's; without one the thread runs all the same. What
// escapes `function` becomes a fatal alert. Main thread.
void THREAD_create(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                   UTL_thread_joiner* join, UTL_thread_identity* identity, int want_ogl);

// Calls `function` as the outermost frame of a thread: an exception that escapes it is sent to the
// main thread as a fatal failure, and the thread ends. Returns the function's result. Any thread
// but the main one.
void* THREAD_guard(UTL_thread_function function, void* argument);

// --- asynchronous calls -------------------------------------------------------------------------

// Queues a call for the general workers. Any thread. The record goes back with THREAD_cleanup.
THREAD_call* THREAD_run_async(UTL_thread_function function, void* argument);

// 1 once the call has finished, else 0 after `timeout` (as in UTL_message_queue_read). Shows fatal
// failures of other threads on the way. Ask no more after a 1. Main thread.
int THREAD_is_done(THREAD_call* call, int timeout);

// Takes the call's result and recycles its record. Fatal unless THREAD_is_done has returned 1.
// Main thread.
void* THREAD_cleanup(THREAD_call* call);

// --- failures -----------------------------------------------------------------------------------

// Posts a copy for the main thread and wakes it. By severity: t_alert is posted; t_exit is posted
// and, off the main thread, ends the calling thread at once (see UTL_thread_exit); a note is
// dropped, as it has no one to read it. Any thread.
void THREAD_send_exception(const exce_class& failure);

// Shows what has been posted: the fatal ones, and with `all` the others after them. Main thread.
void THREAD_check_exception(int all);

// Reads a word other than 0 from `queue`, waiting as long as it takes. The main thread shows fatal
// failures meanwhile, since the thread that should have written may be the one that failed.
UTL_message THREAD_wait_message(UTL_message_queue* queue);

// The word by which the last asynchronous call is reported done; each call takes the next multiple
// of 4, and 4 again after the last one. Written under the lock of the free records. Visible only so
// that the wrap can be tested.
extern uint32_t next_cookie;

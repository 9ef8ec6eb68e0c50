// Threads and recursive locks of the operating system, in plain functions.
//
// A system call that fails is a fatal alert, so none of these returns a code. Any thread may call
// any of them.
#pragma once

#include <pthread.h>

#include "corekit/base/hl_alert_source.h"

using UTL_thread_function = void* (*)(void*);

// Three names for one thread, since some systems tell them apart. Here all are the same handle.
using UTL_thread_handle = pthread_t;    // to act on the thread
using UTL_thread_joiner = pthread_t;    // to wait for its end; once
using UTL_thread_identity = pthread_t;  // to compare

// --- threads ------------------------------------------------------------------------------------

UTL_thread_identity UTL_get_current_thread();
bool UTL_same_thread(UTL_thread_identity a, UTL_thread_identity b);

int UTL_count_processors();        // at least 1
void UTL_sleep(int milliseconds);  // below 1: returns at once

// Starts a thread with the system's default stack and priority; a system that gives none ends the
// program. Its creator must join it. An
// exception that escapes `function` ends the process: see THREAD_create and THREAD_guard.
void UTL_thread_create(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                       UTL_thread_joiner* join, UTL_thread_identity* identity);
// The same for one that can be done without: 0, or the errno of a system that gives none.
int UTL_thread_try(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                   UTL_thread_joiner* join, UTL_thread_identity* identity);

// Waits for the thread's end and returns its result. A failed wait is only logged, and gives null,
// so that a shutdown is never stopped by it.
void* UTL_thread_join(UTL_thread_handle thread, UTL_thread_joiner join);

// Ends the calling thread. The C library does so by unwinding its stack: destructors run, a
// `catch (...)` on the way must throw on, and no noexcept function may be on the way.
[[noreturn]] void UTL_thread_exit(void* result);

// Asks the system to end another thread at its next blocking call. Nothing is put in order.
void UTL_thread_murder(UTL_thread_handle thread);

// --- critical sections --------------------------------------------------------------------------

// Recursive: the thread that holds one may lock it again, and every lock has its unlock. Embedded
// by value in the owner. No code holds two at once.

using UTL_critical_section = pthread_mutex_t;

void UTL_critical_section_create(UTL_critical_section* section);
void UTL_critical_section_destroy(UTL_critical_section* section);
void UTL_critical_section_lock(UTL_critical_section* section);
void UTL_critical_section_unlock(UTL_critical_section* section);

// --- failing system calls -----------------------------------------------------------------------

// Raises the fatal alert `text` with the error number, unless `error` is 0. `file` (static text)
// and `line` name the caller. On the main thread the program ends, on another the thread does. A
// call that fails while this same thread reports a failure ends the process at once, because the
// report itself goes through the failing calls.
void UTL_thread_check(int error, const char* text, alert_source source);

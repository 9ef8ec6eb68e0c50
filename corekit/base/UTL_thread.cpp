// Threads and recursive locks: a thin coat over the POSIX calls that checks each result.
//
// Any thread. Writes no global; keeps one flag for each thread, the guard of the failure report.

#include "corekit/base/UTL_thread.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xer.h"

namespace {

thread_local bool reporting = false;  // this thread is raising a failure of a system call

}  // namespace

void UTL_thread_check(int error, const char* text, alert_source source) {
  if (error == 0) return;
  if (reporting) {
    std::fprintf(stderr, "%s err=%d\n", text, error);
    std::_Exit(1);
  }
  reporting = true;
  MACIBM_fault(source, text, str_format("err=%f", static_cast<double>(error)),
               std::strerror(error));
  reporting = false;
}

// --- threads ------------------------------------------------------------------------------------

UTL_thread_identity UTL_get_current_thread() {
  return pthread_self();
}

bool UTL_same_thread(UTL_thread_identity a, UTL_thread_identity b) {
  return pthread_equal(a, b) != 0;
}

int UTL_count_processors() {
  return PLT_processor_count();
}

void UTL_sleep(int milliseconds) {
  if (milliseconds < 1) return;
  timespec rest = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

int UTL_thread_try(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                   UTL_thread_joiner* join, UTL_thread_identity* identity) {
  const int error = pthread_create(thread, nullptr, function, argument);
  if (error != 0) return error;
  *join = *thread;
  *identity = *thread;
  return 0;
}

void UTL_thread_create(UTL_thread_function function, void* argument, UTL_thread_handle* thread,
                       UTL_thread_joiner* join, UTL_thread_identity* identity) {
  UTL_thread_check(UTL_thread_try(function, argument, thread, join, identity),
                   "\"pthread_create\" OS error", at_thread_create);
}

void* UTL_thread_join(UTL_thread_handle, UTL_thread_joiner join) {
  void* result = nullptr;
  const int error = pthread_join(join, &result);
  if (error != 0) {
    xer << "Warning: wait on thread cleanup failed with error " << error << '\n';
    return nullptr;
  }
  return result;
}

void UTL_thread_exit(void* result) {
  pthread_exit(result);
}

void UTL_thread_murder(UTL_thread_handle thread) {
  pthread_cancel(thread);
}

// --- critical sections --------------------------------------------------------------------------

void UTL_critical_section_create(UTL_critical_section* section) {
  pthread_mutexattr_t kind;
  UTL_thread_check(pthread_mutexattr_init(&kind), "\"::pthread_mutexattr_init\" OS error",
                   at_section_kind_init);
  UTL_thread_check(pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_RECURSIVE),
                   "\"::pthread_mutexattr_settype\" OS error", at_section_kind_set);
  UTL_thread_check(pthread_mutex_init(section, &kind), "\"::pthread_mutex_init\" OS error",
                   at_section_init);
  UTL_thread_check(pthread_mutexattr_destroy(&kind), "\"::pthread_mutexattr_destroy\" OS error",
                   at_section_kind_destroy);
}

void UTL_critical_section_destroy(UTL_critical_section* section) {
  UTL_thread_check(pthread_mutex_destroy(section), "\"::pthread_mutex_destroy\" OS error",
                   at_section_destroy);
}

void UTL_critical_section_lock(UTL_critical_section* section) {
  UTL_thread_check(pthread_mutex_lock(section), "\"pthread_mutex_lock\" OS error", at_section_lock);
}

void UTL_critical_section_unlock(UTL_critical_section* section) {
  UTL_thread_check(pthread_mutex_unlock(section), "\"pthread_mutex_unlock\" OS error",
                   at_section_unlock);
}

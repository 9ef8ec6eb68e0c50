// The clock, the processor count, and the running of other programs.

#include "corekit/Platform/PLT_system.h"

#include <sched.h>
#include <unistd.h>

#include <ctime>

#include "corekit/Platform/PLT_child.h"

uint64_t PLT_microseconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000 + static_cast<uint64_t>(now.tv_nsec) / 1'000;
}

int PLT_processor_count() {
  // What the process may use, which inside a container or under taskset is less than there is.
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) {
    if (const int count = CPU_COUNT(&allowed); count > 0) return count;
  }
  const long online = sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? static_cast<int>(online) : 1;
}

int PLT_run_program(const char* const* argv, int seconds) {
  constexpr useconds_t look_again_us = 5'000;
  PLT_child child;
  if (!PLT_child_start(&child, argv, false)) return -1;
  const uint64_t deadline = PLT_microseconds() + static_cast<uint64_t>(seconds) * 1'000'000;
  int status = -1;
  while (!PLT_child_has_ended(&child, &status)) {
    if (PLT_microseconds() >= deadline) {
      PLT_child_end(&child, 0);
      return -1;
    }
    usleep(look_again_us);
  }
  return status;
}

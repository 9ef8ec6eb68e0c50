// The clock and the processor count.

#include "corekit/Platform/PLT_system.h"

#include <sched.h>
#include <unistd.h>

#include <ctime>

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

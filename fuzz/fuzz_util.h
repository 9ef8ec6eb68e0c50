// What the targets share: an input that is read by its path, and alerts that end an input and not
// the process.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "corekit/base/exce.h"
#include "corekit/base/hl_types.h"

inline void fuzz_check(bool holds) {
  if (!holds) std::abort();
}

// A file in memory; `path` leads to it. One for each target, kept.
struct fuzz_file {
  fuzz_file() : handle(memfd_create("input", MFD_CLOEXEC)) {
    path = "/proc/self/fd/" + std::to_string(handle);
  }
  void put(const void* bytes, size_t size) const {
    fuzz_check(ftruncate(handle, 0) == 0 &&
               pwrite(handle, bytes, size, 0) == static_cast<ssize_t>(size));
  }
  int handle;
  std::string path;
};

// A fatal alert is an answer like any other: it is thrown, and ends the input that it came of.
struct fuzz_fatal {};
inline void fuzz_take_alerts() {
  static constexpr failure_post post = {[] { return true; },
                                        [](const exce_class& failure) {
                                          if (failure.severity == t_exit) throw fuzz_fatal();
                                        }};
  report_across(&post);
}

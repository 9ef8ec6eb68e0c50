// What the tests of the runtime share: a folder of their own, and the log read back.
#pragma once

#include "corekit/base/exce.h"
#include "tests/unit/test_files_scratch.h"

// Sends the log to a file of its own for as long as it lives.
struct log_capture {
  log_capture() { xer_open(folder / "log.txt"); }
  ~log_capture() { xer.close(); }

  std::string text() const {
    xer.flush();
    return content_of(folder / "log.txt");
  }

  scratch_folder folder;
};

// What the tests of the runtime share: a folder of their own, whole files, and the log read back.
#pragma once

#include <string>

#include "corekit/OOPS_cpp/exce.h"
#include "tests/unit/test_files_scratch.h"

// A new folder, removed with its content.
class runtime_folder : public scratch_folder {
 public:
  const std::string path = scratch_folder::path();  // ends in "/"
};

inline void write_file(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string read_file(const std::string& path) {
  return content_of(path);
}

// Sends the log to a file of its own for as long as it lives.
class log_capture {
 public:
  log_capture() { xer_open(folder.path + "log.txt"); }
  ~log_capture() { xer.close(); }

  std::string text() const {
    xer.flush();
    return read_file(folder.path + "log.txt");
  }

  runtime_folder folder;
};

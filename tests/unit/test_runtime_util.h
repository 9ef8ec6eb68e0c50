// What the tests of the runtime share: a folder of their own, whole files, and the log read back.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "corekit/OOPS_cpp/exce.h"

// A new folder, removed with its content.
class runtime_folder {
 public:
  runtime_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "runtime_XXXXXX").string();
    path = std::string(mkdtemp(name.data())) + "/";
  }
  ~runtime_folder() { std::filesystem::remove_all(path); }
  runtime_folder(const runtime_folder&) = delete;
  runtime_folder& operator=(const runtime_folder&) = delete;

  std::string path;  // ends in "/"
};

inline void write_file(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
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

// A folder of a test's own, and helpers that look at the disk without the services under test.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "corekit/files/io_utils.h"

class scratch_folder {
 public:
  scratch_folder() {
    path_ = testing::TempDir() + "skyvane-files-XXXXXX";
    if (!mkdtemp(path_.data())) std::abort();
    path_ += "/";
  }
  ~scratch_folder() {
    const std::string command = "rm -rf --one-file-system '" + path_ + "'";
    if (std::system(command.c_str()) != 0) std::abort();
  }
  scratch_folder(const scratch_folder&) = delete;
  scratch_folder& operator=(const scratch_folder&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + name; }

  // These make the folders above as needed.
  std::string file(const std::string& name, const std::string& content = "x") const {
    std::filesystem::create_directories(std::filesystem::path(path_ + name).parent_path());
    std::ofstream(path_ + name, std::ios::binary) << content;
    return path_ + name;
  }
  std::string folder(const std::string& name) const {
    std::filesystem::create_directories(path_ + name);
    return path_ + name + "/";
  }
  std::string link(const std::string& name, const std::string& target) const {
    EXPECT_EQ(0, symlink(target.c_str(), (path_ + name).c_str()));
    return path_ + name;
  }

 private:
  std::string path_;
};

inline std::string content_of(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline void overwrite(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline bool is_there(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0;
}

inline unsigned mode_of(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

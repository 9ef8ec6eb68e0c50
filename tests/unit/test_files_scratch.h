// A folder of a test's own, and helpers that look at the disk without the services under test.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "corekit/base/hl_string.h"
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
  std::ostringstream out;
  out << std::ifstream(path, std::ios::binary).rdbuf();
  return std::move(out).str();
}

inline void overwrite(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

inline bool is_there(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0;
}

// While it lives no file of this process grows beyond so many bytes: a full disk of its own.
struct small_disk {
  explicit small_disk(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {bytes, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~small_disk() { setrlimit(RLIMIT_FSIZE, &before); }
  rlimit before;
};

// While it lives the process is an ordinary user, if it was the system's own, who may do all.
struct ordinary_user {
  ordinary_user() { EXPECT_EQ(seteuid(user == 0 ? 65534 : user), 0); }
  ~ordinary_user() { EXPECT_EQ(seteuid(user), 0); }
  const uid_t user = geteuid();
};

// Whether a process ends within some seconds. An orphan may wait for its new parent to take note.
inline bool ends_soon(pid_t process) {
  for (int i = 0; i < 2000; ++i, usleep(5'000)) {
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string number, name, state;
    if (!(stat >> number >> name >> state) || state == "Z") return true;
  }
  return false;
}

inline unsigned mode_of(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

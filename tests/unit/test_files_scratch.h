// A folder of a test's own, and helpers that look at the disk without the services under test.
#pragma once

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

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

  std::string file(const std::string& name, const std::string& content = "x") const {
    std::ofstream(path_ + name, std::ios::binary) << content;
    return path_ + name;
  }
  std::string folder(const std::string& name) const {
    mkdir((path_ + name).c_str(), 0755);
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

inline bool is_there(const std::string& path) {
  struct stat info;
  return lstat(path.c_str(), &info) == 0;
}

inline unsigned mode_of(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

// Says which rows this machine does not allow, so that a run without them is not taken for a full
// one.
inline void left_out(const char* why) {
  std::printf("rows left out: %s\n", why);
}

// A small volume of its own, where the machine lets the test mount one (mostly: as root).
class small_volume {
 public:
  small_volume(const std::string& point, const char* options) : point_(point) {
    mounted_ = mount("none", point.c_str(), "tmpfs", 0, options) == 0;
    if (!mounted_) left_out("volumes cannot be mounted by this user");
  }
  ~small_volume() {
    if (mounted_) umount2(point_.c_str(), MNT_DETACH);
  }
  small_volume(const small_volume&) = delete;
  small_volume& operator=(const small_volume&) = delete;

  bool mounted() const { return mounted_; }
  bool make_read_only() {
    return mount("none", point_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "") == 0;
  }

 private:
  std::string point_;
  bool mounted_ = false;
};

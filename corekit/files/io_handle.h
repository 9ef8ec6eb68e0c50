// A file descriptor that closes itself, and the two loops in which the program reads and writes.
#pragma once

#include <cstddef>
#include <utility>

// Owns a descriptor, or none (-1). Any thread, one at a time.
class io_handle {
 public:
  io_handle() = default;
  explicit io_handle(int descriptor) : fd_(descriptor) {}
  io_handle(io_handle&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  io_handle& operator=(io_handle&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~io_handle() { close(); }

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }  // to another owner

  // 0 or errno: some volumes tell of a full disk only here. The handle is empty afterwards.
  int close();

 private:
  int fd_ = -1;
};

// Reads up to `wanted` bytes, going on after signals and short reads. `got` receives what arrived:
// less than `wanted` at the end of the file, or beside a failure. 0 or errno.
int io_read_all(int fd, void* into, size_t wanted, size_t& got);

// Writes all of it. 0 or errno; after a failure some part has been written.
int io_write_all(int fd, const void* from, size_t size);

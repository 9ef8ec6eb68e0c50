// Editing of Windows programs, for the master builder.
//
//   0x00  "MZ"          0x3C  offset of the "PE" header, 4 bytes
//   PE+0  "PE" 0 0      PE+22 characteristics, 2 bytes; all numbers little-endian

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_utils_exe";

constexpr size_t dos_header_bytes = 64;
constexpr size_t pe_offset_at = 0x3C;
constexpr size_t pe_header_bytes = 24;
constexpr size_t characteristics_at = 22;
constexpr unsigned char large_address_aware = 0x20;  // in the low byte of the characteristics

bool read_at(int file, uint64_t at, unsigned char* into, size_t bytes) {
  return pread(file, into, bytes, static_cast<off_t>(at)) == static_cast<ssize_t>(bytes);
}

// Finds the byte with the flag: where it is, and what it says. 0, 8 or errno.
int find_flags(int file, off_t& at, unsigned char& flags) {
  struct stat info;
  if (fstat(file, &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return ENOEXEC;
  const uint64_t size = static_cast<uint64_t>(info.st_size);

  unsigned char dos[dos_header_bytes];
  if (size < sizeof dos || !read_at(file, 0, dos, sizeof dos)) return ENOEXEC;
  if (std::memcmp(dos, "MZ", 2) != 0) return ENOEXEC;

  const unsigned char* const offset = dos + pe_offset_at;
  const uint64_t pe_at = offset[0] | offset[1] << 8 | offset[2] << 16 | uint64_t{offset[3]} << 24;
  unsigned char pe[pe_header_bytes];
  // A header that reaches back into the first one is no compiler's work.
  if (pe_at < sizeof dos || size < sizeof pe || pe_at > size - sizeof pe) return ENOEXEC;
  if (!read_at(file, pe_at, pe, sizeof pe)) return ENOEXEC;
  if (std::memcmp(pe, "PE\0\0", 4) != 0) return ENOEXEC;
  at = static_cast<off_t>(pe_at + characteristics_at);
  flags = pe[characteristics_at];
  return 0;
}

// The same of the program at `path`.
int look(const std::string& path, off_t& at, unsigned char& flags) {
  const io_handle file(open((app_path + path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  return file ? find_flags(file.get(), at, flags) : errno;
}

int set_flag(const std::string& path, off_t at, unsigned char flags) {
  io_handle file(open((app_path + path).c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file) return errno;
  flags |= large_address_aware;
  const ssize_t written = pwrite(file.get(), &flags, 1, at);
  const int failed = written == 1 ? 0 : written < 0 ? errno : EIO;
  const int close_failed = file.close();
  return failed ? failed : close_failed;
}
}  // namespace

int make_file_large_address_aware(const std::string& path) {
  off_t at = 0;
  unsigned char flags = 0;
  int failed = look(path, at, flags);
  if (!failed && !(flags & large_address_aware)) failed = set_flag(path, at, flags);
  return io_fail(failed, this_file, 65);
}

int check_large_address_aware(const std::string& path) {
  off_t at = 0;
  unsigned char flags = 0;
  int failed = look(path, at, flags);
  if (!failed && !(flags & large_address_aware) &&
      faccessat(AT_FDCWD, (app_path + path).c_str(), W_OK, AT_EACCESS) != 0) {
    failed = errno;
  }
  return io_fail(failed, this_file, 77);
}

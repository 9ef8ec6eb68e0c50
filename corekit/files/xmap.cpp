// The reader of data files. An object belongs to its thread; the only global written is the count
// of open files.

#include "corekit/files/xmap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"

std::atomic<int32_t> mapped_files_open = 0;

namespace {

// Up to here a file is read rather than mapped: reading is as fast, a failing disc gives a code
// where a mapping gives a bus error, and nobody can change the bytes between check and use.
constexpr size_t read_limit = 64u << 20;

constexpr unsigned char empty_file[1] = {};  // stands for the content of a file of 0 bytes

constexpr bool is_blank(unsigned char c) {
  return c == ' ' || c == '\t';
}
constexpr bool is_line_end(unsigned char c) {
  return c == '\0' || c == '\r' || c == '\n';
}

// Opens a plain file; 0 on failure. Not blocking, so that a pipe in its place cannot hold us up.
int open_plain(const std::string& path, size_t& bytes) {
  int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (file == 0) {  // our callers take 0 for no file; it is free when standard input is closed
    file = fcntl(0, F_DUPFD_CLOEXEC, 3);
    close(0);
  }
  if (file < 0) return 0;
  struct stat info;
  if (fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
    bytes = static_cast<size_t>(info.st_size);
    return file;
  }
  close(file);
  return 0;
}

int32_t swapped(int32_t value) {
  return static_cast<int32_t>(__builtin_bswap32(static_cast<uint32_t>(value)));
}
}  // namespace

xmap_class::xmap_class(const std::string& path) {
  if (!path.empty()) retry(path);
}

xmap_class::~xmap_class() {
  drop();
}

void xmap_class::drop() {
  std::free(read_copy);
  read_copy = nullptr;
  if (mapped_bytes != 0) munmap(const_cast<unsigned char*>(file_start), mapped_bytes);
  mapped_bytes = 0;
  file_start = cursor = file_end = nullptr;
  if (file_handle != 0) {
    close(file_handle);
    file_handle = 0;
    mapped_files_open.fetch_sub(1, std::memory_order_relaxed);
  }
}

bool xmap_class::open(const std::string& path, uint64_t& bytes) {
  if (!app_path.empty() && str_holds(path, app_path)) {
    MACIBM_fault(
        at_map_absolute_path, "retry: We are getting a file string that is not Sky-Root relative!",
        "This is illegal! All paths must be Sky-Root relative!", "The path in question is:", path);
  }
  // Refused even where the system allows them: a path that holds one was put together wrongly for
  // some other system, and would be found on the makers' machines only.
  if (path.find_first_of("\\:") != std::string::npos) {
    MACIBM_fault(at_map_bad_dirchar, "OOPS!", "I got a bad dirchar! I only want '/'!",
                 "The path in question is:", path);
  }
  std::string full = app_path + path;
  path_checked(full);

  drop();
  size_t size = 0;
  int file = open_plain(full, size);
  if (file == 0 && g_case_sensitive) {
    findPath(full);
    file = open_plain(full, size);
  }
  if (file == 0) return false;
  bytes = size;
  file_handle = file;
  mapped_files_open.fetch_add(1, std::memory_order_relaxed);
  return true;
}

void xmap_class::look_at(const char* begin, const char* end) {
  file_start = cursor = reinterpret_cast<const unsigned char*>(begin);
  file_end = reinterpret_cast<const unsigned char*>(end);
}

const unsigned char* xmap_class::retry(const std::string& path) {
  uint64_t bytes = 0;
  if (!open(path, bytes)) return nullptr;
  const int file = file_handle;
  if (bytes == 0) {
    file_start = cursor = file_end = empty_file;
    return file_start;
  }
  int failed = 0;
  if (bytes <= read_limit) {
    read_copy = static_cast<unsigned char*>(std::malloc(bytes));
    // A file cut short meanwhile gives fewer.
    size_t got = 0;
    failed = read_copy ? io_read_all(file, read_copy, bytes, got) : ENOMEM;
    if (!failed) file_start = read_copy;
    bytes = got;
  } else {
    void* const view = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, file, 0);
    if (view == MAP_FAILED) {
      failed = errno;
    } else {
      file_start = static_cast<const unsigned char*>(view);
      mapped_bytes = bytes;
    }
  }
  if (failed) {
    const std::string full = app_path + path;
    xer << "Mem file error.  Err=" << failed << ", file=" << full << "\n";
    drop();
    if (failed == ENOMEM) {
      MACIBM_fault(at_map_read, "Xmapped out of memory", "c_path=", full,
                   str_format("errno=%f", static_cast<double>(failed)));
    }
    return nullptr;
  }
  cursor = file_start;
  file_end = file_start + bytes;
  return file_start;
}

int xmap_class::check_file(int type, const int* versions, const char* keyword, std::string* note) {
  if (type != ouf_binary && type != ouf_text) {
    MACIBM_fault(at_map_check_type, "Bad check_file type!");
    return 0;
  }
  if (!file_start || file_start == file_end || cursor == file_end) return 0;

  int32_t version = 0;
  const unsigned char mark = *cursor++;
  if (type == ouf_binary) {
    if (mark != 'a' && mark != 'i') return 0;
    swap = mark == 'a';
    if (file_end - cursor >= static_cast<ptrdiff_t>(sizeof version)) {
      std::memcpy(&version, cursor, sizeof version);
      cursor += sizeof version;
      if (swap) version = swapped(version);
    }
  } else {
    TXT_str_scan_eoln(nullptr);
    if (mark != 'A' && mark != 'I') return 0;
    std::string number;
    TXT_str_scan_space(&number);
    version = str_to_int(number);
    TXT_str_scan_eoln(note);
  }

  while (*versions != 0 && *versions != version)
    ++versions;
  if (*versions == 0) return 0;
  if (!keyword) return version;

  const unsigned char* const before_keyword = cursor;
  skip_blanks();
  const size_t length = std::strlen(keyword);
  const size_t left = static_cast<size_t>(file_end - cursor);
  const bool matches = left >= length && std::memcmp(cursor, keyword, length) == 0 &&
                       (left == length || is_blank(cursor[length]) || is_line_end(cursor[length]));
  if (!matches) {
    cursor = before_keyword;
    return 0;
  }
  cursor += length;
  skip_blanks();
  return version;
}

header_kind xmap_class::check_maker(const int* versions, const char* keyword) {
  const unsigned char* const start = cursor;
  if (check_file(ouf_text, versions, keyword, nullptr) != 0) return header_ours;
  if (start == file_end) return header_foreign;
  std::string number;
  cursor = start;
  TXT_str_scan_eoln(nullptr);
  TXT_str_scan_space(&number);
  const int its_version[] = {str_to_int(number), 0};
  cursor = start;
  return check_file(ouf_text, its_version, keyword, nullptr) != 0 ? header_other_version
                                                                  : header_foreign;
}

int xmap_class::io_file_open(int mode, const std::string& path, const int* versions, int type) {
  io_mode = mode;
  if (mode == 1) return ouf_open(path, type, versions[0], "no-copyright-string");
  return retry(path) && check_file(type, versions, nullptr, nullptr);
}

int xmap_class::io_file_close() {
  return io_mode == 1 ? ouf_close() : 0;
}

void xmap_class::read_n_rev(void* target, long bytes) {
  if (bytes < 0 || bytes > file_end - cursor) {
    MACIBM_fault(at_map_swap_size, "Invalid read_n_rev read!");
    return;
  }
  if (bytes == 0) return;
  std::memcpy(target, cursor, static_cast<size_t>(bytes));
  cursor += bytes;
  if (!swap) return;
  unsigned char* const data = static_cast<unsigned char*>(target);
  for (long at = 0; at + 4 <= bytes; at += 4)
    std::reverse(data + at, data + at + 4);
}

void xmap_class::skip_blanks() {
  while (cursor != file_end && is_blank(*cursor))
    ++cursor;
}

void xmap_class::TXT_str_scan_space(std::string* out) {
  skip_blanks();
  const unsigned char* const first = cursor;
  while (cursor != file_end && !is_blank(*cursor) && !is_line_end(*cursor))
    ++cursor;
  if (out) out->assign(first, cursor);
}

void xmap_class::TXT_str_scan_eoln(std::string* out) {
  skip_blanks();
  const unsigned char* const first = cursor;
  while (cursor != file_end && !is_line_end(*cursor))
    ++cursor;
  if (out) out->assign(first, cursor);
  while (cursor != file_end && (is_line_end(*cursor) || is_blank(*cursor)))
    ++cursor;
}

void xmap_class::TXT_xer_line() const {
  long number = 1;
  const unsigned char* first = file_start;
  for (const unsigned char* at = file_start; at != cursor; ++at) {
    if (!is_line_end(*at)) continue;
    if (*at == '\n' && at != file_start && at[-1] == '\r') {
      first = at + 1;  // the second half of a CRLF
      continue;
    }
    ++number;
    first = at + 1;
  }
  const unsigned char* last = cursor;
  while (last != file_end && !is_line_end(*last))
    ++last;
  xer << "Line " << number << ": ";
  if (first) xer.write(reinterpret_cast<const char*>(first), last - first);
  xer << "\n";
}

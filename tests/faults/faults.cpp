// Makes the Nth call of a kind fail, in a program that knows nothing of it.
//
// Loaded ahead of the C library (LD_PRELOAD), it has the names of the calls that a program makes of
// it, counts those made from main on, and lets all through but the one that it is told to spoil:
//
//   FAULT=KIND:N:HOW    the Nth call of KIND, counted from 1; "N+" is that one and all later ones
//   FAULT=KIND:N:HOW:ON the same of those whose path or address ends in ON
//   HOW                 the name of an errno below; "short" moves half of the bytes; "end" none
//   FAULT_NOTE=FILE     what was spoilt, a line each: KIND N HOW PATH-OR-ADDRESS
//   FAULT_COUNTS=FILE   at the end of the program, a line each: KIND COUNT
//   FAULT_DISPLAY=1     the last that a display answers, while it is being closed, is an error
//
// Passed through uncounted: standard input and output, and what is neither file, folder nor socket.
// Memory is not asked for here, since the programs bring an allocator of their own;
// faults_memory.cpp is linked into those that are to run out of it. Any thread; writes the
// counters.

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <netinet/in.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "tests/faults/faults.h"

namespace {

constexpr const char* kind_names[] = {"open",  "read",   "write",    "close",  "rename",  "unlink",
                                      "mkdir", "mmap",   "truncate", "chmod",  "symlink", "link",
                                      "lock",  "stat",   "readdir",  "socket", "connect", "send",
                                      "recv",  "malloc", "thread"};
constexpr size_t kind_count = std::size(kind_names);
static_assert(kind_count == fault_kinds);

constexpr struct {
  const char* name;
  int how;
} ways[] = {
#define WAY(name) \
  { #name, name }
    WAY(EACCES), WAY(EAGAIN), WAY(ECONNREFUSED), WAY(EINTR),  WAY(ECONNRESET),
    WAY(EIO),    WAY(EMFILE), WAY(ENOENT),       WAY(ENOLCK), WAY(ENOMEM),
    WAY(ENOSPC), WAY(EPERM),  {"short", -1},     {"end", -2},
};
constexpr int is_short = -1, is_end = -2;

// Written before main begins; `counts` by all threads from then on.
struct plan_record {
  bool armed = false;
  int kind = -1;
  unsigned long first = 0, last = 0;
  int how = 0;
  const char* how_name = "";
  char on[256] = "";
  std::atomic<unsigned long> met = 0;  // calls of the kind, on that
  std::atomic<unsigned long> counts[kind_count];
} plan;

void read_plan(const char* text) {
  char kind[32], how[32], more = 0;
  unsigned long number = 0;
  if (std::sscanf(text, "%31[a-z]:%lu:%31[A-Za-z]:%255[^\n]", kind, &number, how, plan.on) < 3 &&
      std::sscanf(text, "%31[a-z]:%lu%c:%31[A-Za-z]:%255[^\n]", kind, &number, &more, how,
                  plan.on) < 4) {
    std::fprintf(stderr, "FAULT: not KIND:N:HOW: %s\n", text);
    std::_Exit(125);
  }
  for (size_t i = 0; i < kind_count; ++i)
    if (std::strcmp(kind, kind_names[i]) == 0) plan.kind = static_cast<int>(i);
  for (const auto& way : ways) {
    if (std::strcmp(how, way.name) != 0) continue;
    plan.how = way.how;
    plan.how_name = way.name;
  }
  if (plan.kind < 0 || plan.how == 0) {
    std::fprintf(stderr, "FAULT: no such kind or way: %s\n", text);
    std::_Exit(125);
  }
  plan.first = number;
  plan.last = more == '+' ? ~0ul : number;
}

// By the bare calls of the system, so that nothing of this is counted.
void note(fault_kind kind, unsigned long number, const char* what) {
  const char* const file = std::getenv("FAULT_NOTE");
  if (!file) return;
  char line[4400];
  const int size = std::snprintf(line, sizeof line, "%s %lu %s %s\n", kind_names[kind], number,
                                 plan.how_name, what);
  const long handle =
      syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (handle < 0) return;
  syscall(SYS_write, handle, line, std::min<size_t>(size, sizeof line - 1));
  syscall(SYS_close, handle);
}

// Whether this call is the one. `what` is called for the text of the note.
template <class Name>
bool strikes(fault_kind kind, Name what) {
  if (!plan.armed) return false;
  ++plan.counts[kind];
  if (plan.kind != kind) return false;
  const int before = errno;
  char text[4200] = "";
  if (*plan.on) what(text, sizeof text);
  errno = before;
  if (!std::string_view(text).ends_with(plan.on)) return false;
  const unsigned long number = ++plan.met;
  if (number < plan.first || number > plan.last) return false;
  what(text, sizeof text);
  note(kind, number, text);
  errno = plan.how > 0 ? plan.how : before;
  return true;
}

// --- what a note says ----------------------------------------------------------------------------

size_t path_of(int handle, char* text, size_t room) {
  char way[40];
  std::snprintf(way, sizeof way, "/proc/self/fd/%d", handle);
  const long size = syscall(SYS_readlinkat, AT_FDCWD, way, text, room - 1);
  text[std::max(size, 0l)] = 0;
  return static_cast<size_t>(std::max(size, 0l));
}

// A socket's other end.
void address_of(const sockaddr* address, char* text, size_t room) {
  if (address->sa_family != AF_INET) return;
  const auto* const ip = reinterpret_cast<const sockaddr_in*>(address);
  inet_ntop(AF_INET, &ip->sin_addr, text, static_cast<socklen_t>(room));
}

auto by_handle(int handle) {
  return [handle](char* text, size_t room) {
    if (path_of(handle, text, room) == 0 || std::strncmp(text, "socket:", 7) != 0) return;
    sockaddr_storage other = {};
    socklen_t size = sizeof other;
    if (syscall(SYS_getpeername, handle, &other, &size) == 0)
      address_of(reinterpret_cast<sockaddr*>(&other), text, room);
  };
}

auto by_path(int folder, const char* path) {
  return [folder, path](char* text, size_t room) {
    size_t used = 0;
    if (folder >= 0 && path[0] != '/') {
      used = path_of(folder, text, room);
      if (used + 1 < room) text[used++] = '/';
    }
    std::snprintf(text + used, room - used, "%s", path);
  };
}

auto by_word(const char* word) {
  return [word](char* text, size_t room) { std::snprintf(text, room, "%s", word); };
}

enum handle_sort { of_no_interest, of_file, of_socket };

handle_sort sort_of(int handle) {
  struct stat info;
  if (!plan.armed || handle <= STDERR_FILENO) return of_no_interest;
  if (syscall(SYS_newfstatat, handle, "", &info, AT_EMPTY_PATH) != 0) return of_no_interest;
  if (S_ISSOCK(info.st_mode)) return of_socket;
  return S_ISREG(info.st_mode) || S_ISDIR(info.st_mode) ? of_file : of_no_interest;
}

// --- the calls -----------------------------------------------------------------------------------

// The C library's, or the sanitizer's that stands before it.
#define REAL(name) \
  static const auto real = reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))

// A call that moves bytes: spoilt, cut short, or as it is. `all` bytes are wanted, `move` moves
// some.
template <class Move>
ssize_t moved(fault_kind kind, int handle, size_t all, Move move) {
  if (!strikes(kind, by_handle(handle))) return move(all);
  if (plan.how == is_end) return 0;
  return plan.how == is_short && all > 0 ? move((all + 1) / 2) : plan.how == is_short ? 0 : -1;
}

fault_kind reading(handle_sort sort) {
  return sort == of_socket ? fault_recv : fault_read;
}
fault_kind writing(handle_sort sort) {
  return sort == of_socket ? fault_send : fault_write;
}

mode_t mode_of(int flags, va_list more) {
  return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(more, mode_t) : 0;
}

void write_counts() {
  const char* const file = std::getenv("FAULT_COUNTS");
  if (!file || !plan.armed) return;
  plan.armed = false;
  if (FILE* const out = std::fopen(file, "w")) {
    for (size_t i = 0; i < kind_count; ++i)
      std::fprintf(out, "%s %lu\n", kind_names[i], plan.counts[i].load());
    std::fclose(out);
  }
}

int (*program_main)(int, char**, char**);

int counted_main(int argc, char** argv, char** environment) {
  if (const char* const text = std::getenv("FAULT")) read_plan(text);
  unsetenv("LD_PRELOAD");  // a program that this one starts is another matter
  std::atexit(write_counts);
  plan.armed = true;
  return program_main(argc, argv, environment);
}

}  // namespace

int faults_memory(size_t bytes) {
  return strikes(fault_malloc, [bytes](char* text, size_t room) {
    std::snprintf(text, room, "%zu bytes", bytes);
  });
}

extern "C" {

int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*rtld_fini)(), void* stack_end) {
  const auto real =
      reinterpret_cast<int (*)(int (*)(int, char**, char**), int, char**, void (*)(), void (*)(),
                               void (*)(), void*)>(dlsym(RTLD_NEXT, "__libc_start_main"));
  program_main = main;
  return real(counted_main, argc, argv, init, fini, rtld_fini, stack_end);
}

#define OPENS(name, parameters, folder, ...)                   \
  int name(parameters const char* path, int flags, ...) {      \
    REAL(name);                                                \
    va_list more;                                              \
    va_start(more, flags);                                     \
    const mode_t mode = mode_of(flags, more);                  \
    va_end(more);                                              \
    if (strikes(fault_open, by_path(folder, path))) return -1; \
    return real(__VA_ARGS__, flags, mode);                     \
  }
#define NO_FOLDER
#define A_FOLDER int folder,
OPENS(open, NO_FOLDER, -1, path)
OPENS(open64, NO_FOLDER, -1, path)
OPENS(openat, A_FOLDER, folder, folder, path)
OPENS(openat64, A_FOLDER, folder, folder, path)

// A call that gives NOTHING when it fails.
#define GIVES(kind, type, nothing, name, parameters, arguments, what) \
  type name parameters {                                              \
    REAL(name);                                                       \
    return strikes(kind, what) ? nothing : real arguments;            \
  }
GIVES(fault_open, FILE*, nullptr, fopen, (const char* path, const char* mode), (path, mode),
      by_path(-1, path))
GIVES(fault_open, FILE*, nullptr, fopen64, (const char* path, const char* mode), (path, mode),
      by_path(-1, path))
GIVES(fault_open, DIR*, nullptr, opendir, (const char* path), (path), by_path(-1, path))
GIVES(fault_mkdir, char*, nullptr, mkdtemp, (char* path), (path), by_path(-1, path))
GIVES(fault_readdir, dirent64*, nullptr, readdir64, (DIR * dir), (dir), by_handle(dirfd(dir)))

long syscall(long number, ...) noexcept {
  REAL(syscall);
  va_list more;
  va_start(more, number);
  long a[6];
  for (long& argument : a)
    argument = va_arg(more, long);
  va_end(more);
  if (number == SYS_openat2 && plan.armed &&
      strikes(fault_open, by_path(static_cast<int>(a[0]), reinterpret_cast<const char*>(a[1])))) {
    return -1;
  }
  return real(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

#define MOVES(kind, name, parameters, ...)                                                   \
  ssize_t name parameters {                                                                  \
    REAL(name);                                                                              \
    const handle_sort sort = sort_of(handle);                                                \
    if (sort == of_no_interest) return real(handle, bytes, size __VA_OPT__(, ) __VA_ARGS__); \
    return moved(kind, handle, size, [&](size_t some) {                                      \
      return real(handle, bytes, some __VA_OPT__(, ) __VA_ARGS__);                           \
    });                                                                                      \
  }
MOVES(reading(sort), read, (int handle, void* bytes, size_t size))
MOVES(writing(sort), write, (int handle, const void* bytes, size_t size))
MOVES(fault_read, pread64, (int handle, void* bytes, size_t size, off64_t at), at)
MOVES(fault_write, pwrite64, (int handle, const void* bytes, size_t size, off64_t at), at)
MOVES(fault_recv, recv, (int handle, void* bytes, size_t size, int flags), flags)
MOVES(fault_send, send, (int handle, const void* bytes, size_t size, int flags), flags)

ssize_t preadv64v2(int handle, const iovec* pieces, int count, off64_t at, int flags) {
  REAL(preadv64v2);
  return moved(fault_read, handle, pieces->iov_len, [&](size_t some) {
    const iovec piece = {pieces->iov_base, some};
    return some == pieces->iov_len ? real(handle, pieces, count, at, flags)
                                   : real(handle, &piece, 1, at, flags);
  });
}

ssize_t writev(int handle, const iovec* pieces, int count) {
  REAL(writev);
  if (sort_of(handle) == of_no_interest) return real(handle, pieces, count);
  return moved(fault_write, handle, pieces->iov_len, [&](size_t some) {
    const iovec piece = {pieces->iov_base, some};
    return some == pieces->iov_len ? real(handle, pieces, count) : real(handle, &piece, 1);
  });
}

int connect(int handle, const sockaddr* address, socklen_t size) {
  REAL(connect);
  const auto what = [&](char* text, size_t room) { address_of(address, text, room); };
  return strikes(fault_connect, what) ? -1 : real(handle, address, size);
}

#define FAILS(kind, name, parameters, arguments, what) \
  GIVES(kind, int, -1, name, parameters, arguments, what)
FAILS(fault_socket, socket, (int family, int type, int protocol) noexcept, (family, type, protocol),
      by_word(""))
FAILS(fault_rename, rename, (const char* from, const char* to) noexcept, (from, to),
      by_path(-1, to))
FAILS(fault_rename, renameat, (int at, const char* from, int at_to, const char* to) noexcept,
      (at, from, at_to, to), by_path(at_to, to))
FAILS(fault_rename, renameat2,
      (int at, const char* from, int at_to, const char* to, unsigned flags) noexcept,
      (at, from, at_to, to, flags), by_path(at_to, to))
#define FAILS_AT_PATH(kind, name) \
  FAILS(kind, name, (const char* path) noexcept, (path), by_path(-1, path))
FAILS_AT_PATH(fault_unlink, unlink)
FAILS_AT_PATH(fault_unlink, remove)
FAILS_AT_PATH(fault_unlink, rmdir)
FAILS(fault_unlink, unlinkat, (int at, const char* path, int flags) noexcept, (at, path, flags),
      by_path(at, path))
FAILS(fault_mkdir, mkdir, (const char* path, mode_t mode) noexcept, (path, mode), by_path(-1, path))
FAILS(fault_mkdir, mkdirat, (int at, const char* path, mode_t mode) noexcept, (at, path, mode),
      by_path(at, path))
FAILS(fault_truncate, ftruncate64, (int handle, off64_t size) noexcept, (handle, size),
      by_handle(handle))
FAILS(fault_chmod, fchmod, (int handle, mode_t mode) noexcept, (handle, mode), by_handle(handle))
FAILS(fault_chmod, chmod, (const char* path, mode_t mode) noexcept, (path, mode), by_path(-1, path))
FAILS(fault_symlink, symlink, (const char* target, const char* path) noexcept, (target, path),
      by_path(-1, path))
FAILS(fault_symlink, symlinkat, (const char* target, int at, const char* path) noexcept,
      (target, at, path), by_path(at, path))
FAILS(fault_link, link, (const char* from, const char* to) noexcept, (from, to), by_path(-1, to))
FAILS(fault_link, linkat, (int at, const char* from, int at_to, const char* to, int flags) noexcept,
      (at, from, at_to, to, flags), by_path(at_to, to))
FAILS(fault_lock, flock, (int handle, int operation) noexcept, (handle, operation),
      by_handle(handle))
FAILS(fault_stat, fstat64, (int handle, struct stat64* info) noexcept, (handle, info),
      by_handle(handle))
FAILS(fault_stat, stat64, (const char* path, struct stat64* info) noexcept, (path, info),
      by_path(-1, path))
FAILS(fault_stat, lstat64, (const char* path, struct stat64* info) noexcept, (path, info),
      by_path(-1, path))
FAILS(fault_stat, fstatat64, (int at, const char* path, struct stat64* info, int flags) noexcept,
      (at, path, info, flags), by_path(at, path))
FAILS(fault_stat, statvfs64, (const char* path, struct statvfs64* info) noexcept, (path, info),
      by_path(-1, path))

int close(int handle) {
  REAL(close);
  if (sort_of(handle) != of_file || !strikes(fault_close, by_handle(handle))) return real(handle);
  const int reason = errno;
  real(handle);  // closed it is all the same
  errno = reason;
  return -1;
}

void* mmap(void* at, size_t size, int protection, int flags, int handle, off_t from) noexcept {
  REAL(mmap);
  if (handle >= 0 ? strikes(fault_mmap, by_handle(handle)) : strikes(fault_mmap, by_word(""))) {
    return MAP_FAILED;
  }
  return real(at, size, protection, flags, handle, from);
}

void* mmap64(void* at, size_t size, int protection, int flags, int handle, off64_t from) noexcept {
  return mmap(at, size, protection, flags, handle, from);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
                   void* with) noexcept {
  REAL(pthread_create);
  return strikes(fault_thread, by_word("")) ? plan.how : real(thread, attributes, work, with);
}

// As by the headers of X11, which nothing else here needs.
int XMapWindow(void* display, unsigned long window);
int XCloseDisplay(void* display) {
  if (std::getenv("FAULT_DISPLAY")) {
    REAL(XMapWindow);
    real(display, 1);  // no window has that number
  }
  REAL(XCloseDisplay);
  return real(display);
}

}  // extern "C"

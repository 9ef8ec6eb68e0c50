// The stack crawl: the return addresses, and the name of the function at each.
//
// On the failing thread, without locks. Writes nothing but the file.

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "corekit/base/UTL_debug.h"
// Comes with g++. It reads the program's own symbol table, and so finds static functions too.
#if __has_include(<backtrace.h>)
#include <backtrace.h>
#define HAVE_BACKTRACE 1
#else
#include <execinfo.h>
#endif

namespace {

constexpr int frame_limit = 100;
constexpr char crawl_name[] = "stack_crawl.txt";

struct symbol {
  char name[400] = {};  // empty: not known
  uintptr_t start = 0;
};

void take_name(symbol& found, const char* name, uintptr_t start) {
  int status = 0;
  char* const plain = abi::__cxa_demangle(name, nullptr, nullptr, &status);
  std::snprintf(found.name, sizeof found.name, "%s", plain ? plain : name);
  std::free(plain);
  found.start = start;
}

void print_frame(std::FILE* file, int number, uintptr_t address) {
  std::fprintf(file, " % 2d) ", number);
  print_symbol(file, reinterpret_cast<const void*>(address));
  std::fputc('\n', file);
}

struct walk {
  std::FILE* file;
  int count;
};

#ifdef HAVE_BACKTRACE

void ignore_error(void*, const char*, int) {}

backtrace_state* reader() {
  static backtrace_state* const state = backtrace_create_state(nullptr, 1, ignore_error, nullptr);
  return state;
}

bool find_symbol(uintptr_t address, symbol& found) {
  const auto take = [](void* context, uintptr_t, const char* name, uintptr_t start, uintptr_t) {
    if (name) take_name(*static_cast<symbol*>(context), name, start);
  };
  if (reader()) backtrace_syminfo(reader(), address, take, ignore_error, &found);
  return found.name[0] != '\0';
}

// Part of UTL_dump_stack in every build, so that the frames to leave out can be counted.
[[gnu::always_inline]] inline void walk_here(walk& at) {
  const auto step = [](void* context, uintptr_t address) {
    walk& to = *static_cast<walk*>(context);
    if (address == 0 || address == UINTPTR_MAX) return 1;  // beyond the outermost frame
    print_frame(to.file, to.count, address);
    return ++to.count == frame_limit ? 1 : 0;
  };
  // Leaves out UTL_dump_stack.
  if (reader()) backtrace_simple(reader(), 1, step, ignore_error, &at);
}

#else

bool find_symbol(uintptr_t address, symbol& found) {
  Dl_info info;
  if (!dladdr(reinterpret_cast<const void*>(address), &info) || !info.dli_sname) return false;
  take_name(found, info.dli_sname, reinterpret_cast<uintptr_t>(info.dli_saddr));
  return true;
}

[[gnu::always_inline]] inline void walk_here(walk& at) {
  constexpr int own = 1;
  void* addresses[frame_limit + own];
  const int count = backtrace(addresses, frame_limit + own);
  for (int i = own; i < count; ++i)
    print_frame(at.file, at.count++, reinterpret_cast<uintptr_t>(addresses[i]));
}

#endif

}  // namespace

void print_symbol(std::FILE* file, const void* address) {
  const uintptr_t at = reinterpret_cast<uintptr_t>(address);
  symbol found;
  Dl_info module = {};
  const bool in_module = dladdr(address, &module) != 0;
  if (find_symbol(at, found)) {
    std::fprintf(file, "%s + %d", found.name, static_cast<int>(at - found.start));
  } else if (in_module && module.dli_fbase) {
    const uintptr_t base = reinterpret_cast<uintptr_t>(module.dli_fbase);
    std::fprintf(file, "0x%08llx + %d", static_cast<unsigned long long>(base),
                 static_cast<int>(at - base));
  } else {
    std::fprintf(file, "0x%08llx", static_cast<unsigned long long>(at));
  }
  if (!in_module || !module.dli_fname) return;
  const char* const leaf = std::strrchr(module.dli_fname, '/');
  std::fprintf(file, " %s", leaf ? leaf + 1 : module.dli_fname);
}

__attribute__((noinline)) void UTL_dump_stack(std::FILE* file, const stack_frame* frame,
                                              const void* pc) {
  walk at{file, 0};
  if (pc) print_frame(file, at.count++, reinterpret_cast<uintptr_t>(pc));
  if (!frame) {
    walk_here(at);
    return;
  }
  while (at.count < frame_limit && UTL_valid_memory(frame, sizeof *frame, 1, 0)) {
    print_frame(file, at.count++, reinterpret_cast<uintptr_t>(frame->return_address));
    if (frame->next <= frame) break;  // a stack grows downward, so its callers lie above
    frame = frame->next;
  }
}

void UTL_append_crawl() {
  std::FILE* const file = UTL_open_report(crawl_name, false);
  if (!file) return;
  UTL_dump_stack(file, nullptr, nullptr);
  std::fclose(file);
}

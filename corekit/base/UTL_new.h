// `new` with a name: who asks for how much memory.
//
// The global forms are replaced by ones over the allocator that the program is linked with. They
// carry the names "anonymous new", "anonymous new[]", "anonymous new-nt" and "anonymous new-nt[]";
// `NAMED_NEW type(...)` carries its file and line. On exhaustion the installed new-handler is
// called once, and after a second failure std::bad_alloc is thrown (no-throw forms: null). In a
// build for a sanitizer, which brings an allocator of its own, the global forms are the library's.
#pragma once

#include <cstddef>

// `file` must be static text. What they give goes back with plain delete and delete[].
void* operator new(size_t bytes, const char* file, int line);
void* operator new[](size_t bytes, const char* file, int line);
void operator delete(void* memory, const char* file, int line) noexcept;
void operator delete[](void* memory, const char* file, int line) noexcept;

#define NAMED_NEW new (__FILE__, __LINE__)

// What one name has asked for since the start; it is not known what was given back.
struct UTL_new_total {
  const char* name;
  int line;  // 0 for the anonymous ones
  unsigned long long calls, bytes;
};

// Calls `each` for every name that has been used. Any thread; the figures are approximate while
// others allocate.
void UTL_new_totals(void (*each)(const UTL_new_total& total, void* context), void* context);

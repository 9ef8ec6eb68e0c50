// The memory of a program that is to run out of it: all that its objects ask the allocator for goes
// by here (the linker's --wrap). Under the sanitizers, whose `new` asks nobody, that is wrapped
// too.

#include <cerrno>
#include <new>

#include "tests/faults/faults.h"

extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* memory, size_t size);
void* __real_aligned_alloc(size_t alignment, size_t size);

void* __wrap_malloc(size_t size) {
  return faults_memory(size) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(size_t count, size_t size) {
  return faults_memory(count * size) ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, size_t size) {
  return faults_memory(size) ? nullptr : __real_realloc(memory, size);
}
void* __wrap_aligned_alloc(size_t alignment, size_t size) {
  return faults_memory(size) ? nullptr : __real_aligned_alloc(alignment, size);
}

#ifndef SKYVANE_JEMALLOC
void* __real__Znwm(size_t size);
void* __real__Znam(size_t size);
void* __wrap__Znwm(size_t size) {
  if (faults_memory(size)) throw std::bad_alloc();
  return __real__Znwm(size);
}
void* __wrap__Znam(size_t size) {
  if (faults_memory(size)) throw std::bad_alloc();
  return __real__Znam(size);
}
#endif
}

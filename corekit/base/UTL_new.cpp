// `new` by name, over malloc and free of the allocator that the program is linked with.
//
// Any thread. Writes the table of totals: a slot is claimed once by an exchange of its name, and
// then only added to. The four anonymous names, which all threads use all the time, are counted in
// each thread and added up now and then.

#include "corekit/base/UTL_new.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

struct slot {
  std::atomic<const char*> name = nullptr;
  std::atomic<int> line = 0;
  std::atomic<unsigned long long> calls = 0, bytes = 0;

  void add(unsigned long long more_calls, unsigned long long more_bytes) {
    calls.fetch_add(more_calls, std::memory_order_relaxed);
    bytes.fetch_add(more_bytes, std::memory_order_relaxed);
  }
};

// Names beyond the last slot are not counted.
constexpr int slot_count = 256;
constinit slot slots[slot_count];

void count_named(const char* name, int line, size_t bytes) {
  const auto hash = reinterpret_cast<uintptr_t>(name) / 8 + static_cast<unsigned>(line) * 31u;
  for (int i = 0; i < slot_count; ++i) {
    slot& at = slots[(hash + i) % slot_count];
    const char* found = nullptr;
    if (at.name.compare_exchange_strong(found, name, std::memory_order_relaxed)) {
      at.line.store(line, std::memory_order_relaxed);
    } else if (found != name || at.line.load(std::memory_order_relaxed) != line) {
      continue;
    }
    at.add(1, bytes);
    return;
  }
}

#ifdef SKYVANE_JEMALLOC

// `alignment` 0: that of malloc.
void* try_once(size_t bytes, size_t alignment) {
  return alignment == 0 ? std::malloc(bytes) : std::aligned_alloc(alignment, bytes);
}

void* try_twice(size_t bytes, size_t alignment = 0) {
  if (bytes == 0) bytes = 1;
  if (void* const memory = try_once(bytes, alignment)) return memory;
  const std::new_handler handler = std::get_new_handler();
  if (!handler) return nullptr;
  handler();
  return try_once(bytes, alignment);
}

void* get(size_t bytes, size_t alignment = 0) {
  if (void* const memory = try_twice(bytes, alignment)) return memory;
  throw std::bad_alloc();
}

void* get_array(size_t bytes) {
  return get(bytes);
}

#else

void* get(size_t bytes) {
  return ::operator new(bytes);
}

void* get_array(size_t bytes) {
  return ::operator new[](bytes);
}

#endif

}  // namespace

// --- forms with file and line -------------------------------------------------------------------

void* operator new(size_t bytes, const char* file, int line) {
  count_named(file, line, bytes);
  return get(bytes);
}

void* operator new[](size_t bytes, const char* file, int line) {
  count_named(file, line, bytes);
  return get_array(bytes);
}

// Called when a constructor throws.
void operator delete(void* memory, const char*, int) noexcept {
  ::operator delete(memory);
}
void operator delete[](void* memory, const char*, int) noexcept {
  ::operator delete[](memory);
}

// --- the allocator's settings -------------------------------------------------------------------

#ifdef SKYVANE_JEMALLOC
// Read by jemalloc when it starts. Large buffers (whole archives) go back to the system when they
// are freed, address space and all, so that one big file does not weigh on the rest of the run. One
// arena: a thread that could not be given one of its own when it begins would fall into a null one,
// and what threads do here often is served from their own caches.
extern "C" {
extern const char* malloc_conf;
const char* malloc_conf = "retain:false,narenas:1";
}
#endif

// --- the global forms ---------------------------------------------------------------------------

#ifdef SKYVANE_JEMALLOC

namespace {

enum anonymous { plain, array, plain_nt, array_nt, anonymous_count };
constexpr const char* anonymous_names[] = {"anonymous new", "anonymous new[]", "anonymous new-nt",
                                           "anonymous new-nt[]"};
constinit slot anonymous_slots[anonymous_count];

struct tally {
  unsigned calls;
  unsigned long long bytes;
};
constinit thread_local tally tallies[anonymous_count] = {};

void* count(anonymous kind, size_t bytes, void* memory) {
  constexpr unsigned batch = 128;
  tally& own = tallies[kind];
  own.bytes += bytes;
  if (++own.calls == batch) {
    anonymous_slots[kind].add(own.calls, own.bytes);
    own = tally();
  }
  return memory;
}

// try_twice for the no-throw forms; a handler that throws means no memory as well.
void* try_twice_quietly(size_t bytes) noexcept {
  try {
    return try_twice(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

void* operator new(size_t bytes) {
  return count(plain, bytes, get(bytes));
}
void* operator new[](size_t bytes) {
  return count(array, bytes, get_array(bytes));
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
  return count(plain_nt, bytes, try_twice_quietly(bytes));
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
  return count(array_nt, bytes, try_twice_quietly(bytes));
}

// Of types that want more than malloc's alignment. They are the program's own as well, since else
// the allocator's object with all of its forms would be linked beside these.
void* operator new(size_t bytes, std::align_val_t alignment) {
  return count(plain, bytes, get(bytes, static_cast<size_t>(alignment)));
}
void* operator new[](size_t bytes, std::align_val_t alignment) {
  return count(array, bytes, get(bytes, static_cast<size_t>(alignment)));
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t, std::align_val_t) noexcept {
  std::free(memory);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

#endif

void UTL_new_totals(void (*each)(const UTL_new_total& total, void* context), void* context) {
#ifdef SKYVANE_JEMALLOC
  for (int kind = 0; kind < anonymous_count; ++kind) {
    // The caller's own part is added here; that of other threads comes with their next batch.
    anonymous_slots[kind].add(tallies[kind].calls, tallies[kind].bytes);
    tallies[kind] = tally();
    const slot& at = anonymous_slots[kind];
    if (at.calls.load())
      each({anonymous_names[kind], 0, at.calls.load(), at.bytes.load()}, context);
  }
#endif
  for (const slot& at : slots) {
    const char* const name = at.name.load();
    if (name) each({name, at.line.load(), at.calls.load(), at.bytes.load()}, context);
  }
}

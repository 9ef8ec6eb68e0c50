// A pool for many small, short-lived pieces of memory: taking one moves a pointer, and all go at
// once with the pool. A pool belongs to one thread.
#pragma once

#include <atomic>
#include <cstddef>

class UTL_lazy_mempool {
 public:
  UTL_lazy_mempool() = default;
  ~UTL_lazy_mempool();
  UTL_lazy_mempool(const UTL_lazy_mempool&) = delete;
  UTL_lazy_mempool& operator=(const UTL_lazy_mempool&) = delete;

  // `bytes` bytes, rounded up to 16 and so aligned. What was ready in the newest block and does not
  // suffice is wasted. A request that no block could hold gets a block of its own.
  void* allocate(size_t bytes);

  void dump() const;  // the three figures, to the log

  size_t allocated() const { return allocated_; }  // bytes handed out
  size_t wasted() const { return wasted_; }        // bytes lost at the end of blocks
  size_t ready() const { return ready_; }          // bytes still free in the newest block

  static constexpr size_t block_bytes = 32768;
  static std::atomic<float> global_total;  // bytes of all blocks of all pools

 private:
  struct block;

  size_t allocated_ = 0;
  size_t wasted_ = 0;
  block* blocks_ = nullptr;  // newest first
  unsigned char* current_ = nullptr;
  size_t ready_ = 0;
};

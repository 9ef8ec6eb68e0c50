// The memory of the table's stores, in blocks.
//
// What takes longest about a table of half a million records is that the system has to find and
// clear the memory for it. So while a manifest is read, a thread of its own has that done for the
// blocks that come next.
#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "corekit/base/UTL_thread.h"

class manifest_memory {
 public:
  static constexpr size_t block_size = 1 << 20;

  manifest_memory() = default;
  ~manifest_memory() { clear(); }
  manifest_memory(const manifest_memory&) = delete;
  manifest_memory& operator=(const manifest_memory&) = delete;

  // `count` blocks in one piece, which stay until clear(). Fatal when there is no more memory.
  void* take(size_t count = 1);
  void clear();

  // Between the two, blocks are made ready ahead, of some `bytes` in all.
  void begin_ahead(size_t bytes);
  void end_ahead();

 private:
  struct region {
    char* at;
    size_t blocks;
    size_t taken;
  };

  void reserve(size_t blocks);
  static void* back_blocks(void* memory);

  std::vector<region> regions_;  // what is taken comes from the last one
  bool is_ahead_ = false;        // the thread runs

  // What the thread looks at, which works on the region that was the last when it began.
  char* ahead_at_ = nullptr;
  size_t ahead_blocks_ = 0;
  std::atomic<size_t> ahead_taken_ = 0;
  std::atomic<bool> is_over_ = false;
  UTL_thread_handle thread_ = {};
  UTL_thread_joiner joiner_ = {};
};

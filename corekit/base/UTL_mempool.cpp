// The pool. A block begins with the link to the one made before it; memory is handed out behind
// that.

#include "corekit/base/UTL_mempool.h"

#include <cstdlib>
#include <new>

#include "corekit/base/xer.h"

std::atomic<float> UTL_lazy_mempool::global_total = 0;

struct alignas(16) UTL_lazy_mempool::block {
  block* next;
  size_t bytes;  // of the block, its head included
};

UTL_lazy_mempool::~UTL_lazy_mempool() {
  while (blocks_) {
    block* const next = blocks_->next;
    global_total.fetch_sub(static_cast<float>(blocks_->bytes), std::memory_order_relaxed);
    std::free(blocks_);
    blocks_ = next;
  }
}

void* UTL_lazy_mempool::allocate(size_t bytes) {
  constexpr size_t step = 16, head = sizeof(block);
  if (bytes > static_cast<size_t>(-1) / 2) throw std::bad_alloc();
  bytes = (bytes + step - 1) & ~(step - 1);
  if (bytes > ready_) {
    const bool oversize = bytes > block_bytes - head;
    const size_t size = oversize ? bytes + head : block_bytes;
    block* const fresh = static_cast<block*>(std::malloc(size));
    if (!fresh) throw std::bad_alloc();
    global_total.fetch_add(static_cast<float>(size), std::memory_order_relaxed);
    fresh->next = blocks_;
    fresh->bytes = size;
    blocks_ = fresh;
    wasted_ += ready_;
    current_ = reinterpret_cast<unsigned char*>(fresh) + head;
    ready_ = size - head;
  }
  void* const memory = current_;
  current_ += bytes;
  ready_ -= bytes;
  allocated_ += bytes;
  return memory;
}

void UTL_lazy_mempool::dump() const {
  xer << "Total memory allocated: " << allocated_ << '\n'
      << "Total wasted memory: " << wasted_ << '\n'
      << "Total ready memory: " << ready_ << '\n';
}

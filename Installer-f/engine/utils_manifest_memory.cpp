// Blocks of address space, and the thread that has memory put behind them ahead of their use.
//
// Main thread, but for back_blocks, which reads where the region lies, how far its blocks have been
// taken, and when to stop. Writes no global.

#include "Installer-f/engine/utils_manifest_memory.h"

#include <algorithm>
#include <new>

#include "corekit/Platform/PLT_memory.h"

namespace {

constexpr size_t usual_blocks = 16;
constexpr size_t least_ahead = 4;  // blocks: for less a thread is not worth its while
constexpr size_t most_ahead = 4;   // blocks beyond those taken; the rest is reserved at no cost

}  // namespace

void manifest_memory::reserve(size_t blocks) {
  void* const space = PLT_reserve_space(blocks * block_size);
  if (space == nullptr) throw std::bad_alloc();
  end_ahead();
  regions_.push_back({static_cast<char*>(space), blocks, 0});
}

void* manifest_memory::take(size_t count) {
  if (regions_.empty() || regions_.back().blocks - regions_.back().taken < count)
    reserve(std::max(count, usual_blocks));
  region& from = regions_.back();
  void* const taken = from.at + from.taken * block_size;
  from.taken += count;
  ahead_taken_ = from.taken;
  return taken;
}

void manifest_memory::clear() {
  end_ahead();
  for (const region& each : regions_)
    PLT_release_space(each.at, each.blocks * block_size);
  regions_.clear();
}

void manifest_memory::begin_ahead(size_t bytes) {
  const size_t blocks = bytes / block_size;
  if (is_ahead_ || blocks < least_ahead || UTL_count_processors() < 2) return;
  reserve(blocks);
  ahead_at_ = regions_.back().at;
  ahead_blocks_ = blocks;
  ahead_taken_ = 0;
  is_over_ = false;
  is_ahead_ = true;
  UTL_thread_identity identity;
  UTL_thread_create(back_blocks, this, &thread_, &joiner_, &identity);
}

void manifest_memory::end_ahead() {
  if (!is_ahead_) return;
  is_over_ = true;
  UTL_thread_join(thread_, joiner_);
  is_ahead_ = false;
}

void* manifest_memory::back_blocks(void* memory) {
  const auto* const self = static_cast<const manifest_memory*>(memory);
  for (size_t backed = 0; backed < self->ahead_blocks_ && !self->is_over_;) {
    if (backed >= self->ahead_taken_ + most_ahead) {
      UTL_sleep(1);
      continue;
    }
    if (!PLT_back_space(self->ahead_at_ + backed * block_size, block_size)) break;
    ++backed;
  }
  return nullptr;
}

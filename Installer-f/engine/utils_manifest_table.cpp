// The stores of the table: blocks that are only ever added to, so that nothing in them moves, and
// that are dropped together.
//
// Main thread. Writes manifest_path::blocks_, which says where the blocks of texts lie.

#include "Installer-f/engine/utils_manifest_table.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <ostream>
#include <utility>

#include "Installer-f/engine/utils_manifest_memory.h"
#include "corekit/files/io_utils.h"

char* const* manifest_path::blocks_ = nullptr;

namespace {

manifest_memory memory;

struct {
  std::vector<char*> blocks;
  uint32_t used = 0;  // of the last block
} texts;

struct {
  file_version_struct* free = nullptr;
  size_t left = 0;  // records, from there
} records;

// Room for one more record behind the `count` at `first`, which move if need be.
file_version_struct* make_room(file_version_struct* first, size_t count) {
  const bool are_last = first != nullptr && first + count == records.free;
  if (!are_last || records.left == 0) {
    if (records.left < count + 1) {
      const size_t blocks = 2 * count * sizeof *first / manifest_memory::block_size + 1;
      records.free = static_cast<file_version_struct*>(memory.take(blocks));
      records.left = blocks * manifest_memory::block_size / sizeof *first;
    }
    if (count != 0) std::memcpy(records.free, first, count * sizeof *first);
    first = records.free;
    records.free += count;
    records.left -= count;
  }
  ++records.free;
  --records.left;
  return first;
}

}  // namespace

manifest_path::manifest_path(std::string_view head, std::string_view tail) {
  head = head.substr(0, path_limit);
  tail = tail.substr(0, path_limit - head.size());
  size_ = static_cast<uint16_t>(head.size() + tail.size());
  if (texts.blocks.empty() || texts.used + size_ > block_size) {
    texts.blocks.push_back(static_cast<char*>(memory.take()));
    blocks_ = texts.blocks.data();
    texts.used = 0;
  }
  char* const text = texts.blocks.back() + texts.used;
  if (!head.empty()) std::memcpy(text, head.data(), head.size());
  if (!tail.empty()) std::memcpy(text + head.size(), tail.data(), tail.size());
  at_ = static_cast<uint32_t>(texts.blocks.size() - 1) * block_size + texts.used;
  texts.used += size_;
}

std::ostream& operator<<(std::ostream& out, const manifest_path& path) {
  return out << path.view();
}

version_list::version_list(const version_list& other) {
  for (const file_version_struct& record : other)
    push_back(record);
}

version_list::version_list(version_list&& other) noexcept
    : first_(std::exchange(other.first_, nullptr)), count_(std::exchange(other.count_, 0)) {}

// `record` may be one of ours: the store keeps it where it was when the list moves.
file_version_struct& version_list::push_back(const file_version_struct& record) {
  first_ = make_room(first_, count_);
  return *new (first_ + count_++) file_version_struct(record);
}

void manifest_table::clear() {
  if (before_clear) before_clear();
  histories_.clear();
  records = {};
  texts.blocks.clear();
  memory.clear();
  manifest_path::blocks_ = nullptr;
}

void manifest_table::begin_fill(size_t bytes_of_text) {
  constexpr size_t usual_line = 75;
  memory.begin_ahead(bytes_of_text / usual_line * sizeof(file_version_struct) + bytes_of_text / 2);
}

void manifest_table::end_fill() {
  memory.end_ahead();
}

// Lines of a file through a buffer. An object belongs to its thread. Writes no global.

#include "Installer-f/engine/utils_manifest_lines.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "corekit/files/io_handle.h"

namespace {

constexpr size_t usual_room = 256 * 1024;
constexpr size_t spare = sizeof(uint64_t);  // behind what was read: it is looked at by words

// The first byte of a word, in the order of memory, that is below 14; 8 for none. All that ends a
// line is among them.
int first_low_byte(const char* at) {
  uint64_t word;
  std::memcpy(&word, at, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  const uint64_t low = (word - 0x0E0E0E0E0E0E0E0Eu) & ~word & 0x8080808080808080u;
  return std::countr_zero(low) / 8;
}

bool ends_line(char c) {
  return c == '\n' || c == '\r' || c == '\0';
}

}  // namespace

manifest_lines::manifest_lines(const std::string& path) : file_("") {
  if (!file_.open(path, size_)) return;
  fill();
}

// Moves what is left to the buffer's front, and reads on behind it. False when there is no more.
bool manifest_lines::fill() {
  if (all_read_) return false;
  const size_t left = static_cast<size_t>(end_ - at_);
  if (left == room_) {  // a line longer than that, or nothing yet
    const size_t room = room_ == 0 ? usual_room : 2 * room_;
    std::unique_ptr<char[]> larger = std::make_unique_for_overwrite<char[]>(room + spare);
    if (left != 0) std::memcpy(larger.get(), at_, left);
    buffer_ = std::move(larger);
    room_ = room;
  } else if (left != 0) {
    std::memmove(buffer_.get(), at_, left);
  }
  size_t got = 0;
  const int failed = io_read_all(file_.file_handle, buffer_.get() + left, room_ - left, got);
  read_ += got;
  all_read_ = failed != 0 || got < room_ - left;
  failed_ = failed != 0 || (all_read_ && read_ < size_);  // or it was cut short meanwhile
  at_ = buffer_.get();
  end_ = at_ + left + got;
  std::memset(buffer_.get() + left + got, '\n', spare);
  return got != 0;
}

header_kind manifest_lines::take_header(const int* versions, const char* keyword) {
  file_.look_at(at_, end_);
  const header_kind kind = file_.check_maker(versions, keyword);
  at_ += file_.cursor - file_.file_start;
  return kind;
}

bool manifest_lines::next(manifest_line& line) {
  for (const char* at = at_;;) {
    const int step = first_low_byte(at);
    at += step;
    if (step == sizeof(uint64_t)) continue;
    if (!ends_line(*at)) {
      ++at;
      continue;
    }
    if (at >= end_) {  // not an end of the file's own
      const ptrdiff_t seen = end_ - at_;
      if (fill()) {
        at = at_ + seen;
        continue;
      }
      at = end_;
      if (at_ == end_) return false;
    }
    line = {at_, at};
    at_ = std::min(at + 1, end_);
    return true;
  }
}

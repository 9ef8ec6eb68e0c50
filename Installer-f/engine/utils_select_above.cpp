// Gathers the folders of all paths, of which there are few, and then looks which file is among
// them. Nearly none is: a bit table of cheap marks answers for the others without a look-up.
//
// Main thread. Writes no global.

#include "Installer-f/engine/utils_select_above.h"

#include <bit>
#include <cstring>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"

namespace {

// Of the path's length and its last eight bytes, spread over the upper bits.
uint64_t mark_of(std::string_view path) {
  uint64_t tail = 0;
  const size_t count = path.size() < sizeof tail ? path.size() : sizeof tail;
  std::memcpy(&tail, path.data() + path.size() - count, count);
  return (tail + path.size()) * 0x9E3779B97F4A7C15u;
}

// The folder of an installed path, without its "/" at the end; empty for one that lies in none.
std::string_view folder_of(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == path.npos ? std::string_view() : path.substr(0, slash);
}

}  // namespace

void files_above::add_folder(std::string_view folder) {
  folder = folder_of(installed_part(folder));
  // One that is there already has brought its parents with it.
  while (!folder.empty() && folders_.insert(folder).second)
    folder = folder_of(folder);
}

void files_above::look(bool (*takes_part)(const file_version_struct&)) {
  mark_folders();
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    const std::string_view path = installed_part(current.path);
    if (!may_be_folder(path) || !folders_.contains(path)) continue;
    if (current.sig_want != sig_gone && takes_part(current)) files_.insert(path);
  }
}

void files_above::mark_folders() {
  constexpr size_t bits_each = 16;
  const size_t bits = std::bit_ceil(folders_.size() * bits_each + 64);
  marks_.assign(bits / 64, 0);
  mark_shift_ = 64 - std::countr_zero(bits);
  for (const std::string_view folder : folders_) {
    const uint64_t bit = mark_of(folder) >> mark_shift_;
    marks_[bit / 64] |= uint64_t{1} << bit % 64;
  }
}

bool files_above::may_be_folder(std::string_view path) const {
  const uint64_t bit = mark_of(path) >> mark_shift_;
  return (marks_[bit / 64] >> bit % 64 & 1) != 0;
}

bool files_above::stand_above(std::string_view path) const {
  if (files_.empty()) return false;
  for (std::string_view folder = folder_of(installed_part(path)); !folder.empty();
       folder = folder_of(folder))
    if (files_.contains(folder)) return true;
  return false;
}

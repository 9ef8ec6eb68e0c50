// The table behind sim_info.
//
// A manifest may have a million lines. So a record fills one line of the processor's cache, paths
// lie in a store of texts, the records of a history side by side in a store of records, and all of
// it goes at once: nothing is allocated for a line by itself.
//
// Main thread, except that others may look while nobody adds to the table, and write to records of
// their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Installer-f/engine/utils_manifest_sig.h"

// A manifest path of at most 499 bytes (longer ones are cut), in the store until sim_info.clear().
class manifest_path {
 public:
  manifest_path() = default;
  manifest_path(std::string_view text) : manifest_path(text, {}) {}
  manifest_path(const std::string& text) : manifest_path(std::string_view(text)) {}
  manifest_path(const char* text) : manifest_path(std::string_view(text)) {}
  manifest_path(std::string_view head, std::string_view tail);  // one text of two parts

  std::string_view view() const {
    return size_ == 0 ? std::string_view()
                      : std::string_view(blocks_[at_ / block_size] + at_ % block_size, size_);
  }
  operator std::string_view() const { return view(); }
  friend bool operator==(const manifest_path& path, std::string_view text) {
    return path.view() == text;
  }

 private:
  friend class manifest_table;
  static constexpr uint32_t block_size = 1 << 20;
  static char* const* blocks_;  // of the store

  uint32_t at_ = 0;  // block and place in it
  uint16_t size_ = 0;
};

std::ostream& operator<<(std::ostream& out, const manifest_path& path);

// A whole number from -128 to 127, kept in a byte; in every expression it is an int.
class byte_int {
 public:
  constexpr byte_int(int value = 0) : value_(static_cast<int8_t>(value)) {}
  constexpr operator int() const { return value_; }

 private:
  int8_t value_;
};

// One version of one file: a "FILE" line.
struct file_version_struct {
  [[no_unique_address]] manifest_path path;  // platform folder included              (reader)
  byte_int os;                               // platform code, 0 to 6                 (reader)
  byte_int disk;                             // the disc that holds it, 0 to 99       (reader)
  int32_t version = 0;                       // release number                        (reader)
  float zip_kb = 0;                          // compressed size, units of 1,000 bytes (reader)
  float raw_kb = 0;                          // installed size, same unit             (reader)
  float progress_start = 0;  // share of the job done when it begins, 0 to 1       (selection)
  file_sig sig_want;         // a digest, or sig_gone                                 (reader)
  file_sig sig_have;         // of what is on disk; empty until then            (verification)
  byte_int sig_match;        // sig_have equals sig_want                        (verification)
  byte_int is_global;        // a tile of global scenery, chosen by sector            (reader)
  byte_int lat_index;        // its sector, 0 to 17; no meaning otherwise             (reader)
  byte_int lon_index;        // its sector, 0 to 35; no meaning otherwise             (reader)
  byte_int need_fetch;       // decision: fetch and install                        (selection)
  byte_int need_delete;      // decision: delete                                   (selection)
};
static_assert(sizeof(file_version_struct) == 64);

// The records of a history, oldest first. They stay where they are until one is added; a copy of
// the list has records of its own.
class version_list {
 public:
  version_list() = default;
  version_list(const version_list& other);
  version_list(version_list&& other) noexcept;
  version_list& operator=(version_list other) noexcept {
    std::swap(first_, other.first_);
    std::swap(count_, other.count_);
    return *this;
  }

  file_version_struct* begin() const { return first_; }
  file_version_struct* end() const { return first_ + count_; }
  size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  file_version_struct& operator[](size_t i) const { return first_[i]; }
  file_version_struct& front() const { return first_[0]; }
  file_version_struct& back() const { return first_[count_ - 1]; }

  file_version_struct& push_back(const file_version_struct& record);
  file_version_struct& emplace_back() { return push_back({}); }

 private:
  file_version_struct* first_ = nullptr;
  uint32_t count_ = 0;
};

// All adjacent lines of one path; never empty once in the table.
struct file_history_struct {
  [[no_unique_address]] version_list versions;
  int32_t not_seen = 0;  // builder: the source tree has not shown this file yet

  // The last record alone drives the install; the earlier ones are the signatures of what the
  // program itself once shipped.
  file_version_struct& current() { return versions.back(); }
  const file_version_struct& current() const { return versions.back(); }
};
static_assert(sizeof(file_history_struct) == 16);

// There is one, sim_info.
class manifest_table {
 public:
  using iterator = std::vector<file_history_struct>::iterator;
  using const_iterator = std::vector<file_history_struct>::const_iterator;

  iterator begin() { return histories_.begin(); }
  iterator end() { return histories_.end(); }
  const_iterator begin() const { return histories_.begin(); }
  const_iterator end() const { return histories_.end(); }
  size_t size() const { return histories_.size(); }
  bool empty() const { return histories_.empty(); }
  file_history_struct& operator[](size_t i) { return histories_[i]; }
  const file_history_struct& operator[](size_t i) const { return histories_[i]; }
  file_history_struct& back() { return histories_.back(); }

  void reserve(size_t count) { histories_.reserve(count); }
  file_history_struct& emplace_back() { return histories_.emplace_back(); }
  void push_back(const file_history_struct& history) { histories_.push_back(history); }
  void pop_back() { histories_.pop_back(); }

  // Around the reading of a manifest of that size.
  void begin_fill(size_t bytes_of_text);
  void end_fill();

  // Empties the table and its stores. First, whoever works on it with other threads, and has said
  // so here, ends that.
  void clear();
  void (*before_clear)() = nullptr;

 private:
  std::vector<file_history_struct> histories_;
};

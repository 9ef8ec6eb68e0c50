// A text file, line by line, through a buffer that is used over and over: a manifest of half a
// million lines takes longer to be given memory of its own than to be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Installer-f/engine/utils_manifest_sig.h"
#include "corekit/files/xmap.h"

// A blank, a tab, or the end of a line; what lies between two of them is a token.
inline bool ends_token(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0';
}

// A line in hand. Behind its end there always is a character that ends a line, so that whoever
// walks along it need look for nothing else.
struct manifest_line {
  const char* at;
  const char* end;

  void skip_blanks() {
    while (*at == ' ' || *at == '\t')
      ++at;
  }
  // Up to the next blank; empty when the line has no more.
  std::string_view token() {
    skip_blanks();
    const char* const start = at;
    while (!ends_token(*at))
      ++at;
    return {start, static_cast<size_t>(at - start)};
  }
  // A token that is a digest; any other is left standing.
  bool digest(file_sig& sig) {
    skip_blanks();
    constexpr ptrdiff_t size = file_sig::digits;
    if (end - at < size || !ends_token(at[size]) || !sig.read_digest({at, size})) return false;
    at += size;
    return true;
  }
  // A token as str_to_int reads it, without a call.
  int32_t number() {
    skip_blanks();
    const bool negative = *at == '-';
    if (negative) ++at;
    if (*at == '+') ++at;
    uint32_t value = 0;
    for (; !ends_token(*at); ++at)
      value = value * 10 + static_cast<uint32_t>(*at - '0');
    return static_cast<int32_t>(negative ? 0u - value : value);
  }
  // All that is left, blanks within and behind it included.
  std::string_view rest() {
    skip_blanks();
    return {at, static_cast<size_t>(end - at)};
  }
  // Steps over `word` if a blank follows it, so that "FILES" is not taken for "FILE".
  bool keyword(std::string_view word) {
    if (static_cast<size_t>(end - at) <= word.size()) return false;
    if (std::string_view(at, word.size()) != word) return false;
    if (at[word.size()] != ' ' && at[word.size()] != '\t') return false;
    at += word.size();
    return true;
  }
};

class manifest_lines {
 public:
  explicit manifest_lines(const std::string& path);

  bool is_open() const { return file_.file_handle != 0; }
  bool has_failed() const { return failed_; }  // then the lines break off somewhere
  uint64_t size() const { return size_; }      // of the file, bytes

  // Takes the header at the file's start. Before the first line; which follows if it is ours.
  header_kind take_header(const int* versions, const char* keyword);

  // The next line, which stands until the one after it is asked for. False at the end.
  bool next(manifest_line& line);

 private:
  bool fill();

  xmap_class file_;
  uint64_t size_ = 0;
  uint64_t read_ = 0;  // of them so far
  size_t room_ = 0;    // bytes in the buffer, but for what it has to spare
  std::unique_ptr<char[]> buffer_;
  const char* at_ = nullptr;   // what has not been handed out yet,
  const char* end_ = nullptr;  // to the end of what was read
  bool all_read_ = false;
  bool failed_ = false;
};

// The state of a file, in seventeen bytes: the MD5 of its content, or a word in its place.
#pragma once

#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>

// A value. Two are equal if their texts are, but that digits are equal in either case of letters.
class file_sig {
 public:
  static constexpr size_t digits = 32;      // of a digest's text
  static constexpr size_t word_limit = 16;  // longer words are cut

  constexpr file_sig() = default;  // the empty word: not known yet

  // `text` is a digest's hexadecimal digits, or else a word.
  constexpr file_sig(std::string_view text) {
    if (text.size() == digits && read_digest(text)) return;
    form_ = static_cast<uint8_t>(text.size() < word_limit ? text.size() : word_limit);
    for (size_t i = 0; i < form_; ++i)
      bytes_[i] = static_cast<uint8_t>(text[i]);
  }
  constexpr file_sig(const char* text) : file_sig(std::string_view(text)) {}
  file_sig(const std::string& text) : file_sig(std::string_view(text)) {}
  explicit file_sig(const uint8_t (&digest)[16]) : form_(digest_form) {
    std::memcpy(bytes_, digest, sizeof bytes_);
  }

  // Takes a digest from its hexadecimal digits. False, and nothing done, when they are none.
  bool read_digest(std::string_view text);

  constexpr bool empty() const { return form_ == 0; }
  constexpr bool is_digest() const { return form_ == digest_form; }

  std::string text() const;  // digits in lower case
  explicit operator std::string() const { return text(); }

  friend bool operator==(const file_sig& a, const file_sig& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
  }

 private:
  static constexpr uint8_t digest_form = 255;

  uint8_t bytes_[16] = {};  // of a digest; or of a word, zeros behind it
  uint8_t form_ = 0;        // digest_form, or a word's length
};

std::ostream& operator<<(std::ostream& out, const file_sig& sig);  // its text

inline constexpr file_sig sig_none = "NONE";  // no such file on disk
inline constexpr file_sig sig_gone = "GONE";  // the release has dropped the file
// There is a file on disk, and it cannot be read: of no known state, so it is the user's.
inline constexpr file_sig sig_unreadable = "UNREADABLE";

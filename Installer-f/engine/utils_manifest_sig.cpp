// A signature from its text and back. Of a manifest's time a good part goes into its digits, so
// they are taken sixteen at once. No globals.

#include "Installer-f/engine/utils_manifest_sig.h"

#include <ostream>

namespace {

using bytes_16 = uint8_t __attribute__((vector_size(16)));

// The values of sixteen digits. `wrong` receives bits where there is none.
inline bytes_16 values_of(const char* text, bytes_16& wrong) {
  constexpr uint8_t lower_case = 0x20;
  bytes_16 c;
  std::memcpy(&c, text, sizeof c);
  const bytes_16 number = c - uint8_t{'0'}, letter = (c | lower_case) - uint8_t{'a'};
  const bytes_16 is_number = reinterpret_cast<bytes_16>(number < 10);
  const bytes_16 is_letter = reinterpret_cast<bytes_16>(letter < 6);
  wrong |= ~(is_number | is_letter);
  return (number & is_number) | ((letter + uint8_t{10}) & is_letter);
}

}  // namespace

bool file_sig::read_digest(std::string_view text) {
  if (text.size() != digits) return false;
  bytes_16 wrong = {};
  const bytes_16 first = values_of(text.data(), wrong), second = values_of(text.data() + 16, wrong);
  uint64_t wrong_bits[2];
  std::memcpy(wrong_bits, &wrong, sizeof wrong_bits);
  if ((wrong_bits[0] | wrong_bits[1]) != 0) return false;
  const bytes_16 high = __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18,
                                                20, 22, 24, 26, 28, 30);
  const bytes_16 low = __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21,
                                               23, 25, 27, 29, 31);
  const bytes_16 bytes = (high << 4) | low;
  std::memcpy(bytes_, &bytes, sizeof bytes_);
  form_ = digest_form;
  return true;
}

std::string file_sig::text() const {
  if (!is_digest()) return std::string(reinterpret_cast<const char*>(bytes_), form_);
  constexpr char letters[] = "0123456789abcdef";
  std::string text;
  text.reserve(digits);
  for (const uint8_t byte : bytes_) {
    text += letters[byte >> 4];
    text += letters[byte & 15];
  }
  return text;
}

std::ostream& operator<<(std::ostream& out, const file_sig& sig) {
  return out << sig.text();
}

// Keys and signatures in minisign's text form; the mathematics are libsodium's. Any thread.
//
//   key        comment line, then base64 of: "Ed", key number (8), point (32)
//   signature  comment line, then base64 of: "Ed" or "ED", key number (8), signature (64);
//              trusted comment, then base64 of the signature (64) of the first one's 64 bytes and
//              the comment

#include "corekit/files/sign.h"

#include <sodium.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::string_view untrusted_head = "untrusted comment: ";
constexpr std::string_view trusted_head = "trusted comment: ";
constexpr std::string_view of_text = "Ed", of_digest = "ED";

// Has to be called before anything else of the library, and may be called again.
void get_ready() {
  static const int ready = sodium_init();
  (void)ready;
}

// The next line without its end, taken off `text`. False at the end.
bool take_line(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const size_t end = text.find('\n');
  line = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return true;
}

struct parsed_signature {
  char algorithm[2];
  sign_key_id id;
  unsigned char bytes[crypto_sign_BYTES];
};
static_assert(sizeof(parsed_signature) == 74);

struct parsed_key {
  char algorithm[2];
  sign_key_id id;
  std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> point;
};
static_assert(sizeof(parsed_key) == 42);

bool is_only_blank(std::string_view text) {
  return text.find_first_not_of("\r\n") == text.npos;
}

// Whether `bytes` is the signature of `message`; in the one form of it or in the other.
bool is_signature(const parsed_signature& signature, std::string_view message,
                  const sign_public_key& key) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(message.data());
  size_t size = message.size();
  unsigned char digest[crypto_generichash_BYTES_MAX];
  if (std::string_view(signature.algorithm, 2) == of_digest) {
    crypto_generichash(digest, sizeof digest, bytes, size, nullptr, 0);
    bytes = digest;
    size = sizeof digest;
  }
  return crypto_sign_verify_detached(signature.bytes, bytes, size, key.point.data()) == 0;
}

bool is_comment_signature(const parsed_signature& signature, std::string_view comment,
                          const unsigned char (&of_comment)[crypto_sign_BYTES],
                          const sign_public_key& key) {
  std::string both(reinterpret_cast<const char*>(signature.bytes), sizeof signature.bytes);
  both += comment;
  return crypto_sign_verify_detached(of_comment,
                                     reinterpret_cast<const unsigned char*>(both.data()),
                                     both.size(), key.point.data()) == 0;
}

}  // namespace

bool sign_read_base64(std::string_view text, unsigned char* bytes, size_t size) {
  get_ready();
  size_t got = 0;
  const char* end = nullptr;
  return sodium_base642bin(bytes, size, text.data(), text.size(), nullptr, &got, &end,
                           sodium_base64_VARIANT_ORIGINAL) == 0 &&
         got == size && end == text.data() + text.size();
}

bool sign_read_hex(std::string_view digits, unsigned char* bytes, size_t size) {
  size_t got = 0;
  const char* end = nullptr;
  return digits.size() == 2 * size &&
         sodium_hex2bin(bytes, size, digits.data(), digits.size(), nullptr, &got, &end) == 0 &&
         got == size && end == digits.data() + digits.size();
}

std::string sign_hex(std::span<const unsigned char> bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

bool sign_read_key(std::string_view base64, sign_public_key& key) {
  parsed_key parsed;
  if (!sign_read_base64(base64, reinterpret_cast<unsigned char*>(&parsed), sizeof parsed) ||
      std::string_view(parsed.algorithm, 2) != of_text) {
    return false;
  }
  key = {parsed.id, parsed.point};
  return true;
}

std::vector<sign_public_key> sign_keys() {
  std::vector<sign_public_key> keys;
  for (std::string_view rest = sign_built_in_keys; !rest.empty();) {
    const size_t end = std::min(rest.find(' '), rest.size());
    sign_public_key key;
    if (sign_read_key(rest.substr(0, end), key)) keys.push_back(key);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return keys;
}

sign_verdict sign_check(std::string_view message, std::string_view signature,
                        std::span<const sign_public_key> keys, sign_key_id& by) {
  get_ready();
  std::string_view comment, of_message, trusted, of_trusted;
  parsed_signature parsed;
  unsigned char of_comment[crypto_sign_BYTES];
  if (!take_line(signature, comment) || !take_line(signature, of_message) ||
      !take_line(signature, trusted) || !take_line(signature, of_trusted) ||
      !is_only_blank(signature) || !comment.starts_with(untrusted_head) ||
      !trusted.starts_with(trusted_head) ||
      !sign_read_base64(of_message, reinterpret_cast<unsigned char*>(&parsed), sizeof parsed) ||
      !sign_read_base64(of_trusted, of_comment, sizeof of_comment)) {
    return sign_malformed;
  }
  const std::string_view algorithm(parsed.algorithm, 2);
  if (algorithm != of_text && algorithm != of_digest) return sign_malformed;
  trusted.remove_prefix(trusted_head.size());
  sign_verdict verdict = sign_other_key;
  for (const sign_public_key& key : keys) {
    if (key.id != parsed.id) continue;
    verdict = sign_wrong;
    if (!is_signature(parsed, message, key) ||
        !is_comment_signature(parsed, trusted, of_comment, key))
      continue;
    by = key.id;
    return sign_good;
  }
  return verdict;
}

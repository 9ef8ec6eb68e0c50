// Secret keys in minisign's form, and signing. Main thread.
//
//   file  comment line, then base64 of: "Ed", "Sc" or two zeros, "B2", salt (32), two limits (8
//         each), and 104 bytes: key number (8), secret (64), checksum (32)
//
// With "Sc" the 104 bytes are combined by XOR with what scrypt makes of the password, the salt and
// the limits. The checksum is BLAKE2b of "Ed", number and secret: a wrong password shows in it.

#include "Installer-f/builder/make_installer_key.h"

#include <fcntl.h>
#include <sodium.h>

#include <cstdint>
#include <cstring>

#include "Installer-f/builder/make_installer_password.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/sign.h"

namespace {

constexpr size_t longest_file = 4096;

struct hidden_part {
  unsigned char id[8];
  unsigned char secret[crypto_sign_SECRETKEYBYTES];
  unsigned char checksum[crypto_generichash_BYTES];
};

struct key_file {
  char algorithm[2], cipher[2], checksum[2];
  unsigned char salt[crypto_pwhash_scryptsalsa208sha256_SALTBYTES];
  unsigned char most_steps[8], most_memory[8];  // little-endian
  hidden_part hidden;
};
static_assert(sizeof(key_file) == 158);

uint64_t number_of(const unsigned char (&bytes)[8]) {
  uint64_t number = 0;
  for (int i = 7; i >= 0; --i)
    number = number << 8 | bytes[i];
  return number;
}

std::string get_password(int fd, std::string& password) {
  if (fd >= 0) {
    return password_from(fd, password) ? ""
                                       : "The password cannot be read from --sign_password_fd.";
  }
  return password_from_terminal("Password of the signing key: ", password)
             ? ""
             : "There is no terminal to ask for the key's password on: give it by "
               "--sign_password_fd.";
}

std::string decipher(key_file& key, int password_fd) {
  std::string password;
  std::string wrong = get_password(password_fd, password);
  unsigned char stream[sizeof key.hidden];
  if (wrong.empty() && crypto_pwhash_scryptsalsa208sha256(
                           stream, sizeof stream, password.data(), password.size(), key.salt,
                           number_of(key.most_steps), number_of(key.most_memory)) != 0) {
    wrong = "There is not enough memory to decipher the signing key.";
  }
  password_wipe(password);
  if (!wrong.empty()) return wrong;
  unsigned char hidden[sizeof key.hidden];
  std::memcpy(hidden, &key.hidden, sizeof hidden);
  for (size_t i = 0; i < sizeof stream; ++i)
    stream[i] ^= hidden[i];
  std::memcpy(&key.hidden, stream, sizeof stream);
  sodium_memzero(stream, sizeof stream);

  crypto_generichash_state state;
  unsigned char checksum[crypto_generichash_BYTES];
  crypto_generichash_init(&state, nullptr, 0, sizeof checksum);
  crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(key.algorithm), 2);
  crypto_generichash_update(&state, key.hidden.id, sizeof key.hidden.id);
  crypto_generichash_update(&state, key.hidden.secret, sizeof key.hidden.secret);
  crypto_generichash_final(&state, checksum, sizeof checksum);
  return sodium_memcmp(checksum, key.hidden.checksum, sizeof checksum) == 0
             ? ""
             : "The password is not that of the signing key.";
}

bool load(const std::string& path, std::string& text) {
  const io_handle file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  text.resize(longest_file);
  size_t got = 0;
  if (!file || io_read_all(file.get(), text.data(), text.size(), got) != 0) return false;
  text.resize(got);
  return true;
}

// The second line of `text`.
std::string_view key_line(std::string_view text) {
  const size_t first = text.find('\n');
  if (first == text.npos) return {};
  text.remove_prefix(first + 1);
  return text.substr(0, text.find_first_of("\r\n"));
}

std::string base64(const void* bytes, size_t size) {
  std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), static_cast<const unsigned char*>(bytes), size,
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // its NUL
  return text;
}

}  // namespace

maker_key::~maker_key() {
  sodium_memzero(secret_, sizeof secret_);
}

std::string maker_key::read(const std::string& path, int password_fd) {
  std::string text;
  if (!load(path, text)) return "The signing key cannot be read: " + path;
  key_file key;
  const bool is_key =
      sign_read_base64(key_line(text), reinterpret_cast<unsigned char*>(&key), sizeof key) &&
      std::memcmp(key.algorithm, "Ed", 2) == 0 && std::memcmp(key.checksum, "B2", 2) == 0;
  sodium_memzero(text.data(), text.size());
  std::string wrong;
  if (!is_key) {
    wrong = "This is no secret key of minisign's: " + path;
  } else if (std::memcmp(key.cipher, "Sc", 2) == 0) {
    wrong = decipher(key, password_fd);
  } else if (std::memcmp(key.cipher, "\0\0", 2) != 0) {
    wrong = "The signing key is enciphered in a way that is not known: " + path;
  }
  if (wrong.empty()) {
    std::memcpy(id_, key.hidden.id, sizeof id_);
    std::memcpy(secret_, key.hidden.secret, sizeof secret_);
    is_there_ = true;
  }
  sodium_memzero(&key, sizeof key);
  return wrong;
}

std::string maker_key::sign(std::string_view message, std::string_view trusted_comment) const {
  unsigned char digest[crypto_generichash_BYTES_MAX];
  crypto_generichash(digest, sizeof digest, reinterpret_cast<const unsigned char*>(message.data()),
                     message.size(), nullptr, 0);
  struct {
    char algorithm[2] = {'E', 'D'};
    unsigned char id[8];
    unsigned char bytes[crypto_sign_BYTES];
  } signature;
  std::memcpy(signature.id, id_, sizeof id_);
  crypto_sign_detached(signature.bytes, nullptr, digest, sizeof digest, secret_);
  std::string both(reinterpret_cast<const char*>(signature.bytes), sizeof signature.bytes);
  both += trusted_comment;
  unsigned char of_comment[crypto_sign_BYTES];
  crypto_sign_detached(of_comment, nullptr, reinterpret_cast<const unsigned char*>(both.data()),
                       both.size(), secret_);
  return "untrusted comment: signature of a release\n" + base64(&signature, sizeof signature) +
         "\ntrusted comment: " + std::string(trusted_comment) + "\n" +
         base64(of_comment, sizeof of_comment) + "\n";
}

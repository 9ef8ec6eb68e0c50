// Signatures of the makers: keys, signatures, and statements of what is signed.
//
// Keys and signatures are Ed25519 in the text form of minisign, whose programs read and write them
// (https://jedisct1.github.io/minisign/): both its algorithms, "Ed" of the text itself and "ED" of
// its BLAKE2b-512, and always with the signature of the trusted comment. docs/security.md has the
// grammar of statements, of directory.sum and of the lines behind a server list.
//
//   sign.cpp            keys and signatures
//   sign_hash.cpp       digests
//   sign_statement.cpp  statements
//   sign_list.cpp       the statement behind a server list
//   sign_seen.cpp       the highest serials seen
//   sign_tell.cpp       a word to the user when one has expired
//   sign_keys.cpp       the keys that are built in
//
// Any thread: nothing here has a state but the file of sign_seen, which is the main thread's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What is wrong with something signed. The values are codes for error_str.
enum sign_verdict : int {
  sign_good = 0,
  sign_unsigned = 20013,
  sign_malformed = 20014,   // no signature of the format, or a statement that is none
  sign_other_key = 20015,   // by nobody whose key is known
  sign_wrong = 20016,       // not of these bytes
  sign_other_use = 20017,   // of another kind, or of another release
  sign_superseded = 20018,  // a higher serial was seen before
};

// --- keys and signatures -------------------------------------------------------------------------

using sign_key_id = std::array<unsigned char, 8>;

struct sign_public_key {
  sign_key_id id = {};
  std::array<unsigned char, 32> point = {};
};

// The keys that are built in, in the base64 form that minisign prints, parted by blanks; empty: no
// signature is asked for, and none is looked at.
extern const char* const sign_built_in_keys;
std::vector<sign_public_key> sign_keys();  // those of them that are keys

// Reads a key from its base64. False, and nothing done, if it is none.
bool sign_read_key(std::string_view base64, sign_public_key& key);

// Whether `signature`, the whole text of a signature file, is one of `message` by one of `keys`.
// `by` receives the key's number if it is.
sign_verdict sign_check(std::string_view message, std::string_view signature,
                        std::span<const sign_public_key> keys, sign_key_id& by);

std::string sign_hex(std::span<const unsigned char> bytes);
// Takes the digits of `size` bytes. False if it is anything else.
bool sign_read_hex(std::string_view digits, unsigned char* bytes, size_t size);
bool sign_read_base64(std::string_view text, unsigned char* bytes, size_t size);  // the same

// --- digests -------------------------------------------------------------------------------------

using sign_sha256 = std::array<unsigned char, 32>;
sign_sha256 sign_hash(const void* bytes, size_t size);

// --- statements ----------------------------------------------------------------------------------

inline constexpr size_t sign_most_statement = 64 * 1024;       // bytes, its signature included
inline constexpr int64_t sign_most_serial = 9007199254740991;  // 2^53 - 1
inline constexpr char sign_of_release[] = "release";           // kinds
inline constexpr char sign_of_servers[] = "servers";

// A text that is signed for, by its length and digest.
struct sign_cover {
  std::string name;
  uint64_t bytes = 0;
  sign_sha256 sha256 = {};
};

struct sign_statement {
  std::string kind;     // sign_of_release, sign_of_servers
  std::string release;  // its folder
  int32_t number = 0;   // of the release
  int64_t serial = 0;   // 1 to sign_most_serial; only grows
  std::string expires;  // the last day that it is for, as "2027-01-31"
  std::vector<sign_cover> covers;
  sign_key_id by = {};  // the key that it was signed with; not in the text

  const sign_cover* cover(std::string_view name) const;  // null: none of that name
  // Whether `bytes` are those that the statement means by `name`.
  bool covers_bytes(std::string_view name, std::string_view bytes) const;
};

// The text to be signed.
std::string sign_statement_text(const sign_statement& statement);
// Reads the statement that `text` begins with, and checks its signature, which follows it. The
// kind must be `kind`.
sign_verdict sign_read_statement(std::string_view text, std::string_view kind,
                                 std::span<const sign_public_key> keys, sign_statement& statement);
// The fields alone, for makers: whoever has signed it, if anybody has. False if it is none.
bool sign_read_fields(std::string_view text, sign_statement& statement);
// The text of a statement and its signature, parted. False if there are not two parts.
bool sign_part(std::string_view text, std::string_view& statement, std::string_view& signature);

// What stands before the next blank of a line, taken off `text` with that.
std::string_view sign_take_word(std::string_view& text);

// Days, in UTC, as "2027-01-31".
std::string sign_day(time_t when);
bool sign_is_day(std::string_view text);
bool sign_has_expired(const sign_statement& statement, time_t now);
// Tells the user, once a run for each kind, of a statement whose last day has passed. Main thread;
// `window` is that of an alert, to return to.
void sign_tell_expired(const sign_statement& statement, int window);

// --- the server list -----------------------------------------------------------------------------

inline constexpr char sign_list_name[] = "serverlist9.txt";

// The bytes of a list up to and with the line that ends it: all that a signature covers, and all
// that is to be read of a signed one. What follows is its statement.
std::string_view sign_list_body(std::string_view list);
// Checks a list against the keys that are built in, and against the highest serial that this user
// has seen, which it becomes if all is well.
sign_verdict sign_accept_list(std::string_view list, sign_statement& statement);

// --- the highest serial seen ---------------------------------------------------------------------

// The highest serial that this user has seen `of` something: the server list, or a copy's releases.
// 0 without any. What was seen under a key that is not built in any more does not count: a new key
// starts anew, whatever a stolen one was used for.
int64_t sign_seen_serial(std::string_view of);
// Keeps the statement's serial, if it is higher. A failure is a line in the log.
void sign_note_serial(std::string_view of, const sign_statement& statement);

// The signature of a manifest, and the sums that it vouches for. Steps: verify the statement; hold
// the two texts against it; when the manifest has been read, give each file its line.
//
// directory.sum lists current files in the manifest's order, so that one walk through both finds
// all of them. Main thread. Writes `trust`.

#include "Installer-f/engine/utils_trust.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr std::string_view sums_head = "I\n900 version\nSUMS\n\n";

struct trust_record {
  bool is_signed = false;
  sign_statement statement;
  std::string sums;             // the text, until the next manifest
  std::vector<file_sum> files;  // by index into sim_info
} trust;

struct sum_line {
  file_sum sum;
  std::string_view path;
};

template <typename number>
bool take_number(std::string_view& text, number& value, int base = 10) {
  const std::string_view word = sign_take_word(text);
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
  return error == std::errc() && end == word.data() + word.size();
}

// "SUM" sha256 bytes sha256 bytes mode path
bool read_sum(std::string_view line, sum_line& read) {
  if (sign_take_word(line) != "SUM") return false;
  const std::string_view archive = sign_take_word(line);
  if (!sign_read_hex(archive, read.sum.archive_sha256.data(), read.sum.archive_sha256.size()) ||
      !take_number(line, read.sum.archive_bytes)) {
    return false;
  }
  const std::string_view file = sign_take_word(line);
  if (!sign_read_hex(file, read.sum.file_sha256.data(), read.sum.file_sha256.size()) ||
      !take_number(line, read.sum.file_bytes) || !take_number(line, read.sum.mode, 8)) {
    return false;
  }
  read.path = line;
  return !line.empty();
}

// The next line that is a sum; false at the end, or at one that is none, which leaves `text`.
bool next_sum(std::string_view& text, sum_line& read) {
  if (text.empty()) return false;
  const size_t end = std::min(text.find('\n'), text.size());
  if (!read_sum(text.substr(0, end), read)) return false;
  text.remove_prefix(std::min(end + 1, text.size()));
  return true;
}

// Under which name the serials of a copy are kept: however the way to it is spelled.
std::string seen_of(const std::string& folder) {
  char resolved[PATH_MAX];
  const char* const real = realpath((app_path + folder).c_str(), resolved);
  return std::string(stg.beta_flag ? "beta " : "final ") + (real ? real : folder.c_str());
}

bool is_behind(const sign_statement& statement, const std::string& folder) {
  return !folder.empty() && statement.serial < sign_seen_serial(seen_of(folder));
}

// Whether everything that the statement has to say of a manifest fits.
bool fits(const sign_statement& statement, const manifest_texts& texts) {
  return statement.covers_bytes("directory.txt", texts.directory) &&
         statement.covers_bytes("directory.sum", texts.sums);
}

}  // namespace

bool file_sum::is_of(const unsigned char* archive, size_t size) const {
  return size == archive_bytes && sign_hash(archive, size) == archive_sha256;
}

bool file_sum::is_of_content(const single_file& file) const {
  if (file.size != file_bytes || file.is_link != S_ISLNK(mode)) return false;
  if (!file.is_link && file.mode != 0 && file.mode != (mode & 0777)) return false;
  return sign_hash(file.bytes, file.size) == file_sha256;
}

bool trust_is_on() {
  return !sign_keys().empty();
}

void trust_forget() {
  trust = {};
}

sign_verdict trust_accept(const manifest_texts& texts, std::span<const sign_public_key> keys,
                          const std::string& name, const std::string& copy) {
  trust = {};
  sign_statement statement;
  if (const sign_verdict verdict =
          sign_read_statement(texts.signature, sign_of_release, keys, statement)) {
    return verdict;
  }
  if (!fits(statement, texts)) return sign_wrong;
  if (statement.release != name) return sign_other_use;
  if (is_behind(statement, copy)) return sign_superseded;
  trust.is_signed = true;
  trust.statement = std::move(statement);
  trust.sums = texts.sums;
  return sign_good;
}

const sign_statement* trust_statement() {
  return trust.is_signed ? &trust.statement : nullptr;
}

bool trust_take_sums() {
  trust.files.assign(trust.is_signed ? sim_info.size() : 0, {});
  if (!trust.is_signed) return true;
  const std::string sums = std::move(trust.sums);
  std::string_view rest = sums;
  if (!rest.starts_with(sums_head)) return false;
  rest.remove_prefix(sums_head.size());
  for (size_t file = 0; file < sim_info.size(); ++file) {
    const file_version_struct& current = sim_info[file].current();
    if (current.sig_want == sig_gone) continue;
    // The reader of this program may leave out of the table what has a line here all the same.
    sum_line line;
    do {
      if (!next_sum(rest, line)) return false;
    } while (line.path != current.path.view());
    trust.files[file] = line.sum;
  }
  return true;
}

const file_sum* trust_sum(int index) {
  if (!trust.is_signed) return nullptr;
  static const file_sum of_nothing;  // archives of no bytes are no archives
  const auto at = static_cast<size_t>(index);
  return at < trust.files.size() ? &trust.files[at] : &of_nothing;
}

bool trust_is_behind(const std::string& folder) {
  return trust.is_signed && is_behind(trust.statement, folder);
}

void trust_note_copy(const std::string& folder) {
  if (trust.is_signed) sign_note_serial(seen_of(folder), trust.statement);
}

// Statements: their text, and the reading of it. What is read has been verified before: no field of
// a statement is looked at whose signature is not that of a known key. Any thread.

#include "corekit/files/sign.h"

#include <algorithm>
#include <charconv>

#include "corekit/base/hl_string.h"

namespace {

constexpr std::string_view first_line = "STATEMENT 900\n";
constexpr std::string_view signature_mark = "\nuntrusted comment: ";
// The same key may sign other things; none of them is ever taken for a release.
constexpr std::string_view domain = "skyvane.installer";

bool read_whole(std::string_view text, int64_t low, int64_t high, int64_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number >= low &&
         number <= high;
}

bool read_cover(std::string_view rest, sign_statement& statement) {
  sign_cover cover;
  int64_t bytes = 0;
  const std::string_view digits = sign_take_word(rest);
  if (!sign_read_hex(digits, cover.sha256.data(), cover.sha256.size()) ||
      !read_whole(sign_take_word(rest), 0, INT64_MAX, bytes) || rest.empty() ||
      statement.cover(rest)) {
    return false;
  }
  cover.bytes = static_cast<uint64_t>(bytes);
  cover.name = rest;
  statement.covers.push_back(std::move(cover));
  return true;
}

// One line. A keyword that is not known is passed over: a later program may have written it.
bool read_line(std::string_view line, sign_statement& statement, bool& has_domain) {
  int64_t number = 0;
  const std::string_view keyword = sign_take_word(line);
  if (keyword == "DOMAIN") {
    has_domain = true;
    return line == domain;
  }
  if (keyword == "KIND") {
    statement.kind = line;
  } else if (keyword == "RELEASE") {
    statement.release = line;
  } else if (keyword == "NUMBER") {
    if (!read_whole(line, 0, INT32_MAX, number)) return false;
    statement.number = static_cast<int32_t>(number);
  } else if (keyword == "SERIAL") {
    return read_whole(line, 1, sign_most_serial, statement.serial);
  } else if (keyword == "EXPIRES") {
    statement.expires = line;
    return sign_is_day(line);
  } else if (keyword == "SHA256") {
    return read_cover(line, statement);
  }
  return true;
}

bool read_fields(std::string_view text, sign_statement& statement) {
  if (!text.starts_with(first_line)) return false;
  text.remove_prefix(first_line.size());
  bool has_domain = false;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    if (!read_line(text.substr(0, end), statement, has_domain)) return false;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return has_domain && statement.serial > 0 && !statement.expires.empty();
}

}  // namespace

std::string_view sign_take_word(std::string_view& text) {
  const size_t end = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

const sign_cover* sign_statement::cover(std::string_view name) const {
  const auto found = std::find_if(covers.begin(), covers.end(),
                                  [name](const sign_cover& one) { return one.name == name; });
  return found == covers.end() ? nullptr : &*found;
}

bool sign_statement::covers_bytes(std::string_view name, std::string_view bytes) const {
  const sign_cover* const one = cover(name);
  return one && one->bytes == bytes.size() && one->sha256 == sign_hash(bytes.data(), bytes.size());
}

std::string sign_statement_text(const sign_statement& statement) {
  std::string text(first_line);
  text.append("DOMAIN ").append(domain).append("\nKIND ").append(statement.kind);
  text.append("\nRELEASE ").append(statement.release);
  text.append("\nNUMBER ").append(std::to_string(statement.number));
  text.append("\nSERIAL ").append(std::to_string(statement.serial));
  text.append("\nEXPIRES ").append(statement.expires).append("\n");
  for (const sign_cover& cover : statement.covers) {
    text.append("SHA256 ").append(sign_hex(cover.sha256)).append(" ");
    text.append(std::to_string(cover.bytes)).append(" ").append(cover.name).append("\n");
  }
  return text;
}

bool sign_read_fields(std::string_view text, sign_statement& statement) {
  std::string_view fields = text, signature;
  statement = {};
  sign_part(text, fields, signature);
  return read_fields(fields, statement);
}

bool sign_part(std::string_view text, std::string_view& statement, std::string_view& signature) {
  const size_t mark = text.find(signature_mark);
  if (mark == text.npos) return false;
  statement = text.substr(0, mark + 1);
  signature = text.substr(mark + 1);
  return true;
}

sign_verdict sign_read_statement(std::string_view text, std::string_view kind,
                                 std::span<const sign_public_key> keys, sign_statement& statement) {
  statement = {};
  std::string_view signed_text, signature;
  if (text.size() > sign_most_statement || !sign_part(text, signed_text, signature)) {
    return sign_malformed;
  }
  sign_key_id by;
  if (const sign_verdict verdict = sign_check(signed_text, signature, keys, by)) return verdict;
  if (!read_fields(signed_text, statement)) return sign_malformed;
  statement.by = by;
  return statement.kind == kind ? sign_good : sign_other_use;
}

std::string sign_day(time_t when) {
  tm day = {};
  gmtime_r(&when, &day);
  return str_format("%04d-%02d-%02d", day.tm_year + 1900, day.tm_mon + 1, day.tm_mday);
}

bool sign_is_day(std::string_view text) {
  constexpr std::string_view form = "dddd-dd-dd";
  if (text.size() != form.size()) return false;
  for (size_t i = 0; i < form.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (form[i] == 'd' ? !is_digit : text[i] != form[i]) return false;
  }
  const int month = str_to_int(text.substr(5, 2)), day = str_to_int(text.substr(8, 2));
  return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

// Days of this form are in the order of their texts.
bool sign_has_expired(const sign_statement& statement, time_t now) {
  return statement.expires < sign_day(now);
}

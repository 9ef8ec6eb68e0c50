// Heads and bodies of HTTP answers (RFC 9112). No thread of its own, no globals.

#include "corekit/net/http_answer.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "corekit/base/hl_string.h"

namespace {

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back()))
    text.remove_suffix(1);
  return text;
}

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// `word` is in lower case.
bool is_word(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                    [](char a, char b) { return lower(a) == b; });
}

// The next element of a list with commas, without the blanks round it; what is left stays in
// `list`.
std::string_view next_element(std::string_view& list) {
  const size_t comma = list.find(',');
  const std::string_view element = trimmed(list.substr(0, comma));
  list.remove_prefix(comma == list.npos ? list.size() : comma + 1);
  return element;
}

}  // namespace

const char* http_fault_text(http_fault fault) {
  switch (fault) {
    case fault_none:
      return "";
    case fault_head_size:
      return "the head of the answer does not end";
    case fault_no_end:
      return "the answer has neither a length nor chunks, so nobody could tell if all of it came";
    case fault_length:
      return "the answer's length is no number, or is given twice";
    case fault_coding:
      return "the answer comes in a transfer coding that is not understood";
    case fault_chunk:
      return "the answer's chunks are damaged";
    case fault_body_size:
      return "the answer is larger than the file can be";
  }
  return "";
}

// --- bytes -> phases -----------------------------------------------------------------------------

size_t http_answer::take(std::string_view input, std::string_view* body) {
  *body = {};
  if (input.empty() || fault_ != fault_none) return 0;
  has_begun_ = true;
  switch (phase_) {
    case phase_head:
    case phase_trailer:
      return take_head(input);
    case phase_length:
    case phase_chunk:
      return take_body(input, body);
    case phase_chunk_size:
      return take_chunk_size(input);
    case phase_chunk_end:
      return take_chunk_end(input);
    case phase_ended:
      break;
  }
  return 0;
}

// Looks for the line end. True with the line, which may lie in line_ (to be cleared once it was
// read) or in `input`. Otherwise all of the input is kept for the next call.
bool http_answer::take_line(std::string_view input, size_t* used, std::string_view* line) {
  for (size_t at = input.find('\n'); at != input.npos; at = input.find('\n', at + 1)) {
    const char before = at > 0 ? input[at - 1] : line_.empty() ? '\0' : line_.back();
    if (before != '\r') continue;
    *used = at + 1;
    *line = input.substr(0, *used);
    if (!line_.empty()) *line = line_.append(*line);
    line->remove_suffix(2);
    return true;
  }
  line_.append(input);
  *used = input.size();
  return false;
}

size_t http_answer::take_head(std::string_view input) {
  size_t used = 0;
  std::string_view line;
  const bool whole = take_line(input, &used, &line);
  head_bytes_ += used;
  if (head_bytes_ > head_limit) {
    fault_ = fault_head_size;
  } else if (whole && phase_ == phase_head) {
    line.empty() ? end_head() : head_line(line);
  } else if (whole && line.empty()) {
    phase_ = phase_ended;
  }
  if (whole) line_.clear();
  return used;
}

size_t http_answer::take_body(std::string_view input, std::string_view* body) {
  *body = input.substr(0, static_cast<size_t>(std::min<uint64_t>(left_, input.size())));
  left_ -= static_cast<int64_t>(body->size());
  body_taken_ += static_cast<int64_t>(body->size());
  if (left_ == 0) phase_ = phase_ == phase_chunk ? phase_chunk_end : phase_ended;
  return body->size();
}

// --- head ----------------------------------------------------------------------------------------

void http_answer::head_line(std::string_view line) {
  constexpr size_t minor_at = 7;  // the digit behind "HTTP/1."
  constexpr size_t code_at = 9;   // behind "HTTP/1.1 "
  constexpr size_t text_at = 13;  // and behind the code and a blank
  if (line.starts_with("HTTP/") && line.size() > text_at) {
    reason_ = str_printable(line.substr(text_at, reason_limit));
    code_ = std::atoi(std::string(line.substr(code_at, 3)).c_str());
    line_goes_on_ = line.starts_with("HTTP/1.") && line[minor_at] != '0';
    return;
  }
  if (is_blank(line.front())) {
    // A value that goes on in the next line, as no server writes it any more.
    if (last_field_ == field_length) fault_ = fault_length;
    if (last_field_ == field_coding) fault_ = fault_coding;
    if (last_field_ == field_connection) line_closes_ = true;
    return;
  }
  const size_t colon = line.find(':');
  if (colon == line.npos) return;
  const std::string_view name = trimmed(line.substr(0, colon));
  last_field_ = is_word(name, "content-length")      ? field_length
                : is_word(name, "transfer-encoding") ? field_coding
                : is_word(name, "connection")        ? field_connection
                                                     : field_other;
  field(last_field_, trimmed(line.substr(colon + 1)));
}

void http_answer::field(field_kind kind, std::string_view value) {
  switch (kind) {
    case field_length:
      length_field(value);
      break;
    case field_coding:
      if (has_coding_ || !is_word(value, "chunked")) fault_ = fault_coding;
      has_coding_ = true;
      break;
    case field_connection:
      connection_field(value);
      break;
    case field_other:
      break;
  }
}

void http_answer::length_field(std::string_view value) {
  do {
    const std::string_view number = next_element(value);
    int64_t length = 0;
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, length);
    if (error == std::errc::result_out_of_range && number.front() != '-') {
      fault_ = fault_body_size;
    } else if (error != std::errc() || stop != end || number.front() == '-' ||
               (length_ >= 0 && length != length_)) {
      fault_ = fault_length;
    } else {
      length_ = length;
    }
  } while (!value.empty() && fault_ == fault_none);
}

void http_answer::connection_field(std::string_view value) {
  while (!value.empty()) {
    const std::string_view option = next_element(value);
    if (is_word(option, "close")) line_closes_ = true;
    if (is_word(option, "keep-alive")) line_goes_on_ = true;
  }
}

// After a head of 100 (or one without a status line) comes another, which is the answer.
void http_answer::end_head() {
  last_field_ = field_other;
  if (code_ <= 199) {
    length_ = -1;
    has_coding_ = line_goes_on_ = line_closes_ = false;
    return;
  }
  const bool has_no_body = code_ == 204 || code_ == 304;
  if (has_coding_) {
    phase_ = phase_chunk_size;
    if (length_ >= 0) fault_ = fault_coding;
  } else {
    phase_ = length_ == 0 ? phase_ended : phase_length;
    left_ = length_;
    if (length_ < 0 || (has_no_body && length_ > 0)) {
      fault_ = fault_no_end;
    } else if (length_ > max_body_) {
      fault_ = fault_body_size;
    }
  }
}

// --- chunks --------------------------------------------------------------------------------------

size_t http_answer::take_chunk_size(std::string_view input) {
  size_t used = 0;
  std::string_view line;
  const bool whole = take_line(input, &used, &line);
  chunk_line_bytes_ += static_cast<int64_t>(used);
  const size_t line_bytes = whole ? line.size() + 2 : line_.size();
  if (line_bytes > chunk_line_limit ||
      chunk_line_bytes_ > static_cast<int64_t>(head_limit) + max_body_) {
    fault_ = fault_chunk;
  } else if (whole) {
    begin_chunk(line);
  }
  if (whole) line_.clear();
  return used;
}

// Behind the size there may be extensions, which mean nothing to us.
void http_answer::begin_chunk(std::string_view line) {
  const char* const end = line.data() + line.size();
  uint64_t size = 0;
  const auto [stop, error] = std::from_chars(line.data(), end, size, 16);
  const std::string_view behind = trimmed({stop, static_cast<size_t>(end - stop)});
  if (error == std::errc::invalid_argument || (!behind.empty() && behind.front() != ';') ||
      behind.find_first_of("\r\n") != behind.npos) {
    fault_ = fault_chunk;
  } else if (error != std::errc() || size > static_cast<uint64_t>(max_body_ - body_taken_)) {
    fault_ = fault_body_size;
  } else {
    left_ = static_cast<int64_t>(size);
    phase_ = size == 0 ? phase_trailer : phase_chunk;
  }
}

size_t http_answer::take_chunk_end(std::string_view input) {
  constexpr std::string_view line_end = "\r\n";
  const size_t used = std::min(input.size(), line_end.size() - line_.size());
  line_.append(input.substr(0, used));
  if (!line_end.starts_with(line_)) {
    fault_ = fault_chunk;
  } else if (line_ == line_end) {
    line_.clear();
    phase_ = phase_chunk_size;
  }
  return used;
}

// What a server answers, taken apart as it arrives: heads, then one body, by its length or in
// chunks. Knows no socket and no file, and holds no more than one unfinished line.
//
// The framing is that of RFC 9112: one "Content-Length" (or several that agree), or the coding
// "chunked" alone; trailers are read over. What the two leave open is a fault and not a guess: a
// body that ends with its connection cannot be told from one that was cut.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum http_fault : int {
  fault_none = 0,
  fault_head_size,  // the heads and trailers of one answer take more than head_limit
  fault_no_end,     // neither a length nor chunks
  fault_length,     // a length that is no number, or two that differ
  fault_coding,     // a transfer coding that is not ours to undo, or a length beside it
  fault_chunk,      // a chunk that does not say its size, or is longer than it says
  fault_body_size,  // more than was granted
};

// For the log: what is wrong with the answer. Empty for none.
const char* http_fault_text(http_fault fault);

class http_answer {
 public:
  static constexpr size_t head_limit = 65536;       // bytes of all heads and trailers
  static constexpr size_t chunk_line_limit = 1024;  // bytes of a chunk's size and extensions
  static constexpr size_t reason_limit = 200;       // characters kept of a status line's text

  // `max_body`: bytes that the body may have.
  explicit http_answer(int64_t max_body) : max_body_(max_body) {}

  // Takes bytes from the front of `input` and tells how many; `body` is the part of them that is
  // body, and may be empty. To be called until nothing is left, the answer has ended or has a
  // fault; from then on it takes nothing.
  size_t take(std::string_view input, std::string_view* body);

  bool has_begun() const { return has_begun_; }  // at least a byte has come
  bool head_done() const { return phase_ != phase_head; }
  bool ended() const { return phase_ == phase_ended; }
  http_fault fault() const { return fault_; }
  // Whether another answer may follow on the same connection. Once it has ended.
  bool may_go_on() const { return line_goes_on_ && !line_closes_; }

  int code() const { return code_; }                     // -1 before the first status line
  const std::string& reason() const { return reason_; }  // printable
  int64_t length() const { return length_; }             // of the body; -1 unknown

 private:
  enum phase_value {
    phase_head,
    phase_length,  // a body of length_
    phase_chunk_size,
    phase_chunk,
    phase_chunk_end,  // the line end behind a chunk
    phase_trailer,
    phase_ended
  };
  enum field_kind { field_other, field_length, field_coding, field_connection };

  bool take_line(std::string_view input, size_t* used, std::string_view* line);
  size_t take_head(std::string_view input);
  size_t take_chunk_size(std::string_view input);
  size_t take_chunk_end(std::string_view input);
  size_t take_body(std::string_view input, std::string_view* body);
  void head_line(std::string_view line);
  void field(field_kind kind, std::string_view value);
  void length_field(std::string_view value);
  void connection_field(std::string_view value);
  void end_head();
  void begin_chunk(std::string_view line);

  const int64_t max_body_;
  phase_value phase_ = phase_head;
  http_fault fault_ = fault_none;
  std::string line_;              // of an unfinished line, what came in earlier reads
  size_t head_bytes_ = 0;         // of heads and trailers
  int64_t chunk_line_bytes_ = 0;  // of all chunk sizes
  int64_t body_taken_ = 0;
  int64_t left_ = 0;  // of the body, or of the present chunk
  bool has_begun_ = false;

  int code_ = -1;
  std::string reason_;
  int64_t length_ = -1;
  bool has_coding_ = false;
  bool line_goes_on_ = false;  // the version, or a header, says so
  bool line_closes_ = false;
  field_kind last_field_ = field_other;
};

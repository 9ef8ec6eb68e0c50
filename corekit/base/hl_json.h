// One object of JSON (RFC 8259) in a line, for scripts that read what the program prints.
//
//   json_line line("event", "end");  line.add("status", 0).add("result", "done");  line.text()
//
// Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class json_line {
 public:
  json_line() = default;
  json_line(std::string_view name, std::string_view value) { add(name, value); }

  // A text is taken as for a terminal (PLT_terminal_text), and so is UTF-8 in the end.
  json_line& add(std::string_view name, std::string_view value);
  json_line& add(std::string_view name, const char* value) {
    return add(name, std::string_view(value));
  }
  json_line& add(std::string_view name, int64_t value) {
    return add_raw(name, std::to_string(value));
  }
  json_line& add(std::string_view name, int value) { return add(name, int64_t{value}); }
  json_line& add(std::string_view name, double value);  // three decimals
  json_line& add(std::string_view name, bool value) {
    return add_raw(name, value ? "true" : "false");
  }
  json_line& add_null(std::string_view name) { return add_raw(name, "null"); }
  json_line& add_raw(std::string_view name, std::string_view json);  // as it stands

  std::string text() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

std::string json_text(std::string_view text);  // with its quotes

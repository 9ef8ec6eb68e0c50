// Any thread.

#include "corekit/base/hl_json.h"

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/hl_string.h"

std::string json_text(std::string_view text) {
  std::string out = "\"";
  for (const char c : PLT_terminal_text(text)) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < ' ') {
      out += str_format("\\u%04x", c);
    } else {
      out += c;
    }
  }
  return out + '"';
}

json_line& json_line::add_raw(std::string_view name, std::string_view json) {
  if (!members_.empty()) members_ += ", ";
  members_ += json_text(name) + ": ";
  members_ += json;
  return *this;
}

json_line& json_line::add(std::string_view name, std::string_view value) {
  return add_raw(name, json_text(value));
}

json_line& json_line::add(std::string_view name, double value) {
  return add_raw(name, str_format("%.3f", value));
}

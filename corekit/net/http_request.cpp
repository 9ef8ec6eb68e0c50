// HTTP requests. No globals.

#include "corekit/net/http_request.h"

#include <algorithm>

namespace {

// RFC 3986: unreserved, sub-delims, ":" and "@".
bool stands_in_path(char c) {
  constexpr std::string_view marks = "/-._~!$&'()*+,;=:@";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         marks.find(c) != marks.npos;
}

// A line end in a header's text would begin a header of the text's own choosing: it is left out.
void add_text(std::string& request, std::string_view text) {
  for (const char c : text) {
    if (c != '\r' && c != '\n') request += c;
  }
}

}  // namespace

void http_add_path(std::string& request, std::string_view path) {
  constexpr char digits[] = "0123456789ABCDEF";
  for (const char c : path) {
    if (stands_in_path(c)) {
      request += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    request += {'%', digits[byte >> 4], digits[byte & 15]};
  }
}

std::string http_request_text(bool post, std::string_view through, std::string_view path,
                              const std::map<std::string, std::string>& headers,
                              std::string_view body) {
  std::string text;
  text.reserve(256 + path.size() + body.size());
  text += post ? "POST " : "GET ";
  if (!through.empty()) {
    text += "http://";
    add_text(text, through);
  }
  http_add_path(text, path);
  text += " HTTP/1.1\r\n";
  for (const auto& [key, value] : headers) {
    add_text(text, key);
    text += ": ";
    add_text(text, value);
    text += "\r\n";
  }
  if (!body.empty()) text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  text += "\r\n";
  text += body;
  return text;
}

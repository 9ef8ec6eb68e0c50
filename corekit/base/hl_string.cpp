// No globals; any thread.

#include "corekit/base/hl_string.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>

int str_to_int(std::string_view text) {
  size_t at = 0;
  bool negative = false;
  if (at < text.size() && text[at] == '-') {
    negative = true;
    ++at;
  }
  if (at < text.size() && text[at] == '+') {
    ++at;
  }
  uint32_t value = 0;  // unsigned, so that a long run of junk wraps instead of overflowing
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == ' ' || c == '\t' || c == '\0' || c == '\r' || c == '\n') break;
    value = value * 10 + static_cast<uint32_t>(c - '0');
  }
  return static_cast<int>(negative ? 0u - value : value);
}

std::string str_format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string out(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(out.data(), out.size() + 1, format, again);
  va_end(again);
  return out;
}

std::string_view path_leaf(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view path_folder(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

std::string str_fill(std::string_view format, std::initializer_list<std::string> parts) {
  std::string out;
  auto part = parts.begin();
  for (size_t i = 0; i < format.size(); ++i) {
    const bool place =
        format[i] == '%' && i + 1 < format.size() && (format[i + 1] == 's' || format[i + 1] == 'd');
    if (place && part != parts.end()) {
      out += *part++;
      ++i;
    } else {
      out += format[i];
    }
  }
  return out;
}

std::string str_printable(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
  }
  return out;
}

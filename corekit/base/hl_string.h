// Small string services that have no better home: number parsing by the family's rule, and
// path pieces.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// The family's one rule for integers in text: an optional "-", an optional "+", then every
// character is taken as a digit, unchecked, so that junk gives a large number and no failure.
// Stops at a blank, tab, NUL, CR or LF, or at the end. The value wraps at 32 bits.
int str_to_int(std::string_view text);

// Whether `text` holds `part` anywhere.
inline bool str_holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// printf into a string.
[[gnu::format(printf, 1, 2)]] std::string str_format(const char* format, ...);

// What follows the last "/" of a path; the whole path when there is none.
std::string_view path_leaf(std::string_view path);

// Everything up to and including the last "/"; empty when there is none.
std::string_view path_folder(std::string_view path);

// `format` with each "%s" and "%d" replaced by the next of `parts`. For translated formats: a
// translation is data, and must never reach printf.
std::string str_fill(std::string_view format, std::initializer_list<std::string> parts);

// Text of others' making as a log or a terminal may show it: control characters become "?".
std::string str_printable(std::string_view text);

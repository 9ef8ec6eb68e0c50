// The reading and writing of UTF-8. Keeps nothing; any thread.
//
// Not by iconv: its handle may not be shared by threads and takes longer to make than a text to
// read, and behind a byte that begins no character it leaves the caller to find the next one.

#include "corekit/Platform/PLT_text.h"

#include <cstdint>

namespace {

// Takes one character off the front of `utf8`: its number, or -1 for a byte that begins none. What
// is overlong, a surrogate or beyond Unicode is no character.
int32_t take_character(std::string_view& utf8) {
  const auto byte = [&utf8](size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned char lead = byte(0);
  const size_t length = lead < 0x80   ? 1
                        : lead < 0xC2 ? 0
                        : lead < 0xE0 ? 2
                        : lead < 0xF0 ? 3
                        : lead < 0xF5 ? 4
                                      : 0;
  int32_t character = length == 1 ? lead : lead & (0x7F >> length);
  bool good = length > 0 && length <= utf8.size();
  for (size_t i = 1; good && i < length; ++i) {
    good = (byte(i) & 0xC0) == 0x80;
    character = character << 6 | (byte(i) & 0x3F);
  }
  constexpr int32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  if (good && (character < least[length] || character > 0x10FFFF ||
               (character >= 0xD800 && character <= 0xDFFF))) {
    good = false;
  }
  utf8.remove_prefix(good ? length : 1);
  return good ? character : -1;
}

}  // namespace

std::string PLT_latin1_from_utf8(std::string_view utf8, char stand_in) {
  std::string latin1;
  latin1.reserve(utf8.size());
  while (!utf8.empty()) {
    const int32_t character = take_character(utf8);
    if (character >= 0 && character <= 0xFF) {
      latin1 += static_cast<char>(character);
    } else if (stand_in) {
      latin1 += stand_in;
    }
  }
  return latin1;
}

std::string PLT_utf8_from_latin1(std::string_view latin1) {
  std::string utf8;
  utf8.reserve(latin1.size());
  for (const char c : latin1) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

std::string PLT_terminal_text(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view rest = text;
    int32_t character = take_character(text);
    const bool is_utf8 = character >= 0;
    if (!is_utf8) character = static_cast<unsigned char>(rest[0]);
    const bool steers = (character < ' ' && character != '\n' && character != '\t') ||
                        (character >= 0x7F && character < 0xA0);
    if (steers) {
      out += '?';
    } else if (is_utf8) {
      out += rest.substr(0, rest.size() - text.size());
    } else {
      out += PLT_utf8_from_latin1(rest.substr(0, 1));
    }
  }
  return out;
}

unsigned char PLT_hide_controls(char* bytes, size_t count, unsigned char before) {
  constexpr unsigned char lead_of_c1 = 0xC2;
  for (size_t i = 0; i < count; ++i) {
    const unsigned char byte = static_cast<unsigned char>(bytes[i]);
    const bool steers = (byte < ' ' && byte != '\n' && byte != '\t') || byte == 0x7F ||
                        (before == lead_of_c1 && byte >= 0x80 && byte < 0xA0);
    if (steers) bytes[i] = '?';
    before = byte;
  }
  return before;
}

bool PLT_is_utf8(std::string_view bytes) {
  while (!bytes.empty()) {
    if (take_character(bytes) < 0) return false;
  }
  return true;
}

std::string PLT_font_text(std::string_view text) {
  std::string latin1;
  latin1.reserve(text.size());
  while (!text.empty()) {
    const char first = text[0];
    const int32_t character = take_character(text);
    latin1 += character < 0 ? first : character <= 0xFF ? static_cast<char>(character) : '?';
  }
  return latin1;
}

bool PLT_needs_font_text(std::string_view text) {
  while (!text.empty()) {
    if (take_character(text) >= 0x80) return true;
  }
  return false;
}

std::string PLT_short_lines(std::string text) {
  constexpr size_t longest = 72;
  size_t start = 0, good = 0;  // of the line; behind its last place for a break
  for (size_t i = 0; i < text.size(); ++i) {
    if (i - start >= longest && good > start) {
      if (text[good - 1] == ' ') {
        text[good - 1] = '\n';
      } else {
        text.insert(good++, 1, '\n');
      }
      i = start = good;
    }
    if (text[i] == ' ' || text[i] == '/') good = i + 1;
    if (text[i] == '\n') start = good = i + 1;
  }
  return text;
}

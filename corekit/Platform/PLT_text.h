// Text at the border to the desktop: the program's is ISO Latin-1, a byte a character, the
// desktop's is UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Latin-1 of a UTF-8 text. A character that has no byte there, and each byte that is no valid
// UTF-8, becomes `stand_in`; 0 leaves it out.
std::string PLT_latin1_from_utf8(std::string_view utf8, char stand_in);

// UTF-8 of a Latin-1 text: every byte is a character, so the way there and back loses nothing.
std::string PLT_utf8_from_latin1(std::string_view latin1);

// `text` for a terminal or a log. A translated text is Latin-1, and the names and paths in it are
// bytes as the system has them: a valid UTF-8 sequence stays, any other byte above 127 is taken for
// a Latin-1 character. What would steer the terminal, but for line feeds and tabs, becomes "?".
std::string PLT_terminal_text(std::string_view text);

// Writes "?" over what would steer a terminal in `bytes`, but for line feeds and tabs: the controls
// below 32 and 127, and in UTF-8 those of 128 to 159. `before` is the byte that went before, 0 at
// the start; returns the one to hand in with what follows.
unsigned char PLT_hide_controls(char* bytes, size_t count, unsigned char before);

// Whether the bytes are UTF-8 throughout.
bool PLT_is_utf8(std::string_view bytes);

// `text` for the program's own font. A translated text is Latin-1, and names and paths in it are
// bytes as the system has them: a valid UTF-8 sequence becomes its Latin-1 byte, or "?" where there
// is none, any other byte stays.
std::string PLT_font_text(std::string_view text);

// Whether any byte of it would change.
bool PLT_needs_font_text(std::string_view text);

// With line breaks for those who leave lines as long as they are: at a blank or behind a "/", so
// that a line has about 72 characters.
std::string PLT_short_lines(std::string text);

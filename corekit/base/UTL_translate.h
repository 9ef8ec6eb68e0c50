// Translation: text that a user sees is written in English and looked up here just before it is
// shown. The English text is the key, so where a table or an entry is missing the English stays.
// Language files are read by UTL_translate_load (corekit/files). Main thread only.
#pragma once

#include <string>

// An English text that is held as data (a row's field, a named constant, a parameter) and goes
// through the table when it is shown. script/texts finds texts by this name and in the calls of
// UTL_translate_string and of tr: whatever is translated is written as one of these.
using UTL_text = const char*;

// Enters one line of a language file, what stands behind its STRING: "<English>====<translation>".
// A faulty one, and a second translation of a text, are logged and skipped.
void UTL_translate_add(const std::string& line);
// All lines are in: from here on texts are looked up in the table. One that is not `is_whole` has
// the texts that differ and no others, so that none counts as missing.
void UTL_translate_use(bool is_whole = true);

// The translation of `text`, or `text` itself. With "--missing_strings" and a table loaded, a text
// without translation is logged once, as a line ready for a language file.
std::string UTL_translate_string(const std::string& text);
// The same, in the length that a line of many pieces wants.
inline std::string tr(UTL_text text) {
  return UTL_translate_string(text);
}

// Back to English.
void UTL_translate_clear();

// Turns the two characters \r into a carriage return, then \n into a line feed.
void STR_unescape(std::string& text);

// Replaces every occurrence of `from`, left to right, looking for the next one from the start of
// what was inserted. Where `to` holds `from`, which would never end, it goes on behind it instead.
// An empty `from` is nowhere.
void STR_replace_all(std::string& text, const std::string& from, const std::string& to);

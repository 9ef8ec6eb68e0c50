// Translation: text that a user sees is written in English and looked up here just before it is
// shown. The English text is the key, so where a table or an entry is missing the English stays.
//
// A language file is text: "A" or "I", "900 version", "TRANSLATION", then one entry a line:
//   STRING <English>====<translation>
// with line breaks written as \n and \r. One blank or tab parts STRING from the English, and all
// further blanks of a line belong to the texts. Other lines are skipped. Main thread only.
#pragma once

#include <string>

// An English text that is held as data (a row's field, a named constant, a parameter) and goes
// through the table when it is shown. script/texts finds texts by this name and in the calls of
// UTL_translate_string and of tr: whatever is translated is written as one of these.
using UTL_text = const char*;

// Replaces the table by the file at `path`. A missing or unsuitable file leaves an empty table;
// faulty lines are logged and skipped.
void UTL_translate_load(const std::string& path);

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

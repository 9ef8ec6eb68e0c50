// Translation: text that a user sees is written in English and looked up here just before it is
// shown. The English text is the key, so where a table or an entry is missing the English stays.
//
// A language file is text: "A" or "I", "900 version", "TRANSLATION", then one entry a line:
//   STRING <English>====<translation>
// with line breaks written as \n and \r. Other lines are skipped. Main thread only.
#pragma once

#include <string>

// Replaces the table by the file at `path`. A missing or unsuitable file leaves an empty table;
// faulty lines are logged and skipped.
void UTL_translate_load(const std::string& path);

// The translation of `text`, or `text` itself. With "--missing_strings" and a table loaded, a text
// without translation is logged once, as a line ready for a language file.
std::string UTL_translate_string(const std::string& text);

// Back to English.
void UTL_translate_clear();

// Turns the two characters \r into a carriage return, then \n into a line feed.
void STR_unescape(std::string& text);

// Replaces every occurrence of `from`, left to right, looking for the next one from the start of
// what was inserted. Where `to` holds `from`, which would never end, it goes on behind it instead.
// An empty `from` is nowhere.
void STR_replace_all(std::string& text, const std::string& from, const std::string& to);

// Language files. Main thread.
//
// A language file is text: "A" or "I", "900 version", "TRANSLATION", then one entry a line:
//   STRING <English>====<translation>
// with line breaks written as \n and \r. One blank or tab parts STRING from the English, and all
// further blanks of a line belong to the texts. Other lines are skipped.
#pragma once

#include <string>

// Replaces the table by the file at `path`; `is_whole` is that of UTL_translate_use. A missing or
// unsuitable file leaves an empty table, and false is returned;
// faulty lines are logged and skipped.
bool UTL_translate_load(const std::string& path, bool is_whole = true);

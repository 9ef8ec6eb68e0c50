// The one output stream of the program, for text and small binary files with the family's header.
//
//   text    "I" <newline> <version> " version" <note> <newline>, then the body
//   binary  "i", four bytes of version in the machine's order, then the body
//
// xmap_class::check_file reads these headers. Main thread only; one file at a time.
#pragma once

#include <fstream>
#include <string>

extern std::ofstream ouf;

enum ouf_type : int {
  ouf_binary = 10000,
  ouf_text = 10001,
};

// Opens app_path + `path` anew and writes the header; makes the folder that should hold the file
// when it is missing. `note` goes on the version line, unless it is "no-copyright-string". Returns
// 1, or 0 after an alert. Fatal: another type, a path of more than 499 characters.
int ouf_open(const std::string& path, int type, int version, const std::string& note);

// Closes the stream. 0 if all that was written since ouf_open reached the file, else errno (5 when
// the system's reason is lost): a full disk shows here and nowhere else. 0 when nothing is open.
int ouf_close();

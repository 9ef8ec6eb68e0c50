// Preference files: small text files of tag and value, one pair a line.
//
//   I
//   9002 version
//   <tag> <value to the end of the line>
//
// Each variable is named once, in a list that serves both directions. A tag may be overridden for
// one run by "--pref:<tag>=<value>" on the command line; the file keeps its own value then. Tags
// that no list names vanish at the next write. Main thread only, as the output goes through `ouf`.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "corekit/files/io_own.h"

enum pref_direction : int { pref_read = 0, pref_write = 1 };

enum pref_kind : int {
  pref_kind_resolution = 10,   // "Resources/preferences/Res Sky-Root.prf", of the sibling programs
  pref_kind_installer = 11,    // "Skyvane Installer.prf" in the user's preferences folder
  pref_kind_calibration = 12,  // "Resources/preferences/Cal Skyvane.prf", no tags here
};

// The reader and writer of one file, for the length of one list.
class scan_class {
 public:
  // Reading takes the whole file in; one that is missing or of another version reads as empty.
  // Writing opens `ouf` on a new file, which takes the old one's place in the destructor if all of
  // it reached the disk; otherwise the old file stays. An empty `path` reads and writes nothing.
  scan_class(const std::string& path, int direction);
  ~scan_class();
  scan_class(const scan_class&) = delete;
  scan_class& operator=(const scan_class&) = delete;

  // Carry a variable from or to the file. True if a value was found or written; a variable without
  // one stays as it is. An empty string is not written.
  bool int_io(int* value, const std::string& tag);
  bool string_io(std::string* value, const std::string& tag);

  int direction;                            // pref_direction
  std::map<std::string, std::string> tags;  // the file that stands; of two equal tags the last

 private:
  bool find(const std::string& tag, std::string* value) const;
  bool write(const std::string& tag, const std::string& value);
  bool write_back(const std::string& tag);

  std::optional<io_own_turn> turn;  // of a writer: others wait until the new file is in its place
  std::string path;                 // empty: there is no file
  bool open = false;                // `ouf` is ours
};

class pref_class {
 public:
  // Reads (0) or writes (1) the file of `kind`. An unreadable file means that every variable keeps
  // its value.
  void IO_set(int kind, int direction);
  // Kept for the sibling programs; does nothing and returns 0.
  int IO_sta(int kind, int direction, const std::string& name);
};

extern pref_class pref;

// Files of the program's own that several programs of the family may write to at once: one
// at a time, and whole or not at all. Any thread, but for the turn, which a thread takes once.
#pragma once

#include <string>

#include "corekit/files/io_handle.h"

// Held while the file at `path` is read and written anew. The lock is on the folder, since the file
// is replaced; where there is none to be had, it goes without.
class io_own_turn {
 public:
  explicit io_own_turn(const std::string& path);

 private:
  const io_handle folder_;
};

// The whole file anew, or as it was. False if that failed.
bool io_own_replace(const std::string& path, const std::string& text);

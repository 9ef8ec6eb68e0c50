// How a file of the copy is opened to be hashed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corekit/files/io_handle.h"

// What was found where a file should be.
enum file_kind {
  file_absent,      // nothing, or a folder
  file_plain,       // a file that can be read
  file_link,        // a symbolic link: it is checked by what it says
  file_unreadable,  // something that this user may not or cannot read
};

struct opened_file {
  file_kind kind = file_absent;
  io_handle handle;   // of a plain file
  uint64_t size = 0;  // of a plain file, bytes
  std::string text;   // of a link, what it says
};

// Opens app_path + `path`, in the spelling that it has on disk. Any thread.
opened_file open_to_hash(const std::string& path);

// The same for many files of one folder tree, those of one folder best one after the other: each is
// looked up from the folder, not from the root. For one thread.
class tree_reader {
 public:
  // `root` ends in "/" and holds app_path already.
  explicit tree_reader(std::string_view root) : root_(root) {}

  // `part` is the file's path below the root.
  opened_file open(std::string_view part);

 private:
  void enter(std::string_view folder);

  std::string root_;
  bool entered_ = false;             // what follows is of some folder
  std::string folder_;               // as it was asked for
  std::string place_;                // as it is spelt on disk, from the root directory on
  io_handle handle_;                 // of that; empty when it cannot be entered
  file_kind without_ = file_absent;  // what its files are then
  std::string leaf_, full_;          // kept for their memory
};

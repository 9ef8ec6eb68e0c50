// The one file that travels in an archive, unpacked in memory.
//
//   io_load_archive   an archive from the disk into memory, up to a limit
//   io_read_single    its one file, up to a limit
//   io_release_single gives the memory of both back
//
// An archive, zip or 7z by its first bytes, holds one file or link of any name, and at most that
// file's fork entry ("__MACOSX/" and, before the name's last part, "._"), which is checked and
// dropped. The whole table of contents is looked at before anything is unpacked, no size is
// believed that the archive could not hold, nothing is unpacked beyond the limit, and what the
// archive says of its content is compared with it.
//
// The memory is the thread's, kept for the next archive, and given back when it has grown large.
// What a call returns stands until the same thread's next call of the same function. Any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

enum single_outcome : int {
  single_ok,
  single_no_archive,  // it cannot be opened: another thing, or its table of contents is broken
  single_damaged,     // what is in it is broken, or encrypted
  single_empty,       // no bytes at all, or nothing in it
  single_too_large,   // more than the limit, or claims that no archive of ours makes
  single_other_file,  // something beside one file and its fork: a folder, a device, a second file
  single_no_memory,
  single_unread,  // io_load_archive: errno tells
};

struct single_file {
  const unsigned char* bytes = nullptr;  // of a link: the text of its target
  size_t size = 0;
  std::string_view name;         // as stored; trusted with nothing
  bool is_link = false;          // never from a 7z archive, which carries none
  mode_t mode = 0;               // permission bits; 0: the archive has none to give
  time_t modified = time_t(-1);  // -1: the archive has none to give
};

// Reads all of the open file `fd` from its start, if it is a plain file of at most `most` bytes.
single_outcome io_load_archive(int fd, uint64_t most, const unsigned char*& bytes, size_t& size);

// `most` limits the file's bytes. `file` may point into `archive`, too, which must stand as long.
single_outcome io_read_single(const unsigned char* archive, size_t size, uint64_t most,
                              single_file& file);

// Gives back what this thread holds of both, however little is wanted next.
void io_release_single();

// Zip archives: every file of a release travels alone in one.
//
//   file_to_zip          one file or symbolic link in, one archive out
//   zip_to_file          an archive back into a folder
//   unzip_resource_fork  } the two special entries, called by zip_to_file
//   unzip_symlink        }
//
// What an archive of ours holds, in this order, under names without a path:
//   data  a plain file: deflated; Unix mode in the high half of the external attributes; mtime, by
//         local time, in the date fields
//   fork  "__MACOSX/._" and the file's name: an AppleDouble block. Read and checked here, never
//         written: this platform has no forks
//   link  a symbolic link, the only entry: its target, stored; external attributes 0xA1ED0000
// Names are bytes, stored and restored as they stand: the UTF-8 flag is neither set nor asked for.
// With the Unix mark that the writer leaves, other unpackers take them as they are, too.
//
// An archive comes from a network and is trusted with nothing: no name leads outside the folder, no
// entry is written through a symbolic link that stands below it, no size is believed before the
// archive could hold it, and an entry's bytes are unpacked and checked in memory before the file
// that they replace is deleted.
//
// All functions return 0 or a code for error_str, prefix app_path to both paths, and may run on
// several threads at once, each on its own archive.
#pragma once

#include <string>

struct unz_file_info_s;

// Unpacks the archive at `zip_path`. `out_folder` is a plain prefix of each entry's name, so it
// ends in "/"; it may itself be or hold symbolic links. With `use_name` set, the first entry is
// written as `out_folder` + `*name`. `name`, if not null, then receives the first entry's stored
// name.
//
// Codes: 20001 cannot be opened; 20002 damaged, or an entry that must not be written; 20012 a fork
// entry with a bad header; 12 no memory; 27 an entry that needs the format's 64-bit sizes; else
// errno, or minizip's negative code for a damaged table of contents. What was written before a
// failure stays.
int zip_to_file(const std::string& zip_path, const std::string& out_folder, std::string* name,
                int use_name);

// Packs the file or symbolic link at `in_path` into a new archive at `zip_path`.
//
// Codes: 20003 cannot be created; 20006 the source cannot be read; 63 a link's target of more than
// 499 bytes; 27 a file of 4 GB or more, which an entry's fields cannot hold; 12 no memory; else
// errno or minizip's code. After a failure the archive is incomplete.
int file_to_zip(const std::string& in_path, const std::string& zip_path);

// The two special entries. `zip` is zip_to_file's open archive (a zip_reader of io_zip_parts.h, the
// entry its current one) and `info` what its table of contents says; `path` is complete, app_path
// included. Called by zip_to_file only, which has passed the entry's name through its gate.

// Reads a fork entry and checks its header; there is nothing on this platform to put the rest into.
// `path` would be the fork's file, with "._" before its name.
int unzip_resource_fork(void* zip, const std::string& path, const unz_file_info_s& info);

// Makes the symbolic link `path`, in place of what is there, with the entry's text as its target,
// whatever that says.
int unzip_symlink(void* zip, const std::string& path, const unz_file_info_s& info);

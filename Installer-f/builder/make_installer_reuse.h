// Archives of the last build that a new one can take over, as their sources have not changed.
//
// A build leaves a record beside its discs, build_record.txt, of what each archive was made of:
//
//   record = header { line }            the family's header with the keyword RECORD
//   line   = "NAME" name                the folder below each disc's root
//          | "FILE" disc suffix archive_bytes bytes seconds nanoseconds mode date signature path
//
// `suffix` is zip, or 7z for an archive made by hand; seconds and nanoseconds are the date of the
// source, `date` the one in the archive; the path is below the source root. A file is the same as
// then if bytes, date and mode are, and then the record's signature stands for it.
//
// A source that was written to in the last moments before a build is left out of its record: it may
// have changed once more after it was read, within the same tick of the file system's clock.
//
// An archive is taken over by a hard link: it costs neither time nor space, and no build ever
// writes into an archive that is there. The two masters share such files, so neither may be edited
// in place. Main thread, but for what load_reuse has read, which all may read.
#pragma once

#include <string>

#include "Installer-f/builder/make_installer_bld.h"
#include "corekit/files/io_zip_pack.h"

inline constexpr char build_record_name[] = "build_record.txt";

// What the last build knows of a file that has not changed since.
struct old_archive {
  std::string path;   // of the archive
  int64_t bytes = 0;  // of the archive
  bool is_7z = false;
  std::string sig;  // of the source
};

// Reads the record of bld.reuse_fold, in place of what was read before; without one, nothing can be
// taken over. Returns what is wrong, in words for the maker: no record, or none of ours; else
// empty.
std::string load_reuse();

// Whether the last build knows the file as it is now, and what it knows. Any thread.
bool find_reuse(const source_file& file, old_archive& old);

// --- the new record -----------------------------------------------------------------------------
void start_record();  // of a build that begins now
void note_record(const source_file& file, int disk, const std::string& suffix, uint32_t date,
                 int64_t archive_bytes, const std::string& sig);
// Writes it to bld.dst_fold_base. 0 or errno.
int write_record();

// The archives of a master, made on several threads. What comes of it does not depend on how many:
// each archive is made from its file alone, and the outcomes are handed over in walk order.
#pragma once

#include <string>

#include "Installer-f/builder/make_installer_bld.h"

// What came of one file.
struct pack_outcome {
  std::string suffix;  // of its archive: "zip" or "7z"
  int disk = 0;        // the disc that the archive was put on for the time being
  int64_t archive_bytes = 0;
  std::string sig;          // of the source; sig_none where it could not be had
  uint32_t date = 0;        // in the archive, as zip_date gives it
  bool taken_over = false;  // from the last output
};

// Packs bld.comp_files, in no order, and calls `commit` for each in walk order, on this thread.
// `commit` gets the file as it was when it was packed. Returns true once all are committed; false
// when the maker has ended the build or something failed, which becomes a fault: then the work in
// hand has been given up.
bool pack_files(void (*commit)(const source_file& file, const pack_outcome& outcome));

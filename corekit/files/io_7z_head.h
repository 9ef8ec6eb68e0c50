// What a 7z archive claims to hold, read before a reader of archives allocates anything for it. The
// format is that of 7zFormat.txt in the LZMA SDK (public domain).
#pragma once

#include <cstddef>

enum claims_7z : int {
  claims_fine,
  claims_damaged,   // no 7z archive, or a broken one
  claims_empty,     // no entry
  claims_too_large  // more than any archive of ours would ask for: entries, streams, dictionaries
};

// Reads the header, unpacking at most 1 MB of it if it is packed itself, and holds every count in
// it against `most_entries` and against the bytes that describe what it counts. A reader that is
// then let at the archive needs memory for that many entries, and for a dictionary of at most 256
// MB, which is filled no further than the content goes. Any thread.
claims_7z io_7z_claims(const unsigned char* archive, size_t size, size_t most_entries);

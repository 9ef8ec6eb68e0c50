// What the program asks of the system to survive its peers, and the hex dump.
//
// Main thread, at start; the dump on the failing thread.

#include "corekit/base/UTL_debug.h"

#include <algorithm>
#include <csignal>

void UTL_debug_init() {
  std::signal(SIGPIPE, SIG_IGN);
}

void dump_hex(std::FILE* file, const void* start, int bytes) {
  constexpr int across = 16;
  const unsigned char* const data = static_cast<const unsigned char*>(start);
  for (int at = 0; at < bytes; at += across) {
    const int here = std::min(across, bytes - at);
    std::fprintf(file, "%p ", static_cast<const void*>(data + at));
    for (int i = 0; i < across; ++i) {
      if (i < here) {
        std::fprintf(file, " %02x", data[at + i]);
      } else {
        std::fputs("   ", file);
      }
    }
    std::fputs("  ", file);
    for (int i = 0; i < here; ++i) {
      const unsigned char c = data[at + i];
      std::fputc(c >= 0x20 && c < 0x7F ? c : '.', file);
    }
    std::fputc('\n', file);
  }
}

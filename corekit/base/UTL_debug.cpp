// What the program asks of the system to survive its peers, the files of reports, and the hex dump.
//
// Main thread, at start; the dump on the failing thread.

#include "corekit/base/UTL_debug.h"

#include <algorithm>
#include <csignal>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_run.h"

void UTL_debug_init() {
  std::signal(SIGPIPE, SIG_IGN);
}

std::FILE* UTL_open_report(const char* name, bool anew) {
  const PLT_own_mode mode = anew ? plt_own_anew : plt_own_append;
  int file = app_packaged ? -1 : PLT_open_own(name, mode);
  if (file < 0) file = PLT_open_own(PLT_state_folder() + name, mode);
  return file < 0 ? nullptr : fdopen(file, anew ? "w" : "a");
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

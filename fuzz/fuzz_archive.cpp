// Fuzz target of a reader of archives, the one that the build names as FUZZ_UNPACK: an input
// becomes a file in memory and is unpacked into a scratch folder, which lies within a watched one.

#include <dirent.h>
#include <ftw.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "corekit/files/io_7z.h"
#include "corekit/files/io_zip.h"

namespace {

struct scratch {
  scratch() {
    watched = "/tmp/skyvane_fuzz.XXXXXX";
    if (!mkdtemp(watched.data())) abort();
    watched += "/";
    out = watched + "out/";
    mkdir(out.c_str(), 0755);
    input = memfd_create("input", MFD_CLOEXEC);
    path = "/proc/self/fd/" + std::to_string(input);
  }
  ~scratch() { nftw(watched.c_str(), drop, 16, FTW_DEPTH | FTW_PHYS); }

  static int drop(const char* item, const struct stat*, int, FTW*) { return remove(item); }

  std::string watched, out, path;
  int input = -1;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static scratch s;
  if (ftruncate(s.input, 0) != 0 || pwrite(s.input, data, size, 0) != ssize_t(size)) abort();
  FUZZ_UNPACK(s.path, s.out, nullptr, 0);
  nftw(s.out.c_str(), scratch::drop, 16, FTW_DEPTH | FTW_PHYS);

  // The folder itself goes with its content; nothing else may be beside it.
  DIR* dir = opendir(s.watched.c_str());
  int items = 0;
  while (readdir(dir))
    ++items;
  closedir(dir);
  if (items != 2) abort();
  mkdir(s.out.c_str(), 0755);
  return 0;
}

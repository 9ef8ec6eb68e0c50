// Fuzz target of a reader of archives, the one that the build names as FUZZ_UNPACK: an input
// becomes a file in memory and is unpacked into a scratch folder, which lies within a watched one.

#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>

#include <cstdio>

#include "corekit/files/io_7z.h"
#include "corekit/files/io_zip.h"
#include "fuzz/fuzz_util.h"

namespace {

struct scratch {
  scratch() {
    watched = "/tmp/skyvane_fuzz.XXXXXX";
    fuzz_check(mkdtemp(watched.data()) != nullptr);
    watched += "/";
    out = watched + "out/";
    mkdir(out.c_str(), 0755);
  }
  ~scratch() { nftw(watched.c_str(), drop, 16, FTW_DEPTH | FTW_PHYS); }

  static int drop(const char* item, const struct stat*, int, FTW*) { return remove(item); }

  std::string watched, out;
  fuzz_file input;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static scratch s;
  s.input.put(data, size);
  FUZZ_UNPACK(s.input.path, s.out, nullptr, 0);
  nftw(s.out.c_str(), scratch::drop, 16, FTW_DEPTH | FTW_PHYS);

  // The folder itself goes with its content; nothing else may be beside it.
  DIR* dir = opendir(s.watched.c_str());
  int items = 0;
  while (readdir(dir))
    ++items;
  closedir(dir);
  fuzz_check(items == 2);
  mkdir(s.out.c_str(), 0755);
  return 0;
}

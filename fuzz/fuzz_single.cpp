// Fuzz target of the one road by which archives of a release are unpacked: in memory, one file, up
// to a limit. The first bytes choose zip or 7z.

#include "corekit/files/io_single.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr uint64_t most = 1u << 20;
  single_file file;
  if (io_read_single(data, size, most, file) != single_ok) return 0;
  fuzz_check(file.size <= most && !file.name.empty());
  // Every byte of it must be there to be read.
  uint8_t sum = 0;
  for (size_t i = 0; i < file.size; ++i)
    sum = static_cast<uint8_t>(sum + file.bytes[i]);
  static volatile uint8_t sink;
  sink = sum;
  (void)sink;
  return 0;
}

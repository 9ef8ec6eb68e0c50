// Fuzz target of the 7z reader.

#include "corekit/Files/io_7z.h"
#include "fuzz/fuzz_archive.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_unpack(p7z_to_file, data, size);
  return 0;
}

// Fuzz target of the zip reader.

#include "corekit/Files/io_zip.h"
#include "fuzz/fuzz_archive.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz_unpack(zip_to_file, data, size);
  return 0;
}

// Fuzz target of the language file's reader, and of what looks its texts up.

#include "corekit/base/UTL_translate.h"
#include "corekit/files/UTL_translate_load.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz_file file;
  if (size == 0) return 0;
  fuzz_take_alerts();
  file.put(data + 1, size - 1);
  try {
    if (UTL_translate_load(file.path, data[0] & 1)) {
      UTL_translate_string("Quit");
      UTL_translate_string("");
    }
  } catch (const fuzz_fatal&) {
  }
  UTL_translate_clear();
  fuzz_check(UTL_translate_string("Quit") == "Quit");
  return 0;
}

// Fuzz target of the preference file's reader, with the installer's own list of settings: whatever
// a file says, they come out within what the pages take.

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_prefs.h"
#include "corekit/files/pref.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz_file file;
  fuzz_take_alerts();
  file.put(data, size);
  try {
    scan_class scan(file.path, pref_read);
    wizard_prefs_io(scan);
    for (const auto& [tag, value] : scan.tags)
      fuzz_check((tag + value).find_first_of("\r\n") == std::string::npos);
  } catch (const fuzz_fatal&) {
    return 0;
  }
  return 0;
}

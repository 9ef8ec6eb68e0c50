// Fuzz target of the manifest's reader, behind the header: whatever is kept can be installed below
// a destination, and is what the other steps take for granted.

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "fuzz/fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz_file file;
  fuzz_take_alerts();
  // A header in another version would send the user to the web.
  std::string text = "I\n900 version\nINSTALLER\n";
  text.append(reinterpret_cast<const char*>(data), size);
  file.put(text.data(), text.size());
  try {
    if (read_directory(file.path, "") != directory_loaded) return 0;
  } catch (const fuzz_fatal&) {
    return 0;
  }
  fuzz_check(!sim_info.empty());
  for (const file_history_struct& history : sim_info) {
    fuzz_check(!history.versions.empty());
    for (const file_version_struct& one : history.versions) {
      fuzz_check(std::string_view(one.path) == history.current().path);
      fuzz_check(manifest_path_is_safe(one.path));
      fuzz_check(one.os >= 0 && one.os <= 6 && one.disk >= 0 && one.disk < 100);
      fuzz_check(one.sig_want.is_digest() || one.sig_want == sig_gone);
      fuzz_check(!one.is_global || (one.lat_index >= 0 && one.lat_index < 18 &&
                                    one.lon_index >= 0 && one.lon_index < 36));
    }
  }
  return 0;
}

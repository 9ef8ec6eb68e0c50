// Fuzz target of the reader of a disc's label: a release's name comes of it that is a plain
// folder's, or none.

#include <sys/stat.h>

#include "Installer-f/engine/utils_servers_list.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "fuzz/fuzz_util.h"

namespace {

// A disc's folder, in which the label is a link to the input.
struct disc {
  disc() {
    folder = "/tmp/skyvane_fuzz.XXXXXX";
    fuzz_check(mkdtemp(folder.data()) != nullptr);
    folder += "/";
    fuzz_check(symlink(file.path.c_str(), (folder + disc_label_file).c_str()) == 0);
  }
  ~disc() {
    unlink((folder + disc_label_file).c_str());
    rmdir(folder.c_str());
  }
  fuzz_file file;
  std::string folder;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const disc one;
  fuzz_take_alerts();
  one.file.put(data, size);
  dvd_path = one.folder;
  install_name = no_install_name;
  stg.directory_state = manifest_refused;  // the label is all that is looked at
  try {
    UTIL_scan_dvd();
  } catch (const fuzz_fatal&) {
    return 0;
  }
  fuzz_check(install_name == no_install_name || release_is_plain(install_name));
  return 0;
}

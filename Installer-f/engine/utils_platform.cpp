// Which platform the job at hand is for: told by the files of the copy, since nothing else of it
// remembers.
//
// Steps: count, for each platform, the files that are there of those that it alone is shipped; the
// one with most is it. A file that lies at one place for several counts for each of them, and so
// decides nothing; neither do the odd files of another platform that a user put beside his own.
//
// Main thread. Writes stg.target_os.

#include "Installer-f/engine/utils_platform.h"

#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/xer.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr int platform_count = 3;
constexpr const char* names[platform_count + 1] = {"", "Macintosh", "Windows", "Linux"};

// The platform that alone wants files of this code; 0 for every or none.
int only_platform_of(int os) {
  constexpr int os_linux_of_all = 6;
  if (os == os_linux_of_all) return target_linux;
  return os <= platform_count ? os : 0;
}

bool lies_there(const std::string& location) {
  struct stat info;
  return lstat(location.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

}  // namespace

int platform_of_copy() {
  int found[platform_count + 1] = {};
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& current = history.current();
    const int platform = only_platform_of(current.os);
    if (platform && lies_there(app_path + install_location(current.path))) ++found[platform];
  }
  const int* const most = std::max_element(std::begin(found), std::end(found));
  if (std::count(std::begin(found), std::end(found), *most) > 1) return 0;  // or none is there
  return static_cast<int>(most - found);
}

void settle_platform() {
  const int platform = dest_dir_path.empty() ? 0 : platform_of_copy();
  stg.target_os = platform ? platform : stg.new_copy_os;
  if (platform && platform != stg.new_copy_os) {
    xer << "The copy at " << dest_dir_path << " is for " << names[platform] << " and stays so.\n";
  }
}

// See utils_guard.h. The times compared are the file system's own clock's, which moves in steps: a
// change in the very step in which the verification began counts as one after it.

#include "Installer-f/engine/utils_guard.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <tuple>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_verify.h"
#include "corekit/files/io_utils.h"

namespace {

bool is_unchanged_since(const timespec& time, const struct stat& info) {
  return std::tie(info.st_ctim.tv_sec, info.st_ctim.tv_nsec) < std::tie(time.tv_sec, time.tv_nsec);
}

}  // namespace

bool is_known_state(const file_history_struct& history, const file_sig& sig) {
  return sig.is_digest() && std::any_of(history.versions.begin(), history.versions.end(),
                                        [&sig](const file_version_struct& version) {
                                          return sig == version.sig_want;
                                        });
}

bool guard_lets_go(const std::string& location, const file_history_struct& history) {
  const timespec begun = verification_began();
  struct stat info;
  if (begun.tv_sec == 0 || lstat((app_path + location).c_str(), &info) != 0) return true;
  if (S_ISDIR(info.st_mode)) return true;
  // Under another spelling it may be another file than the one that was found: that one is gone.
  const file_version_struct& current = history.current();
  if (location.ends_with(installed_part(current.path)) && is_unchanged_since(begun, info)) {
    return true;
  }
  std::string text;
  const file_sig sig = calc_file_md5(location, text) == 0 ? file_sig(text) : sig_unreadable;
  return sig == current.sig_have || is_known_state(history, sig);
}

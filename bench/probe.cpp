// One call into the engine, timed, on files of the caller's, for script/bench. Prints one line: the
// seconds that the call took, and what came of it.
//
//   probe read MANIFEST     reads it          lines, sum of the installed sizes
//   probe decide MANIFEST   decides           files to fetch; the copy is taken for empty
//   probe unpack FROM TO    unpacks every archive of a folder into another, with one thread for
//   each
//                           processor, as the disc pipeline has     archives
//
// Both folders of `unpack` end in "/".

#include <dirent.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/files/io_zip.h"

namespace {

class stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

bool probe_read(const std::string& manifest) {
  const stopwatch watch;
  if (read_directory(manifest, "") != 3) return false;
  const double seconds = watch.seconds();
  size_t lines = 0;
  double raw_kb = 0;
  for (const file_history_struct& history : sim_info)
    for (const file_version_struct& version : history.versions) {
      ++lines;
      raw_kb += static_cast<double>(version.raw_kb);
    }
  std::printf("%.6f %zu %.0f\n", seconds, lines, raw_kb);
  return true;
}

bool probe_decide(const std::string& manifest) {
  if (read_directory(manifest, "") != 3) return false;
  set_install_filter(1, 1);
  for (file_history_struct& history : sim_info)
    history.current().sig_have = sig_none;
  const stopwatch watch;
  recalc_disk_sizes();
  if (choose_files() != 1) return false;
  const double seconds = watch.seconds();
  size_t wanted = 0;
  for (const file_history_struct& history : sim_info)
    wanted += history.current().need_fetch != 0;
  std::printf("%.6f %zu\n", seconds, wanted);
  return true;
}

std::vector<std::string> archives_in(const std::string& folder) {
  std::vector<std::string> found;
  DIR* const dir = opendir(folder.c_str());
  if (dir == nullptr) return found;
  while (const dirent* const entry = readdir(dir))
    if (std::string(entry->d_name).ends_with(".zip")) found.push_back(folder + entry->d_name);
  closedir(dir);
  return found;
}

bool probe_unpack(const std::string& from, const std::string& to) {
  const stopwatch watch;
  const std::vector<std::string> archives = archives_in(from);
  std::atomic<size_t> next = 0, failed = 0;
  const auto unpack = [&] {
    for (size_t i = next++; i < archives.size(); i = next++)
      if (zip_to_file(archives[i], to, nullptr, 0) != 0) ++failed;
  };
  std::vector<std::thread> others;
  for (int i = 1; i < PLT_processor_count(); ++i)
    others.emplace_back(unpack);
  unpack();
  for (std::thread& each : others)
    each.join();
  std::printf("%.6f %zu\n", watch.seconds(), archives.size());
  return failed == 0 && !archives.empty();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 2 ? argv[1] : "";
  const bool done = what == "read" && argc == 3     ? probe_read(argv[2])
                    : what == "decide" && argc == 3 ? probe_decide(argv[2])
                    : what == "unpack" && argc == 4 ? probe_unpack(argv[2], argv[3])
                                                    : false;
  if (!done)
    std::fprintf(stderr, "probe: \"%s\" failed, or is none of read, decide, unpack\n",
                 what.c_str());
  return done ? 0 : 1;
}

// One call into the engine, timed, on files of the caller's, for script/bench. Prints one line: the
// seconds that the call took, and what came of it.
//
//   read MANIFEST        reads it: lines, and the sum of the installed sizes
//   decide MANIFEST      decides, with the copy taken for empty: files to fetch
//   fetch PORT LIST TO   fetches the paths of LIST, one a line, from the server at PORT of this
//                        machine into TO, over the slots of the streams: files
//   unpack MANIFEST FROM TO
//                        unpacks the archives of its files, which lie side by side in FROM, into
//                        TO, with their signatures compared, and a thread a processor: archives
//
// Folders end in "/".

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http.h"

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

bool unpack_one(gate_class& gate, const file_version_struct& file, const std::string& from) {
  const std::string_view leaf = path_leaf(file.path);
  const std::string archive = from + std::string(leaf) + ".zip";
  const io_handle opened(open(archive.c_str(), O_RDONLY | O_CLOEXEC));
  const place_order order{leaf, file.sig_want, place_budget(file.raw_kb)};
  return opened &&
         place_archive_file(gate, opened.get(), place_budget(file.zip_kb), order).code == 0;
}

bool probe_unpack(const std::string& manifest, const std::string& from, const std::string& to) {
  if (read_directory(manifest, "") != 3) return false;
  std::vector<const file_version_struct*> files;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& file = history.current();
    const std::string archive = from + std::string(path_leaf(file.path)) + ".zip";
    if (access(archive.c_str(), F_OK) == 0) files.push_back(&file);
  }
  const stopwatch watch;
  gate_class gate;
  if (gate.open(to) != 0) return false;
  std::atomic<size_t> next = 0, failed = 0;
  const auto unpack = [&] {
    for (size_t i = next++; i < files.size(); i = next++)
      failed += !unpack_one(gate, *files[i], from);
  };
  std::vector<std::thread> others;
  for (int i = 1; i < PLT_processor_count(); ++i)
    others.emplace_back(unpack);
  unpack();
  for (std::thread& each : others)
    each.join();
  std::printf("%.6f %zu\n", watch.seconds(), files.size());
  return failed == 0 && !files.empty();
}

bool probe_fetch(const std::string& port, const std::string& list, const std::string& to) {
  std::vector<std::string> paths;
  std::ifstream in(list);
  for (std::string line; std::getline(in, line);)
    paths.push_back(line);
  http._proxy_host = "127.0.0.1";
  http._proxy_port_int = std::atoi(port.c_str());

  constexpr int first = http_class::first_kept_slot;
  constexpr int none = -1;
  std::vector<int> file(http_class::slot_count, none);
  int next = 0, failed = 0;
  const int count = static_cast<int>(paths.size());
  const stopwatch watch;
  for (bool over = false; !over;) {
    over = true;
    unsigned waiting = 0;
    xtim.xtim_update();
    for (int slot = first; slot < http_class::slot_count; ++slot) {
      int& at = file[static_cast<size_t>(slot)];
      for (int result = http_done; result != http_running;) {
        if (at == none && next < count) at = next++;
        if (at == none) break;
        result = http.net_check(slot, "mirror.example", paths[static_cast<size_t>(at)],
                                to + std::to_string(at));
        failed += result == http_failed;
        if (result == http_running) {
          waiting |= 1u << slot;
        } else {
          at = none;
        }
      }
    }
    over = waiting == 0;
    if (!over) http.wait(waiting, 1000);
  }
  std::printf("%.6f %d\n", watch.seconds(), count);
  return failed == 0 && count > 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 2 ? argv[1] : "";
  const bool done = what == "read" && argc == 3     ? probe_read(argv[2])
                    : what == "decide" && argc == 3 ? probe_decide(argv[2])
                    : what == "fetch" && argc == 5  ? probe_fetch(argv[2], argv[3], argv[4])
                    : what == "unpack" && argc == 5 ? probe_unpack(argv[2], argv[3], argv[4])
                                                    : false;
  if (!done)
    std::fprintf(stderr, "probe: \"%s\" failed, or is none of read, decide, fetch, unpack\n",
                 what.c_str());
  return done ? 0 : 1;
}

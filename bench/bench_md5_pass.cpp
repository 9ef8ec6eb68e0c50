// bench_md5_pass FOLDER [--md5=NAME]: the verification pass over the files of a folder tree, as the
// unattended run makes it: a table of all of them, and a step each time that a worker has handed
// something back. Prints a line for each of five passes, the instructions used, and a digest of all
// findings, by which two runs can be compared.

#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_verify.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"

namespace {

struct tree_list {
  std::vector<std::string> files;  // below the root, in order
  double bytes = 0;
};

void list(const std::string& root, const std::string& folder, tree_list& tree) {
  std::vector<std::string> names;
  DIR* const dir = opendir((root + folder).c_str());
  if (dir == nullptr) return;
  while (const dirent* const entry = readdir(dir))
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  closedir(dir);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    struct stat info;
    if (lstat((root + folder + name).c_str(), &info) != 0) continue;
    if (S_ISDIR(info.st_mode)) list(root, folder + name + "/", tree);
    if (!S_ISREG(info.st_mode)) continue;
    tree.files.push_back("ALL_os/" + folder + name);
    tree.bytes += static_cast<double>(info.st_size);
  }
}

double processor_seconds() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::string digest_of_findings() {
  MD5_state state;
  MD5Init(state);
  for (const file_history_struct& history : sim_info) {
    const std::string sig = history.current().sig_have.text();
    MD5UpdateWide(state, sig.data(), static_cast<uint32_t>(sig.size()));
  }
  uint8_t digest[16];
  MD5Final(digest, state);
  return file_sig(digest).text();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::printf("usage: bench_md5_pass FOLDER [--md5=AVX-512|AVX2|SSE2|scalar]\n");
    return 2;
  }
  cmdline.init_unix(argc, argv);
  dest_dir_path = std::string(argv[1]) + "/";
  tree_list tree;
  list(dest_dir_path, "", tree);
  for (const std::string& path : tree.files)
    sim_info.emplace_back().versions.emplace_back().path = path;

  for (int round = 0; round < 5; ++round) {
    const double before = processor_seconds();
    const auto begin = std::chrono::steady_clock::now();
    int index = 0;
    float progress = 0;
    int steps = 1;
    for (; checksum_directory(index, progress) == 0; ++steps)
      PLT_wait_event(16);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf(
        "%zu files, %.2f GB: %.3f s, %.2f GB/s, %.3f s of processor, %d steps, findings %s\n",
        tree.files.size(), tree.bytes / 1e9, took.count(), tree.bytes / 1e9 / took.count(),
        processor_seconds() - before, steps, digest_of_findings().c_str());
  }
  return 0;
}

// Reading and judging a manifest of 500,000 lines, and the memory that its table takes.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdio>
#include <string>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/Platform/PLT_memory.h"

namespace {

constexpr int lines_wanted = 500000;

// Forty files a folder, and every third file with an earlier version.
std::string write_manifest() {
  const std::string path = "bench_directory.tmp";
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return "";
  std::fputs("I\n900 version\nINSTALLER\n\n", file);
  for (int line = 0, name = 0; line < lines_wanted; ++name) {
    if (name % 40 == 0)
      std::fprintf(file, "\nDIR ALL_os/Custom Scenery/region %04d/objects/\n", name / 40);
    for (int version = name % 3 == 0 ? 0 : 1; version < 2; ++version, ++line)
      std::fprintf(file, "FILE 0 0 %d 12 34 %032x building %06d.obj\n", 90500 + 501 * version,
                   name * 2 + version, name);
  }
  std::fclose(file);
  return path;
}

double resident() {
  return static_cast<double>(PLT_memory_size().resident);
}

double processor_ms() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  const auto ms = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// The first read has its memory from the system; the others find it again.
void table_read(benchmark::State& state) {
  const std::string path = write_manifest();
  sim_info.clear();
  static const double before = resident(), ms_before = processor_ms();
  if (read_directory(path, "") != directory_loaded) state.SkipWithError("cannot read the manifest");
  static const double first_ms = processor_ms() - ms_before;
  state.counters["first_ms"] = first_ms;
  state.counters["bytes_a_line"] = (resident() - before) / lines_wanted;
  for (auto _ : state)
    if (read_directory(path, "") != directory_loaded)
      state.SkipWithError("cannot read the manifest");
  state.SetItemsProcessed(state.iterations() * lines_wanted);
  std::remove(path.c_str());
}
BENCHMARK(table_read)->Unit(benchmark::kMillisecond);

// Every file absent, as before a first install.
void judge_all(benchmark::State& state) {
  const std::string path = write_manifest();
  read_directory(path, "");
  for (file_history_struct& history : sim_info)
    history.current().sig_have = sig_none;
  for (auto _ : state) {
    recalc_disk_sizes();
    choose_files();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(sim_info.size()));
  std::remove(path.c_str());
}
BENCHMARK(judge_all)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

// Reading and judging a manifest of 500,000 lines, and the memory that its table takes.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <string>

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"

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

size_t heap_in_use() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void table_read(benchmark::State& state) {
  static const size_t before = heap_in_use();  // while there is no table yet
  const std::string path = write_manifest();
  for (auto _ : state)
    if (read_directory(path, "") != 3) state.SkipWithError("cannot read the manifest");
  state.SetItemsProcessed(state.iterations() * lines_wanted);
  state.counters["bytes_a_line"] = static_cast<double>(heap_in_use() - before) / lines_wanted;
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

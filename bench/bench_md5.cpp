// The digest alone, one stream and many side by side, and single files.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_md5_lanes.h"
#include "Installer-f/engine/utils_verify.h"

namespace {

void digest(benchmark::State& state) {
  const std::vector<uint8_t> bytes(static_cast<size_t>(state.range(0)), 0x5a);
  uint8_t result[16];
  for (auto _ : state) {
    MD5_state md5;
    MD5Init(md5);
    MD5UpdateWide(md5, bytes.data(), static_cast<uint32_t>(bytes.size()));
    MD5Final(result, md5);
    benchmark::DoNotOptimize(result);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(digest)->Arg(64)->Arg(10 * 1000)->Arg(16 * 1000 * 1000);

// Every lane in use, over streams that together fit into the second cache.
void lane_digest(benchmark::State& state, const MD5_lane_code& code) {
  constexpr size_t blocks = 250;
  const size_t size = blocks * MD5_block;
  const std::vector<uint8_t> bytes(size * static_cast<size_t>(code.lanes), 0x5a);
  MD5_lanes lanes = {};
  for (auto _ : state) {
    for (int lane = 0; lane < code.lanes; ++lane)
      lanes.at[lane] = bytes.data() + size * static_cast<size_t>(lane);
    MD5_digest_lanes(code, lanes, code.lanes, blocks);
    benchmark::DoNotOptimize(lanes.chain);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

void one_file(benchmark::State& state) {
  const std::string path = "bench_md5.tmp";
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  const std::string content(static_cast<size_t>(state.range(0)), 'x');
  if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file) != content.size()) {
    state.SkipWithError("cannot write the file to hash");
  }
  if (file != nullptr) std::fclose(file);
  std::string sig;
  for (auto _ : state)
    if (calc_file_md5(path, sig) != 0) state.SkipWithError("cannot read the file");
  state.SetBytesProcessed(state.iterations() * state.range(0));
  std::remove(path.c_str());
}
BENCHMARK(one_file)->Arg(0)->Arg(10 * 1000)->Arg(16 * 1000 * 1000);

}  // namespace

int main(int argc, char** argv) {
  for (const MD5_lane_code& code : MD5_lane_codes())
    benchmark::RegisterBenchmark((std::string("lanes/") + code.name).c_str(), lane_digest, code);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

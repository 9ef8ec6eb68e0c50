// Gives saved inputs to the fuzz targets, in builds without a fuzzer: `fuzz_replay TARGET
// FOLDER...`. An input that a target does not bear ends the process, as it does when it is found.

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#define SKYVANE_FUZZ_TARGET(name) extern "C" int fuzz_##name(const uint8_t* data, size_t size);
SKYVANE_FUZZ_TARGETS
#undef SKYVANE_FUZZ_TARGET

namespace {

constexpr struct {
  const char* name;
  int (*run)(const uint8_t* data, size_t size);
} targets[] = {
#define SKYVANE_FUZZ_TARGET(name) {#name, fuzz_##name},
    SKYVANE_FUZZ_TARGETS};

int replay(int (*run)(const uint8_t*, size_t), const char* folder) {
  int inputs = 0;
  for (const auto& item : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(item.path(), std::ios::binary);
    // A block of its own, so that the byte behind it is nobody's.
    const std::vector<uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
    std::printf("%s\n", item.path().c_str());
    std::fflush(stdout);
    run(bytes.data(), bytes.size());
    ++inputs;
  }
  return inputs;
}

}  // namespace

int main(int count, char** arguments) {
  for (const auto& target : targets) {
    if (count < 3 || std::strcmp(target.name, arguments[1]) != 0) continue;
    for (int i = 2; i < count; ++i) {
      const int inputs = replay(target.run, arguments[i]);
      std::printf("%s: %d inputs\n", arguments[i], inputs);
      if (inputs == 0) return 1;
    }
    return 0;
  }
  std::fprintf(stderr, "usage: fuzz_replay TARGET FOLDER...\n");
  return 2;
}

// Gives saved inputs to the fuzz targets, in builds without a fuzzer: `fuzz_replay TARGET
// FOLDER...`. Each comes whole, cut to every length, and changed at random, the same way each time.
// An input that a target does not bear ends the process, as it does when it is found.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
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

using bytes = std::vector<uint8_t>;

// The present input, for whoever has to find what was not borne.
std::string present;
void tell_present(int = 0) {
  std::fprintf(stderr, "The input was %s\n", present.c_str());
}

// Changes a few bytes or bits, cuts the end off, or repeats a part; mostly in the first bytes,
// where the headers are.
bytes changed(bytes data, std::mt19937& random) {
  const auto below = [&random](size_t limit) { return random() % std::max<size_t>(limit, 1); };
  for (size_t left = 1 + below(4); left > 0 && !data.empty(); --left) {
    const size_t at = below(below(3) ? std::min<size_t>(data.size(), 160) : data.size());
    constexpr uint8_t edges[] = {0, 1, 2, 0x7F, 0x80, 0xFE, 0xFF};
    switch (below(6)) {
      case 0:
        data[at] ^= static_cast<uint8_t>(1u << below(8));
        break;
      case 1:
        data[at] = edges[below(sizeof edges)];
        break;
      case 2:
        data[at] = static_cast<uint8_t>(random());
        break;
      case 3:
        data.resize(at);
        break;
      case 4:
        for (size_t i = at; i < std::min(data.size(), at + 4); ++i)
          data[i] = edges[below(sizeof edges)];
        break;
      default: {
        const bytes part(data.begin() + below(at), data.begin() + at);
        data.insert(data.begin() + at, part.begin(), part.end());
      }
    }
  }
  data.shrink_to_fit();  // so that the byte behind it is nobody's
  return data;
}

int replay(int (*run)(const uint8_t*, size_t), const char* folder) {
  constexpr int changes = 5000;
  constexpr auto time_limit = std::chrono::seconds(2);
  int inputs = 0;
  for (const auto& item : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(item.path(), std::ios::binary);
    const bytes whole(std::istreambuf_iterator<char>(file), {});
    for (size_t size = 0; size <= whole.size(); ++size) {
      present = item.path().string() + ", cut to " + std::to_string(size);
      const bytes cut(whole.begin(), whole.begin() + size);
      run(cut.data(), size);
    }
    std::mt19937 random(20);
    const auto limit = std::chrono::steady_clock::now() + time_limit;
    int done = 0;
    for (; done < changes && std::chrono::steady_clock::now() < limit; ++done) {
      present = item.path().string() + ", change " + std::to_string(done);
      const bytes data = changed(whole, random);
      run(data.data(), data.size());
    }
    std::printf("%s: %d changes\n", item.path().c_str(), done);
    ++inputs;
  }
  return inputs;
}

}  // namespace

extern "C" [[gnu::weak]] void __sanitizer_set_death_callback(void (*callback)());

int main(int count, char** arguments) {
  std::signal(SIGABRT, tell_present);
  if (__sanitizer_set_death_callback) __sanitizer_set_death_callback([] { tell_present(); });
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

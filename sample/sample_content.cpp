// The bytes of the sample's files, from a generator of its own, so that every machine makes the
// same release.

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "sample/sample_tree.h"

namespace {

// Where a file's numbers begin: its path and revision, mixed (FNV-1a).
uint64_t seed_of(const std::string& path, int revision) {
  uint64_t hash = 14695981039346656037ull;
  for (const char c : path + "#" + std::to_string(revision))
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  return hash;
}

// SplitMix64: each step a good 64-bit number, from a counter.
struct generator {
  uint64_t state;
  uint64_t next() {
    state += 0x9E3779B97F4A7C15ull;
    uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
};

std::string make_text(generator numbers, const std::string& head, size_t size) {
  constexpr std::array<std::string_view, 16> words = {
      "wing",  "flap",  "rudder",  "runway", "beacon", "throttle", "airspeed", "heading",
      "climb", "stall", "descent", "gear",   "trim",   "fuel",     "pitch",    "yaw"};
  std::string text = head.substr(0, size);
  while (text.size() < size) {
    const uint64_t number = numbers.next();
    text += words[number % words.size()];
    text += (number >> 32) % 8 == 0 ? '\n' : ' ';
  }
  text.resize(size);
  return text;
}

// Random numbers and runs of one byte in turn.
std::string make_data(generator numbers, size_t size) {
  std::string data;
  data.reserve(size + 64);
  while (data.size() < size) {
    const uint64_t number = numbers.next();
    if (number & 1) {
      data.append(64, static_cast<char>(number >> 8));
      continue;
    }
    for (int i = 0; i < 8; ++i) {
      const uint64_t eight = numbers.next();
      data.append(reinterpret_cast<const char*>(&eight), sizeof eight);
    }
  }
  data.resize(size);
  return data;
}

void put(std::string& bytes, size_t at, uint64_t value, int count) {
  for (int i = 0; i < count; ++i)
    bytes[at + static_cast<size_t>(i)] = static_cast<char>(value >> (8 * i));
}

// A 32-bit console program of one section, whose code returns 0. Its header does not yet say that
// it copes with large addresses: to add that is the master builder's part.
std::string make_program(generator numbers, size_t size) {
  constexpr size_t pe = 0x80, optional = pe + 24, section = optional + 0xE0, code_at = 0x200;
  std::string bytes(code_at + 0x200, '\0');
  bytes.replace(0, 2, "MZ");
  put(bytes, 0x3C, pe, 4);
  bytes.replace(pe, 2, "PE");
  put(bytes, pe + 4, 0x14C, 2);    // Intel 386
  put(bytes, pe + 6, 1, 2);        // sections
  put(bytes, pe + 20, 0xE0, 2);    // size of the optional header
  put(bytes, pe + 22, 0x0102, 2);  // executable, 32 bits
  put(bytes, optional, 0x10B, 2);
  put(bytes, optional + 4, 0x200, 4);      // size of the code
  put(bytes, optional + 16, 0x1000, 4);    // entry point
  put(bytes, optional + 20, 0x1000, 4);    // base of the code
  put(bytes, optional + 28, 0x400000, 4);  // image base
  put(bytes, optional + 32, 0x1000, 4);    // alignment in memory
  put(bytes, optional + 36, 0x200, 4);     // alignment in the file
  put(bytes, optional + 40, 4, 2);         // least system version
  put(bytes, optional + 48, 4, 2);         // least subsystem version
  put(bytes, optional + 56, 0x2000, 4);    // size of the image
  put(bytes, optional + 60, 0x200, 4);     // size of the headers
  put(bytes, optional + 68, 3, 2);         // console
  put(bytes, optional + 72, 0x100000, 4);  // stack and heap, reserved and committed
  put(bytes, optional + 76, 0x1000, 4);
  put(bytes, optional + 80, 0x100000, 4);
  put(bytes, optional + 84, 0x1000, 4);
  put(bytes, optional + 92, 16, 4);  // data directories, all empty
  bytes.replace(section, 5, ".text");
  put(bytes, section + 8, 0x200, 4);
  put(bytes, section + 12, 0x1000, 4);
  put(bytes, section + 16, 0x200, 4);
  put(bytes, section + 20, code_at, 4);
  put(bytes, section + 36, 0x60000020, 4);  // code, readable, executable
  bytes.replace(code_at, 3, "\x31\xC0\xC3", 3);
  if (size > bytes.size()) bytes += make_data(numbers, size - bytes.size());
  return bytes;
}

std::string make_script(const std::string& path, int revision) {
  return "#!/bin/sh\n"
         "# The sample's stand-in for a program.\n"
         "echo \"Started: " +
         path + " (revision " + std::to_string(revision) + ") $*\"\n";
}

}  // namespace

std::string sample_content(const std::string& path, const sample_file& file) {
  const generator numbers{seed_of(path, file.revision)};
  const std::string head = path + "\nrevision " + std::to_string(file.revision) + "\n";
  switch (file.kind) {
    case content::text:
      return make_text(numbers, head, file.size);
    case content::tile:
      return make_text(numbers, "Made-up scenery tile\n" + head, file.size);
    case content::data:
      return make_data(numbers, file.size);
    case content::program:
      return make_program(numbers, file.size);
    case content::script:
      return make_script(path, file.revision);
    case content::link:
      break;
  }
  return {};
}

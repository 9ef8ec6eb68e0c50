// The machine's figures for the log. Read once at start-up; none of them decides anything.

#include <fcntl.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>

#include "corekit/Platform/PLT_system.h"

namespace {
// The first processor's lines are at the front of the file.
std::string read_cpuinfo() {
  std::string text(16384, '\0');
  const int file = open("/proc/cpuinfo", O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  const ssize_t got = read(file, text.data(), text.size());
  close(file);
  text.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return text;
}

constexpr uint32_t four_characters(std::string_view text) {
  uint32_t code = 0;
  for (size_t i = 0; i < 4; ++i) {
    code = code << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : ' ');
  }
  return code;
}
}  // namespace

void PLT_parse_release(std::string_view release, std::string (&version)[3]) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  for (std::string& part : version)
    part = "?";
  for (std::string& part : version) {
    const auto end = std::find_if_not(release.begin(), release.end(), is_digit);
    const size_t length = static_cast<size_t>(end - release.begin());
    if (length == 0) return;
    part = release.substr(0, length);
    if (length == release.size() || release[length] != '.') return;
    release.remove_prefix(length + 1);
  }
}

int PLT_parse_cpu_mhz(std::string_view cpuinfo) {
  constexpr std::string_view key = "cpu MHz";
  size_t at = cpuinfo.starts_with(key) ? 0 : cpuinfo.find("\ncpu MHz");
  if (at == std::string_view::npos) return 0;
  at = cpuinfo.find_first_not_of(" \t:", cpuinfo.find(key, at) + key.size());
  if (at == std::string_view::npos) return 0;
  float mhz = 0;
  const auto parsed = std::from_chars(cpuinfo.data() + at, cpuinfo.data() + cpuinfo.size(), mhz,
                                      std::chars_format::fixed);
  const bool sound = parsed.ec == std::errc() && mhz > 0 && mhz < 1e6f;
  return sound ? static_cast<int>(std::lround(mhz)) : 0;
}

uint32_t PLT_parse_cpu_type(std::string_view machine) {
  const bool x86 = machine == "x86_64" || (machine.size() == 4 && machine[0] == 'i' &&
                                           machine[1] >= '3' && machine.ends_with("86"));
  return machine.empty() ? 0 : four_characters(x86 ? "ixxx" : machine);
}

PLT_machine PLT_machine_figures() {
  PLT_machine figures;
  for (std::string& part : figures.version)
    part = "?";
  utsname name;
  if (uname(&name) == 0) {
    figures.system = name.sysname;
    PLT_parse_release(name.release, figures.version);
    figures.cpu_type = PLT_parse_cpu_type(name.machine);
  }
  figures.cpu_mhz = PLT_parse_cpu_mhz(read_cpuinfo());
  struct sysinfo memory;
  if (sysinfo(&memory) == 0) {
    const uint64_t megabytes = uint64_t{memory.totalram} * memory.mem_unit >> 20;
    figures.ram_mb = static_cast<int>(std::min<uint64_t>(megabytes, INT_MAX));
  }
  return figures;
}

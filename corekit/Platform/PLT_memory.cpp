// The process's memory, from /proc/self and from the allocator.
//
// Any thread. Writes no globals. What fails here gives zeros or null, since its callers are
// reporting another failure already; for the same reason nothing here throws.

#include "corekit/Platform/PLT_memory.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#ifdef SKYVANE_JEMALLOC
#include <jemalloc/jemalloc.h>
#endif

namespace {

// A line without its end; what does not fit is dropped. False at the end of the file.
bool read_line(FILE* file, char* line, int size) {
  if (!std::fgets(line, size, file)) return false;
  char* const end = std::strchr(line, '\n');
  if (end) {
    *end = '\0';
  } else {
    for (int c = std::fgetc(file); c != '\n' && c != EOF;)
      c = std::fgetc(file);
  }
  return true;
}

// The line that begins a region:
//   55d0c000-55d0d000 r-xp 00002000 08:01 131   /usr/bin/x
bool parse_region(const char* line, PLT_region& region) {
  char access[5] = {};
  unsigned major = 0, minor = 0;
  int name_at = 0;
  const int fields =
      std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s %*x %x:%x %" SCNu64 " %n", &region.start,
                  &region.end, access, &major, &minor, &region.file, &name_at);
  if (fields < 6) return false;
  region.readable = access[0] == 'r';
  region.writable = access[1] == 'w';
  region.executable = access[2] == 'x';
  region.shared = access[3] == 's';
  if (region.file) region.file |= (static_cast<uint64_t>(major) << 20 | minor) << 40;
  if (name_at) std::snprintf(region.name, sizeof region.name, "%s", line + name_at);
  return true;
}

// One of the lines "Private_Dirty:       12 kB" that follow it.
void parse_figure(const char* line, PLT_region& region) {
  char key[32] = {};
  uint64_t kilobytes = 0;
  if (std::sscanf(line, "%31[^:]: %" SCNu64 " kB", key, &kilobytes) != 2) return;
  if (std::strcmp(key, "Private_Clean") == 0 || std::strcmp(key, "Private_Dirty") == 0) {
    region.private_resident += kilobytes * 1024;
  } else if (std::strcmp(key, "Shared_Clean") == 0 || std::strcmp(key, "Shared_Dirty") == 0) {
    region.shared_resident += kilobytes * 1024;
  }
}

void count_references(PLT_region* regions, int count) {
  int* const order = static_cast<int*>(std::malloc(sizeof(int) * count));
  if (!order) return;
  for (int i = 0; i < count; ++i)
    order[i] = i;
  std::sort(order, order + count,
            [regions](int a, int b) { return regions[a].file < regions[b].file; });
  for (int first = 0, next = 0; first < count; first = next) {
    const uint64_t file = regions[order[first]].file;
    while (next < count && regions[order[next]].file == file)
      ++next;
    for (int i = first; file != 0 && i < next; ++i)
      regions[order[i]].references = next - first;
  }
  std::free(order);
}

}  // namespace

PLT_memory_sizes PLT_memory_size() {
  PLT_memory_sizes sizes;
  sizes.page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
  FILE* const file = std::fopen("/proc/self/statm", "r");
  if (!file) return sizes;
  uint64_t virt = 0, resident = 0;
  if (std::fscanf(file, "%" SCNu64 " %" SCNu64, &virt, &resident) == 2) {
    sizes.virt = virt * sizes.page;
    sizes.resident = resident * sizes.page;
  }
  std::fclose(file);
  return sizes;
}

PLT_region* PLT_memory_regions(bool resident, int* count) {
  *count = 0;
  FILE* const file = std::fopen(resident ? "/proc/self/smaps" : "/proc/self/maps", "r");
  if (!file) return nullptr;
  PLT_region* regions = nullptr;
  int used = 0, room = 0;
  char line[512];
  while (read_line(file, line, sizeof line)) {
    PLT_region region;
    if (!parse_region(line, region)) {
      if (used > 0) parse_figure(line, regions[used - 1]);
      continue;
    }
    if (used == room) {
      const int more = room ? room * 2 : 256;
      void* const grown = std::realloc(regions, sizeof(PLT_region) * more);
      if (!grown) break;
      regions = static_cast<PLT_region*>(grown);
      room = more;
    }
    regions[used++] = region;
  }
  std::fclose(file);
  count_references(regions, used);
  *count = used;
  return regions;
}

const char* PLT_sharing_name(const PLT_region& region) {
  if (region.shared) return region.shared_resident ? "True-Shared" : "Shared";
  if (region.shared_resident) return "Copy-on-write";
  return region.private_resident ? "Private" : "Empty";
}

#ifdef SKYVANE_JEMALLOC

namespace {
uint64_t statistic(const char* name) {
  size_t value = 0, size = sizeof value;
  return mallctl(name, &value, &size, nullptr, 0) == 0 ? value : 0;
}
}  // namespace

PLT_allocator_sizes PLT_allocator_size() {
  // The figures are those of the last epoch; naming a new one brings them up to date.
  uint64_t epoch = 1;
  size_t size = sizeof epoch;
  mallctl("epoch", &epoch, &size, &epoch, size);
  const uint64_t active = statistic("stats.active"), allocated = statistic("stats.allocated");
  return {"jemalloc", active, active > allocated ? active - allocated : 0,
          statistic("stats.mapped")};
}

#else

PLT_allocator_sizes PLT_allocator_size() {
  const struct mallinfo2 info = mallinfo2();
  return {"the C library", info.arena, info.fordblks, info.arena + info.hblkhd};
}

#endif

void* PLT_reserve_space(size_t bytes) {
  constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  void* const space = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, flags, -1, 0);
  return space == MAP_FAILED ? nullptr : space;
}

void PLT_release_space(void* space, size_t bytes) {
  munmap(space, bytes);
}

bool PLT_back_space(void* space, size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  return madvise(space, bytes, MADV_POPULATE_WRITE) == 0;
#else
  return false;
#endif
}

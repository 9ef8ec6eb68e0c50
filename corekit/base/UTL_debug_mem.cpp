// The memory report. Its headings say what the family's reports have always said, so that the
// makers' tools find their way: the system is "OS X" and the allocator "NED" in all of them.
//
// On the failing thread. Writes "MemoryLog.txt" and remembers that it has.

#include <atomic>
#include <cstdlib>

#include "corekit/Platform/PLT_memory.h"
#include "corekit/base/UTL_debug.h"
#include "corekit/base/UTL_new.h"

namespace {

constexpr unsigned long long kilo = 1ull << 10, mega = 1ull << 20, giga = 1ull << 30;
constexpr char report_name[] = "MemoryLog.txt";

std::atomic<bool> reported = false;  // this run has made the file anew

struct unit {
  unsigned long long bytes;
  char suffix;
};

unit unit_of(unsigned long long bytes) {
  if (bytes > 14 * giga) return {giga, 'G'};
  const double count = static_cast<double>(bytes);
  if (count > 1.4 * mega) return {mega, 'M'};
  if (count > 1.4 * kilo) return {kilo, 'K'};
  return {1, 'B'};
}

void print_size(std::FILE* file, const char* what, unsigned long long bytes) {
  std::fprintf(file, "    %-20s %5u%c\n", what, mem_to_number(bytes), mem_to_suffix(bytes));
}

void print_region(std::FILE* file, const PLT_region& r) {
  const unsigned long long size = r.end - r.start;
  std::fprintf(file, "        0x%08llX      %5u%c       %5u%c %5u%c   %20s (% 3d)       %s\n",
               static_cast<unsigned long long>(r.start), mem_to_number(size), mem_to_suffix(size),
               mem_to_number(r.private_resident), mem_to_suffix(r.private_resident),
               mem_to_number(r.shared_resident), mem_to_suffix(r.shared_resident),
               PLT_sharing_name(r), r.references, r.name[0] ? r.name : "null");
}

void print_regions(std::FILE* file) {
  std::fputs("    I will now print the entire map of virtual memory.\n", file);
  std::fputs("        Address           Size    r-private r-shared sharing-mode (ref count)\n",
             file);
  int count = 0;
  PLT_region* const regions = PLT_memory_regions(true, &count);
  unsigned long long virt = 0, resident = 0;
  for (int i = 0; i < count; ++i) {
    const PLT_region& region = regions[i];
    if (i > 0 && region.start > regions[i - 1].end) {
      const unsigned long long gap = region.start - regions[i - 1].end;
      std::fprintf(file, "        0x%08llX      %5u%c               --------\n",
                   static_cast<unsigned long long>(regions[i - 1].end), mem_to_number(gap),
                   mem_to_suffix(gap));
    }
    print_region(file, region);
    virt += region.end - region.start;
    resident += region.private_resident + region.shared_resident;
  }
  std::free(regions);
  print_size(file, "Total virtual:", virt);
  print_size(file, "Total resident:", resident);
}

void print_new_total(const UTL_new_total& total, void* context) {
  std::FILE* const file = static_cast<std::FILE*>(context);
  std::fprintf(file, "    %12llu calls  %5u%c   %s", total.calls, mem_to_number(total.bytes),
               mem_to_suffix(total.bytes), total.name);
  if (total.line) std::fprintf(file, " line %d", total.line);
  std::fputc('\n', file);
}

void print_allocator(std::FILE* file) {
  const PLT_allocator_sizes sizes = PLT_allocator_size();
  std::fputs("    This version of Skyvane is using the NED allocator.\n", file);
  std::fputs("NED-MALLOC INFO:\n", file);
  print_size(file, "arena:", sizes.arena);
  print_size(file, "free chunks:", sizes.free_chunks);
  print_size(file, "mapped:", sizes.mapped);
  UTL_new_totals(print_new_total, file);
}

}  // namespace

unsigned int mem_to_number(unsigned long long bytes) {
  return static_cast<unsigned int>(bytes / unit_of(bytes).bytes);
}

char mem_to_suffix(unsigned long long bytes) {
  return unit_of(bytes).suffix;
}

void dump_mem_stats(const char* label) {
  std::FILE* const file = UTL_open_report(report_name, !reported.exchange(true));
  if (!file) return;
  std::fprintf(file, "dump_mem_stats: %s\n", label);
  const PLT_memory_sizes sizes = PLT_memory_size();
  std::fputs("OS X Info:\n", file);
  print_size(file, "page size:", sizes.page);
  print_size(file, "virtual size:", sizes.virt);
  print_size(file, "resident size:", sizes.resident);
  print_regions(file);
  print_allocator(file);
  std::fclose(file);
}

bool UTL_valid_memory(const void* start, unsigned int bytes, int want_read, int want_write) {
  uintptr_t at = reinterpret_cast<uintptr_t>(start);
  const uintptr_t end = at + bytes;
  if (end < at) return false;
  int count = 0;
  PLT_region* const regions = PLT_memory_regions(false, &count);
  for (int i = 0; i < count && at < end; ++i) {
    const PLT_region& region = regions[i];
    if (region.end <= at) continue;
    const bool allowed = (!want_read || region.readable) && (!want_write || region.writable);
    if (region.start > at || !allowed) break;
    at = region.end;
  }
  std::free(regions);
  return bytes != 0 && at >= end;
}

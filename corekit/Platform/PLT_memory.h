// The process's memory as the system and the allocator see it. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

// --- sizes -------------------------------------------------------------------------------------

struct PLT_memory_sizes {
  uint64_t page = 0;      // bytes
  uint64_t virt = 0;      // bytes of address space in use
  uint64_t resident = 0;  // bytes of it in memory
};
PLT_memory_sizes PLT_memory_size();  // zeros where the system does not tell

struct PLT_allocator_sizes {
  const char* allocator;
  uint64_t arena = 0;        // bytes that the allocator manages for the program
  uint64_t free_chunks = 0;  // bytes of these not handed out
  uint64_t mapped = 0;       // bytes that it has from the system in all
};
PLT_allocator_sizes PLT_allocator_size();

// --- address space -----------------------------------------------------------------------------

// Zeros, of which the system backs with memory only what is touched; null if it refuses. `bytes` is
// a whole number of pages.
void* PLT_reserve_space(size_t bytes);
void PLT_release_space(void* space, size_t bytes);

// Has the system put memory behind a part of it, as touching it would, and changes nothing in it:
// it may be in use meanwhile. False where the system does not do so.
bool PLT_back_space(void* space, size_t bytes);

// --- regions -----------------------------------------------------------------------------------

struct PLT_region {
  uintptr_t start = 0, end = 0;
  bool readable = false, writable = false, executable = false;
  bool shared = false;            // stores are seen by other processes
  uint64_t file = 0;              // tells mapped files apart; 0 for none
  uint64_t private_resident = 0;  // bytes in memory and this process's alone
  uint64_t shared_resident = 0;   // bytes in memory that other processes use as well
  int references = 1;             // regions of this process that map the same file
  char name[128] = {};            // of the module or file, cut to fit; empty for none
};

// The regions of this process's address space, ascending, and their number. With `resident` the
// resident bytes too, which takes some milliseconds. Null if the system does not tell. The caller
// gives the list back with std::free.
PLT_region* PLT_memory_regions(bool resident, int* count);

// How a region is shared: "Copy-on-write", "Private", "Empty", "Shared" or "True-Shared".
const char* PLT_sharing_name(const PLT_region& region);

// Aids to diagnosis: the memory report and the stack crawl that a failure leaves behind for the
// reader of a customer's log. All best effort: a file that does not open means no report. They run
// on the failing thread, without locks.
#pragma once

#include <cstdio>

// First thing at start-up: a connection closed by its peer must not end the program, so SIGPIPE is
// ignored.
void UTL_debug_init();

// Opens a report in the working folder, or where it cannot or must not be written, or something
// lies in its way that is not ours, in the state folder. Null if neither can be had.
std::FILE* UTL_open_report(const char* name, bool anew);

// --- memory ------------------------------------------------------------------------------------

// Adds a report to "MemoryLog.txt" in the working folder, which the first report of a run makes
// anew: the label, the process's sizes, every region of its address space, and the allocator's
// figures.
void dump_mem_stats(const char* label);

// A count of bytes scaled for printing, and its unit: 'B', 'K', 'M' or 'G'. The unit changes above
// 1.4 of the larger one, to "G" only above 14.
unsigned int mem_to_number(unsigned long long bytes);
char mem_to_suffix(unsigned long long bytes);

// Whether all of a range of memory is mapped, and readable and writable as far as asked.
bool UTL_valid_memory(const void* start, unsigned int bytes, int want_read, int want_write);

// --- stack -------------------------------------------------------------------------------------

// A frame of code that keeps frame pointers.
struct stack_frame {
  const stack_frame* next;
  const void* return_address;
};

// Writes the calling thread's stack, up to 100 frames, the innermost first: from the caller of this
// function, or along the chain of `frame` if that is not null. `pc`, if not null, is written first,
// as the place that `frame` belongs to.
void UTL_dump_stack(std::FILE* file, const stack_frame* frame, const void* pc);

// The same from here, added to "stack_crawl.txt" in the working folder, which grows over the runs
// until someone deletes it.
void UTL_append_crawl();

// Writes "function + distance" of a code address, or the address alone, and its module.
void print_symbol(std::FILE* file, const void* address);

// A hex dump, 16 bytes a line.
void dump_hex(std::FILE* file, const void* start, int bytes);

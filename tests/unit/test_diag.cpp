// What a failure leaves behind, memory figures, the pool, named new, and failures of workers.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "corekit/GenC/hl_alert.h"
#include "corekit/Platform/PLT_memory.h"
#include "corekit/Thread/hl_thread.h"
#include "corekit/UTL/UTL_debug.h"
#include "corekit/UTL/UTL_mempool.h"
#include "corekit/UTL/UTL_new.h"
#include "tests/unit/test_tex_util.h"

namespace {

std::string text_of(const std::string& path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> lines_of(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);)
    lines.push_back(line);
  return lines;
}

void alert(int type, const char* text) {
  __MACIBM_alert(0, text, "", "", "", type, "tests/diag", 1);
}

// Static and never inlined, so that only a symbol table with local symbols knows it.
__attribute__((noinline)) void static_function_that_fails(const std::string& folder) {
  if (chdir(folder.c_str()) != 0) std::_Exit(3);
  alert(t_alert, "A message first.");
  alert(t_exit, "Then the end.");
  std::puts("not reached");  // keeps the call above from becoming a jump
}

__attribute__((noinline)) void innermost(std::FILE* file) {
  UTL_dump_stack(file, nullptr, nullptr);
  std::fflush(file);
}

int recursions(std::FILE* file, int depth) {
  if (depth == 0) {
    innermost(file);
    return 0;
  }
  return recursions(file, depth - 1) + 1;
}

}  // namespace

TEST(Diag, FatalAlertLeavesCrawlAndReport) {
  picture_folder folder;
  folder.put("MemoryLog.txt", "of an earlier run\n");
  folder.put("stack_crawl.txt", "kept\n");
  EXPECT_EXIT(static_function_that_fails(folder.path()), testing::ExitedWithCode(1),
              "Then the end.");

  const std::vector<std::string> crawl = lines_of(folder / "stack_crawl.txt");
  ASSERT_GT(crawl.size(), 4u);
  EXPECT_EQ(crawl[0], "kept") << "the file grows";
  size_t found = 0;
  for (size_t i = 1; i < crawl.size(); ++i) {
    char number[32];
    std::snprintf(number, sizeof number, " % 2d) ", static_cast<int>(i - 1));
    EXPECT_EQ(crawl[i].rfind(number, 0), 0u) << crawl[i];
    if (crawl[i].find("static_function_that_fails") != std::string::npos) found = i;
  }
#if defined(__GNUC__) && !defined(__clang__)
  ASSERT_NE(found, 0u) << text_of(folder / "stack_crawl.txt");
  EXPECT_NE(crawl[found].find("unit_tests"), std::string::npos) << "the module";
  int distance = 0;
  const size_t plus = crawl[found].rfind(" + ");
  ASSERT_NE(plus, std::string::npos);
  EXPECT_EQ(std::sscanf(crawl[found].c_str() + plus, " + %d", &distance), 1);
  EXPECT_GT(distance, 0);
#endif

  // Both alerts have reported, the first into a new file unless this process had reported before.
  const std::vector<std::string> report = lines_of(folder / "MemoryLog.txt");
  const std::string label =
      "dump_mem_stats: This is the dump_mem_stats call from the following code: "
      "if(type==t_exit || type == t_alert || recursive_error)";
  ASSERT_GT(report.size(), 50u);
  if (alerts_shown == 0) {
    EXPECT_EQ(report[0], label);
  }
  EXPECT_EQ(std::count(report.begin(), report.end(), label), 2);
  const char* const headings[] = {
      "OS X Info:",
      "    I will now print the entire map of virtual memory.",
      "        Address           Size    r-private r-shared sharing-mode (ref count)",
      "    This version of Skyvane is using the NED allocator.",
      "NED-MALLOC INFO:",
  };
  auto at = report.begin();
  for (const char* heading : headings) {
    at = std::find(at, report.end(), heading);
    ASSERT_NE(at, report.end()) << heading;
  }

  // Below the table's heading, lines of regions and of the gaps between them.
  at = std::find(report.begin(), report.end(), headings[2]) + 1;
  size_t lines = 0, gaps = 0;
  for (; at->starts_with("        0x"); ++at, ++lines)
    gaps += at->ends_with("--------");
  EXPECT_GT(gaps, 2u);
  EXPECT_GT(lines, gaps + 20);
}

TEST(Diag, CrawlStopsAtAHundredFrames) {
  std::FILE* const file = std::tmpfile();
  EXPECT_EQ(recursions(file, 150), 150);
  std::rewind(file);
  int lines = 0;
  bool named = false;
  for (char line[600]; std::fgets(line, sizeof line, file); ++lines)
    named |= lines == 0 && std::strstr(line, "innermost");
  EXPECT_EQ(lines, 100);
#if defined(__GNUC__) && !defined(__clang__)
  EXPECT_TRUE(named) << "the first frame is the caller's";
#endif
  std::fclose(file);

  // Chains of frames: one whose third is not mapped, and one that turns back.
  stack_frame frames[3];
  frames[0] = {&frames[1], reinterpret_cast<const void*>(&alert)};
  frames[1] = {&frames[2], nullptr};
  for (stack_frame* const last : {reinterpret_cast<stack_frame*>(~0ull - 64), &frames[0]}) {
    frames[2] = {last, nullptr};
    std::FILE* const out = std::tmpfile();
    UTL_dump_stack(out, frames, nullptr);
    std::rewind(out);
    int written = 0;
    for (char line[600]; std::fgets(line, sizeof line, out);)
      ++written;
    std::fclose(out);
    EXPECT_EQ(written, 3);
  }
}

TEST(Diag, NumbersAndUnits) {
  const struct {
    unsigned long long bytes;
    unsigned number;
    char unit;
  } rows[] = {{1433, 1433, 'B'},
              {1434, 1, 'K'},
              {1468007, 1, 'M'},
              {(14ull << 30) + 1, 14, 'G'},
              {1ull << 44, 16384, 'G'}};
  for (const auto& row : rows) {
    EXPECT_EQ(mem_to_number(row.bytes), row.number) << row.bytes;
    EXPECT_EQ(mem_to_suffix(row.bytes), row.unit) << row.bytes;
  }
}

TEST(Diag, RegionsAreWhatWasMapped) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  unsigned char* const memory = static_cast<unsigned char*>(
      mmap(nullptr, page * 4, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(memory, MAP_FAILED);
  memory[0] = 1;
  ASSERT_EQ(mprotect(memory + page, page, PROT_READ), 0);
  ASSERT_EQ(munmap(memory + page * 3, page), 0);
  const unsigned size = static_cast<unsigned>(page);
  EXPECT_TRUE(UTL_valid_memory(memory, size, 1, 1));
  EXPECT_TRUE(UTL_valid_memory(memory, size * 3, 1, 0)) << "across two regions";
  EXPECT_FALSE(UTL_valid_memory(memory, size + 1, 1, 1)) << "the second is not for writing";
  EXPECT_FALSE(UTL_valid_memory(nullptr, 1, 0, 0));
  EXPECT_FALSE(UTL_valid_memory(memory, 0, 0, 0));
  EXPECT_FALSE(UTL_valid_memory(reinterpret_cast<void*>(~0ull - 3), 8, 0, 0));

  int count = 0;
  PLT_region* const regions = PLT_memory_regions(true, &count);
  ASSERT_NE(regions, nullptr);
  const uintptr_t start = reinterpret_cast<uintptr_t>(memory);
  bool found = false, code = false;
  for (int i = 0; i < count; ++i) {
    const PLT_region& r = regions[i];
    EXPECT_TRUE(i == 0 || r.start >= regions[i - 1].end);
    if (r.start <= start && start < r.end) {
      found = r.writable && !r.shared && r.private_resident >= page;
    }
    code |= r.executable && std::strstr(r.name, "unit_tests") && r.references > 1;
  }
  std::free(regions);
  EXPECT_TRUE(found);
  EXPECT_TRUE(code);
  munmap(memory, page * 3);
}

TEST(Diag, LazyPool) {
  const float before = UTL_lazy_mempool::global_total;
  {
    UTL_lazy_mempool pool;
    EXPECT_EQ(pool.allocated() + pool.wasted() + pool.ready(), 0u);
    unsigned char* const first = static_cast<unsigned char*>(pool.allocate(100));
    unsigned char* const next = static_cast<unsigned char*>(pool.allocate(1));
    EXPECT_EQ(next - first, 112) << "rounded up to 16";
    EXPECT_EQ(pool.allocated(), 128u);
    EXPECT_EQ(UTL_lazy_mempool::global_total, before + 32768);
    const size_t ready = pool.ready();
    EXPECT_LE(ready + pool.allocated(), UTL_lazy_mempool::block_bytes);
    std::memset(pool.allocate(ready), 1, ready);
    EXPECT_EQ(pool.ready(), 0u);
    EXPECT_EQ(pool.wasted(), 0u);
    EXPECT_EQ(UTL_lazy_mempool::global_total, before + 32768) << "the last byte of a block is used";
    pool.allocate(32000);
    const size_t rest = pool.ready();
    ASSERT_GT(rest, 0u);
    pool.allocate(rest + 1);
    EXPECT_EQ(pool.wasted(), rest);
    EXPECT_EQ(UTL_lazy_mempool::global_total, before + 3 * 32768);
    std::memset(pool.allocate(100000), 1, 100000);
    EXPECT_GE(UTL_lazy_mempool::global_total, before + 3 * 32768 + 100000);
    EXPECT_THROW(pool.allocate(~size_t{0} - 4), std::bad_alloc);
  }
  EXPECT_EQ(UTL_lazy_mempool::global_total, before);
}

namespace {
[[maybe_unused]] int handler_calls = 0;
[[maybe_unused]] size_t too_much() {
  static volatile size_t bytes = ~size_t{0} / 4;  // not known to the compiler
  return bytes;
}
}  // namespace

TEST(Diag, NamedNew) {
  const auto calls_of = [](const char* name, int line) {
    struct question {
      const char* name;
      int line;
      unsigned long long calls;
    } asked{name, line, 0};
    UTL_new_totals(
        [](const UTL_new_total& total, void* context) {
          question& q = *static_cast<question*>(context);
          if (std::strcmp(total.name, q.name) == 0 && total.line == q.line) q.calls = total.calls;
        },
        &asked);
    return asked.calls;
  };
  const int line = __LINE__ + 2;
  for (int i = 0; i < 3; ++i)
    delete NAMED_NEW std::string("x");
  EXPECT_EQ(calls_of(__FILE__, line), 3u);

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // On exhaustion the handler is called, once, and then the allocation is tried again.
  EXPECT_EQ(new (std::nothrow) char[too_much()], nullptr);
  EXPECT_GE(calls_of("anonymous new-nt[]", 0), 1u);
  std::set_new_handler([] { ++handler_calls; });
  EXPECT_THROW(delete[] new char[too_much()], std::bad_alloc);
  EXPECT_EQ(handler_calls, 1);
  std::set_new_handler(nullptr);
#endif
}

TEST(Diag, SigpipeIsIgnored) {
  std::signal(SIGPIPE, SIG_DFL);
  UTL_debug_init();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  EXPECT_EQ(errno, EPIPE);
  close(ends[1]);
}

// --- failures of a worker are shown on the main thread ------------------------------------------

namespace {

void* runs_out_of_memory(void*) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  throw std::bad_alloc();  // a sanitizer's allocator ends the process instead
#else
  return new char[too_much()];
#endif
}

void* fails_fatally(void*) {
  alert(t_exit, "A worker has failed.");
  return nullptr;
}

void run_on_worker(const std::string& folder, UTL_thread_function function) {
  if (chdir(folder.c_str()) != 0) std::_Exit(3);
  THREAD_init();
  THREAD_make_workers();
  THREAD_call* const call = THREAD_run_async(function, nullptr);
  for (int i = 0; i < 1000 && !THREAD_is_done(call, 10); ++i) {
  }
  std::_Exit(4);  // the failure was not shown
}

}  // namespace

TEST(Diag, WorkersFailuresEndTheRunOnTheMainThread) {
  const struct {
    UTL_thread_function function;
    const char* text;
  } rows[] = {{runs_out_of_memory, "Caught an unhandled C\\+\\+ exception std::bad_alloc"},
              {fails_fatally, "A worker has failed."}};
  for (const auto& row : rows) {
    picture_folder folder;
    EXPECT_EXIT(run_on_worker(folder.path(), row.function), testing::ExitedWithCode(1), row.text);
    EXPECT_NE(text_of(folder / "stack_crawl.txt").find("THREAD_check_exception"), std::string::npos)
        << "the crawl is the main thread's";
    EXPECT_TRUE(tex_is_there(folder / "MemoryLog.txt"));
  }
}

// What a failure leaves behind, memory figures, the pool, named new, and the log.

#include <sys/mman.h>

#include <cstring>
#include <functional>
#include <new>
#include <regex>

#include "corekit/Platform/PLT_memory.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_debug.h"
#include "corekit/base/UTL_mempool.h"
#include "corekit/base/UTL_new.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_run.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/window/hl_init_log.h"
#include "tests/unit/test_runtime_util.h"
#include "tests/unit/test_tex_util.h"

namespace {

std::vector<std::string> lines_of(std::istream&& in) {
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);)
    lines.push_back(line);
  return lines;
}

// What `write` puts into a file.
std::vector<std::string> written_by(const std::function<void(std::FILE*)>& write) {
  const scratch_folder folder;
  std::FILE* const file = std::fopen((folder / "text").c_str(), "w");
  write(file);
  std::fclose(file);
  return lines_of(std::ifstream(folder / "text"));
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

// Called through a pointer that the compiler cannot see through, so that each level has its frame.
int (*volatile one_level_deeper)(std::FILE*, int);
int recursions(std::FILE* file, int depth) {
  if (depth == 0) {
    innermost(file);
    return 0;
  }
  return one_level_deeper(file, depth - 1) + 1;
}

TEST(Diag, FatalAlertLeavesCrawlAndReport) {
  picture_folder folder;
  folder.file("MemoryLog.txt", "of an earlier run\n");
  folder.file("stack_crawl.txt", "kept\n");
  EXPECT_EXIT(static_function_that_fails(folder.path()), testing::ExitedWithCode(1), "the end.");

  const std::vector<std::string> crawl = lines_of(std::ifstream(folder / "stack_crawl.txt"));
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
  ASSERT_NE(found, 0u) << "no line names the function";
  EXPECT_TRUE(crawl[found].ends_with(" unit_tests")) << crawl[found];
  int distance = 0;
  const size_t plus = crawl[found].rfind(" + ");
  EXPECT_EQ(std::sscanf(crawl[found].c_str() + plus, " + %d", &distance), 1);
  EXPECT_GT(distance, 0);
#endif
  // The first alert reports into a new file unless this process had reported before.
  const std::vector<std::string> report = lines_of(std::ifstream(folder / "MemoryLog.txt"));
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
  EXPECT_TRUE(at[0].starts_with("    Total virtual:  ")) << at[0];
  EXPECT_TRUE(at[1].starts_with("    Total resident:  ")) << at[1];
  EXPECT_TRUE(std::any_of(
      at, report.end(), [](const std::string& line) { return line.starts_with("    mapped:  "); }));
}

TEST(Diag, CrawlStopsAtAHundredFrames) {
  const auto deep = written_by([](std::FILE* file) {
    one_level_deeper = recursions;
    EXPECT_EQ(recursions(file, 150), 150);
  });
  ASSERT_EQ(deep.size(), 100u);
#if defined(__GNUC__) && !defined(__clang__)
  EXPECT_TRUE(str_holds(deep[0], "innermost")) << deep[0] << " is not the caller";
#endif
  // Chains of frames: one whose third is not mapped, and one that turns back.
  stack_frame frames[3];
  frames[0] = {&frames[1], reinterpret_cast<const void*>(&alert)};
  frames[1] = {&frames[2], nullptr};
  for (stack_frame* const last : {reinterpret_cast<stack_frame*>(~0ull - 64), &frames[0]}) {
    frames[2] = {last, nullptr};
    EXPECT_EQ(written_by([&](std::FILE* out) { UTL_dump_stack(out, frames, nullptr); }).size(), 3u);
  }
}

TEST(Diag, NumbersAndUnits) {
  const std::tuple<unsigned long long, unsigned, char> rows[] = {
      {1433, 1433, 'B'},
      {1434, 1, 'K'},
      {1468007, 1, 'M'},
      {(14ull << 30) + 1, 14, 'G'},
  };
  for (const auto& [size, number, unit] : rows) {
    EXPECT_EQ(mem_to_number(size), number) << size;
    EXPECT_EQ(mem_to_suffix(size), unit) << size;
  }
}

TEST(Diag, RegionsAreWhatWasMapped) {
  const PLT_memory_sizes sizes = PLT_memory_size();
  EXPECT_GT(sizes.virt, sizes.resident);
  EXPECT_GT(sizes.resident, 100 * sizes.page);
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
  munmap(memory, page * 3);
}

TEST(Diag, HexDump) {
  const unsigned char data[] = "A\0\x7F \x80xxxxxxxxxxx~\x1F";
  const auto lines = written_by([&](std::FILE* file) { dump_hex(file, data, 18); });
  const auto at = [&](int i) { return str_format("%p", static_cast<const void*>(data + i)); };
  std::string xs;
  for (int i = 0; i < 11; ++i)
    xs += " 78";
  EXPECT_EQ(lines, (std::vector{at(0) + "  41 00 7f 20 80" + xs + "  A.. .xxxxxxxxxxx",
                                at(16) + "  7e 1f" + std::string(14 * 3, ' ') + "  ~."}));
}

TEST(Diag, LazyPool) {
  const float before = UTL_lazy_mempool::global_total;
  {
    UTL_lazy_mempool pool;
    unsigned char* const first = static_cast<unsigned char*>(pool.allocate(100));
    unsigned char* const next = static_cast<unsigned char*>(pool.allocate(1));
    EXPECT_EQ(next - first, 112) << "rounded up to 16";
    EXPECT_EQ(pool.allocated(), 128u);
    pool.allocate(pool.ready());
    EXPECT_EQ(UTL_lazy_mempool::global_total, before + 32768) << "the last byte of a block is used";
    pool.allocate(32000);
    const size_t rest = pool.ready();
    pool.allocate(rest + 1);
    EXPECT_EQ(pool.wasted(), rest);
    std::memset(pool.allocate(100000), 1, 100000);
    EXPECT_GE(UTL_lazy_mempool::global_total, before + 3 * 32768 + 100000);
    EXPECT_THROW(pool.allocate(~size_t{0} - 4), std::bad_alloc);
  }
  EXPECT_EQ(UTL_lazy_mempool::global_total, before);
}

[[maybe_unused]] int handler_calls = 0;
[[maybe_unused]] size_t too_much() {
  static volatile size_t bytes = ~size_t{0} / 4;  // not known to the compiler
  return bytes;
}

TEST(Diag, NamedNew) {
  static unsigned long long calls, taken;
  const int line = __LINE__ + 2;
  for (int i = 0; i < 3; ++i)
    delete NAMED_NEW std::string("x");
  UTL_new_totals(
      [](const UTL_new_total& total, void* wanted) {
        const bool here = std::strcmp(total.name, __FILE__) == 0;
        if (!here || total.line != *static_cast<const int*>(wanted)) return;
        calls = total.calls;
        taken = total.bytes;
      },
      const_cast<int*>(&line));
  EXPECT_EQ(calls, 3u);
  EXPECT_EQ(taken, 3 * sizeof(std::string));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  // On exhaustion the handler is called, once, and then the allocation is tried again.
  // Called by name, since a new whose result is dropped may be left out by the compiler.
  EXPECT_EQ(operator new[](too_much(), std::nothrow), nullptr);
  std::set_new_handler([] { ++handler_calls; });
  EXPECT_THROW(operator delete[](operator new[](too_much())), std::bad_alloc);
  EXPECT_EQ(handler_calls, 1);
  std::set_new_handler(nullptr);
#endif
}

TEST(RuntimeLog, RecordInTheLogReadsFatalForAllButNotes) {
  for (const int severity : {0, 1, 2}) {
    const log_capture log;
    exce_class record("one", "", "three", "four", "Files/x", 12, severity);
    record.LogAndContinue();
    EXPECT_EQ(log.text(), std::string("Logging ") + (severity == 0 ? "non-fatal" : "fatal") +
                              " Exception thrown from file: Files/x, line 12.\n"
                              "one\n\nthree\nfour\n");
    record.MakeFatal();
    EXPECT_EQ(record.severity, t_exit);
  }
}

TEST(RuntimeLog, OpensAnewWithFixedNumbersAndGoesOnWithoutAFile) {
  const scratch_folder folder;
  folder.file("log.txt", "of the last run");
  ASSERT_TRUE(xer_open(folder / "log.txt"));
  xer << 0.0000001f << ' ' << 2.5e9f << ' ' << 3 << '\n';
  EXPECT_FALSE(xer_open("/nowhere/at/all/log.txt"));
  xer << "swallowed\n";
  xer.flush();
  ASSERT_TRUE(xer_open(folder / "second.txt")) << "not held by the earlier failure";
  xer << 1.0f;
  xer.close();
  EXPECT_EQ(content_of(folder / "log.txt"), "0.000000 2500000000.000000 3\n");
  EXPECT_EQ(content_of(folder / "second.txt"), "1.000000");
}

TEST(RuntimeLog, TimesStandOnLinesOfTheirOwn) {
  const log_capture log;
  xer << "head\n";
  xer.flush();
  xer.keep_time();
  xer << "one\ntwo";
  xer.flush();
  xer << " and three\n";
  xer.flush();
  const std::regex form(
      "head\n\\[20\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\]\none\ntwo and three\n");
  EXPECT_TRUE(std::regex_match(log.text(), form)) << log.text();
}

// The log of each run, five of them, and never two in one file.
TEST(RuntimeLog, TheRunsBeforeAreSetAside) {
  const scratch_folder folder, state;
  setenv("XDG_STATE_HOME", (state / "deep/er").c_str(), 1);
  const auto begin = [&](const char* option, const std::string& beside) {
    const char* const argv[] = {"program", option};
    log_begin(2, argv, beside);
    xer << "run\n";
    xer.flush();
  };
  const auto logs = [&] { return PLT_files_below(folder / ""); };
  const std::string plain = folder / "Skyvane Installer Log.txt",
                    lasting = state / "deep/er/skyvane/",
                    last = lasting + "Skyvane Installer Log.txt";
  for (int run = 1; run <= 7; ++run) {
    begin("--list", folder / "");
    EXPECT_EQ(log_path(), plain);
    EXPECT_EQ(content_of(plain), "run\n");
    EXPECT_EQ(logs().size(), static_cast<size_t>(std::min(run, 5)));
  }
  // Another run has its log open: its file gets another name, and is not cut.
  xer_buffer other;
  xer.close();
  ASSERT_TRUE(other.open(plain));
  other.sputn("other\n", 6);
  other.pubsync();
  EXPECT_FALSE(xer_open(plain)) << "it is that run's";
  for (int run = 0; run < 6; ++run)
    begin("--list", folder / "");
  EXPECT_EQ(content_of(plain), "run\n");
  size_t others = 0;
  for (const std::string& name : logs())
    others += content_of(folder / name) == "other\n" ? 1 : 0;
  EXPECT_EQ(others, 1u) << "it is kept, though five have begun since";
  EXPECT_EQ(logs().size(), 6u);

  begin(("--log=" + (folder / "mine.txt")).c_str(), folder / "");
  EXPECT_EQ(log_path(), folder / "mine.txt");
  EXPECT_EQ(log_refused(), "");
  xer_buffer first;
  xer.close();
  ASSERT_TRUE(first.open(folder / "mine.txt"));
  begin(("--log=" + (folder / "mine.txt")).c_str(), folder / "");
  EXPECT_EQ(log_refused(), folder / "mine.txt: another run is writing to it");
  for (const char* const nowhere : {"--log=/nowhere/at/all", "--log=/dev/full"}) {
    begin(nowhere, "/nowhere/at/all/");
    EXPECT_EQ(log_path(), last);
    EXPECT_NE(log_refused(), "");
  }
  begin("", "");
  EXPECT_EQ(log_path(), last) << "of no folder";
  app_packaged = 1;
  begin("", folder / "");
  EXPECT_EQ(log_path(), last);
  app_packaged = 0;
  log_keep();
  EXPECT_EQ(PLT_files_below(lasting).size(), 4u) << "it is where it stays";
  // One beside the program is copied to where it outlives the program's folder.
  for (int run = 0; run < 4; ++run) {
    begin("", folder / "");
    log_keep();
    EXPECT_EQ(content_of(last), "run\n");
    EXPECT_EQ(PLT_files_below(lasting).size(), 5u);
  }
}

TEST(RuntimeLog, Header) {
  const log_capture log;
  xer_header();
  const std::string figure = "(\\?|[1-9][0-9]*)";
  const std::string expected =
      "Installer log\\.txt for Skyvane Unit Tests compiled on "
      "[A-Z][a-z]{2} [ 1-3][0-9] 20[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\n\n"
      "This log file is generated automatically by Tessaron Labs applications and contains [^\n]+\n"
      "If you need to contact tech support or file a bug, please send us this file\\. [^\n]+\n\n"
      "[^\n]+ [^\n .]+\\.[^\n .]+\\.[^\n .]+\nCPU type: " +
      figure + "( \\([^\n]+\\))? CPU speed \\(mhz\\): " + figure +
      " Bus speed \\(mhz\\): " + figure + " RAM \\(MB\\): " + figure + "\n";
  EXPECT_TRUE(std::regex_match(log.text(), std::regex(expected))) << log.text();
}

TEST(RuntimeLog, ProcessorNames) {
  EXPECT_EQ(xer_cpu_name(0x13C), " (G5/FX) ");
  EXPECT_EQ(xer_cpu_name(0x69787878), " (X86) ");
  EXPECT_EQ(xer_cpu_name(0x7E202020), " (~   ) ");
  EXPECT_EQ(xer_cpu_name(0x69787801), " (unknown intel) ");
  EXPECT_EQ(xer_cpu_name(0x00697878), " (unknown PowerPC) ");
}

TEST(RuntimeLog, BrokenPipeDoesNotEndTheProgram) {
  UTL_debug_init();
  EXPECT_EQ(std::raise(SIGPIPE), 0);
}

TEST(RuntimeRun, FoldersAreFromTheStartAndWithoutDetours) {
  const std::string before = start_folder;
  start_folder = "/start/";
  const std::pair<const char*, const char*> rows[] = {
      {"/tmp", "/tmp/"}, {"below", "/start/below/"},
      {"/tmp/../", "/"}, {"/tmp/../tmp/./", "/tmp/"},
      {"", "/start/"},   {"/missing/../x", "/missing/../x/"},
  };
  for (const auto& [folder, expected] : rows)
    EXPECT_EQ(folder_from_start(folder), expected);
  start_folder = before;
}

}  // namespace

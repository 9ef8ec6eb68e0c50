// The failure record and the log's own texts.

#include <gtest/gtest.h>

#include <csignal>
#include <regex>

#include "corekit/GenH/hl_types.h"
#include "corekit/UTL/UTL_debug.h"
#include "tests/unit/test_runtime_util.h"

TEST(RuntimeLog, DefaultRecord) {
  const exce_class record;
  EXPECT_STREQ(record.file, "no exception");
  EXPECT_EQ(record.line, 0);
  EXPECT_EQ(record.severity, t_exit);
  EXPECT_EQ(record.line_1 + record.line_2 + record.line_3 + record.line_4, "");
}

TEST(RuntimeLog, RecordInTheLogReadsFatalForAllButNotes) {
  struct row {
    int severity;
    const char* word;
  };
  for (const row& r : {row{0, "non-fatal"}, row{1, "fatal"}, row{2, "fatal"}}) {
    const log_capture log;
    exce_class record("one", "", "three", "four", "Files/x", 12, r.severity);
    record.LogAndContinue();
    EXPECT_EQ(log.text(), std::string("Logging ") + r.word +
                              " Exception thrown from file: Files/x, line 12.\n"
                              "one\n\nthree\nfour\n");
    record.MakeFatal();
    EXPECT_EQ(record.severity, t_exit);
  }
}

TEST(RuntimeLog, OpensAnewWithFixedNumbers) {
  const runtime_folder folder;
  write_file(folder.path + "log.txt", "of the last run");
  ASSERT_TRUE(xer_open(folder.path + "log.txt"));
  xer << 0.0000001f << ' ' << 2.5e9f << ' ' << 3 << '\n';
  ASSERT_TRUE(xer_open(folder.path + "second.txt"));
  xer << 1.0f;
  xer.close();
  EXPECT_EQ(read_file(folder.path + "log.txt"), "0.000000 2500000000.000000 3\n");
  EXPECT_EQ(read_file(folder.path + "second.txt"), "1.000000");
}

TEST(RuntimeLog, GoesOnWithoutAFile) {
  EXPECT_FALSE(xer_open("/nowhere/at/all/log.txt"));
  xer << "swallowed\n";
  xer.flush();
  const log_capture log;
  xer << "back\n";
  EXPECT_EQ(log.text(), "back\n") << "a later open is not held by the earlier failure";
}

TEST(RuntimeLog, Header) {
  const log_capture log;
  xer_header();
  const std::string figure = "(\\?|[1-9][0-9]*)";
  const std::string expected =
      "Installer log\\.txt for Skyvane Unit Tests compiled on "
      "[A-Z][a-z]{2} [ 1-3][0-9] 20[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\n\n"
      "This log file is generated automatically by Tessaron Labs applications and contains "
      "diagnostics about your graphics hardware, installation, and any error conditions\\.\n"
      "If you need to contact tech support or file a bug, please send us this file\\. NOTE: this "
      "file is rewritten every time you start ANY of your Sky-Root applications\\.\n\n"
      "[^\n]+ [^\n .]+\\.[^\n .]+\\.[^\n .]+\n"
      "CPU type: " +
      figure + "( \\([^\n]+\\))? CPU speed \\(mhz\\): " + figure +
      " Bus speed \\(mhz\\): " + figure + " RAM \\(MB\\): " + figure + "\n";
  EXPECT_TRUE(std::regex_match(log.text(), std::regex(expected))) << log.text();
}

TEST(RuntimeLog, ProcessorNames) {
  struct row {
    uint32_t type;
    const char* name;
  };
  const row rows[] = {
      {0x108, " (G3) "},
      {0x10C, " (G4) "},
      {0x110, " (G4/7450) "},
      {0x111, " (G4/7455) "},
      {0x112, " (G4/7447) "},
      {0x120, " (G3/750FX) "},
      {0x139, " (G5) "},
      {0x13C, " (G5/FX) "},
      {0x69343836, " (i486) "},
      {0x69353836, " (Pentium) "},
      {0x69357072, " (Pentium Pro) "},
      {0x69356969, " (Pentium II) "},
      {0x69356976, " (Pentium 4) "},
      {0x69787878, " (X86) "},
      {0x61726D38, " (arm8) "},
      {0x7E202020, " (~   ) "},
      {0x69787801, " (unknown intel) "},
      {0x69000000, " (unknown intel) "},
      {0x7F787878, " (unknown PowerPC) "},
      {0x00697878, " (unknown PowerPC) "},
      {0x13D, " (unknown PowerPC) "},
  };
  for (const row& r : rows)
    EXPECT_EQ(xer_cpu_name(r.type), r.name) << std::hex << r.type;
}

TEST(RuntimeLog, BrokenPipeDoesNotEndTheProgram) {
  UTL_debug_init();
  EXPECT_EQ(std::raise(SIGPIPE), 0);
}

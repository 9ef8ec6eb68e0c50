// The failure record and the log's own texts.

#include <gtest/gtest.h>

#include <csignal>
#include <regex>

#include "corekit/GenH/hl_types.h"
#include "corekit/UTL/UTL_debug.h"
#include "tests/unit/test_runtime_util.h"

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
  const runtime_folder folder;
  write_file(folder.path + "log.txt", "of the last run");
  ASSERT_TRUE(xer_open(folder.path + "log.txt"));
  xer << 0.0000001f << ' ' << 2.5e9f << ' ' << 3 << '\n';
  EXPECT_FALSE(xer_open("/nowhere/at/all/log.txt"));
  xer << "swallowed\n";
  xer.flush();
  ASSERT_TRUE(xer_open(folder.path + "second.txt")) << "not held by the earlier failure";
  xer << 1.0f;
  xer.close();
  EXPECT_EQ(read_file(folder.path + "log.txt"), "0.000000 2500000000.000000 3\n");
  EXPECT_EQ(read_file(folder.path + "second.txt"), "1.000000");
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

// The command line.

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "corekit/UTL/UTL_cmdline.h"
#include "tests/unit/test_runtime_util.h"

namespace {

void parse(UTL_cmdline& line, std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "program");
  line.init_unix(static_cast<int>(arguments.size()), arguments.data());
}

// Lets a death test see standard output.
void show_output() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace

TEST(RuntimeCmdline, SplitsAtTheFirstEqualsSign) {
  struct row {
    const char* argument;
    const char* flag;
    const char* value;
    const char* log;
  };
  const row rows[] = {
      {"--a", "--a", "", "     '--a'\n"},
      {"--a=b", "--a", "b", "     '--a'='b'\n"},
      {"--a=b=c", "--a", "b=c", "     '--a'='b=c'\n"},
      {"--a=", "--a", "", "     '--a'\n"},
      {"--a==", "--a", "=", "     '--a'='='\n"},
      {"word", "word", "", "     'word'\n"},
      {"=x", "", "x", "     ''='x'\n"},
      {"", "", "", "     ''\n"},
      {"--a=b c", "--a", "b c", "     '--a'='b c'\n"},
      {"-path", "-path", "", "     '-path'\n"},
  };
  for (const row& r : rows) {
    const log_capture log;
    UTL_cmdline line;
    parse(line, {r.argument});
    EXPECT_TRUE(line.has_option(r.flag)) << r.argument;
    EXPECT_EQ(line.get_option(r.flag), r.value) << r.argument;
    EXPECT_EQ(log.text(), r.log) << r.argument;
    for (const char* other : {"--", "--A", "--a ", "program", "c"})
      EXPECT_FALSE(line.has_option(other)) << r.argument << " has " << other;
  }
}

TEST(RuntimeCmdline, ARepeatTakesTheLastValue) {
  const log_capture log;
  UTL_cmdline line;
  parse(line, {"--a=1", "--b", "--a=2", "--b=3", "--a"});
  EXPECT_EQ(line.get_option("--a"), "");
  EXPECT_EQ(line.get_option("--b"), "3");
  EXPECT_EQ(log.text(),
            "     '--a'='1'\n"
            "     '--b'\n"
            "WARNING: command line option --a=1included twice.\n"
            "     '--a'='2'\n"
            "WARNING: command line option --b=included twice.\n"
            "     '--b'='3'\n"
            "WARNING: command line option --a=2included twice.\n"
            "     '--a'\n");
}

TEST(RuntimeCmdline, NothingGiven) {
  const log_capture log;
  for (const int count : {0, 1}) {
    const char* const arguments[] = {"--help", nullptr};  // as the program's name: no flag
    UTL_cmdline line;
    line.init_unix(count, arguments);
    EXPECT_FALSE(line.has_option("--help"));
    EXPECT_EQ(line.get_option("--help"), "");
  }
  EXPECT_EQ(log.text(), "");
}

TEST(RuntimeCmdline, OneLineIsSplitOnBlanks) {
  UTL_cmdline line;
  line.init_win("  --a=b   --c\t-path /x ");
  EXPECT_EQ(line.get_option("--a"), "b");
  EXPECT_TRUE(line.has_option("--c"));
  EXPECT_TRUE(line.has_option("-path"));
  EXPECT_TRUE(line.has_option("/x"));
  EXPECT_FALSE(line.has_option(""));
  UTL_cmdline empty;
  empty.init_win("");
  EXPECT_FALSE(empty.has_option(""));
}

TEST(RuntimeCmdlineDeathTest, HelpPrintsTheUsageAndEnds) {
  for (const char* flag : {"-h", "--help", "--help=x"}) {
    EXPECT_EXIT(
        {
          show_output();
          UTL_cmdline line;
          parse(line, {"--other", flag});
          std::_Exit(3);
        },
        testing::ExitedWithCode(0), "Usage: Skyvane \\[options\\.\\.\\.\\]")
        << flag;
  }
  UTL_cmdline line;
  parse(line, {"--helpless", "-help", "h", "help"});  // none of these ends the run
}

TEST(RuntimeCmdlineDeathTest, CommandListEndsTheRun) {
  for (const char* flag : {"--cmnds", "--cmnds=all", "--cmnds=sim/view"}) {
    EXPECT_EXIT(
        {
          show_output();
          UTL_cmdline line;
          parse(line, {flag, "--help"});
          std::_Exit(3);
        },
        testing::ExitedWithCode(0), "^$")
        << flag;
  }
}

TEST(RuntimeCmdline, UsageExplainsEveryFlagInOrder) {
  const std::string usage = UTL_cmdline_usage();
  EXPECT_TRUE(usage.starts_with(
      "Usage: Skyvane [options...]\n\nSkyvane can take a number of command-line flags, in the form "
      "of --flag or\n--flag=value."));
  const char* const pieces[] = {
      "\n--help or -h\n",
      "\n--no_sound\n",
      "OPTIONS TO DISABLE HARDWARE ACCELERATION",
      "\n--no_vbos\n",
      "\n--no_fbos\n",
      "\n--no_pbos\n",
      "\n--no_sprites\n",
      "\n--no_pixel_counters\n",
      "\n--no_aniso_filtering\n",
      "\n--no_hw_mipmap\n",
      "\n--no_fshaders\n",
      "\n--no_vshaders\n",
      "\n--no_glsl\n",
      "\n--no_threaded_ogl\n",
      "OPTIONS TO ENABLE INCOMPATIBLE HARDWARE ACCELERATION",
      "\n--use_vbos\n",
      "\n--use_sprites\n",
      "\n--use_fshaders\n",
      "\n--use_vshaders\n",
      "\n--use_glsl\n",
      "\n--force_run\n",
      "FRAMERATE TEST",
      "\n--fps_test=n\n",
      "\n--require_fps=n\n",
  };
  size_t at = 0;
  for (const char* piece : pieces) {
    const size_t found = usage.find(piece, at);
    ASSERT_NE(found, std::string::npos) << piece;
    at = found;
  }
}

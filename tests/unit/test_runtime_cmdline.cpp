// The command line.

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/hl_app.h"
#include "tests/unit/test_runtime_util.h"

namespace {

void parse(UTL_cmdline& line, std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "program");
  line.init_unix(static_cast<int>(arguments.size()), arguments.data());
}

}  // namespace

TEST(RuntimeCmdline, SplitsAtTheFirstEqualsSign) {
  const struct {
    const char *argument, *flag, *value, *log;
  } rows[] = {
      {"--a", "--a", "", "     '--a'\n"},  {"--a=b=c d", "--a", "b=c d", "     '--a'='b=c d'\n"},
      {"--a=", "--a", "", "     '--a'\n"}, {"--a==", "--a", "=", "     '--a'='='\n"},
      {"=x", "", "x", "     ''='x'\n"},
  };
  for (const auto& r : rows) {
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
  EXPECT_TRUE(str_holds(log.text(), "WARNING: command line option --a=1included twice.\n"));
}

TEST(RuntimeCmdline, OneLineIsSplitOnBlanks) {
  UTL_cmdline line;
  line.init_win("  --a=b   --c\t-path /x ");
  EXPECT_EQ(line.get_option("--a"), "b");
  for (const char* flag : {"--c", "-path", "/x"})
    EXPECT_TRUE(line.has_option(flag)) << flag;
  EXPECT_FALSE(line.has_option(""));
  UTL_cmdline empty;
  empty.init_win("");
  EXPECT_FALSE(empty.has_option(""));
}

TEST(RuntimeCmdlineDeathTest, HelpAndTheCommandListEndTheRun) {
  const char usage[] =
      "^Usage: Skyvane \\[options\\.\\.\\.\\](.|\n)*\n--no_sound\n(.|\n)*\n--require_fps=n\n";
  const struct {
    const char *first, *second, *output;
  } rows[] = {
      {"--other", "-h", usage},
      {"--other", "--help", usage},
      {"--other", "--help=x", usage},
      {"--other", "--version", "^A title\n$"},
      {"--cmnds=all", "--help", "^sim/-none-/-none- +Do nothing at all!\n"},
      {"--cmnds=no", "--help", "^$"},
  };
  APP.title = "A title";
  for (const auto& r : rows) {
    EXPECT_EXIT(
        {
          dup2(STDERR_FILENO, STDOUT_FILENO);  // the one that is compared
          UTL_cmdline line;
          parse(line, {r.first, r.second});
          std::_Exit(3);
        },
        testing::ExitedWithCode(0), r.output)
        << r.second;
  }
  UTL_cmdline line;
  parse(line, {"--helpless", "-help", "h", "help"});  // none of these ends the run
}

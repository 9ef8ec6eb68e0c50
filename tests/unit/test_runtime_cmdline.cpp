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
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"--a", "--a", "", "     '--a'\n"},  {"--a=b=c d", "--a", "b=c d", "     '--a'='b=c d'\n"},
      {"--a=", "--a", "", "     '--a'\n"}, {"--a==", "--a", "=", "     '--a'='='\n"},
      {"=x", "", "x", "     ''='x'\n"},
  };
  for (const auto& [argument, flag, value, logged] : rows) {
    const log_capture log;
    UTL_cmdline line;
    parse(line, {argument});
    EXPECT_TRUE(line.has_option(flag)) << argument;
    EXPECT_EQ(line.get_option(flag), value) << argument;
    EXPECT_EQ(log.text(), logged) << argument;
    for (const char* other : {"--", "--A", "--a ", "program", "c"})
      EXPECT_FALSE(line.has_option(other)) << argument << " has " << other;
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
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"--other", "-h", usage},
      {"--other", "--help", usage},
      {"--other", "--help=x", usage},
      {"--other", "--version", "^A title\n$"},
      {"--cmnds=all", "--help", "^sim/-none-/-none- +Do nothing at all!\n"},
      {"--cmnds=no", "--help", "^$"},
  };
  APP.title = "A title";
  for (const auto& [first, second, output] : rows) {
    EXPECT_EXIT(
        {
          dup2(STDERR_FILENO, STDOUT_FILENO);  // the one that is compared
          UTL_cmdline line;
          parse(line, {first, second});
          std::_Exit(3);
        },
        testing::ExitedWithCode(0), output)
        << second;
  }
  UTL_cmdline line;
  parse(line, {"--helpless", "-help", "h", "help"});  // none of these ends the run
}

// The parsed command line: a map from flag to value.
//
// Filled once at start-up, before any other thread exists, and only read after that, so any thread
// may ask. Unknown flags are kept and never looked at.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

class UTL_cmdline {
 public:
  // Parses `--flag` and `--flag=value`, logs what was given, then init_common. `argv[0]` is the
  // program. May end the run (init_common).
  void init_unix(int argc, const char* const* argv);
  // The same from one line without the program's name, split on blanks.
  void init_win(const char* line);
  // Acts on the flags that end the run with status 0: "--cmnds", "-h", "--help", "--version".
  void init_common();

  // `flag` includes its dashes.
  bool has_option(const char* flag) const;
  std::string get_option(const char* flag) const;  // empty for a flag without value, or not given
  std::vector<std::string> all_options() const;    // every flag that was given, sorted

 private:
  void enter(const std::string& argument);

  std::map<std::string, std::string, std::less<>> options;
};

extern UTL_cmdline cmdline;

// The text that "--help" prints: the application's own paragraphs, then the flags of the family.
std::string UTL_cmdline_usage();

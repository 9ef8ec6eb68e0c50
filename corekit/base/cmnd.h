// The table of named commands that key bindings point at. A command is known by its place: those
// that are built in come first, those added at run time behind them.
//
// Main thread only.
#pragma once

#include <string>
#include <vector>

class cmnd_class {
 public:
  cmnd_class();

  int get_cmnd_by_name(const std::string& command) const;  // -1 for a name that there is not
  // Appends a command and returns its place; one that is there already keeps its own.
  int add_cmd(const std::string& command, const std::string& text);
  // The next parts below `path` of the names, which "/" separates: each once, in the order of the
  // table. "" gives the first parts; a `path` may end in "/" or not. `out` is emptied first.
  void get_cmds_in_path(const std::string& path, std::vector<std::string>& out) const;
  // On standard output: all commands with their descriptions for the value "all", else the names
  // below a path, one a line.
  void print(const std::string& value) const;

  // Presses are counted, so that two keys of one command do not let go of each other's.
  void press_one(int command);
  void release_one(int command);
  void single_press(int command);
  void press_always(int command);  // once a frame while held; no command here needs it

  // Side by side, by place.
  std::vector<std::string> kind;  // "DYNAMIC" for one added at run time
  std::vector<std::string> name;
  std::vector<std::string> description;
  std::vector<int> presses;
};

extern cmnd_class cmnd;

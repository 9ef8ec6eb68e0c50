// The command table.
//
// Main thread. Writes cmnd.

#include "corekit/base/cmnd.h"

#include <algorithm>
#include <cstdio>

cmnd_class cmnd;

namespace {

struct command_row {
  const char *kind, *name, *description;
};
constexpr command_row default_commands[] = {
    {"cmnd_nothing", "sim/-none-/-none-", "Do nothing at all!"},
};

}  // namespace

cmnd_class::cmnd_class() {
  for (const command_row& row : default_commands) {
    kind.push_back(row.kind);
    name.push_back(row.name);
    description.push_back(row.description);
    presses.push_back(0);
  }
}

int cmnd_class::get_cmnd_by_name(const std::string& command) const {
  const auto found = std::find(name.begin(), name.end(), command);
  return found == name.end() ? -1 : static_cast<int>(found - name.begin());
}

int cmnd_class::add_cmd(const std::string& command, const std::string& text) {
  if (const int place = get_cmnd_by_name(command); place >= 0) return place;
  kind.push_back("DYNAMIC");
  name.push_back(command);
  description.push_back(text);
  presses.push_back(0);
  return static_cast<int>(name.size()) - 1;
}

void cmnd_class::get_cmds_in_path(const std::string& path, std::vector<std::string>& out) const {
  out.clear();
  std::string folder = path;
  if (!folder.empty() && folder.back() != '/') folder += '/';
  for (const std::string& command : name) {
    if (command.compare(0, folder.size(), folder) != 0) continue;
    const size_t end = std::min(command.find('/', folder.size()), command.size());
    if (end == folder.size()) continue;
    const std::string part = command.substr(folder.size(), end - folder.size());
    if (std::find(out.begin(), out.end(), part) == out.end()) out.push_back(part);
  }
}

void cmnd_class::print(const std::string& value) const {
  if (value == "all") {
    for (size_t i = 0; i < name.size(); ++i) {
      std::printf("%-50s %s\n", name[i].c_str(), description[i].c_str());
    }
    return;
  }
  std::vector<std::string> parts;
  get_cmds_in_path(value, parts);
  for (const std::string& part : parts)
    std::printf("%s\n", part.c_str());
}

void cmnd_class::press_one(int command) {
  if (command >= 0 && command < static_cast<int>(presses.size())) ++presses[command];
}

void cmnd_class::release_one(int command) {
  // Never below none: a key can come up whose press another window has had.
  if (command >= 0 && command < static_cast<int>(presses.size()) && presses[command] > 0) {
    --presses[command];
  }
}

void cmnd_class::single_press(int command) {
  press_one(command);
  release_one(command);
}

void cmnd_class::press_always(int) {}

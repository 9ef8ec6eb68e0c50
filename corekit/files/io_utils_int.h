// What the files of the io_utils stem share among themselves. Paths here already hold app_path.
#pragma once

#include <string>
#include <vector>

struct io_item {
  std::string name;
  int is_folder;  // 1 for a folder; 0 for all else, links to folders too
};

// Reads what a folder holds, hidden names left out, in ascending order of the names' bytes. A path
// that is a link itself is read only if `follow` is set. 0 or errno; on a failure midway `items`
// has what was read before it.
int io_list_folder(const std::string& path, bool follow, std::vector<io_item>& items);

// Files of the release above other files of the manifest.
//
// A release may ship a link where an earlier one shipped a folder, and a damaged or hostile
// manifest may list both. What lies below such a path is reached through the link, so it is
// somebody else's: nothing there may be fetched or deleted. For selection; main thread.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

struct file_version_struct;

// Steps: `add` each path that takes part; `look` once; then ask. Stands while sim_info does.
class files_above {
 public:
  void add(std::string_view path) {
    const std::string_view folder = path.substr(0, path.rfind('/') + 1);
    if (folder == last_folder_) return;  // neighbours lie in one folder
    last_folder_ = folder;
    add_folder(folder);
  }
  // Goes through the table for the files among those folders. Which records take part is the
  // caller's to say.
  void look(bool (*takes_part)(const file_version_struct&));

  bool none() const { return files_.empty(); }  // the rule, but for links that were folders
  // Whether a folder on the way to the manifest path `path` is itself a file of the release.
  bool stand_above(std::string_view path) const;

 private:
  void add_folder(std::string_view folder);
  void mark_folders();
  bool may_be_folder(std::string_view path) const;

  std::unordered_set<std::string_view> folders_;  // without their "/" at the end
  std::string_view last_folder_;                  // of a manifest path, added last
  std::vector<uint64_t> marks_;                   // a bit for each mark of a folder
  int mark_shift_ = 63;                           // from a mark to its bit's number
  std::unordered_set<std::string_view> files_;    // that are folders of others
};

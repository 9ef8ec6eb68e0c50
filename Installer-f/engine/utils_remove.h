// A copy is taken away: what the manifest knows, in the state of any release, is deleted; what is
// in no known state is the user's, and stays with the folders that it lies in. Main thread, after
// checksum_directory has returned 1.
#pragma once

#include <string>
#include <vector>

struct removal_record {
  int removed = 0;                // files
  int failed = 0;                 // files that could not be deleted; the log says why
  bool is_gone = false;           // the copy's own folder is gone, too
  std::vector<std::string> left;  // files and links that stay, below the copy; at the end
};
extern removal_record removal;  // of the present job, or of the last

int files_to_remove();  // how many there are
// One bounded step; `index` is 0 at the start. 1 when all is done, with the emptied folders
// removed, the copy off the list, and removal.left filled. `progress` is 0 to 1.
int remove_copy(int& index, float& progress);

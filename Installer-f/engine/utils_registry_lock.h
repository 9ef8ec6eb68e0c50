// One program at a time on a copy. Main thread only.
//
// The lock is on the copy's folder itself, by a descriptor that is held open: nothing is written
// into the copy or beside it, whoever may read the copy meets the same lock, and it dies with its
// process, however that ends. A volume that knows no locks on folders, such as a network share, is
// worked on without one: what is unpacked then still gets hidden names of its process's own, and is
// whole under its own name.
#pragma once

#include <string>

enum copy_lock : int {
  copy_lock_ours,  // or there is nothing to lock, or no way to
  copy_lock_busy,  // another program has it
};

// Takes the lock on the copy in `folder`, and lets go of another copy's. To be asked again, such as
// in each frame, for the same copy: then it costs a look at the folder.
copy_lock lock_copy(const std::string& folder);
void unlock_copy();

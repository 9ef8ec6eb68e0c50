// What the files of the stem share: starting a program in this one's place. Main thread.
#pragma once

#include <string>
#include <vector>

// A program, what it is given, and the folder that it starts in; empty for this one's.
struct start_order {
  std::string program;
  std::vector<std::string> arguments;
  std::string folder;
};

// The form that execv wants, into the strings of `order`. Made before a fork: the child of a
// process with threads had better not allocate.
std::vector<char*> launch_arguments(start_order& order);

// Turns this process into the program. Ends it with errno if that fails.
[[noreturn]] void launch_become(const start_order& order, const std::vector<char*>& argv);

// Ends this process, with status 1, and starts another. `save` is that of MACIBM_finishup. Returns
// errno if no process could be made.
int launch_hand_over(start_order order, int save);

// The folder of this program when it is a copy from a disc, else empty; and its end.
extern std::string copy_folder;
void launch_drop_copy();

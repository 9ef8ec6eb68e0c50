// Another program that this one starts, looks at now and then, and ends. Any thread, but each
// record belongs to one.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

struct PLT_child {
  pid_t pid = 0;    // 0: none, or it has ended
  int output = -1;  // reading end of what it writes; -1: not wanted, or closed
};

// Starts a program, found along PATH, with the arguments `argv` (argv[0] its name, null at the
// end), without a shell, without input, and as the first of a process group. What it writes goes to
// `output` if that is wanted, else nowhere. False if it cannot be started; then nothing is held.
// REQUIRES: *child is as made, or closed.
bool PLT_child_start(PLT_child* child, const char* const* argv, bool wants_output);

// Appends to `text` what it has written since, without waiting; closes `output` at its end, on a
// failure, and once there are more than `limit` bytes.
void PLT_child_read(PLT_child* child, std::string* text, size_t limit);
void PLT_child_close(PLT_child* child);  // `output`, if it is open

// False while it runs. Once true, `status` is its exit status, or -1 if it did not end by itself.
bool PLT_child_has_ended(PLT_child* child, int* status);

// Ends it with all in its group: asks them, and kills them when they take longer than `polite_us`
// (0: at once). Returns when it is gone; one that even so does not go is left after a second.
void PLT_child_end(PLT_child* child, uint64_t polite_us);

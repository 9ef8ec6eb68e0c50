// A worker of the verification: brings a task's files in, and digests what there is.
#pragma once

#include <cstdint>

class verify_pass;

// The whole work of a task, on a pool thread: the histories from `first` on whose bits are set in
// `wanted`, from the lowest. Their findings are written by then or later, by this thread or
// another, in any case before the last task of the pass ends.
void verify_task_work(verify_pass& pass, int32_t first, uint32_t wanted);

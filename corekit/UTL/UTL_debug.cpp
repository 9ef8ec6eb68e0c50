// What the program asks of the system to be debugged and to survive its peers. Main thread, at
// start.

#include "corekit/UTL/UTL_debug.h"

#include <csignal>

void UTL_debug_init() {
  std::signal(SIGPIPE, SIG_IGN);
}

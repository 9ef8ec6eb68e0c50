#include "corekit/UTL/UTL_debug.h"

#include <csignal>

void UTL_debug_init() {
  std::signal(SIGPIPE, SIG_IGN);
}

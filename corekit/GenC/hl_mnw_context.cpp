// OpenGL contexts for threads that load textures. Main thread makes them, a thread binds its own.
// Without a window there is nothing to share objects with, so none is made.

#include "corekit/GenC/hl_mnw_context.h"

#include "corekit/OOPS_cpp/exce.h"

void* MACIBM_make_context_loader() {
  xer << "We could not create a context for our worker threads.\n";
  return nullptr;
}

int MACIBM_set_context_loader(void*) {
  return 0;
}

// The buffer swap, by way of whichever window there is.
//
// Main thread.

#include "corekit/Platform/PLT_gl.h"

void (*PLT_swap_hook)() = nullptr;

void PLT_swap_buffers() {
  if (PLT_swap_hook) PLT_swap_hook();
}

// The calls of OpenGL, and the buffer swap by way of whichever window there is.
//
// Main thread; writes gl.

#include "corekit/Platform/PLT_gl.h"

#include "corekit/Platform/PLT_library.h"

plt_gl_calls gl;
void (*PLT_swap_hook)() = nullptr;

bool PLT_load_gl(std::string* error) {
  if (gl.Begin) return true;
  // Either leads to the driver of the context that is current. The first is on every desktop.
  if (!plt_open_library({"libGL.so.1", "libOpenGL.so.0"}, error)) return false;
  plt_gl_calls found;
  bool whole = true;
#define TAKE(name) whole = whole && plt_take_call(found.name, "gl" #name, error);
  PLT_GL_CALLS(TAKE)
#undef TAKE
  if (whole) gl = found;
  return whole;
}

void PLT_swap_buffers() {
  if (PLT_swap_hook) PLT_swap_hook();
}

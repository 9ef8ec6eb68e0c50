// OpenGL for the files that draw, and the one call that it leaves to the window library: the swap.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

// Set by the window layer once it has a window with a context; null without one. Main thread.
extern void (*PLT_swap_hook)();

// Shows what was drawn. Does nothing while there is no window.
void PLT_swap_buffers();

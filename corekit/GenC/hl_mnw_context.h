// OpenGL contexts beside the window's own, for threads that load textures.
#pragma once

// Makes a context that shares its objects with the window's. Null, with a line in the log, if that
// fails. Main thread.
void* MACIBM_make_context_loader();

// Binds such a context to the calling thread. 1, or 0 if that fails.
int MACIBM_set_context_loader(void* context);

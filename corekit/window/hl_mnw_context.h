// Windows with their OpenGL contexts, and the contexts of threads that load textures.
#pragma once

// Opens window `index` (0, the only one that this program has) in mnw's requested size, with its
// context current and the drawing layer told of it; fills mnw's pixel sizes. Tries five pixel
// formats, from the richest request to the plainest. 0, with the reason in the log, if none can be
// had. Main thread.
int MACIBM_make_context(int index);
// Closes that window, if it is open. From then on nothing is drawn. Main thread.
void MACIBM_nuke_context(int index);

// On: notes the screen's figures in the log. The screen's depth is the desktop's own business and
// left alone, so that there is nothing to give back when off.
void MACIBM_setres(int on);

// Makes a context that shares its objects with the window's. Null, with a line in the log, if that
// fails. Main thread.
void* MACIBM_make_context_loader();
// Binds such a context to the calling thread. 1, or 0 if that fails.
int MACIBM_set_context_loader(void* context);

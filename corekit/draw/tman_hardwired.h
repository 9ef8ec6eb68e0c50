// The compiled-in pictures as textures, and the palette that one of them carries.
#pragma once

// Loads the four pictures in the set that suits the window, and takes the palette from the last of
// them: the sharper set where a unit is more than a pixel and the driver takes pictures that large.
// A sharper picture that cannot be read is replaced by its plain one. Uses up scratch_array.
// REQUIRES: a current context that the drawing layer knows of. Main thread.
void load_hardwired_textures();

// Loads them anew if the window now wants the other set. Main thread.
void fit_hardwired_textures();

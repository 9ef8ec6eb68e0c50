// The faces of the wizard's own buttons, in the language of the user.
#pragma once

// Draws the face that the elements image has at (tex_x, tex_y), dx by dy units, with its lower left
// corner at (x, y): as the picture is, or, where the words on it have a translation that fits, its
// plate with that. Greyed at an `alpha` below 1. REQUIRES: a window.
void face_draw(float x, float y, float tex_x, float tex_y, float dx, float dy, float alpha);
// The face as a button; 1 on a click. `state` 2 draws it greyed.
int interface_rect(float x, float y, float tex_x, float tex_y, float dx, float dy, int hot,
                   int state);

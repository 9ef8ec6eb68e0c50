// How the wizard's record is drawn. For the engine.
#pragma once

#include "Installer-f/wizard/main_page.h"

// The picture, its two panels, and the list of steps with the present one lit; before the page.
void wizard_draw_frame();
// The record over what the page drew itself, but for the bottom row; the index of the extra button
// that was pressed, or -1.
int wizard_draw_record(const wizard_screen& screen);
// The bottom row; adds what was pressed in it to `press`.
void wizard_draw_row(const wizard_screen& screen, wizard_press& press);

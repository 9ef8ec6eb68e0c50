// The frame, and the switch between the main window and its dialogs. What both write is the window
// record (corekit/base/mnw.h).
//
// Main thread.
#pragma once

#include <string>

#include "corekit/base/mnw.h"

struct PLT_event;

// One frame: events, failures from other threads, clock, focus ring, page, swap.
//
// It waits for events at its start, and is back early when one comes or when a thread calls
// PLT_wake. How long it may wait says frame_soon. A picture is shown when it differs from the one
// that the window shows, sixty times a second at most, twenty times while only the program is busy,
// and four times when nothing goes on: in a frame that comes sooner the page is called as ever, and
// what it draws is thrown away. What a click or a key brings about is always shown at once.
void MACIBM_event_proc();

// Handles one event, as MACIBM_event_proc does with each that it takes.
void APL_handlewin(const PLT_event& event);

// Switches to window or dialog `id`. A dialog shows only if mnw.win_id reads `id` afterwards:
// without a display none ever does, and the caller takes that as its question not being put.
void MACIBM_startwind(int id, int arg);

// Routes a press at mnw's mouse: to the menus, and to the close boxes of a dialog. `force` closes
// the dialog wherever the mouse is; dialogs that want an answer stay.
void MACIBM_handleclick(int force);

// What lies behind a dialog: the wizard's picture, darkened.
void MACIBM_plot_behind();

// Tooltip and pointer of a window, once a frame. Uses up stls.hover_help.
void mouse_help_per_wind(int id);

// 1 from the first MACIBM_startwind with a window on: the splash may draw.
extern int plot_init_lights;

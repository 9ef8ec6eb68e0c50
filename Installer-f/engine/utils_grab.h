// The network transfer: up to four downloads at a time from a mirror, each file unpacked into its
// place. grab_files is polled by the transfer page for some 20 milliseconds a frame. Main thread.
//
// A stream takes a file, fetches its archive, has it unpacked by a worker, and takes the next. A
// failure draws another mirror and starts the file again, for ever: there is no resume within a
// file. The number of live streams follows the measured speed.
#pragma once

#include "Installer-f/engine/utils_grab_state.h"

// One step of each live stream. 1 when the job is over, with every file done or with
// stg.extract_failed set; 0 when more calls are needed.
int grab_files();

// Waits until one of the live streams can move, by the network, by a worker, or because a mirror
// has rested; at most `milliseconds`, and not at all if one of them waits for nothing. For a page
// that would otherwise ask in vain until its time is up.
void grab_wait(int milliseconds);

// Readies `next` for a new transfer, which starts with two streams. What the streams still fetch is
// given up, what they unpack is finished and booked in sim_info first. Leaves next.finished and
// stg.extract_failed as they are.
void grab_reset();

// Ends a transfer with its threads, as the program ends. Safe without one.
void grab_kill();

// Deletes the archive left beside the place of each live stream's file, if it is one of ours: with
// that very file in it, and nothing else. Before grab_reset.
void grab_discard_partial();

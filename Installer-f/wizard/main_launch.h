// Starting another program in this one's place, and leaving a disc that the program was started
// from.
#pragma once

#include <string>

// Saves the preferences, ends this process with status 1, and starts `app` in its place, with
// "-path" and `path` as arguments unless `path` is empty. `app` may be a program or a bundle folder
// that holds one. The other program begins only once this one has saved and ended. Returns errno if
// no process could be made, and only then.
int launch_app(const std::string& app, const std::string& path);

// Empty if launch_app has a program to run for `app`; else the path at which there is none.
std::string missing_program(const std::string& app);

// If the program runs from the product's disc, where it could neither eject the disc nor outlive a
// change of disc: copies it, and the "Resources/" beside it, into a folder of its own among the
// temporary ones, and starts the copy with the same arguments. A run with a window does so as
// launch_app does; a run without one becomes the copy, so that whoever waits for its exit status
// gets it. Returns if it does not run from there, or if it cannot get away: then it goes on from
// the disc.
//
// The copy is told by a token that it is handed and a mark in its folder. When it ends, it keeps
// its log in the preferences folder, and removes what was copied. One that ends by a fatal alert or
// a signal leaves both where they are, for the system's own clearing of temporary files.
void leave_disc(int argc, char** argv);

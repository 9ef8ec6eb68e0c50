// Starting another program in this one's place, and leaving a disc that the program was started
// from.
#pragma once

#include <string>

// Saves the preferences, ends this process with status 1, and starts `app` in its place, with
// "-path" and `path` as arguments unless `path` is empty. `app` may be a program or a bundle folder
// that holds one. Returns errno if no process could be made, and only then.
int launch_app(const std::string& app, const std::string& path);

// If the program runs from the product's disc, where it could neither eject the disc nor outlive a
// change of disc: copies it into the temporary folder and launches the copy. Returns only if it
// does not run from there, or if no process could be made.
void leave_disc();

// Folders: the tree that the chosen files need, made before the transfer, and the clean-up of what
// deletions leave empty. Main thread only, before any worker of the transfer starts.
#pragma once

#include <set>
#include <string>
#include <string_view>

// Makes the destination, every folder that a file to be fetched needs, and the fixed folders of a
// copy. Returns 0, or the code for the first folder of the first two kinds that could not be made,
// after an alert.
int make_dirs();

// Carries out the delete decisions and removes the folders that become empty. Failures are logged.
void delete_files();

// When a job is given up: removes the folders that were made for files that have not come.
void remove_unused_folders();

// Tells the user which folder could not be made, and why.
void make_dir_error(const std::string& path, int code);

// Adds to `folders` every folder from that of the file at `location` up to, but not including, the
// destination, each with its trailing "/".
void note_emptied_folders(std::string_view location, std::set<std::string>& folders);

// The same with the folders that every copy has, whether or not a file needs them.
void note_fixed_folders(std::set<std::string>& folders);

// Removes those of `folders` that are empty, children before parents.
void remove_emptied_folders(const std::set<std::string>& folders);

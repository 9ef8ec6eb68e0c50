// The history: every state of every file that earlier releases shipped, read from the previous
// manifest and written on into the new one. Main thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Reads the previous release's manifest, bld.old_dir_path (or a zip of one), into sim_info and its
// index; without one (an empty path) the history stays empty. Faults: a file that is no manifest of
// ours, one that lists a file twice, one that holds the release being built.
void load_history();

// Begins the body of a new manifest.
void start_lines();

// Writes the lines of a file: what older releases shipped, then the present version. Notes that the
// tree has it.
void write_versions(const std::string& relative, int os, const std::string& sig, float zip_kb,
                    float raw_kb);

// A line that puts what follows on disc `disk`.
void write_disc_line(int disk);

// Writes the lines of every file that the history knows and the tree no longer holds.
void write_deleted_files();

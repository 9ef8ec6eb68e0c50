// From a source file to its archive and its lines in the manifest. The manifest's grammar is in
// utils_manifest.h. Main thread only; every failure ends the build.
#pragma once

#include <string>
#include <string_view>

// Starts a tree: first disc, nothing compressed, no history.
void start_comp();

// Reads the previous release's manifest, `old_dir_path`, into the history; without one (an empty
// path) the history stays empty. Refuses a manifest that names a file twice or that holds the
// release being built.
void load_history();

// Compresses the file at `path` (full) to the current disc and writes its lines: what older
// releases shipped, then the present version. Breaks to the next disc when this one is full.
void comp_file(const std::string& path);

// Writes the lines of every file that the history knows and the tree no longer holds.
void write_deleted_files();

// Writes the label by which an installer knows the disc whose root is `folder`.
void write_disc_label(const std::string& folder);

// Closes `ouf`; a stream that lost anything (a full volume) ends the build, naming `path`.
void close_output(const std::string& path);

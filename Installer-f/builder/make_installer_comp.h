// From a source file to its archive and its lines in the manifest. The manifest's grammar is in
// utils_manifest.h. Main thread only; every failure ends the build.
#pragma once

#include <string>
#include <string_view>

extern int dvd_now;           // the current disc, from 0
extern float zip_size_dvd;    // archives on the current disc, units of 1,000 bytes
extern float zip_size_ins;    // archives of the tree, units of 1,000,000,000 bytes
extern std::string prev_dir;  // folder of the last "DIR" line; "---" before the first
extern int num_files_com;     // files compressed so far

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

// The platform code of a file, from its path below the source root. Ends the build if its first
// folder is none of the four.
int platform_of(const std::string& relative);

// --- warnings: what will not install as the makers think ----------------------------------------
void note_installed_places();  // of comp_files; warns of two files at one place
void warn_if_still_shipped(std::string_view path, int os);      // of a manifest path that has gone
void note_archive_kind(std::string_view relative, bool is_7z);  // of each archive made
void warn_of_archive_kinds();                                   // at the end, in all

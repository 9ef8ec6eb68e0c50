// The makers' master builder: turns a source tree into the compressed files of the discs and the
// mirrors, and the manifest that lists them. No page of the wizard reaches it; a flag does.
//
//   make_installer.h       the run: command line, build_install, what a build is told
//   make_installer_scan.h  the walk over the source tree and its rules
//   make_installer_comp.h  one file into its archive, and the manifest's lines
//
// Everything here belongs to the main thread and blocks it: a build has no frames of its own. Every
// failure of a build is a fatal alert, which ends the process with status 1; nothing is undone.
#pragma once

#include <string>

// --- the run ------------------------------------------------------------------------------------
// Does what the builder's flags ask for: a build (--build_master), a server list
// (--write_server_list), or both. Needs MACIBM_init. Returns the process's exit status: 0, 1 when
// the server list could not be written, 2 for flags that make no sense (said on standard error,
// nothing touched).
int run_master_builder();

// Builds the tree of the install type, then shows the makers' checklist.
void build_install();

// Builds one tree: `sim_name`, of region `reg`.
void sub_install();

// --- what a build is told; the command line writes, defaults are the makers' build machine ------
enum install_type : int {
  install_base = 0,   // the base product without scenery; the only type that carries the history on
  install_earth = 1,  // the base product with Earth scenery
  install_mars = 2,   // the Mars scenery alone
  install_moon = 3,   // the Moon scenery alone
};
extern int fog_fals;               // an install_type
extern std::string src_fold;       // root of the source tree, trailing "/"
extern std::string dst_fold_base;  // root of the output, trailing "/"
extern std::string old_dir_path;   // manifest of the previous release; empty for a first release
extern std::string build_name[3];  // name of the tree, by region
extern int release_version;        // number of the release being built
extern float disc_limit_kb;        // a disc is full once its archives exceed this, 1,000 bytes

// --- the tree being built -----------------------------------------------------------------------
extern int reg;               // region: 0 the base product, 1 Mars, 2 Moon
extern std::string sim_name;  // build_name of the region; the top folder on every disc

// --- the server list ----------------------------------------------------------------------------
// `mirrors` is a list "host/path,host,...": a mirror without a path serves from its root, and
// earlier ones get more users.

// What an installer would misread in such a list, in words for the user; empty if nothing.
std::string server_list_complaint(const std::string& mirrors);

// Writes a serverlist9.txt that offers the release folder `name` as the public release. REQUIRES:
// no complaint about `mirrors`. Returns 0, or 1 after the user was told that it could not be
// written.
int write_server_list(const std::string& path, const std::string& name, const std::string& mirrors);

// --- how the builder speaks ---------------------------------------------------------------------
// The progress of a long job: drawn at the foot of the window where there is one; otherwise a line
// on standard error, rewritten in place on a terminal. `done` is the count that the line tells of.
void builder_progress(int done, const std::string& line, const std::string& path);
void builder_progress_end();

// 1 while the key "q" is down; 0 without a window. Whoever opens a window for a build says how the
// key is read; the editions build without one.
int builder_quit_pressed();
extern int (*builder_quit_key)();  // non-zero while it is down; null: no key can be read

// A line for the log and for standard error: a notice, or with "WARNING: " before it.
void builder_notice(const std::string& line);
void builder_warning(const std::string& line);

// An alert, and the fatal one, in the makers' English. `source_line` is a fixed number that
// identifies the complaint.
void builder_alert(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, int source_line);
[[noreturn]] void builder_fatal(const std::string& line_1, const std::string& line_2,
                                const std::string& line_3, const std::string& line_4,
                                int source_line);

// What a build is told, what it has found, and how far it is: one record of the main thread.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <set>
#include <string>
#include <vector>

#include "corekit/base/hl_types.h"

enum install_type : int {
  install_base = 0,   // the base product without scenery; the only type that carries the history on
  install_earth = 1,  // the base product with Earth scenery
  install_mars = 2,   // the Mars scenery alone
  install_moon = 3,   // the Moon scenery alone
};

// How a build ended, as an exit status; a signal that ended it is added to build_by_signal.
enum build_status : int {
  build_done = 0,
  build_failed = 1,
  build_by_signal = 128,
};

// A file that belongs on the master, as the walk found it.
struct source_file {
  std::string relative;    // path below the source root
  int64_t bytes = 0;       // of a link: of what it says
  timespec modified = {};  // of the file
  mode_t mode = 0;         // its kind included
  int os = 0;              // the manifest's platform code
  int64_t by_hand = -1;    // bytes of the .7z beside it; -1 without one
  bool is_link = false;
  bool is_program = false;  // of Windows: to be made large-address-aware
};

struct build_record {
  // Told: written by the command line before a build, read by all of it. The defaults are those of
  // the makers' build machine.
  int fog_fals = install_earth;                 // an install_type
  std::string src_fold = "/Skyvane 9.00/";      // root of the source tree, trailing "/"
  std::string dst_fold_base = "/DVD_Masters/";  // root of the output, trailing "/"
  std::string old_dir_path = "/directory.txt";  // the previous manifest; empty: a first release
  std::string build_name[3] = {"Skyvane 9", "Mars", "Moon"};  // name of the tree, by region
  int release_version = skyvane_version;                      // number of the release being built
  float disc_limit_kb = 630000.0f;  // a disc is full beyond this, units of 1,000 bytes
  std::string reuse_fold;           // output root of the last build, trailing "/"; empty: none
  bool verify_reuse = false;        // hash what is taken over from it
  bool check_only = false;          // scan, and write nothing
  int threads = 0;                  // that pack; 0: one a processor
  time_t source_date = -1;          // no date on the master is later; -1: none given

  // The tree being built: written by build_install, once a tree.
  int reg = 0;           // region: 0 the base product, 1 Mars, 2 Moon
  std::string sim_name;  // build_name of the region; the top folder on every disc

  // Found: written by the walk, started anew with each tree.
  std::vector<source_file> comp_files;  // to compress, in walk order
  std::set<std::string> comp_paths;     // folders to make on discs 0 to 2, each with its "/"
  int num_files_rec = 0;                // files seen
  int num_files_use = 0;                // files kept
  int64_t bytes_use = 0;                // of the files kept
  time_t newest = 0;                    // date of the newest one

  // How far: written by compression, started anew with each tree.
  int dvd_now = 0;               // the current disc, from 0
  std::string dst_folder;        // its root, trailing "/"
  float zip_size_dvd = 0;        // archives on it, units of 1,000 bytes
  float zip_size_ins = 0;        // archives of the tree, units of 1,000,000,000 bytes
  std::string prev_dir = "---";  // folder of the last "DIR" line; "---" before the first
  int num_files_com = 0;         // files compressed so far
  int64_t bytes_com = 0;         // of these files
  int64_t zip_bytes = 0;         // of their archives
  int num_files_old = 0;         // of these files: archives taken over from the last output
  int num_files_gone = 0;        // files that earlier releases shipped and this one does not
};
extern build_record bld;

inline constexpr int discs_with_folders = 3;  // more discs than these there cannot be

// The root of disc `disk`, from 0.
std::string dest_dvd(int disk);
// Makes that bld.dst_folder.
void set_dest_dvd(int disk);

// No date on the master is later than this one.
time_t newest_date();

// Full paths: of a source file, and where its archive lies on disc `disk`, less the suffix.
std::string source_path(const source_file& file);
std::string archive_stem(const source_file& file, int disk);

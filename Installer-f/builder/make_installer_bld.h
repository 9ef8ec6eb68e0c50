// What a build is told, what it has found, and how far it is: one record of the main thread.
#pragma once

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

struct build_record {
  // Told: written by the command line before a build, read by all of it. The defaults are those of
  // the makers' build machine.
  int fog_fals = install_earth;                 // an install_type
  std::string src_fold = "/Skyvane 9.00/";      // root of the source tree, trailing "/"
  std::string dst_fold_base = "/DVD_Masters/";  // root of the output, trailing "/"
  std::string old_dir_path = "/directory.txt";  // the previous manifest; empty: first release
  std::string build_name[3] = {"Skyvane 9", "Mars", "Moon"};  // name of the tree, by region
  int release_version = skyvane_version;                      // number of the release being built
  float disc_limit_kb = 630000.0f;  // a disc is full beyond this, 1,000 bytes

  // The tree being built: written by build_install, once a tree.
  int reg = 0;           // region: 0 the base product, 1 Mars, 2 Moon
  std::string sim_name;  // build_name of the region; the top folder on every disc

  // Found: written by the walk, started anew with each tree.
  std::vector<std::string> comp_files;  // full source paths to compress, in walk order
  std::set<std::string> comp_paths;     // folders to make on discs 0 to 2, each with its "/"
  int num_files_rec = 0;                // files seen
  int num_files_use = 0;                // files kept

  // How far: written by compression, started anew with each tree.
  int dvd_now = 0;               // the current disc, from 0
  std::string dst_folder;        // its root, trailing "/"
  float zip_size_dvd = 0;        // archives on it, units of 1,000 bytes
  float zip_size_ins = 0;        // archives of the tree, units of 1,000,000,000 bytes
  std::string prev_dir = "---";  // folder of the last "DIR" line; "---" before the first
  int num_files_com = 0;         // files compressed so far
};
extern build_record bld;

// The root of disc `disk`, from 0.
std::string dest_dvd(int disk);
// Makes that bld.dst_folder.
void set_dest_dvd(int disk);

// What the disc pages and the other flows share: finding the disc, disk space, and starting the
// simulator.
#pragma once

#include <string>

struct wizard_screen;

// Scans the mounted volumes for the product's disc: the one that holds `marker`, a path relative to
// its root. Leaves its mount path in dvd_path, or leaves that empty.
void UTIL_scan_volumes(const std::string& marker);
inline constexpr char disc_label_file[] = "dvd_version.txt";

// Looks for the disc, reads its label into install_name, and its manifest into sim_info. Leaves
// dvd_path, install_name and stg.directory_state.
void UTIL_scan_dvd();

// Draws the list of installed copies, with a button to find one that is missing from it. Leaves the
// choice in dest_dir_path.
void UTIL_pick_install();

// Draws the figures of the volume that holds dest_dir_path, with one of the two texts; 1 if the job
// fits. A volume that does not tell waives the check.
int UTIL_disk_space(const std::string& enough_text, const std::string& short_text);

// A page that starts the simulator of the copy at dest_dir_path.
int dvd_do_run_sim(int first_time, wizard_screen& screen);

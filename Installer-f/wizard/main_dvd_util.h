// What the disc pages and the other flows share: finding the disc, disk space, and starting the
// simulator.
#pragma once

#include <string>

#include "Installer-f/wizard/main_wizard.h"

// Scans the mounted volumes for the product's disc: the one that holds `marker`, a path relative to
// its root. Leaves its mount path in dvd_path, or leaves that empty.
void UTIL_scan_volumes(const std::string& marker);
inline constexpr char disc_label_file[] = "dvd_version.txt";

// Looks for the disc, reads its label into install_name, and its manifest into sim_info. Leaves
// dvd_path, install_name and stg.directory_state.
void UTIL_scan_dvd();

// --- the change of discs -------------------------------------------------------------------------

// A disc is known by the file that it holds, not by a label: only the manifest has its number.
extern int current_disk;    // number of the disc that is known to be in the drive; -1 for none
extern int want_file_disk;  // index in sim_info of the file whose disc is wanted

// Looks for the wanted file on the mounted volumes. 1 if one has it: then dvd_path is that volume
// and current_disk its number. Otherwise 0, and dvd_path is the disc that is in its way, to be
// ejected, or empty.
int UTIL_verify_disk();

// The number of the wanted disc, from 0. With `first_time`, begins to eject the present one and
// does not wait for that.
int UTIL_switch_disk(int first_time);

// Whether a volume with the wanted file is mounted now. Changes nothing.
bool UTIL_wanted_disk_is_in();

// Has another look at the disc that current_disk says is in: when none of the files that are to be
// fetched from it, from `index` on, can be seen there, it has been taken out or changed by hand,
// and current_disk becomes -1, so that the next file asks for it.
void UTIL_notice_lost_disk(int index);

// --- what pages draw -----------------------------------------------------------------------------

// Draws the list of installed copies, with a button to find one that is missing from it. Leaves the
// choice in dest_dir_path.
void UTIL_pick_install();
// The choice by the answers of a run without a display. Returns empty: the page judges it.
std::string give_copy();
// The same, and the copy is put on the list as "Find It" does. Returns what is wrong with it.
std::string give_listed_copy();

// Draws the figures of the volume that holds dest_dir_path, with one of the two texts; 1 if the job
// fits. A volume that does not tell waives the check.
int UTIL_disk_space(const std::string& enough_text, const std::string& short_text);

// Whether the copy at dest_dir_path has a simulator to start; says so if it has none.
bool UTIL_sim_can_start();

// A page that starts it. A button that leads there stays on its page while there is none.
extern const wizard_page dvd_do_run_sim;

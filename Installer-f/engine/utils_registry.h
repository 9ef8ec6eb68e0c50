// The installed copies that this user has, remembered in a text file of the preferences folder so
// that an update can offer them. A convenience: no failure here goes beyond a line in the log.
//
// Main thread only. Two installers at once may add a line twice; readers do not mind.
#pragma once

#include <string>
#include <vector>

extern std::vector<std::string> all_skyroots;  // registered folders that exist now, in file order

void locate_all_skyvanes();   // refills all_skyroots
void register_new_skyvane();  // adds dest_dir_path to the file, unless it is there
int path_is_to_a_sim();       // 1 if dest_dir_path holds a copy, else 0

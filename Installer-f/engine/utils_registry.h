// The installed copies that this user has, remembered in a text file of the preferences folder so
// that an update can offer them. A convenience: no failure here goes beyond a line in the log.
//
// Main thread only. Writers of several programs wait for one another.
#pragma once

#include <string>
#include <vector>

extern std::vector<std::string> all_skyroots;  // registered folders that exist now, in file order

void locate_all_skyvanes();   // refills all_skyroots
void register_new_skyvane();  // adds dest_dir_path to the file, unless it is there
void unregister_skyvane(const std::string& copy);  // takes its line, or lines, off the file
int path_is_to_a_sim();                            // 1 if dest_dir_path holds a copy, else 0

// Storage of the settings record and of the run's paths and names. Main thread.

#include "Installer-f/settings/main_stg.h"

stg_record stg;

void set_directory_state(int state) {
  stg.directory_state = state;
}

std::string dest_dir_path;
std::string temp_path;
std::string dvd_path;
std::string cmd_line_path;
std::string install_name;

// stg: the settings and results that the wizard, the engine and the network client share.
//
// Main thread only; workers are given copies of what they need. main sets the defaults, then the
// preference file is read over them.
#pragma once

#include <string>

inline constexpr int sector_columns = 36;  // of longitude, west to east
inline constexpr int sector_rows = 18;     // of latitude, south to north
inline constexpr int sector_count = sector_columns * sector_rows;

// Where a 10-degree sector stands in the two sector tables.
inline constexpr int sector_cell(int lon_index, int lat_index) {
  return lon_index * sector_rows + lat_index;
}

enum manifest_state : int {
  manifest_none = 0,      // not yet
  manifest_unpacked = 1,  // downloaded and unpacked, not yet read
  manifest_refused = 2,
  manifest_loaded = 3,
};

enum target_platform : int { target_mac = 1, target_windows = 2, target_linux = 3 };

// What the transfer is doing to the present file.
enum file_activity : int {
  activity_deleting = 0,
  activity_fetching = 1,
  activity_have_it = 2,
  activity_not_wanted = 3,
};

struct stg_record {
  int directory_state = 0;   // manifest_state             (server list, disc scan, wizard)
  int target_os = 1;         // target_platform            (options)
  int log_actions = 0;       // log each file action       (options)
  int new_format_state = 0;  // 2 once a newer format has sent the user to the web
  int server_down = 0;       // the last transfer from the present server failed  (transfer)
  int extract_failed = 0;    // a file could not be unpacked; ends the transfer   (transfer)
  int server_count = -1;     // mirrors known, at most 10; -1 until the list is read
  int server_index = 0;      // the mirror in use          (chooser, server list, transfer)
  int sector_selected[sector_count] = {};   // sectors that the user wants
  int sector_available[sector_count] = {};  // sectors that the manifest holds
  int activity = activity_not_wanted;       // file_activity  (transfer, delete_files)
  float file_fraction = 0;                  // of the present file done, 0 to 1; -0.01 while unknown
  int stream_count = 0;   // streams set by hand, 1 to 4; 0 lets the engine choose  (options)
  int beta_flag = 0;      // fetch the test release instead of the public one       (options)
  float todo_zip_kb = 0;  // compressed size of the job, units of 1,000 bytes
  float todo_raw_kb = 0;  // installed size of the job, same unit
  int todo_install_count = 0;
  int todo_delete_count = 0;
  int has_global_files = 0;  // the manifest holds global scenery
  int has_sim_files = 0;     // the manifest holds other files
};
extern stg_record stg;

// --- paths and names of this run ----------------------------------------------------------------
extern std::string dest_dir_path;  // the copy worked on, absolute, trailing "/"; empty until chosen
extern std::string temp_path;      // working folder of this run, trailing "/"
extern std::string dvd_path;       // mount path of the product's disc, trailing "/"; empty without
extern std::string cmd_line_path;  // the copy of "-path", absolute, trailing "/"; else empty
extern std::string install_name;   // the release's folder on a server or a disc
inline constexpr char no_install_name[] = "Not Yet Scanned";

// The product's web server, which holds serverlist9.txt.
extern const char* const product_web_host;

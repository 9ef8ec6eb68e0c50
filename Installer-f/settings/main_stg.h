// stg: the settings and results that the wizard, the engine and the network client share, grouped
// by who writes them: choices of the user first, then results of the engine.
//
// Main thread only; workers are given copies of what they need. main sets the defaults, then the
// preference file is read over them.
#pragma once

#include <string>
#include <string_view>

inline constexpr int sector_columns = 36;  // of longitude, west to east
inline constexpr int sector_rows = 18;     // of latitude, south to north
inline constexpr int sector_count = sector_columns * sector_rows;

// Where a 10-degree sector stands in the two sector tables.
inline constexpr int sector_cell(int lon_index, int lat_index) {
  return lon_index * sector_rows + lat_index;
}

// The cell of a sector named by its south-west corner, such as "+30-120"; -1 for any other name.
int sector_cell_of(std::string_view name);

enum manifest_state : int {
  manifest_none = 0,      // not yet
  manifest_unpacked = 1,  // downloaded and unpacked, not yet read
  manifest_refused = 2,
  manifest_loaded = 3,
};

enum target_platform : int { target_mac = 1, target_windows = 2, target_linux = 3 };

// The one that this program runs on.
#if defined(__APPLE__)
inline constexpr target_platform machine_platform = target_mac;
#elif defined(_WIN32)
inline constexpr target_platform machine_platform = target_windows;
#else
inline constexpr target_platform machine_platform = target_linux;
#endif

// The platform of a word of the command line, "mac", "windows" or "linux"; 0 for any other word.
int platform_named(std::string_view word);

// What the transfer is doing to the present file.
enum file_activity : int {
  activity_deleting = 0,
  activity_fetching = 1,
  activity_have_it = 2,
  activity_not_wanted = 3,
};

// --- choices of the user -------------------------------------------------------------------------

// Written by the options dialog, the command line and the preference file. For the run; all but
// new_copy_os are kept from run to run.
struct stg_options {
  int new_copy_os = machine_platform;  // target_platform of a copy that is made      (selection)
  int log_actions = 0;                 // log each file action                        (engine)
  int stream_count = 0;                // streams set by hand, 1 to 4; 0 lets the transfer choose
  int beta_flag = 0;                   // fetch the test release, not the public one  (server list)
};

// Written by settle_platform as a verification begins. Until the next one.
struct stg_target {
  int target_os = machine_platform;  // target_platform that files are fetched for     (selection)
};

// Written by the map, and by selection where a page begins. Until the next such page.
struct stg_sectors {
  int sector_selected[sector_count] = {};  // sectors that the user wants       (selection, sizes)
};

// --- results of the engine -----------------------------------------------------------------------

// Written by the server list, or, on a disc, by the disc scan. Until the next list.
struct stg_mirrors {
  int server_count = -1;  // mirrors known, at most 10; -1 until the list is read, 0 on a disc
  int server_index = 0;   // the mirror in use; the user may change it, too, under way  (transfer)
};

// Written by the manifest's reader. Until the next manifest.
struct stg_offer {
  int directory_state = manifest_none;      // manifest_state, by set_directory_state alone (pages)
  int new_format_state = 0;                 // 2 once a newer format has sent the user to the web
  int sector_available[sector_count] = {};  // sectors that have a tile                     (map)
  int has_global_files = 0;                 // there is global scenery                      (pages)
  int has_sim_files = 0;                    // there are other files                        (pages)
};

// Written by recalc_disk_sizes, read by pages and the unattended run. Until the next call: nothing
// is taken off as the job gets on.
struct stg_job {
  float todo_zip_kb = 0;  // compressed size, units of 1,000 bytes
  float todo_raw_kb = 0;  // installed size, same unit
  int todo_install_count = 0;
  int todo_delete_count = 0;
};

// Written by the transfer and by delete_files, read by the transfer page. Until the next file.
struct stg_transfer {
  int activity = activity_not_wanted;  // file_activity of the present file
  float file_fraction = 0;             // of the present file done, 0 to 1; -0.01 while unknown
  int server_down = 0;                 // the last fetch from the present mirror failed
  int extract_failed = 0;              // a file could not be unpacked; ends the transfer for good
};

struct stg_record : stg_options,
                    stg_target,
                    stg_sectors,
                    stg_mirrors,
                    stg_offer,
                    stg_job,
                    stg_transfer {};
extern stg_record stg;

// The one door to stg.directory_state:
//
//   from      to                by
//   none      unpacked          server list: the archive has come and is unpacked
//   none      loaded, refused   disc scan: the disc's manifest was read
//   unpacked  loaded, refused   server list: the manifest was read
//   loaded    unpacked          a page that is come back to: what was found on disk is forgotten
//   any       none              server list: another release is wanted, or what came is no manifest
//   any       refused           manifest reader: a newer format
void set_directory_state(int state);

// --- paths and names of this run ----------------------------------------------------------------
extern std::string dest_dir_path;  // the copy worked on, absolute, trailing "/"; empty until
                                   // chosen; pages write it
extern std::string temp_path;      // working folder of this run, trailing "/"; main, once
extern std::string dvd_path;       // mount path of the product's disc, trailing "/"; empty without;
                                   // the disc scan writes it
extern std::string cmd_line_path;  // the copy of "-path", absolute, trailing "/", else empty; the
                                   // command line, once
extern std::string install_name;   // the release's folder; server list and disc scan write it
inline constexpr char no_install_name[] = "Not Yet Scanned";

// The product's web server, which holds serverlist9.txt.
extern const char* const product_web_host;

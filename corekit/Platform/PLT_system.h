// The operating system, as far as the program needs it: well-known folders, mounted volumes, the
// machine's figures and the clock. Nothing here knows the window library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Microseconds of a monotonic clock.
uint64_t PLT_microseconds();

// Processors available to this process, at least 1.
int PLT_processor_count();

// --- folders -------------------------------------------------------------------------------------
// All end in "/". Empty when the system does not say.

// Absolute path of the running executable, links resolved (no trailing "/").
std::string PLT_executable_path();
// The user's desktop; the home folder where there is none.
std::string PLT_desktop_folder();
// A working folder of this process alone, made on first use with access for its user only, and
// removed with its content by PLT_drop_temp_folder.
std::string PLT_temp_folder();
void PLT_drop_temp_folder();
// Where the user's settings live; made on first use.
std::string PLT_prefs_folder();

// --- volumes -------------------------------------------------------------------------------------

// Mount points of removable media and disc images that are mounted now, each with a trailing "/".
std::vector<std::string> PLT_disc_volumes();
// Bytes of the volume that holds `path`: total, and available to this user. 0 or errno.
int PLT_volume_space(const std::string& path, uint64_t* total, uint64_t* available);
// Ejects or unmounts the volume mounted at `path`. 0 or errno.
int PLT_eject(const std::string& path);

// --- the machine, for the log
// ---------------------------------------------------------------------
struct PLT_machine {
  std::string system;      // name of the operating system
  std::string version[3];  // major, minor, bug-fix; "?" where unknown
  uint32_t cpu_type = 0;   // four characters, such as 'ixxx'; 0 unknown
  int cpu_mhz = 0;         // 0 unknown
  int bus_mhz = 0;         // 0 unknown
  int ram_mb = 0;          // 0 unknown
};
PLT_machine PLT_machine_figures();

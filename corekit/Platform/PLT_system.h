// The operating system, as far as the program needs it: well-known folders, mounted volumes, other
// programs, the machine's figures and the clock. Nothing here knows the window library, and nothing
// here alerts. Any thread may call these, unless said otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Microseconds of a monotonic clock.
uint64_t PLT_microseconds();

// Processors available to this process, at least 1.
int PLT_processor_count();

// --- folders -------------------------------------------------------------------------------------

// All end in "/". Empty when the system does not say.

// Absolute path of the running executable, links resolved (no trailing "/").
std::string PLT_executable_path();
// The user's home folder: HOME, or what the user table says.
std::string PLT_home_folder();
// The user's desktop; the home folder where there is none.
std::string PLT_desktop_folder();
// A working folder of this process alone, made on first use with access for its user only, and
// removed with its content by PLT_drop_temp_folder. Main thread. A process that came from this one
// by fork shares the folder but does not remove it.
std::string PLT_temp_folder();
void PLT_drop_temp_folder();
// A new folder beside that one, with access for its user only, for what outlives this process:
// `head` and six characters, links resolved. Empty, with errno, if there can be none.
std::string PLT_make_lasting_folder(std::string_view head);
// Whether `folder` is one that PLT_make_lasting_folder has made for this user, and still his alone.
bool PLT_is_lasting_folder(const std::string& folder, std::string_view head);
// Where the user's settings live; made on first use.
std::string PLT_prefs_folder();
// Where what a run leaves behind lies, such as its log; made on first use.
std::string PLT_state_folder();

// Deletes `path` with all that is in it, hidden files as well; links are removed, never followed,
// and other volumes that are mounted inside are left alone. 0 or errno.
int PLT_remove_tree(const std::string& path);

// Every file and link below `folder` (trailing "/"), as paths from there, in the order of their
// bytes. No link is followed; what cannot be read is left out.
std::vector<std::string> PLT_files_below(const std::string& folder);

// --- files of the program's own ------------------------------------------------------------------

enum PLT_own_mode { plt_own_read, plt_own_anew, plt_own_append };

// Opens a file that the program keeps for itself, and makes it if it is to be written. Refused,
// with EPERM, is all that somebody else could have put there: a link, a pipe, a device, a file of
// another user's (root's is taken) or with a second name. Does not wait, and no program that is
// started inherits it. The handle, or -1 with errno.
int PLT_open_own(const std::string& path, PLT_own_mode mode);

// --- volumes -------------------------------------------------------------------------------------

struct PLT_mount {
  std::string point;    // no trailing "/", but for "/" itself
  std::string fstype;   // such as "iso9660" or "fuse.fuseiso"
  uint64_t device = 0;  // number of the device that is mounted, as stat gives it
};
// The volume that is mounted at `point` (no trailing "/"), the last if several lie on one another;
// with an empty fstype when there is none.
PLT_mount PLT_mount_at(const std::string& point);
// Mount points of removable media and disc images that are mounted now, each with a trailing "/".
// One whose name holds ":" or "\" is left out, since no path of the program can name it.
std::vector<std::string> PLT_disc_volumes();
// Bytes of the volume that holds `path`: total, and available to this user; either may be null.
// 0 or errno.
int PLT_volume_space(const std::string& path, uint64_t* total, uint64_t* available);
// Where the volume that holds `path` is mounted, without a trailing "/" but for "/" itself; empty
// if nothing is at `path`. Asks the folders, and no mount table.
std::string PLT_volume_of(const std::string& path);
// Ejects or unmounts the volume mounted at `path`, without a question to the user. Returns when the
// volume is gone, 0, or after at most some 20 seconds with errno: 22 nothing is mounted there, 16
// it would not go.
int PLT_eject(const std::string& path);

// --- other programs ------------------------------------------------------------------------------

// Runs a program, found along PATH, with the arguments `argv` (argv[0] its name, null at the end),
// without a shell and with no input or output. Waits for it, at most `seconds`, and then kills it
// with its children. Its exit status, or -1 if it did not start or did not end by itself.
int PLT_run_program(const char* const* argv, int seconds);

// --- the machine, for the log --------------------------------------------------------------------

struct PLT_machine {
  std::string system;      // name of the operating system
  std::string version[3];  // major, minor, bug-fix; "?" where unknown
  uint32_t cpu_type = 0;   // four characters, such as 'ixxx'; 0 unknown
  int cpu_mhz = 0;         // 0 unknown
  int bus_mhz = 0;         // 0 unknown: this system does not tell it
  int ram_mb = 0;          // of 1,048,576 bytes; 0 unknown
};
PLT_machine PLT_machine_figures();

// --- readers of the system's texts ---------------------------------------------------------------

// What the services above find in the system's files, apart from the reading of them.

// The lines of a mount table (/proc/self/mountinfo), escapes decoded.
std::vector<PLT_mount> PLT_parse_mounts(std::string_view mountinfo);
// The mounts among them that PLT_disc_volumes gives, in its form.
std::vector<std::string> PLT_pick_discs(const std::vector<PLT_mount>& mounts);

// The value of one entry of a user-dirs.dirs file, such as XDG_DESKTOP_DIR="$HOME/Desktop", without
// a trailing "/"; empty when it is missing or neither absolute nor below $HOME. `home` ends in "/".
std::string PLT_parse_user_dir(std::string_view text, std::string_view key, std::string_view home);

// Three numbers of a release such as "6.1.0-18-amd64"; "?" for each that is missing.
void PLT_parse_release(std::string_view release, std::string (&version)[3]);
// The first "cpu MHz" of /proc/cpuinfo, rounded; 0 when there is none.
int PLT_parse_cpu_mhz(std::string_view cpuinfo);
// 'ixxx' for any x86 machine name, else the first four characters of the name, blanks behind a
// shorter one.
uint32_t PLT_parse_cpu_type(std::string_view machine);

// File and path services: the only vocabulary in which the program speaks of files.
//
// Rules of a path, which every caller follows:
//   - a byte string with "/" between its parts; no character set is assumed
//   - a folder's path ends in "/", a file's does not; delete_file and copy_file_recursive go by it
//   - every service puts `app_path` in front of the path that it is given
//   - more than 499 characters is the fatal alert "String too long!", where a service says so
// A service that can fail returns 0 or a code: the system's errno, a (negative) File Manager code
// or 20001 to 20012 of the archive layer. error_str has words for all of them. Nothing here alerts
// otherwise: what the user sees is the caller's decision.
//
// Any thread may call these, but for copy_file and copy_file_recursive, which share one buffer and
// belong to one thread at a time.
#pragma once

#include <string>
#include <vector>

// --- globals -------------------------------------------------------------------------------------

// Stands in front of every path; empty in the installer. Set at start-up only.
extern std::string app_path;

// 1: a path that does not exist is looked for again without regard to case, so that a file of the
// manifest is found under another spelling. The master builder clears it at start-up: what the
// makers ship must match to the letter.
extern int g_case_sensitive;

// Where the last service of this thread failed, for the log. Static text, "" before any failure.
extern constinit thread_local const char* sErrFile;
extern constinit thread_local int sErrLine;

// Notes where a failure was met and hands its code back: `return io_fail(errno, "Files/x", 120);`
// A code of 0 notes nothing.
int io_fail(int code, const char* file, int line);

inline constexpr size_t path_limit = 499;  // characters of a path that goes to the system

// The fatal alert "String too long!" if `path` exceeds path_limit. Returns `path`.
const std::string& path_checked(const std::string& path);

// --- questions -----------------------------------------------------------------------------------

// These three repair the case of the path first if g_case_sensitive is set, and are fatal above the
// path limit.
int file_exists(const std::string& path);    // 1 for anything but a folder, following links; else 0
int dir_exists(const std::string& path);     // 1 for a folder, following links; else 0
int APL_file_size(const std::string& path);  // bytes, at most INT_MAX; -1 for a folder or no file

// 1 if `path` is a symbolic link, with at most 499 characters of what it says in `target` (which
// may be null); else 0.
int is_sim_link(const char* path, std::string* target);

// Replaces the parts of `path` by the spelling that they have on disk, from the root down to the
// first part that nothing matches. Does not add app_path. Nothing is done to a path that exists.
// Folders are read at most once while they do not change, so asking for many absent files is cheap.
void findPath(std::string& path);

// The same for a path that is known not to exist, without another look. Returns false when some
// part has no match, so that the caller need not ask the system again.
bool io_repair_case(std::string& path);

// Total bytes of the volume that holds `path`, and those free for this user; either pointer may be
// null. A path that does not exist yet is answered for its nearest folder that does, as that is
// where an install to it would land. 0 or a code.
int get_free_space(const std::string& path, unsigned long long* total, unsigned long long* free);

// --- single files --------------------------------------------------------------------------------

int delete_file(const std::string& path);  // a folder (which must be empty) if it ends in "/";
                                           // 0 or errno, 2 for an empty path
int rename_file(const std::string& folder, const std::string& old_name,
                const std::string& new_name);  // 0 or errno; replaces a file of the new name
int make_folder(const std::string& path);      // one level, mode 0755; 0 or errno (17: it is there)
int make_file_executable(const char* path);    // mode 0755; 0 or errno

// Copies content and permission bits. 0, 2 when either file cannot be opened or is not a plain
// file, or errno; a full disk is reported, also if only closing the file tells. After a failure a
// target that this call created is removed again. A file copied onto itself is left alone, with 0.
int copy_file(const std::string& source, const std::string& target);

// Sets the large-address-aware flag of a Windows program. 0; 8 if it is no such program (which is
// then not touched); or errno.
int make_file_large_address_aware(const std::string& path);
// What that would return, without doing it.
int check_large_address_aware(const std::string& path);

// --- trees ---------------------------------------------------------------------------------------

// Lists a folder (fatal alert if its path is longer than one character and does not end in "/"):
// names in ascending order of their bytes and, beside each, 1 for a folder. A link is no folder.
// Names that begin with "." are not listed. `filter` 0 keeps all, 1 to 18 the folders and the files
// of one kind (see opensave_takeit), 19 the folders, 20 nothing, 21 the commands below the path
// `folder` (main thread). Returns the number of items. `failed`, if given, receives 0, or the errno
// of a folder that could not be read to its end; then there is what was read before.
int opensave_getitems(const std::string& folder, int filter, std::vector<std::string>& names,
                      std::vector<int>& is_folder, int* failed = nullptr);

// Whether the filter keeps an item. `kind` receives 1 to 18 for a file name that ends in one of the
// family's extensions, in any case: AFL, WPN, ACF, OBJ, SIT, SMO, TXT, FMS, TRA, CAR, SPA, REG,
// WAV, BMP, PNG, FDR, DSF, HGT; else 0.
int opensave_takeit(const std::string& name, int is_folder, int filter, int* kind);

// Copies a file, or a folder (a path that ends in "/") with all that opensave_getitems lists in it;
// symbolic links inside are made anew, not followed. The target folder may exist. 0 or the first
// failure, which ends the copy; 22 if the target lies within the source.
int copy_file_recursive(const std::string& source, const std::string& target);

// Deletes a folder with all that opensave_getitems lists in it, so that a file the user has hidden
// there keeps its folder. No link is followed, also not `path` itself (20). "/" is refused (1).
// 0 or the first failure, which ends the deletion.
int recursive_delete_folder(const std::string& path);

// --- well-known folders and volumes --------------------------------------------------------------

enum os_dir_type : int {
  os_dir_this_app = 0,     // the folder that holds the application
  os_dir_this_bundle = 1,  // the application itself, which here is one file: no "/" at the end
  os_dir_desktop = 2,
  os_dir_default_apps = 3,  // the same as the desktop
  os_dir_temp = 4,          // a working folder of this process alone
  os_dir_prefs = 5,
};

// Fills `path`, which but for os_dir_this_bundle ends in "/"; "\" and ":" in it become "/".
// 0, or -120 with an empty path when the system does not tell.
int get_OS_abs_path(os_dir_type type, std::string& path);

// Ejects the disc (or unmounts the image) that is mounted at `path`, which does not get app_path in
// front. May take some seconds. 0 or errno.
int eject_dvd(const std::string& path);

// --- words for codes -----------------------------------------------------------------------------

// The message of a code. Never null; good until this thread asks for another one.
const char* error_str(int code);

int show_make_dir_err(int code);  // 0 for a make_folder result that is no failure: made, or there
int show_del_err(int code);       // always 0: a failed delete never stops an install

// The gate: everything that is created, replaced, deleted or renamed below a destination, or has
// its mode changed there, goes through here and nowhere else.
//
//   open                          the destination, once; everything else is named below it
//   put_file, put_copy, put_link  a whole file or link in its place, or nothing
//   make_folder                   one level
//   remove_file, remove_folder    what is at the path itself, never what it leads to
//   rename                        within its folder, over nothing
//   open_file                     to read
//
// The gate holds a handle on the destination and reaches each folder from there, without joining
// paths: by one call of openat2 where the kernel has it, part by part elsewhere, with the same
// result. The folder that was reached stays the same one until the work in it is done.
//
// Links on the way to a folder. The program makes links only where the release ships one, and none
// that leads out of the destination. So:
//   - below a path that the release ships as a file or a link nothing is reached (ELOOP)
//   - any other link is the user's own (scenery on another drive) and is followed
//   - without a `ships` that tells them apart, no link is followed
//
// A file is made without a name, or under a hidden one beside its place, and then moved in, so that
// under its own name it is always whole. A hidden name is this process's own and has a lock that
// dies with it; what a process that was stopped left under such a name is removed when a folder is
// first written to.
// There is no fsync: after a loss of power the newest files may be short, which the next
// verification sees.
//
// Paths are relative to the destination: parts joined by single "/", none of them empty, "." or
// "..", and no NUL (EINVAL); with the destination's no longer than path_limit (ENAMETOOLONG). All
// calls return 0 or errno, ENOSPC or EDQUOT for a full disk. Any thread may use an open gate; open
// and take_notes belong to the thread that owns it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "corekit/files/io_handle.h"

inline constexpr int gate_below_link = 40;  // ELOOP: below what the release ships as a link
inline constexpr int gate_leads_out = 18;   // EXDEV: a link that would lead out of the destination

// How the hidden names of unfinished files begin.
inline constexpr std::string_view gate_part_prefix = ".skyvane_part";

// Whether the release ships, or ever shipped, a file or link at this path; spelled as on disk, to
// be compared by gate_same_path. Called from any thread, once a link.
using gate_ships = std::function<bool(std::string_view path)>;

// What a file brings along. Of the mode the bits 0755 are kept, and the owner may always read.
struct gate_attributes {
  mode_t mode = 0;               // 0: the default of the process
  time_t modified = time_t(-1);  // -1: now
};

// Fills a new file, about which `info` tells what the system does. 0 or errno.
using gate_filler = std::function<int(int file, const struct stat& info)>;

class gate_class {
 public:
  gate_class() = default;
  gate_class(const gate_class&) = delete;
  gate_class& operator=(const gate_class&) = delete;

  // Takes a folder, which must exist and may itself be reached through links, as the destination.
  int open(const std::string& folder, gate_ships ships = nullptr);

  // Puts a file of these bytes in place of what is there: a file, a link (not what it leads to), or
  // an empty folder. Makes missing folders. A folder of the user's own that takes no new file is
  // opened for the moment, if an old file is there that may be written and has no second name;
  // another's is not (EACCES).
  int put_file(std::string_view path, const void* bytes, size_t size,
               const gate_attributes& attributes = {});

  // The same with what the open file `source` holds from its start, read piece by piece; no mode
  // and no time. EFBIG if that is more than `most` bytes, and then nothing is put there. To
  // `copied` each piece's bytes are added.
  int put_copy(std::string_view path, int source, uint64_t most, std::atomic<uint64_t>& copied);

  // The same with a link, unless it leads out of the destination (gate_leads_out; nothing is made).
  // The text must be relative, with ".." only at its start; where it would really lead, by what is
  // on disk, must be inside. Below a link of the user's, "inside" means below where that leads.
  int put_link(std::string_view path, const std::string& target);

  int make_folder(std::string_view path);    // one level, mode 0755; EEXIST if something is there
  int remove_file(std::string_view path);    // also a link; EISDIR for a folder
  int remove_folder(std::string_view path);  // an empty one
  int rename(std::string_view path, std::string_view new_leaf);  // EEXIST if that is there
  int open_file(std::string_view path, io_handle& file);         // to read; a plain file only

  // Something is there that is no link. False also where that cannot be told.
  bool is_no_link(std::string_view path);

  // Lines for the log, each once: which links of the user's are followed, and which programs could
  // not be made ones that can be started.
  std::vector<std::string> take_notes();

  // For tests: neither openat2 nor files without a name, which some systems do not have.
  bool walk_only = false;

 private:
  // A folder that was reached.
  struct place {
    int folder = -1;
    io_handle own;      // the folder's handle, but for the destination itself
    io_handle base;     // where the last link on the way led; empty: the destination
    std::string below;  // the folder's path from there, without links
  };
  enum missing_folders { report, make };

  int reach(std::string_view folder, missing_folders missing, place& found);
  int walk(std::string_view folder, missing_folders missing, place& found);
  int step(int at, std::string_view way, const char* name, missing_folders missing, place& found);
  int reach_parent(std::string_view path, missing_folders missing, place& found, std::string& leaf);
  bool may_follow(int at, std::string_view way, const char* name);
  bool stays_inside(const place& from, std::string_view target);
  void sweep_once(std::string_view folder, int handle);
  int put_part(std::string_view path, const gate_filler& fill, place& at, std::string& leaf);
  int put_bytes(std::string_view path, const void* bytes, size_t size,
                const gate_attributes& attributes, int& not_runnable);

  io_handle root_;
  size_t root_length_ = 0;  // characters of its path, which count towards the limit of a path
  gate_ships ships_;
  std::atomic<bool> no_openat2_ = false;
  std::atomic<bool> no_nameless_ = false;  // the volume makes no file without a name

  std::mutex lock_;                                 // of all below
  std::map<std::string, bool, std::less<>> links_;  // met on the way, and whether they are followed
  std::set<std::string, std::less<>> swept_;  // folders that hold nothing of a stopped process
  std::vector<std::string> notes_;
};

// Makes a folder to be opened as a destination, parents first. 0 or errno, with the path of the
// folder that could not be made in `failed`.
int gate_make_destination(const std::string& folder, std::string& failed);

// Whether two paths may mean one file where the case of letters does not count. Letters beyond
// ASCII are all taken for the same: a volume's own table of them is not known here, and taking two
// files for one refuses a link of the user's at worst.
bool gate_same_path(std::string_view a, std::string_view b);

// The manifest in memory: every file that any release ever shipped, each version with its size and
// signature. The grammar of the text is in docs/manifest.md.
//
// read_directory fills the table; the passes after it write only their own fields of the current
// versions. Main thread, except that the verification and unpack tasks write the current versions
// of the histories they were handed, while nobody resizes the table.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

inline constexpr std::string_view sig_none = "NONE";  // no such file on disk
inline constexpr std::string_view sig_gone = "GONE";  // the release has dropped the file
// There is a file on disk, and it cannot be read: of no known state, so it is the user's.
inline constexpr std::string_view sig_unreadable = "UNREADABLE";

// A signature held in place, so that a table of half a million needs no allocation for what the
// workers find. Longer text is cut at the capacity.
class sig_text {
 public:
  static constexpr size_t capacity = 39;

  sig_text() = default;
  sig_text(std::string_view text) { assign(text); }
  sig_text& operator=(std::string_view text) {
    assign(text);
    return *this;
  }

  std::string_view view() const { return {text_, length_}; }
  operator std::string_view() const { return view(); }
  bool empty() const { return length_ == 0; }

  friend bool operator==(const sig_text& a, const sig_text& b) { return a.view() == b.view(); }
  friend bool operator==(const sig_text& a, std::string_view b) { return a.view() == b; }

 private:
  void assign(std::string_view text) {
    length_ = static_cast<uint8_t>(text.size() < capacity ? text.size() : capacity);
    if (length_ != 0) std::memmove(text_, text.data(), length_);
  }

  char text_[capacity] = {};
  uint8_t length_ = 0;
};

// One version of one file: a "FILE" line. `sig_want` and `path` look into the table's own store and
// stand until the next read_directory.
struct file_version_struct {
  std::string_view path;      // manifest path, platform folder included     (reader)
  std::string_view sig_want;  // 32 hexadecimal digits, or sig_gone          (reader)
  sig_text sig_have;          // MD5 on disk, or sig_none; empty until then  (verification)
  int32_t os = 0;             // platform code, 0 to 6                       (reader)
  int32_t version = 0;        // release number                              (reader)
  float zip_kb = 0;           // compressed size, units of 1,000 bytes       (reader)
  float raw_kb = 0;           // installed size, same unit                   (reader)
  int32_t disk = 0;           // the disc that holds it                      (reader)
  int32_t is_global = 0;      // a tile of global scenery, chosen by sector  (reader)
  int32_t lat_index = 0;      // its sector, 0 to 17; no meaning otherwise   (reader)
  int32_t lon_index = 0;      // its sector, 0 to 35; no meaning otherwise   (reader)
  int32_t sig_match = 0;      // sig_have equals sig_want                    (verification)
  int32_t need_fetch = 0;     // decision: fetch and install                 (selection)
  int32_t need_delete = 0;    // decision: delete                            (selection)
  float progress_start = 0;   // share of the job done when it begins, 0..1  (selection)
};

// All adjacent lines of one path, oldest first; never empty once in the table.
struct file_history_struct {
  std::vector<file_version_struct> versions;
  int32_t not_seen = 0;  // builder: the source tree has not shown this file yet

  // The last record alone drives the install; the earlier ones are the signatures of what the
  // program itself once shipped.
  file_version_struct& current() { return versions.back(); }
  const file_version_struct& current() const { return versions.back(); }
};

extern std::vector<file_history_struct> sim_info;  // the loaded manifest, in file order
extern std::set<std::string> deleted_files;        // folders that lost a file and may be empty now
extern std::map<std::string, int32_t, std::less<>> sim_info_index;  // path to index; builder only

// Replaces sim_info by the manifest at `path`, and with it the sectors on offer, the two has_ flags
// and the (zeroed) totals in stg. Returns 3 when loaded. Returns 2 when the header was refused:
// then new_format has told the user and asked the program to end. A file that is missing or empty,
// names a folder as a file, or is larger than any manifest can be is a fatal alert. A record whose
// installed location would lie outside the destination is left out with a warning in the log.
// `message` says what the manifest is read for; the reader itself shows nothing.
int read_directory(const std::string& path, std::string message);

// 1 if `path` names a tile of global scenery, else 0.
int is_global_scenery_f(std::string_view path);

// The 10-degree sector of a tile named for its south-west corner, such as "+34-118.dsf". Returns 1
// and fills both, or 0 and leaves them when the name gives no sector.
int find_sector(int32_t& lon_index, int32_t& lat_index, std::string_view path);

// How the current version of sim_info[index] is packed on a disc: ".7z" for a global tile, else
// ".zip". On a server everything is ".zip".
const char* suffix_for_file(int index);

// Tells the user that this installer is too old for the file at `path`, opens the page that offers
// a new one, and asks the program to end.
void new_format(const std::string& path);

// The reader of data files: a whole file in memory, a cursor in it, and scanners that pick out
// tokens without copying until a string is asked for.
//
// A file is seen as it was when it was opened. Up to 64 MiB the content is read into memory of the
// object's own, so a file that is cut short or a disc that fails under the reader cannot hurt it.
// Above, it is mapped from the file: if another program then truncates it, reading past the new end
// is a bus error. Only the makers' own large sources are opened that way; what is verified on the
// user's disk is read in pieces elsewhere.
//
// An object belongs to one thread; several objects may work at once.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

extern std::atomic<int32_t> mapped_files_open;  // files open through this class, for diagnostics

// What the header of a text file says of it.
enum header_kind {
  header_foreign,        // it is of another kind
  header_other_version,  // of this kind, by its first line and its keyword, in a version not listed
  header_ours,
};

class xmap_class {
 public:
  // Opens `path` as retry does; an empty path gives an object with nothing mapped.
  explicit xmap_class(const std::string& path);
  ~xmap_class();
  xmap_class(const xmap_class&) = delete;
  xmap_class& operator=(const xmap_class&) = delete;

  // Maps app_path + `path` in place of what was mapped before, and returns file_start; null when it
  // cannot be opened or is no plain file. An empty file maps, with cursor equal to file_end. The
  // case of the path is repaired if g_case_sensitive is set. Fatal: a "\" or ":" in the path, also
  // where the system allows them; a path that holds app_path already; more than 499 characters;
  // memory exhausted.
  const unsigned char* retry(const std::string& path);

  // Opens app_path + `path` as retry does, and leaves the reading to the caller, by file_handle.
  // `bytes` receives the file's size. False when it cannot be opened or is no plain file.
  bool open(const std::string& path, uint64_t& bytes);

  // Has the cursor run over bytes of the caller's, such as the first ones of an open file.
  void look_at(const char* begin, const char* end);

  // Reads the file's header (io_utils_ouf.h has the layouts) at the cursor. `type` is ouf_binary or
  // ouf_text, anything else is fatal; `versions` lists the accepted versions and ends in 0; `note`
  // and `keyword` may be null. Returns the version and leaves the cursor behind the header and the
  // keyword. Returns 0 for a wrong header, a version that is not listed (cursor behind the header)
  // or another keyword (cursor in front of it). The keyword must end at a blank, tab, NUL, CR, LF
  // or the end of the file.
  int check_file(int type, const int* versions, const char* keyword, std::string* note);

  // The same for a text file whose making is in doubt. The cursor is behind the keyword of one that
  // is ours.
  header_kind check_maker(const int* versions, const char* keyword);

  // `mode` 1: opens `ouf` for writing with versions[0]. 0: retry and check_file. Returns 1 or 0.
  int io_file_open(int mode, const std::string& path, const int* versions, int type);
  // Ends what io_file_open began. After writing, 0 if all reached the disk, else a code; 0
  // otherwise.
  int io_file_close();

  // Copies `bytes` bytes from the cursor and moves it; if `swap` is set, reverses each whole group
  // of 4 bytes. Reading past file_end is fatal.
  void read_n_rev(void* target, long bytes);

  // One token: skips blanks and tabs, takes what is before the next blank, tab, NUL, CR or LF, and
  // stops on that. `out` may be null; it is emptied when there is no token.
  void TXT_str_scan_space(std::string* out);

  // The rest of the line behind its blanks and tabs, without the line end. Then moves on to the
  // next line that has content: over all NUL, CR, LF, blanks and tabs. `out` may be null.
  void TXT_str_scan_eoln(std::string* out);

  // Writes the line that holds the cursor, and its number, to the log. For diagnostics.
  void TXT_xer_line() const;

  int32_t swap = 0;                           // the file's byte order is not the machine's
  std::string line_text;                      // free for the owner; reading does not use it
  int32_t io_mode = 0;                        // 0 reading, 1 writing through `ouf`
  const unsigned char* file_start = nullptr;  // null: nothing is mapped
  const unsigned char* cursor = nullptr;      // next byte, never past file_end
  const unsigned char* file_end = nullptr;    // one past the last byte
  int32_t file_handle = 0;                    // of the open file; 0 when none

 private:
  void drop();         // unmaps and closes
  void skip_blanks();  // blanks and tabs

  unsigned char* read_copy = nullptr;  // what was read of a file, malloc; null when it is mapped
  size_t mapped_bytes = 0;             // of a file that is mapped
};

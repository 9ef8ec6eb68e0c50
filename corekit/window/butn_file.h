// Paths: the row that shows one, the folder picker, and the program's own browser. Each dialog is a
// loop of its own round the frame, so these lie above it. Main thread only.
#pragma once

#include <string>

// --- the platform's folder picker; non-zero with a path in `out` -------------------------------

// The folder picker: the desktop's where it has one, else the browser below, from
// `start_in` on. Modal. 1 with the folder, which has no "/" at its end, in `out`; 0, and `out` as
// it was, when nothing was chosen or the program cannot use it. `mode` 2 is the only one, and
// `flags` says nothing.
int GetFilePathFromUser(int mode, const std::string& prompt, const std::string& action, int flags,
                        const std::string& start_in, std::string& out);

// --- paths and files -----------------------------------------------------------------------------
inline constexpr int file_type_limit = 21;    // the greatest file type
inline constexpr int file_type_folder = 19;   // folders only
inline constexpr int file_type_prefix = 20;   // these two show and edit
inline constexpr int file_type_command = 21;  //   the whole path

// A folder button and a field for the last part of *path (types 20 and 21: for all of it).
// `open_save` is win_file_open or win_file_save, `file_type` 0 to 21; others are fatal alerts. The
// button asks for a folder and blocks inside the frame. 1 if *path changed.
int BTN_select_path_stl(float x, float y, int open_save, int file_type, std::string* path,
                        int max_length, const std::string& label, float dx, int auto_focus);
// The same on buffers of `max_length` bytes, NUL included; fatal alert for a text that does not
// fit.
int BTN_select_path_chr(float x, float y, int open_save, int file_type, char* path, int max_length,
                        const std::string& label, float dx, int auto_focus);
// *name receives the last part of the path.
int BTN_select_file_chr(float x, float y, int open_save, int file_type, char* path,
                        std::string* name, int max_length, const std::string& label, float dx);

// The program's own browser, in window `open_save`. It starts at *path (a folder that ends in "/",
// or a file; a part that is not there is left out) and returns 1 with what the user chose, or 0
// with *path as it was. `file_type` 19 chooses a folder (which ends in "/"), others a file. Modal.
int BTN_opensave(int open_save, int file_type, std::string* path);
int BTN_opensave(int open_save, int file_type, std::string* path, const std::string& prompt,
                 const std::string& action);

// The browser's background, and in the open window with types 3, 8 or 20 a preview of `path`.
void stand_io_dialog(int open_save, int file_type, const std::string& path);

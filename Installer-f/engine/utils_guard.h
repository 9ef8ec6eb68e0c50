// The guard: what the verification has found may have become something else by the time it is acted
// on, hours later. The user goes on working, or copies files of his own into the copy. So before a
// file is replaced or deleted, the guard looks at what lies there now.
#pragma once

#include <string>

#include "Installer-f/engine/utils_manifest.h"

inline constexpr int code_changed = 20019;  // error_str's, of what the guard does not let go

// Whether what lies at `location` (below app_path, as location_on_disk gives it) may be replaced or
// deleted for `history`: nothing or a folder, which the gate does not harm; what the verification
// saw there; or a state that the makers have shipped. Reads the file, where its time or its
// spelling tells that it may be another. Without a verification everything may. Any thread, while
// nobody writes the history.
bool guard_lets_go(const std::string& location, const file_history_struct& history);

// Whether the makers have ever shipped a file of this signature under the history's name.
bool is_known_state(const file_history_struct& history, const file_sig& sig);

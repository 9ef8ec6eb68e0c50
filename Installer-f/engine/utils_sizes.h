// What the job amounts to, and how a size is written for the user. Main thread only.
#pragma once

#include <string>

// Refills stg.todo_* from the verification results and the present choice of sectors. A preview for
// the pages; no decision hangs on it.
void recalc_disk_sizes();

// What the scenery of one sector takes on the disk, in units of 1,000 bytes. Walks all of sim_info.
float sector_kb(int column, int row);

// A size for the user: "%.1f GB", "%.0f MB" or "%.0f KB". `kb` is in units of 1,000 bytes.
std::string size_string(float kb);

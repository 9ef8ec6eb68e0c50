// The totals of the job, from the flags of the verification pass and the sectors chosen.
//
// Main thread. Writes the four stg.todo_ fields.

#include "Installer-f/engine/utils_sizes.h"

#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/hl_string.h"

void recalc_disk_sizes() {
  double zip_kb = 0, raw_kb = 0;  // in a float, half a million small sizes would lose their tail
  stg.todo_install_count = 0;
  stg.todo_delete_count = 0;

  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_version_struct& current = sim_info[i].current();
    if (!want_this_f(i, static_cast<int>(sim_info[i].versions.size()) - 1)) continue;
    const bool gone = current.sig_want == sig_gone;
    const bool taken = !current.is_global || sector_is_selected(current);

    if (!gone && !current.sig_match && taken) {
      zip_kb += current.zip_kb;
      raw_kb += current.raw_kb;
      ++stg.todo_install_count;
    }
    // A dropped file matches only if what is on disk reads "GONE" as well, so this counts none. The
    // figure is a preview, kept to the scenery that the user takes away.
    if (gone && current.sig_match) ++stg.todo_delete_count;
    if (!taken && current.sig_match) ++stg.todo_delete_count;
  }
  stg.todo_zip_kb = static_cast<float>(zip_kb);
  stg.todo_raw_kb = static_cast<float>(raw_kb);
}

float sector_kb(int column, int row) {
  double kb = 0;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& file = history.current();
    if (file.is_global && file.sig_want != sig_gone && file.lon_index == column &&
        file.lat_index == row) {
      kb += file.raw_kb;
    }
  }
  return static_cast<float>(kb);
}

std::string size_string(float kb) {
  // Decimal thresholds over binary divisors: what users of earlier releases are used to reading.
  if (kb > 1024000.0f) return str_format("%.1f GB", kb / 1048576.0f);
  if (kb > 1024.0f) return str_format("%.0f MB", kb / 1024.0f);
  return str_format("%.0f KB", kb);
}

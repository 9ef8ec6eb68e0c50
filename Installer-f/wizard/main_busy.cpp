// Main thread.

#include "Installer-f/wizard/main_busy.h"

#include "Installer-f/engine/utils_registry_lock.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"

bool copy_is_free(page_function back, wizard_screen& screen) {
  if (dest_dir_path.empty() || lock_copy(dest_dir_path) == copy_lock_ours) return true;
  screen.text = tr("Another installer or updater is at work on ") + dest_dir_path +
                tr(".\n\nI will go on as soon as it has finished.  You can also go back, or quit.");
  screen.back = back;
  screen.copy_is_busy = true;
  return false;
}

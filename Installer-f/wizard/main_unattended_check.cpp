// Steps: choose the files as the job would, with the questions answered and told; count; tell.
// Main thread. Writes engine_ask while it decides.

#include "Installer-f/wizard/main_unattended_check.h"

#include <cstdint>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_sizes.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"

namespace {

end_figures* counts = nullptr;  // while the files are chosen

int tell_modified(const std::string& location, int) {
  const bool keep = answers.on_modified != answer_overwrite;
  json_line line("path", location);
  say_event("modified", line.add("action", keep ? "keep" : "replace"));
  if (!say_is_json()) {
    say(tr(UTL_text(keep ? "You have modified this file, and it would be kept: "
                         : "You have modified this file, and it would be lost: ")) +
        location);
  }
  ++(keep ? counts->kept : counts->overwritten);
  // One that would end the job is told like any other, and the rest is looked at as well.
  return keep ? answer_keep : answer_overwrite;
}

void say_file(const char* action, const file_version_struct& file) {
  if (!say_is_json()) return;
  json_line line("action", action);
  line.add("path", installed_part(file.path));
  say_event("file", line.add("bytes", static_cast<int64_t>(file.raw_kb * 1000.0f)));
}

}  // namespace

bool check_tell(end_figures& figures) {
  const engine_questions kept = engine_ask;
  counts = &figures;
  engine_ask = {tell_modified, nullptr};
  choose_files();
  engine_ask = kept;
  counts = nullptr;

  int fetch = 0, drop = 0;
  double zip_kb = 0, raw_kb = 0;
  for (const file_history_struct& history : sim_info) {
    const file_version_struct& file = history.current();
    if (file.need_fetch) {
      ++fetch;
      zip_kb += file.zip_kb;
      raw_kb += file.raw_kb;
      say_file("fetch", file);
    } else if (file.need_delete) {
      ++drop;
      say_file("delete", file);
    }
  }
  json_line line;
  line.add("fetch", fetch).add("delete", drop);
  line.add("keep", figures.kept).add("replace", figures.overwritten);
  line.add("download_bytes", static_cast<int64_t>(zip_kb * 1000));
  say_event("plan", line.add("installed_bytes", static_cast<int64_t>(raw_kb * 1000)));
  if (!say_is_json()) {
    say(str_fill(tr("%s: %d files would be fetched (%s to download), %d deleted, and %d that you "
                    "have modified kept. Nothing was done."),
                 {dest_dir_path, std::to_string(fetch), size_string(static_cast<float>(zip_kb)),
                  std::to_string(drop), std::to_string(figures.kept)}));
  }
  return fetch + drop > 0;
}

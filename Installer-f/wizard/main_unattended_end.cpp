// Main thread.

#include "Installer-f/wizard/main_unattended_end.h"

#include <algorithm>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/engine/utils_servers.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xer.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http.h"

namespace {

constexpr size_t most_told = 20;  // missing files on the console; the log has them all

std::string count_line(UTL_text line, int64_t count) {
  return str_fill(tr(line), {std::to_string(count)});
}

int64_t files_checked() {
  return std::count_if(sim_info.begin(), sim_info.end(), [](const file_history_struct& history) {
    return !history.current().sig_have.empty();
  });
}

bool goes_to_the_net(page_function page) {
  return page->kind == page_transfer || (page->kind == page_job && stg.server_count != 0);
}

// The file that the run is waiting for, with its server; empty when it waits for none.
std::string file_in_the_way(page_function page) {
  if (!goes_to_the_net(page)) return "";
  const std::string mirror = stg.server_count > 0 ? server_name[stg.server_index] : "";
  if (page->kind == page_transfer) return crnt_file_path.empty() ? "" : mirror + crnt_file_path;
  if (stg.server_count == -1) return std::string(product_web_host) + "/serverlist9.txt";
  if (stg.directory_state == manifest_none) {
    return mirror + server_path[stg.server_index] + manifest_archive_asked_for();
  }
  return "";
}

json_line of_trouble(const fetch_trouble& trouble) {
  json_line line("text", trouble_line(trouble));
  line.add("mirror", trouble.mirror).add("address", trouble.address);
  return line.add("answer", trouble.answer).add("final", trouble.is_final);
}

void say_missing_event(const missing_file& file) {
  std::string answers;
  for (const fetch_trouble& trouble : file.answers)
    answers += (answers.empty() ? "" : ", ") + of_trouble(trouble).text();
  json_line line("path", file.path);
  say_event("missing", line.add_raw("answers", "[" + answers + "]"));
}

const char* result_word(int status) {
  switch (status) {
    case unattended_done:
      return "done";
    case unattended_refused:
      return "refused";
    case unattended_given_up:
      return "given_up";
    case unattended_busy:
      return "busy";
    case unattended_would:
      return "would";
    default:
      return "failed";
  }
}

}  // namespace

void end_say_summary(const end_figures& figures) {
  say(count_line("%d files checked", files_checked()));
  say(count_line("%d files fetched", grab_totals.fetched));
  say(count_line("%d files deleted", grab_totals.deleted));
  say(count_line("%d files kept, because you have modified them", figures.kept));
  say(count_line("%d files replaced or deleted, though you had modified them",
                 figures.overwritten));
  say(count_line("%d bytes moved", http.total_received()));
  say(str_fill(tr("%s seconds"), {str_format("%.1f", xtim.now_sec)}));
}

void end_say_modified(const end_figures& figures) {
  if (figures.kept) say(count_line("%d files that you have modified were kept.", figures.kept));
  if (figures.overwritten) {
    say(count_line("%d files that you had modified were replaced.", figures.overwritten));
  }
}

void end_tell_given_up(page_function page, const wizard_screen& screen, const std::string& why) {
  std::string text = why;
  const bool has_answers = goes_to_the_net(page) && !troubles().empty();
  const std::string file = file_in_the_way(page);
  for (const fetch_trouble& trouble : troubles()) {
    if (!has_answers) break;
    text += "\n" + trouble_line(trouble);
    say_event("trouble", of_trouble(trouble));
  }
  if (!has_answers && !file.empty()) text += " " + str_fill(tr("The file was %s."), {file});
  if (!has_answers && file.empty()) text += " " + screen.title + ": " + on_one_page(screen.text);
  if (page->kind == page_install) text += " " + screen.progress_text;
  complain(text);
}

void end_tell_failure() {
  if (end_is_disk_trouble()) {
    complain(trouble_line(troubles().back()) + ".");
    say_event("trouble", of_trouble(troubles().back()));
  }
  end_tell_missing();
}

void end_tell_missing() {
  if (missing_files.empty()) return;
  std::string text = count_line("%d files could not be had from any mirror:", missing_files.size());
  size_t told = 0;
  for (const missing_file& file : missing_files) {
    say_missing_event(file);
    std::string lines = file.path;
    for (const fetch_trouble& trouble : file.answers)
      lines += "\n    " + trouble_line(trouble);
    if (told++ < most_told) {
      text += "\n" + lines;
    } else {
      xer << "Missing: " << lines << '\n';
    }
  }
  if (told > most_told) {
    text += "\n" + count_line("and %d more, which are in the log", told - most_told);
  }
  complain(text);
}

bool end_is_disk_trouble() {
  return !troubles().empty() && troubles().back().is_local;
}

void end_report(int status, const end_figures& figures) {
  json_line line("result", result_word(status));
  line.add("status", status)
      .add("copy", dest_dir_path)
      .add("release", install_name == no_install_name ? std::string() : install_name)
      .add("checked", files_checked())
      .add("fetched", grab_totals.fetched)
      .add("deleted", grab_totals.deleted)
      .add("kept", figures.kept)
      .add("replaced", figures.overwritten)
      .add("missing", static_cast<int64_t>(missing_files.size()))
      .add("bytes", http.total_received())
      .add("seconds", xtim.now_sec);
  say_event("end", line);
}

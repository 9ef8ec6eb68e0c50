// The answers of a run without a display: the flags of the command line, read and judged once.
//
// Main thread. Writes answers and cmd_line_path.

#include "Installer-f/wizard/main_unattended_answers.h"

#include <cstdlib>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_unattended_disc.h"
#include "Installer-f/wizard/main_unattended_options.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"
#include "corekit/window/hl_init.h"

answer_set answers;

namespace {

bool accept(const std::string& complaint) {
  if (!complaint.empty()) complain(complaint);
  return complaint.empty();
}

bool read_number(const char* option, float& value) {
  if (!cmdline.has_option(option)) return true;
  const std::string text = cmdline.get_option(option);
  char* end = nullptr;
  value = std::strtof(text.c_str(), &end);
  if (!text.empty() && *end == '\0' && value > 0) return true;
  complain(str_fill(tr("%s wants a number above 0, not '%s'."), {option, text}));
  return false;
}

bool read_folder(const char* option, std::string& folder) {
  if (!cmdline.has_option(option)) return true;
  folder = cmdline.get_option(option);
  if (folder.empty()) {
    complain(str_fill(tr("%s wants a folder."), {option}));
    return false;
  }
  if (folder.find_first_of("\n\r") != std::string::npos) {
    complain(
        str_fill(tr("%s wants a folder with a path in one line, not '%s'."), {option, folder}));
    return false;
  }
  folder = folder_from_start(folder);
  if (folder.size() <= path_limit) return true;
  complain(str_fill(tr("%s wants a shorter path: at most %d bytes."),
                    {option, std::to_string(path_limit)}));
  return false;
}

// The copy to work on; what handed over its folder is overruled.
bool read_copy() {
  if (!read_folder("--copy", answers.copy)) return false;
  if (!answers.copy.empty()) cmd_line_path = answers.copy;
  return true;
}

bool read_modified() {
  if (!cmdline.has_option("--on_modified")) return true;
  const std::string text = cmdline.get_option("--on_modified");
  if (text == "keep") {
    answers.on_modified = answer_keep;
  } else if (text == "overwrite") {
    answers.on_modified = answer_overwrite;
  } else if (text == "cancel") {
    answers.on_modified = answer_cancel_install;
  } else {
    complain(
        str_fill(tr("%s wants %s, not '%s'."), {"--on_modified", "keep|overwrite|cancel", text}));
    return false;
  }
  return true;
}

// The value was taken where every run takes it; here a wrong one ends the run.
bool platform_is_known() {
  if (!cmdline.has_option("--platform")) return true;
  const std::string word = cmdline.get_option("--platform");
  if (platform_named(word)) return true;
  complain(str_fill(tr("%s wants %s, not '%s'."), {"--platform", "mac|windows|linux", word}));
  return false;
}

// An edition that begins without a disc would pass over them, and do something else.
bool are_for_this_edition() {
  for (const char* const option : {"--do", "--sectors"}) {
    if (!cmdline.has_option(option) || g_wizard->kind == page_disc) continue;
    complain(str_fill(tr("%s is an option of %s."), {option, "skyvane-disc-installer"}));
    return false;
  }
  return true;
}

bool read_disc_answers() {
  if (!are_for_this_edition()) return false;
  if (cmdline.has_option("--do")) {
    const std::string word = cmdline.get_option("--do");
    if (word == "install") {
      answers.task = task_install;
    } else if (word == "scenery") {
      answers.task = task_scenery;
    } else if (word == "repair") {
      answers.task = task_repair;
    } else {
      complain(str_fill(tr("%s wants %s, not '%s'."), {"--do", "install|scenery|repair", word}));
      return false;
    }
  }
  answers.sectors_given = cmdline.has_option("--sectors");
  return !answers.sectors_given ||
         accept(unattended_read_sectors(cmdline.get_option("--sectors"), answers.sectors));
}

// A host alone would be passed over, and the run would go round the proxy.
bool proxy_has_a_port() {
  const char* const option = "--pref:_proxy_host";
  if (http_proxy_port() != 0 || !cmdline.has_option(option)) return true;
  const std::string host = cmdline.get_option(option);
  if (host.empty()) return true;
  complain(str_fill(tr("%s wants %s, not '%s'."), {option, "--pref:_proxy_port_int=PORT", host}));
  return false;
}

bool read_name() {
  if (!cmdline.has_option("--name")) return true;
  answers.name = cmdline.get_option("--name");
  const std::string wanted = unattended_wrong_name(answers.name);
  if (!wanted.empty())
    complain(str_fill(tr("%s wants %s, not '%s'."), {"--name", wanted, answers.name}));
  return wanted.empty();
}

}  // namespace

int unattended_read_answers() {
  answers.allow_unsigned = cmdline.has_option("--allow_unsigned");
  answers.check = cmdline.has_option("--check");
  // Who only looks agrees to nothing, and need not.
  answers.accept_eula = cmdline.has_option("--accept_eula") || answers.check;
  if (!read_folder("--dest", answers.dest) || !read_copy() || !read_name() || !read_modified() ||
      !read_disc_answers() || !platform_is_known() || !proxy_has_a_port() ||
      !read_number("--give_up_after", answers.give_up_after)) {
    return unattended_refused;
  }
  return 0;
}

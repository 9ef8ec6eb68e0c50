// Main thread.

#include "Installer-f/wizard/main_unattended_list.h"

#include "Installer-f/engine/utils_copies.h"
#include "Installer-f/wizard/main_unattended_answers.h"
#include "Installer-f/wizard/main_unattended_end.h"
#include "Installer-f/wizard/main_unattended_say.h"
#include "corekit/base/UTL_translate.h"

namespace {

std::string known(const std::string& fact) {
  return fact.empty() ? "?" : fact;
}

void add_fact(json_line& line, const char* name, const std::string& fact) {
  fact.empty() ? line.add_null(name) : line.add(name, fact);
}

}  // namespace

int unattended_list() {
  const std::vector<copy_facts> copies = copies_on_list();
  for (const copy_facts& copy : copies) {
    json_line line("path", copy.path);
    add_fact(line, "release", copy.release);
    add_fact(line, "platform", copy.platform);
    add_fact(line, "edition", copy.edition);
    say_event("copy", line);
    if (say_is_json()) continue;
    say(copy.path + "\t" + known(copy.release) + "\t" + known(copy.platform) + "\t" +
        known(copy.edition));
  }
  if (copies.empty() && !say_is_json()) complain(tr("No installed copy is known."));
  end_report(unattended_done, {});
  return unattended_done;
}

// Main thread. Writes engine_ask for as long as selection runs.

#include "Installer-f/wizard/main_patch_answers.h"

#include <map>

#include "Installer-f/engine/utils_select.h"
#include "corekit/base/hl_string.h"

namespace {

struct given_answers {
  std::map<std::string, int, std::less<>> by_file;    // full path
  std::map<std::string, int, std::less<>> by_folder;  // with its "/" at the end
  int (*ask)(const std::string& location, int gone) = nullptr;
} given;

int answer_given(const std::string& location) {
  const auto of_folder = given.by_folder.find(path_folder(location));
  if (of_folder != given.by_folder.end()) return of_folder->second;
  const auto of_file = given.by_file.find(location);
  return of_file != given.by_file.end() ? of_file->second : 0;
}

int ask_and_remember(const std::string& location, int gone) {
  const int answer = given.ask(location, gone);
  if (answer == answer_overwrite || answer == answer_keep) given.by_file[location] = answer;
  if (answer == answer_overwrite_folder || answer == answer_keep_folder)
    given.by_folder[std::string(path_folder(location))] = answer;
  return answer;
}

}  // namespace

bool choose_files_again() {
  const engine_questions kept = engine_ask;
  given.ask = kept.modified;
  engine_ask = {ask_and_remember, answer_given};
  const bool chosen = choose_files();
  engine_ask = kept;
  if (!chosen) forget_answers();  // who cancels has taken them back
  return chosen;
}

void forget_answers() {
  given = {};
}

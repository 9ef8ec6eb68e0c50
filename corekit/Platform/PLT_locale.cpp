// The user's languages, from the environment as the C library and gettext read it: the locale of
// messages is LC_ALL, else LC_MESSAGES, else LANG, the first that is not empty; LANGUAGE, a list,
// goes before it, unless that locale is the one without a language. Writes nothing.

#include "corekit/Platform/PLT_locale.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace {

std::string_view environment(const char* name) {
  const char* const value = getenv(name);
  return value ? value : "";
}

// The language of a locale's name, "language[_territory][.charset][@variant]"; empty without one.
std::string language_of(std::string_view locale) {
  std::string code(locale.substr(0, locale.find_first_of("_.@-")));
  const auto is_letter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  if (code.size() < 2 || code.size() > 3 || !std::all_of(code.begin(), code.end(), is_letter))
    return "";
  for (char& c : code)
    c |= 0x20;
  return code;
}

}  // namespace

std::vector<std::string> PLT_user_languages() {
  std::string_view locale;
  for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale.empty()) locale = environment(name);
  const std::string language = language_of(locale);
  std::vector<std::string> languages;
  if (language.empty()) return languages;
  std::istringstream list{std::string(environment("LANGUAGE"))};
  for (std::string one; std::getline(list, one, ':');)
    if (std::string code = language_of(one); !code.empty()) languages.push_back(std::move(code));
  languages.push_back(language);
  return languages;
}

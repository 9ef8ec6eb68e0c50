// Reads a language file into the translation table. Main thread.

#include "corekit/files/UTL_translate_load.h"

#include "corekit/base/UTL_translate.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

namespace {

constexpr int accepted_versions[] = {900, 0};

// What stands behind the line's first word and one blank or tab. Further blanks are the beginning
// of a text such as " minutes".
std::string rest_of_line(xmap_class& map) {
  const unsigned char* at = map.cursor;
  const auto on_blank = [&] { return at != map.file_end && (*at == ' ' || *at == '\t'); };
  if (on_blank()) ++at;
  std::string rest, text;
  for (; on_blank(); ++at)
    rest += static_cast<char>(*at);
  map.TXT_str_scan_eoln(&text);
  return rest + text;
}

}  // namespace

bool UTL_translate_load(const std::string& path, bool is_whole) {
  UTL_translate_clear();
  xmap_class map(path);
  if (!map.file_start) return false;
  if (map.check_file(ouf_text, accepted_versions, "TRANSLATION", nullptr) == 0) return false;

  std::string word;
  while (map.cursor < map.file_end) {
    map.TXT_str_scan_space(&word);
    const std::string rest = rest_of_line(map);
    if (word == "STRING") UTL_translate_add(rest);
  }
  UTL_translate_use(is_whole);
  return true;
}

// The signature of a server list: its statement stands behind "ENDOFLIST", where readers that know
// of none have stopped. Any thread but for the file of the highest serial, which is the main
// thread's.

#include <algorithm>

#include "corekit/files/sign.h"

namespace {

constexpr std::string_view end_keyword = "ENDOFLIST";

bool ends_list(std::string_view line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  if (!line.starts_with(end_keyword)) return false;
  line.remove_prefix(end_keyword.size());
  return line.find_first_not_of(" \t\r") == line.npos;
}

}  // namespace

std::string_view sign_list_body(std::string_view list) {
  for (size_t at = 0; at < list.size();) {
    const size_t end = list.find('\n', at);
    if (end == list.npos) break;
    if (ends_list(list.substr(at, end - at))) return list.substr(0, end + 1);
    at = end + 1;
  }
  return list;
}

sign_verdict sign_accept_list(std::string_view list, sign_statement& statement) {
  const std::string_view body = sign_list_body(list);
  const std::string_view rest = list.substr(body.size());
  if (rest.find_first_not_of("\r\n \t") == rest.npos) return sign_unsigned;
  if (const sign_verdict verdict =
          sign_read_statement(rest, sign_of_servers, sign_keys(), statement)) {
    return verdict;
  }
  if (!statement.covers_bytes(sign_list_name, body)) return sign_wrong;
  if (statement.serial < sign_seen_serial(sign_list_name)) return sign_superseded;
  sign_note_serial(sign_list_name, statement);
  return sign_good;
}

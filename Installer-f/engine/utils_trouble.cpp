// Main thread. Writes missing_files and its own list.

#include "Installer-f/engine/utils_trouble.h"

#include <algorithm>
#include <cerrno>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"
#include "corekit/net/http_request.h"

std::vector<missing_file> missing_files;
bool passes_over_missing = false;

namespace {

std::vector<fetch_trouble> present;

std::string address_of(const std::string& server, const std::string& path) {
  std::string address = "http://" + server;
  http_add_path(address, path);
  return str_printable(address);
}

// Another try may find a server that is busy or being mended at its work again, or the way through
// a network that wanted a log-in first (RFC 9110).
bool is_for_good(int status) {
  constexpr int proxy_wants_name = 407, timed_out = 408, too_early = 425, too_many = 429;
  return status >= 400 && status < 500 && status != proxy_wants_name && status != timed_out &&
         status != too_early && status != too_many;
}

std::string answer_of(const net_trouble& trouble) {
  switch (trouble.kind) {
    case net_no_host:
      return str_fill(tr("there is no host '%s'"), {str_printable(trouble.place.host)});
    case net_unreached:
      if (trouble.code == ECONNREFUSED) return tr("the connection was refused");
      return str_fill(tr("there is no way to the server (%s)"), {tr(error_str(trouble.code))});
    case net_status:
      return str_fill(tr("the server answered %s"),
                      {std::to_string(trouble.code) + " " + trouble.words});
    case net_silent:
      return tr("the server does not answer");
    case net_too_large:
      return tr("the file there is too large");
    default:
      return tr("the answer was cut short or makes no sense");
  }
}

}  // namespace

std::string trouble_line(const fetch_trouble& trouble) {
  return trouble.address.empty() ? trouble.answer : trouble.address + ": " + trouble.answer;
}

fetch_trouble trouble_of_slot(int slot, const std::string& server, const std::string& path,
                              const std::string& local) {
  const net_trouble& trouble = http.trouble(slot);
  if (trouble.kind == net_not_written) return trouble_here(local, trouble.code);
  fetch_trouble told = {server, address_of(server, path), answer_of(trouble)};
  if (trouble.place.host != server && !trouble.place.host.empty()) {
    told.answer +=
        " " + str_fill(tr("(by the proxy %s)"), {str_printable(trouble.place.host) + ":" +
                                                 std::to_string(trouble.place.port)});
  }
  told.is_final =
      trouble.kind == net_too_large || (trouble.kind == net_status && is_for_good(trouble.code));
  return told;
}

fetch_trouble trouble_of_content(const std::string& server, const std::string& path) {
  return {server, address_of(server, path), tr("the server sent something else"), true};
}

fetch_trouble trouble_here(const std::string& local, int code) {
  fetch_trouble told;
  told.is_local = true;
  const std::string volume = PLT_volume_of(app_path + std::string(path_folder(local)));
  if ((code == ENOSPC || code == EDQUOT) && !volume.empty()) {
    told.answer = str_fill(tr("There is no room left on the volume %s for %s"), {volume, local});
  } else {
    told.answer = str_fill(tr("%s cannot be written: %s"), {local, tr(error_str(code))});
  }
  return told;
}

void trouble_note(const fetch_trouble& trouble) {
  trouble_ended(trouble.mirror);
  present.push_back(trouble);
}

void trouble_ended(const std::string& mirror) {
  std::erase_if(present, [&](const fetch_trouble& known) { return known.mirror == mirror; });
}

const std::vector<fetch_trouble>& troubles() {
  return present;
}

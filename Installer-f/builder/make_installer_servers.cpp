// The server list that the makers publish: the release's name and version, and its mirrors. Its
// grammar stands with its reader.
//
// Main thread. Writes `ouf`.

#include "Installer-f/builder/make_installer_servers.h"

#include <string_view>
#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_say.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"

namespace {

constexpr int server_list_version = 820;
constexpr size_t mirror_limit = 10;  // an installer drops all but the last of those beyond

struct mirror {
  std::string host;
  std::string path;  // with a "/" at both ends: an empty line would be skipped by the reader
};

std::vector<mirror> split_mirrors(std::string_view list) {
  std::vector<mirror> mirrors;
  while (!list.empty()) {
    const size_t comma = list.find(',');
    const std::string_view entry = list.substr(0, comma);
    list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
    const size_t slash = entry.find('/');
    mirror one{std::string(entry.substr(0, slash)), "/"};
    if (slash != std::string_view::npos) one.path = entry.substr(slash);
    if (one.path.back() != '/') one.path += '/';
    mirrors.push_back(std::move(one));
  }
  return mirrors;
}

bool is_plain(std::string_view text, std::string_view refused) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7F || refused.find(c) != refused.npos)
      return false;
  return true;
}

}  // namespace

std::string server_list_complaint(const std::string& list) {
  const std::vector<mirror> mirrors = split_mirrors(list);
  if (mirrors.empty()) return "A server list needs at least one mirror: --mirrors=HOST/PATH,...";
  if (mirrors.size() > mirror_limit)
    return str_format("An installer reads %zu mirrors, and --mirrors names %zu.", mirror_limit,
                      mirrors.size());
  for (const mirror& one : mirrors) {
    if (one.host.empty())
      return "--mirrors holds an entry without a host (give \"host/path\", without \"http://\").";
    // Installers go to port 80, by a name that they look up; nothing else can stand here.
    if (!is_plain(one.host, " :\\@%?#"))
      return "--mirrors needs bare host names, without \"http://\" or a port: " + one.host;
    if (!is_plain(one.path, "%?#\\"))
      return "--mirrors holds a path that an installer cannot ask for: " + one.path;
  }
  return {};
}

int write_server_list(const std::string& path, const std::string& name, const std::string& list) {
  if (!ouf_open(path, ouf_text, server_list_version, "no-copyright-string")) return 1;
  ouf << "SERVERS\n\nFINAL_VERSION " << bld.release_version << "\nFINAL " << name << "\n\n";
  int number = 0;
  for (const mirror& one : split_mirrors(list)) {
    ouf << "SERVER " << one.host << '\n'
        << one.path << '\n'
        << "Mirror " << ++number << ": " << one.host << "\n\n";
  }
  ouf << "ENDOFLIST\n";
  const int code = ouf_close();
  if (code == 0) return 0;
  builder_notice("The server list could not be written whole: " + path + " (" + error_str(code) +
                 ")");
  return 1;
}

// Main thread.

#include "corekit/net/http_env.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>

#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xer.h"

namespace {

constexpr unsigned short http_port = 80;

std::string lower(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

bool is_host(std::string_view host) {
  return !host.empty() && std::all_of(host.begin(), host.end(), [](unsigned char c) {
    return std::isalnum(c) || c == '.' || c == '-' || c == '_';
  });
}

// Takes "HOST" or "HOST:PORT" apart. False when it is neither.
bool read_place(std::string_view text, std::string& host, unsigned short& port) {
  const size_t colon = text.find(':');
  host = text.substr(0, colon);
  port = http_port;
  if (!is_host(host)) return false;
  if (colon == text.npos) return true;
  const std::string_view digits = text.substr(colon + 1);
  const auto [end, code] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  return code == std::errc() && end == digits.data() + digits.size() && port != 0;
}

constexpr UTL_text other_kind = "it is no proxy of the kind http://";
constexpr UTL_text with_password = "a proxy with a name and password is not supported";
constexpr UTL_text no_place = "it is not http://HOST:PORT";

// What is wrong with the value of http_proxy; empty with host and port filled.
const char* read_proxy(std::string_view text, http_env& proxy) {
  if (const size_t scheme = text.find("://"); scheme != text.npos) {
    if (lower(text.substr(0, scheme)) != "http") return other_kind;
    text.remove_prefix(scheme + 3);
  }
  text = text.substr(0, text.find('/'));
  if (text.find('@') != text.npos) return with_password;
  return read_place(text, proxy.host, proxy.port) ? "" : no_place;
}

void read_direct(std::string_view text, http_env& proxy) {
  constexpr std::string_view parts = ", \t";
  while (!text.empty()) {
    const size_t end = std::min(text.find_first_of(parts), text.size());
    std::string_view entry = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (entry == "*") proxy.all_direct = true;
    // One with a port is for that of another scheme: ours is always 80.
    if (entry.ends_with(":80")) entry.remove_suffix(3);
    if (entry.starts_with("*")) entry.remove_prefix(1);
    if (entry.starts_with(".")) entry.remove_prefix(1);
    if (!entry.empty()) proxy.direct.push_back(lower(entry));
  }
}

}  // namespace

http_env http_read_env(std::string_view http_proxy, std::string_view no_proxy) {
  http_env proxy;
  if (http_proxy.empty()) return proxy;
  proxy.wrong = read_proxy(http_proxy, proxy);
  if (*proxy.wrong) proxy.host.clear();
  read_direct(no_proxy, proxy);
  return proxy;
}

bool http_goes_by(const http_env& proxy, std::string_view host) {
  if (proxy.host.empty() || proxy.all_direct) return false;
  const std::string name = lower(host);
  return std::none_of(proxy.direct.begin(), proxy.direct.end(), [&](const std::string& domain) {
    return name == domain ||
           (name.ends_with(domain) && name[name.size() - domain.size() - 1] == '.');
  });
}

const http_env& http_env_proxy() {
  static const http_env proxy = [] {
    const auto value = [](const char* name) {
      const char* const text = std::getenv(name);
      return std::string_view(text ? text : "");
    };
    return http_read_env(value("http_proxy"), value("no_proxy"));
  }();
  return proxy;
}

void http_log_env_proxy() {
  const http_env& proxy = http_env_proxy();
  if (*proxy.wrong) {
    xer << "WARNING: http_proxy of the environment is not used: " << proxy.wrong << ".\n";
  } else if (!proxy.host.empty()) {
    xer << "Proxy of the environment: " << str_printable(proxy.host) << " port " << proxy.port
        << '\n';
  }
}

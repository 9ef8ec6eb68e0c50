// The proxy that the environment names, as other programs of the system read it:
//
//   http_proxy   [http://]HOST[:PORT][/]; port 80 where none is named
//   no_proxy     hosts and domains to go to directly, parted by commas or blanks; "*" for all
//
// The upper-case HTTP_PROXY does not count: where a web server runs a program by CGI (RFC 3875), a
// visitor's header "Proxy:" arrives under that name. https_proxy is for requests that we never
// make. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct http_env {
  std::string host;  // empty: no proxy
  unsigned short port = 0;
  std::vector<std::string> direct;  // in lower case, without a leading "." or "*."
  bool all_direct = false;
  const char* wrong = "";  // why http_proxy is not used, a UTL_text; empty when all is well
};

// Takes the two values apart; either may be empty.
http_env http_read_env(std::string_view http_proxy, std::string_view no_proxy);

// Whether a request to `host` goes by that proxy: it does unless no_proxy has the host, or a domain
// that it lies in.
bool http_goes_by(const http_env& proxy, std::string_view host);

// That of this process, read when it is first asked for; never part of the settings.
const http_env& http_env_proxy();
// What has come of it, in the log; nothing where there is none.
void http_log_env_proxy();

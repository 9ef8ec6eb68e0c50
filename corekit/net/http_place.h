// Where a request goes: to its server, or to the proxy that the settings name, or, where they name
// none, the environment (http_env.h). Main thread; answered by http.cpp, which holds the settings.
#pragma once

#include <string>
#include <vector>

// Where a connection leads to: a server, or the proxy on the way to it.
struct net_place {
  std::string host;
  unsigned short port = 0;
  bool operator==(const net_place&) const = default;
};

// Host suffixes that bypass the proxy of the settings. Stays empty unless a setting comes to fill
// it.
extern std::vector<std::string> gProxyExclude;

// Whether a request to `host` goes through the proxy, and where it then connects to.
bool UseProxy(const char* host, unsigned short port);
std::string ProxyHost(const char* host, unsigned short port);
unsigned short ProxyPort(const char* host, unsigned short port);
net_place place_to_connect(const std::string& host, unsigned short port);

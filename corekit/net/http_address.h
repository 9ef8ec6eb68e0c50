// Addresses of hosts, kept for a while. For http_down and http. Main thread only.
#pragma once

#include <cstdint>
#include <string>

// IPv4 address of a host, in network order; 0 on failure. `fresh` tells whether the resolver was
// asked, which may block; an answer is kept for a minute, a failure for two seconds.
uint32_t http_address_of(const std::string& host, bool* fresh);

// Has the next question for the host go to the resolver. A lookup that failed stays known.
void http_forget_address(const std::string& host);

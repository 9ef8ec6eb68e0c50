// What the two socket classes share: an IPv4 address as the system takes it. For them alone.
#pragma once

#include <netinet/in.h>

#include <cstdint>

// `address` in network order, `port` in host order.
inline sockaddr_in ipv4_address(uint32_t address, unsigned short port) {
  sockaddr_in result = {};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  result.sin_addr.s_addr = address;
  return result;
}

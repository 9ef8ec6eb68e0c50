// Datagram sockets over the system's. Owned by the thread that made each of them; no globals.

#include "corekit/net/PCSBSocketUDP.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "corekit/base/hl_alert.h"
#include "corekit/net/PCSBSocket_address.h"

int PCSBSocketUDP::udp_init(unsigned short port, mode_value mode) {
  Cleanup();
  socket_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket_ < 0) return errno;
  const sockaddr_in any = ipv4_address(htonl(INADDR_ANY), port);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
    const int code = errno;
    Cleanup();
    return code;
  }
  if (mode == mode_nonblocking) {
    const int flags = fcntl(socket_, F_GETFL);
    if (flags < 0 || fcntl(socket_, F_SETFL, flags | O_NONBLOCK) != 0) {
      __MACIBM_alert(0, "Could not set net to non-blocking!", "", "", "", t_alert,
                     at_udp_nonblocking);
    }
  }
  return 0;
}

void PCSBSocketUDP::Cleanup() {
  if (socket_ >= 0) close(socket_);
  socket_ = -1;
}

long PCSBSocketUDP::udp_WriteData(const void* buffer, long length, unsigned long address,
                                  unsigned short port) {
  const sockaddr_in peer = ipv4_address(static_cast<uint32_t>(address), port);
  return sendto(socket_, buffer, static_cast<size_t>(length), MSG_NOSIGNAL,
                reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
}

long PCSBSocketUDP::ReadData(void* buffer, long length, unsigned long* address,
                             unsigned short* port) {
  sockaddr_in peer = {};
  socklen_t peer_size = sizeof peer;
  const ssize_t got = recvfrom(socket_, buffer, static_cast<size_t>(length), 0,
                               reinterpret_cast<sockaddr*>(&peer), &peer_size);
  if (got < 0) return -1;
  *address = peer.sin_addr.s_addr;
  *port = ntohs(peer.sin_port);
  return got;
}

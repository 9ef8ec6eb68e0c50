// TCP sockets over the system's, polled. Owned by the thread that made each of them; no globals.

#include "corekit/net/PCSBSocket.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "corekit/net/PCSBSocket_address.h"

namespace {

constexpr int listen_backlog = 128;

void make_nonblocking(int descriptor) {
  int on = 1;
  ioctl(descriptor, FIONBIO, &on);
}

// What is ready on a descriptor right now: poll's result, and its events. poll and not select,
// since select writes out of bounds for a descriptor above FD_SETSIZE.
int poll_now(int descriptor, short wanted, short* ready) {
  pollfd entry = {descriptor, wanted, 0};
  const int result = poll(&entry, 1, 0);
  *ready = entry.revents;
  return result;
}

// The peer or the network ended the connection; nothing went wrong on this side.
bool ended_by_network(int code) {
  switch (code) {
    case ECONNABORTED:
    case ECONNREFUSED:
    case ECONNRESET:
    case EHOSTUNREACH:
    case ENETDOWN:
    case ENETRESET:
    case ENETUNREACH:
    case ETIMEDOUT:
      return true;
    default:
      return false;
  }
}

}  // namespace

// --- make and end --------------------------------------------------------------------------------

PCSBSocket::PCSBSocket(unsigned short port, bool server) {
  socket_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (socket_ < 0) {
    fail();
    std::fputs("LINUX: NET: I could not even create the socket! Uh-oh!\n", stderr);
    return;
  }
  const int on = 1;
  if (setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) {
    std::printf("-----------------------Could not set TCP_NODELAY on port %d-------------\n", port);
  }
  // A client's port is left for connect to pick: bind would take one that no other socket holds,
  // and thousands of small files leave more ports in TIME_WAIT than the system has to give.
  if (!server && port == 0) {
    setsockopt(socket_, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
  }
  const sockaddr_in any = ipv4_address(htonl(INADDR_ANY), port);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
    fail();
    std::fputs("LINUX: NET: I could not even bind the socket! Uh-oh!\n", stderr);
    return;
  }
  make_nonblocking(socket_);
  if (!server) return;

  is_server_ = true;
  if (listen(socket_, listen_backlog) != 0) {
    fail();
    std::fputs("LINUX: NET: I could not start listening! Uh-oh!\n", stderr);
  }
}

PCSBSocket::PCSBSocket(int socket) : socket_(socket), status_(status_Connected) {
  make_nonblocking(socket_);
}

PCSBSocket::~PCSBSocket() {
  if (socket_ < 0) return;
  shutdown(socket_, SHUT_RDWR);
  close(socket_);
}

bool PCSBSocket::StartupNetworking(bool /*quietly*/) {
  return true;
}

void PCSBSocket::ShutdownNetworking(bool /*quietly*/) {}

// Keeps the errno of the call that failed; to be called before anything that may change it.
void PCSBSocket::fail() {
  os_error_ = errno;
  status_ = status_Error;
}

// --- connect -------------------------------------------------------------------------------------

uint32_t PCSBSocket::LookupAddress(const char* host) {
  const in_addr_t number = inet_addr(host);
  if (number != INADDR_NONE) return number;

  addrinfo wanted = {};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host, nullptr, &wanted, &found) != 0) return 0;
  uint32_t address = 0;
  if (found != nullptr) {
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr.s_addr;
  }
  freeaddrinfo(found);
  return address;
}

void PCSBSocket::Connect(unsigned long address, unsigned short port) {
  status_ = status_Connecting;
  const sockaddr_in peer = ipv4_address(static_cast<uint32_t>(address), port);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0) {
    status_ = status_Connected;
  } else if (errno == ECONNREFUSED) {
    connect_error_ = errno;
    status_ = status_Closed;  // as when the refusal arrives a moment later
  } else if (errno != EWOULDBLOCK && errno != EINPROGRESS) {
    connect_error_ = errno;
    fail();
    std::fprintf(stderr, "LINUX: NET: Some sort of connect error! %d\n", os_error_);
  }
}

PCSBSocket* PCSBSocket::Accept() {
  status_ = status_Ready;
  const int caller = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
  return caller < 0 ? nullptr : new PCSBSocket(caller);
}

// --- poll ----------------------------------------------------------------------------------------

PCSBSocket::status_value PCSBSocket::GetStatus() {
  short ready = 0;
  if (status_ == status_Ready && is_server_) {
    const int result = poll_now(socket_, POLLIN, &ready);
    if (result == 0 || (result < 0 && errno == EINTR)) return status_;
    if (result < 0) {
      fail();
      std::fprintf(stderr, "LINUX: NET: Some sort of socket error! %d\n", os_error_);
    } else {
      status_ = (ready & POLLIN) != 0 ? status_Connecting : status_Closed;
    }
  } else if (status_ == status_Connecting) {
    const int result = poll_now(socket_, POLLOUT | POLLPRI, &ready);
    if (result == 0 || (result < 0 && errno == EINTR)) return status_;
    if (result < 0) {
      fail();
      std::fprintf(
          stderr, "LINUX: NET: Some sort of socket error while connecting! %d (errno=%d sock=%d)\n",
          result, os_error_, socket_);
    } else {
      // Anything beside "writable" means that the connection was refused or has gone already.
      status_ = ready == POLLOUT ? status_Connected : status_Closed;
      socklen_t size = sizeof connect_error_;
      if (status_ == status_Closed)
        getsockopt(socket_, SOL_SOCKET, SO_ERROR, &connect_error_, &size);
    }
  }
  return status_;
}

bool PCSBSocket::IsIdle() const {
  char byte;
  return status_ == status_Connected && recv(socket_, &byte, 1, MSG_PEEK) < 0 &&
         (errno == EWOULDBLOCK || errno == EINTR);
}

bool PCSBSocket::GetAddresses(ConnectionData* data) const {
  sockaddr_in peer = {};
  sockaddr_in own = {};
  socklen_t peer_size = sizeof peer;
  socklen_t own_size = sizeof own;
  if (getpeername(socket_, reinterpret_cast<sockaddr*>(&peer), &peer_size) != 0 ||
      getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &own_size) != 0) {
    return false;
  }
  data->local_address = ntohl(own.sin_addr.s_addr);
  data->local_port = ntohs(own.sin_port);
  data->remote_address = peer.sin_addr.s_addr;  // network order: see ConnectionData
  data->remote_port = ntohs(peer.sin_port);
  return true;
}

// --- data ----------------------------------------------------------------------------------------

long PCSBSocket::ReadData(void* buffer, long size) {
  if (size < 1) return 0;  // recv would answer 0, which means that the peer has closed
  const ssize_t got = recv(socket_, buffer, static_cast<size_t>(size), 0);
  if (got > 0) return got;
  if (got < 0) return end_of_io("recving");
  received_release_ = true;
  if (!sent_release_) return 0;
  status_ = status_Closed;
  return -1;
}

long PCSBSocket::http_WriteData(const void* buffer, long size) {
  if (size < 1) return 0;
  const ssize_t sent = send(socket_, buffer, static_cast<size_t>(size), MSG_NOSIGNAL);
  return sent >= 0 ? sent : end_of_io("sending");
}

// Sorts out why recv or send failed: 0 if it may be tried again, -1 if the connection is over.
long PCSBSocket::end_of_io(const char* doing) {
  if (errno == EWOULDBLOCK || errno == EINTR) return 0;
  if (ended_by_network(errno)) {
    status_ = status_Closed;
  } else {
    fail();
    std::fprintf(stderr, "LINUX: NET: Some sort of error while %s! %d\n", doing, os_error_);
  }
  return -1;
}

// --- close ---------------------------------------------------------------------------------------

void PCSBSocket::Disconnect() {
  shutdown(socket_, SHUT_RDWR);
  status_ = status_Closed;
}

void PCSBSocket::Release() {
  sent_release_ = true;
  if (shutdown(socket_, SHUT_WR) != 0) fail();
}

// A datagram socket, the twin of PCSBSocket, for the runtime's remote commands. No page of the
// installer opens one. A socket belongs to the thread that made it.
#pragma once

class PCSBSocketUDP {
 public:
  enum mode_value : int { mode_blocking = 1, mode_nonblocking = 2 };

  PCSBSocketUDP() = default;
  ~PCSBSocketUDP() { Cleanup(); }
  PCSBSocketUDP(const PCSBSocketUDP&) = delete;
  PCSBSocketUDP& operator=(const PCSBSocketUDP&) = delete;

  // Binds a new socket to `port` of any local address (0: the system picks one), replacing an
  // earlier one. 0 or errno; that the mode cannot be set is a t_alert.
  int udp_init(unsigned short port, mode_value mode);
  void Cleanup();

  // Addresses are in network order, ports in host order. Bytes sent or read, or -1 with errno set
  // (EWOULDBLOCK: nothing has come). A longer datagram is cut to `length`.
  long udp_WriteData(const void* buffer, long length, unsigned long address, unsigned short port);
  long ReadData(void* buffer, long length, unsigned long* address, unsigned short* port);

 private:
  int socket_ = -1;
};

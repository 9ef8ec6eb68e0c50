// A small non-blocking TCP socket. Nothing here waits (but for the name lookup) and nothing owns a
// thread: the owner polls GetStatus, which moves the one status value forward.
//
// A client goes Ready, Connecting, Connected, Closed; a listener Ready, Connecting (a caller
// waits), and back to Ready with Accept. Any of them can end as Error. A socket belongs to the
// thread that made it. No alerts: a failure is a status and a saved errno, and a line for
// developers on standard error.
#pragma once

#include <cstdint>

class PCSBSocket {
 public:
  enum status_value : int {
    status_Ready = 1,       // created; a listener: waiting for a caller
    status_Connecting = 2,  // Connect was called; a listener: a caller is pending
    status_Connected = 3,   // data can flow
    status_Closed = 4,      // closed, in order or by the peer; also a refused connection
    status_Error = 5,       // failed; GetOSError tells why
  };

  // Ports are in host order. The local address is in host order and the remote one in network
  // order: kept so, since the callers of old rely on it.
  struct ConnectionData {
    uint32_t local_address = 0;
    uint32_t local_port = 0;
    uint32_t remote_address = 0;
    uint32_t remote_port = 0;
  };

  // --- make and end ----------------------------------------------------------------------------
  // Binds to `port` of any local address (0: the system picks one); a server listens as well.
  PCSBSocket(unsigned short port, bool server);
  // Takes over an accepted descriptor, connected; it is closed with this object.
  explicit PCSBSocket(int socket);
  virtual ~PCSBSocket();
  PCSBSocket(const PCSBSocket&) = delete;
  PCSBSocket& operator=(const PCSBSocket&) = delete;

  // Where a platform that needs it readies its network layer. No work here; true.
  static bool StartupNetworking(bool quietly);
  static void ShutdownNetworking(bool quietly);

  // --- connect ---------------------------------------------------------------------------------
  // IPv4 address of a host name or a dotted number, in network order; 0 on failure. Blocks as long
  // as the system's resolver does, except for a number. 255.255.255.255 counts as a name.
  static uint32_t LookupAddress(const char* host);
  // Starts to connect: address in network order, port in host order.
  void Connect(unsigned long address, unsigned short port);
  // The next caller of a listener, owned by the receiver, or null. The listener is Ready again.
  PCSBSocket* Accept();

  // --- poll ------------------------------------------------------------------------------------
  status_value GetStatus();
  int GetOSError() const { return os_error_; }  // errno at the moment of status_Error
  // Why no connection came about, such as ECONNREFUSED; 0 when one did, or nothing is known.
  int ConnectError() const { return connect_error_; }
  // The peer has closed its sending side. That alone does not end the connection.
  bool ReceivedRelease() const { return received_release_; }
  // A connection on which nothing waits: no byte to be read, not closed by the peer. False on any
  // doubt.
  bool IsIdle() const;
  bool GetAddresses(ConnectionData* data) const;  // false if the socket is not connected
  int Descriptor() const { return socket_; }      // for an owner that waits for many; stays ours

  // --- data ------------------------------------------------------------------------------------
  // Bytes read or sent, 0 for none at present, -1 when the connection is over (see GetStatus). A
  // short count is normal.
  long ReadData(void* buffer, long size);
  long http_WriteData(const void* buffer, long size);

  // --- close -----------------------------------------------------------------------------------
  void Disconnect();  // both ways; Closed at once
  void Release();     // the sending side only; reading goes on

 private:
  void fail();
  long end_of_io(const char* doing);

  int socket_ = -1;
  status_value status_ = status_Ready;
  int os_error_ = 0;
  int connect_error_ = 0;
  bool received_release_ = false;
  bool sent_release_ = false;
  bool is_server_ = false;
};

// The socket classes against real sockets of the loopback address.

#include <arpa/inet.h>

#include <memory>

#include "corekit/net/PCSBSocket.h"
#include "corekit/net/PCSBSocketUDP.h"
#include "net_scripted_server.h"

namespace {

// A listener of the class itself, a client, and the listener's end of their connection.
struct connected_pair {
  PCSBSocket listener{0, true};
  PCSBSocket client{0, false};
  std::unique_ptr<PCSBSocket> caller;

  connected_pair() {
    EXPECT_EQ(listener.GetStatus(), PCSBSocket::status_Ready);
    EXPECT_EQ(client.GetStatus(), PCSBSocket::status_Ready);
    client.Connect(htonl(INADDR_LOOPBACK), port());
    EXPECT_TRUE(comes_true([&] { return client.GetStatus() == PCSBSocket::status_Connected; }));
    EXPECT_TRUE(comes_true([&] { return listener.GetStatus() == PCSBSocket::status_Connecting; }));
    caller.reset(listener.Accept());
    EXPECT_NE(caller, nullptr);
    EXPECT_EQ(listener.GetStatus(), PCSBSocket::status_Ready);
  }
  // The class tells a port only once connected, so the test finds the listener's by its descriptor.
  static unsigned short port() {
    unsigned short found = 0;
    for (int descriptor = 3; descriptor < 64; ++descriptor) {
      int listens = 0;
      socklen_t size = sizeof listens;
      sockaddr_in own = {};
      socklen_t own_size = sizeof own;
      if (getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) == 0 && listens &&
          getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &own_size) == 0) {
        found = ntohs(own.sin_port);
      }
    }
    return found;
  }
};

TEST(NetSocket, ARefusedConnectionAndADisconnectReadClosed) {
  PCSBSocket client(0, false);
  client.Connect(htonl(INADDR_LOOPBACK), static_cast<unsigned short>(closed_port()));
  EXPECT_TRUE(comes_true([&] { return client.GetStatus() != PCSBSocket::status_Connecting; }));
  EXPECT_EQ(client.GetStatus(), PCSBSocket::status_Closed);
  EXPECT_EQ(client.GetOSError(), 0);
  PCSBSocket idle(0, false);
  idle.Disconnect();  // not even connected
  EXPECT_EQ(idle.GetStatus(), PCSBSocket::status_Closed);
}

TEST(NetSocket, DataFlowsBothWays) {
  connected_pair pair;
  char buffer[16] = {};
  EXPECT_EQ(pair.client.ReadData(buffer, sizeof buffer), 0) << "nothing has come";
  EXPECT_EQ(pair.client.ReadData(buffer, 0), 0);
  EXPECT_FALSE(pair.client.ReceivedRelease()) << "a read of no bytes is no release";
  EXPECT_EQ(pair.caller->http_WriteData("hello", 0), 0);
  EXPECT_EQ(pair.caller->http_WriteData("hello", 5), 5);
  EXPECT_TRUE(comes_true([&] { return pair.client.ReadData(buffer, sizeof buffer) == 5; }));
  EXPECT_EQ(std::string(buffer), "hello");
}

TEST(NetSocket, BothEndsKnowWhereTheyAre) {
  connected_pair pair;
  PCSBSocket::ConnectionData here, there;
  ASSERT_TRUE(pair.client.GetAddresses(&here) && pair.caller->GetAddresses(&there));
  for (const auto& end : {here, there}) {
    EXPECT_EQ(end.local_address, INADDR_LOOPBACK);
    EXPECT_EQ(end.remote_address, htonl(INADDR_LOOPBACK));
  }
  EXPECT_EQ(here.remote_port, connected_pair::port());
  EXPECT_EQ(there.local_port, here.remote_port);
  EXPECT_EQ(there.remote_port, here.local_port);
  PCSBSocket unconnected(0, false);
  EXPECT_FALSE(unconnected.GetAddresses(&here));
  PCSBSocket taken(static_cast<unsigned short>(here.remote_port), true);
  EXPECT_EQ(taken.GetStatus(), PCSBSocket::status_Error);
  EXPECT_EQ(taken.GetOSError(), EADDRINUSE);
  unconnected.Connect(INADDR_NONE, 80);
  EXPECT_EQ(unconnected.GetStatus(), PCSBSocket::status_Error) << "nobody is called that way";
  EXPECT_NE(unconnected.ConnectError(), 0);
  EXPECT_EQ(unconnected.GetOSError(), unconnected.ConnectError());
  EXPECT_EQ(PCSBSocket::LookupAddress("127.0.0.2"), htonl(INADDR_LOOPBACK + 1));
  EXPECT_EQ(PCSBSocket::LookupAddress("localhost"), htonl(INADDR_LOOPBACK));
  EXPECT_EQ(PCSBSocket::LookupAddress("no such host"), 0u);
}

TEST(NetSocket, ThePeersCloseAloneDoesNotEndIt) {
  connected_pair pair;
  pair.caller.reset();
  char buffer[4];
  EXPECT_TRUE(comes_true([&] {
    EXPECT_EQ(pair.client.ReadData(buffer, sizeof buffer), 0);
    return pair.client.ReceivedRelease();
  }));
  EXPECT_EQ(pair.client.ReadData(buffer, sizeof buffer), 0) << "again and again";
  EXPECT_EQ(pair.client.GetStatus(), PCSBSocket::status_Connected);
  pair.client.Release();
  EXPECT_EQ(pair.client.ReadData(buffer, sizeof buffer), -1);
  EXPECT_EQ(pair.client.GetStatus(), PCSBSocket::status_Closed);
  EXPECT_EQ(pair.client.GetOSError(), 0);
}

TEST(NetSocket, AWriteTakesWhatFitsAndKeepsTheRest) {
  connected_pair pair;
  const std::string much(8 << 20, 'x');
  const long sent = pair.client.http_WriteData(much.data(), static_cast<long>(much.size()));
  EXPECT_GT(sent, 0);
  EXPECT_LT(sent, static_cast<long>(much.size()));
  long more = 1;
  while (more > 0)
    more = pair.client.http_WriteData(much.data(), static_cast<long>(much.size()));
  EXPECT_EQ(more, 0) << "the buffers are full";
  EXPECT_EQ(pair.client.GetStatus(), PCSBSocket::status_Connected);
}

TEST(NetSocket, AResetClosesAndABrokenPipeIsAnError) {
  {
    PCSBSocket listener(0, true);
    const int raw = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(connected_pair::port());
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(connect(raw, reinterpret_cast<sockaddr*>(&peer), sizeof peer), 0);
    EXPECT_TRUE(comes_true([&] { return listener.GetStatus() == PCSBSocket::status_Connecting; }));
    const std::unique_ptr<PCSBSocket> caller(listener.Accept());
    ASSERT_NE(caller, nullptr);
    const linger reset_at_close = {1, 0};
    setsockopt(raw, SOL_SOCKET, SO_LINGER, &reset_at_close, sizeof reset_at_close);
    close(raw);
    char buffer[8];
    EXPECT_TRUE(comes_true([&] { return caller->ReadData(buffer, sizeof buffer) == -1; }));
    EXPECT_EQ(caller->GetStatus(), PCSBSocket::status_Closed);
    EXPECT_FALSE(caller->ReceivedRelease());
  }
  connected_pair pair;
  pair.client.Release();
  testing::internal::CaptureStderr();
  EXPECT_EQ(pair.client.http_WriteData("x", 1), -1) << "and no signal";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "LINUX: NET: Some sort of error while sending! " + std::to_string(EPIPE) + "\n");
  EXPECT_EQ(pair.client.GetStatus(), PCSBSocket::status_Error);
  EXPECT_EQ(pair.client.GetOSError(), EPIPE);
}

TEST(NetSocket, WorksAboveTheLimitOfSelectAndIsNotInherited) {
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  ASSERT_GE(limit.rlim_max, 1100u) << "the system allows too few descriptors";
  limit.rlim_cur = limit.rlim_max < 4096 ? limit.rlim_max : 4096;
  setrlimit(RLIMIT_NOFILE, &limit);
  scripted_server server([](const std::string&) { return scripted_reply{}; });
  std::vector<int> held;
  while (held.empty() || held.back() < FD_SETSIZE)
    held.push_back(dup(0));
  PCSBSocket client(0, false);
  EXPECT_TRUE(fcntl(held.back() + 1, F_GETFD) & FD_CLOEXEC);
  client.Connect(htonl(INADDR_LOOPBACK), static_cast<unsigned short>(server.port()));
  EXPECT_TRUE(comes_true([&] { return client.GetStatus() == PCSBSocket::status_Connected; }));
  for (const int descriptor : held)
    close(descriptor);
}

TEST(NetSocket, DatagramsComeWholeOrCutAndNameTheirSender) {
  constexpr unsigned short first_port = 20000, last_port = 32000;
  PCSBSocketUDP ours, theirs;
  unsigned short port = first_port;
  while (ours.udp_init(port, PCSBSocketUDP::mode_nonblocking) != 0 && port < last_port)
    ++port;
  EXPECT_EQ(theirs.udp_init(port, PCSBSocketUDP::mode_blocking), EADDRINUSE);
  EXPECT_EQ(theirs.udp_WriteData("lost", 4, htonl(INADDR_LOOPBACK), port), -1);
  ASSERT_EQ(theirs.udp_init(0, PCSBSocketUDP::mode_blocking), 0);
  char got[8] = {};
  unsigned long from = 0;
  unsigned short from_port = 0;
  EXPECT_EQ(ours.ReadData(got, sizeof got, &from, &from_port), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  const unsigned long here = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(theirs.udp_WriteData("a whole line", 12, here, port), 12);
  EXPECT_EQ(theirs.udp_WriteData("next", 4, here, port), 4);
  EXPECT_EQ(ours.ReadData(got, sizeof got, &from, &from_port), 8);
  EXPECT_EQ(from, here);
  EXPECT_EQ(ours.ReadData(got, sizeof got, &from, &from_port), 4);
  EXPECT_EQ(std::string_view(got, 8), "nextole ") << "the rest of the first is gone";
  EXPECT_EQ(theirs.udp_WriteData("", 0, here, port), 0);
  EXPECT_EQ(ours.ReadData(got, sizeof got, &from, &from_port), 0) << "an empty one is one";
  // An answer finds the port that the system picked.
  EXPECT_EQ(ours.udp_WriteData("back", 4, from, from_port), 4);
  EXPECT_EQ(theirs.ReadData(got, sizeof got, &from, &from_port), 4);
  EXPECT_EQ(from_port, port);
}

}  // namespace

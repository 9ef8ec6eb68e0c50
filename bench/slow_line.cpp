// A slow line: a relay on the loopback address whose bytes arrive late and no faster than the line
// carries them. For measuring transfers where the kernel has no traffic shaping for it.
//
//   slow_line PORT RTT_MS MBIT    relays to 127.0.0.1:PORT; prints its own port when it listens
//
// What it keeps of a real line: all connections share one line each way; a byte is on its way for
// half a round trip; a new connection costs a round trip before its first byte leaves; and a
// connection starts slowly, with ten segments in flight and twice as many each round trip (RFC
// 6928, RFC 5681), to at most what the line holds. Nothing is lost, and an idle connection keeps
// its window.
//
// One thread, which sleeps in ppoll until a socket or the clock has something for it.

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr size_t first_window = 10 * 1460;

double round_trip;      // seconds
double bytes_a_second;  // of the line, each way
size_t largest_window;  // bytes in flight of a connection, each way
double line_free[2];    // when the line, up and down, has sent off all that was given to it

double now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Bytes on their way; none means that the sender has closed.
struct piece {
  double due;
  std::string bytes;
};

struct acknowledgement {
  double due;
  size_t bytes;
};

// One way through a connection.
struct way {
  int from, to;
  double* line;
  double open_at;  // nothing leaves before
  std::deque<piece> under_way;
  std::deque<acknowledgement> coming_back;
  size_t in_flight = 0, window = first_window;
  bool closed = false;  // the sender has
  bool over = false;    // and the receiver knows

  bool may_read() const { return !closed && in_flight < window; }
  bool has_arrived(double time) const {
    return !under_way.empty() && under_way.front().due <= time;
  }

  double next_event() const {
    double next = 1e300;
    if (!under_way.empty()) next = under_way.front().due;
    if (!coming_back.empty()) next = std::min(next, coming_back.front().due);
    return next;
  }

  void take(double time) {
    char buffer[16384];
    const ssize_t got =
        recv(from, buffer, std::min(sizeof buffer, window - in_flight), MSG_DONTWAIT);
    if (got < 0 && errno == EAGAIN) return;
    const size_t size = got > 0 ? static_cast<size_t>(got) : 0;
    *line = std::max({time, *line, open_at}) + static_cast<double>(size) / bytes_a_second;
    under_way.push_back({*line + round_trip / 2, std::string(buffer, size)});
    in_flight += size;
    closed = size == 0;
  }

  void deliver(double time) {
    for (; !coming_back.empty() && coming_back.front().due <= time; coming_back.pop_front()) {
      in_flight -= coming_back.front().bytes;
      window = std::min(window + coming_back.front().bytes, largest_window);
    }
    for (; has_arrived(time); under_way.pop_front()) {
      std::string& bytes = under_way.front().bytes;
      if (bytes.empty()) {
        shutdown(to, SHUT_WR);
        over = true;
        continue;
      }
      const ssize_t sent = send(to, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      if (sent < 0 && errno != EAGAIN) closed = over = true;
      if (sent <= 0) return;
      coming_back.push_back({time + round_trip / 2, static_cast<size_t>(sent)});
      if (static_cast<size_t>(sent) < bytes.size()) {
        bytes.erase(0, static_cast<size_t>(sent));
        return;
      }
    }
  }
};

struct connection {
  way up, down;
  connection(int client, int server, double open_at)
      : up{client, server, &line_free[0], open_at, {}, {}}, down{server,  client, &line_free[1],
                                                                 open_at, {},     {}} {}
  connection(const connection&) = delete;
  ~connection() {
    close(up.from);
    close(up.to);
  }
};

sockaddr_in loopback(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

[[noreturn]] void give_up(const char* what) {
  std::perror(what);
  std::exit(1);
}

int listen_anywhere() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener, 64) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    give_up("cannot listen");
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

std::unique_ptr<connection> accept_from(int listener, int target) {
  const int client = accept(listener, nullptr, nullptr);
  if (client < 0) return nullptr;
  const int server = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = loopback(target);
  if (connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    give_up("cannot reach the server");
  const int yes = 1;
  for (const int end : {client, server})
    setsockopt(end, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  return std::make_unique<connection>(client, server, now() + round_trip);
}

// Sleeps until something can be done; says of each connection's two ends whether it can be read.
std::vector<pollfd> wait(int listener,
                         const std::vector<std::unique_ptr<connection>>& connections) {
  std::vector<pollfd> ends = {{listener, POLLIN, 0}};
  double next = 1e300;
  for (const auto& each : connections)
    for (const way* one : {&each->up, &each->down}) {
      // What has arrived, but found no room, is tried again when there is.
      const bool stuck = one->has_arrived(now());
      ends.push_back({one->may_read() ? one->from : -1, POLLIN, 0});
      ends.push_back({stuck ? one->to : -1, POLLOUT, 0});
      if (!stuck) next = std::min(next, one->next_event());
    }
  const double left = std::clamp(next - now(), 0.0, 60.0);
  timespec pause = {static_cast<time_t>(left), 0};
  pause.tv_nsec = static_cast<long>((left - static_cast<double>(pause.tv_sec)) * 1e9);
  ppoll(ends.data(), ends.size(), &pause, nullptr);
  return ends;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: slow_line PORT RTT_MS MBIT\n", stderr);
    return 2;
  }
  const int target = std::atoi(argv[1]);
  round_trip = std::atof(argv[2]) / 1000;
  bytes_a_second = std::atof(argv[3]) * 1e6 / 8;
  largest_window = std::max(first_window, static_cast<size_t>(bytes_a_second * round_trip));

  const int listener = listen_anywhere();
  std::vector<std::unique_ptr<connection>> connections;
  for (;;) {
    const std::vector<pollfd> ends = wait(listener, connections);
    const double time = now();
    for (size_t i = 0; i < connections.size(); ++i) {
      way* const ways[] = {&connections[i]->up, &connections[i]->down};
      for (size_t k = 0; k < 2; ++k) {
        if (ends[1 + 4 * i + 2 * k].revents != 0) ways[k]->take(time);
        ways[k]->deliver(time);
      }
    }
    std::erase_if(connections, [](const auto& each) { return each->up.over && each->down.over; });
    if (ends[0].revents != 0)
      if (auto fresh = accept_from(listener, target)) connections.push_back(std::move(fresh));
  }
}

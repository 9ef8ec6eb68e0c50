#include "net_scripted_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <utility>

namespace {

bool send_all(int caller, const std::string& bytes) {
  for (size_t at = 0; at < bytes.size();) {
    const ssize_t sent = send(caller, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
    if (sent < 0) return false;
    at += static_cast<size_t>(sent);
  }
  return true;
}

}  // namespace

scripted_reply whole_answer(const std::string& body, const std::string& status) {
  return {{"HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body}};
}

scripted_server::scripted_server(answer_function answer, bool stepped)
    : answer_(std::move(answer)), stepped_(stepped) {
  listener_ = bound_socket(&port_);
  use_proxy_port(port_);
  EXPECT_EQ(listen(listener_, 64), 0);
  EXPECT_EQ(pipe(stop_pipe_), 0);
  thread_ = std::thread([this] { run(); });
}

scripted_server::~scripted_server() {
  {
    const std::lock_guard lock(guard_);
    stopping_ = true;
  }
  changed_.notify_all();
  EXPECT_EQ(write(stop_pipe_[1], "x", 1), 1);
  thread_.join();
  for (const int descriptor : {listener_, stop_pipe_[0], stop_pipe_[1]})
    close(descriptor);
}

std::vector<std::string> scripted_server::requests() {
  const std::lock_guard lock(guard_);
  return requests_;
}

bool scripted_server::send_piece() {
  std::unique_lock lock(guard_);
  if (unsent_ == 0) return false;
  ++tickets_;
  const size_t left = unsent_ - 1;
  changed_.notify_all();
  changed_.wait(lock, [&] { return unsent_ <= left || stopping_; });
  return true;
}

// One of them that can be read, or -1 when the server is to stop.
int scripted_server::wait_readable(const std::vector<int>& descriptors) {
  std::vector<pollfd> entries = {{stop_pipe_[0], POLLIN, 0}};
  for (const int descriptor : descriptors)
    entries.push_back({descriptor, POLLIN, 0});
  poll(entries.data(), entries.size(), -1);
  if (entries[0].revents != 0) return -1;
  for (const pollfd& entry : entries) {
    if (entry.revents != 0) return entry.fd;
  }
  return -1;
}

bool scripted_server::wait_turn() {
  std::unique_lock lock(guard_);
  changed_.wait(lock, [&] { return !stepped_ || tickets_ > 0 || stopping_; });
  if (stepped_ && tickets_ > 0) --tickets_;
  return !stopping_;
}

void scripted_server::run() {
  for (;;) {
    std::vector<int> all = kept_open_;
    all.push_back(listener_);
    int caller = wait_readable(all);
    if (caller < 0) break;
    if (caller == listener_) {
      caller = accept(listener_, nullptr, nullptr);
      ++connections_;
    } else {
      std::erase(kept_open_, caller);
    }
    if (caller >= 0) serve(caller);
  }
  for (const int caller : kept_open_)
    close(caller);
}

void scripted_server::serve(int caller) {
  const int on = 1;
  setsockopt(caller, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  std::string head;
  while (!head.ends_with("\r\n\r\n")) {
    char byte = 0;
    if (wait_readable({caller}) < 0 || recv(caller, &byte, 1, 0) != 1) {
      close(caller);
      return;
    }
    head += byte;
  }
  const scripted_reply reply = answer_(head);
  {
    const std::lock_guard lock(guard_);
    unsent_ = reply.pieces.size();
    requests_.push_back(head);
  }
  for (const std::string& piece : reply.pieces) {
    // A caller that has hung up takes no more, but the test's tickets are still honoured.
    if (!wait_turn()) break;
    send_all(caller, piece);
    const std::lock_guard lock(guard_);
    --unsent_;
    changed_.notify_all();
  }
  if (reply.keep_open) {
    kept_open_.push_back(caller);
  } else {
    close(caller);
  }
}

int bound_socket(int* port) {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size), 0);
  *port = ntohs(address.sin_port);
  return descriptor;
}

int closed_port() {
  int port = 0;
  close(bound_socket(&port));
  return port;
}

std::string new_folder() {
  std::string path = testing::TempDir() + "net-XXXXXX";
  EXPECT_NE(mkdtemp(path.data()), nullptr);
  return path + "/";
}

bool comes_true(const std::function<bool()>& is_so) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!is_so()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::yield();
  }
  return true;
}

void use_proxy_port(int port) {
  http._proxy_host = "127.0.0.1";
  http._proxy_port_int = port;
}

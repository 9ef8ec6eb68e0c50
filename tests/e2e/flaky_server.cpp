// A web server with a fault, for the end-to-end tests: serves a folder over HTTP, but stops in the
// middle of the body of the first so many files that it is asked for, and then holds the line open.
//
//   flaky-server ADDRESS PORT ROOT STALLS
//
// Prints "ready" once it listens. One thread a connection; ends when it is killed.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace {

std::atomic<int> stalls_left;

std::string read_head(int line) {
  std::string head;
  char c;
  while (head.size() < 8192 && head.find("\r\n\r\n") == std::string::npos &&
         read(line, &c, 1) == 1) {
    head += c;
  }
  return head;
}

// The path of the request line, with "%20" as blanks.
std::string asked_path(const std::string& head) {
  const size_t from = head.find(' ') + 1;
  std::string path = head.substr(from, head.find(" HTTP/") - from);
  for (size_t at; (at = path.find("%20")) != std::string::npos;)
    path.replace(at, 3, " ");
  return path;
}

bool send_all(int line, const std::string& bytes) {
  for (size_t sent = 0; sent < bytes.size();) {
    const ssize_t put = send(line, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (put <= 0) return false;
    sent += static_cast<size_t>(put);
  }
  return true;
}

void answer(int line, const std::string& root) {
  const std::string path = asked_path(read_head(line));
  std::ifstream file(root + path, std::ios::binary);
  if (!file || path.find("..") != std::string::npos) {
    send_all(line, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
    close(line);
    return;
  }
  std::stringstream body;
  body << file.rdbuf();
  std::string bytes = body.str();
  send_all(line, "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bytes.size()) + "\r\n\r\n");
  const bool stall = path.find("directory.txt") == std::string::npos && stalls_left-- > 0;
  if (stall) bytes.resize(bytes.size() / 2);
  send_all(line, bytes);
  // The peer hangs up when it has lost patience; a read then ends.
  char c;
  while (stall && read(line, &c, 1) > 0) {
  }
  close(line);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  std::signal(SIGPIPE, SIG_IGN);
  stalls_left = std::atoi(argv[4]);
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(std::atoi(argv[2])));
  inet_pton(AF_INET, argv[1], &address.sin_addr);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, 64) != 0) {
    std::perror("flaky-server");
    return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  for (;;) {
    const int line = accept(listener, nullptr, nullptr);
    if (line >= 0) std::thread(answer, line, std::string(argv[3])).detach();
  }
}

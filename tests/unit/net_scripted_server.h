// A web server for tests: one thread, a port of 127.0.0.1, answers laid down by the test. From its
// start on every request of the web client goes to it, as to a proxy.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "corekit/net/http.h"
#include "tests/unit/test_files_scratch.h"

struct scripted_reply {
  std::vector<std::string> pieces;  // sent one after the other
  bool keep_open = false;           // for another request; else it is closed after the last piece
};

// A body of the announced length behind a status line.
scripted_reply whole_answer(const std::string& body, const std::string& status = "200 OK");

class scripted_server {
 public:
  // Called on the server's thread with a request's head, the empty line included.
  using answer_function = std::function<scripted_reply(const std::string& request)>;

  // With `stepped` set, a piece is sent only by a call of send_piece.
  explicit scripted_server(answer_function answer, bool stepped = false);
  ~scripted_server();
  scripted_server(const scripted_server&) = delete;
  scripted_server& operator=(const scripted_server&) = delete;

  int port() const { return port_; }
  std::vector<std::string> requests();  // the heads so far
  size_t connections() { return connections_; }
  // Lets the next piece of the present reply go, until the system has it. False: there is none.
  bool send_piece();

 private:
  void run();
  void serve(int caller);
  int wait_readable(const std::vector<int>& descriptors);
  bool wait_turn();

  answer_function answer_;
  const bool stepped_;
  int listener_ = -1;
  int stop_pipe_[2] = {-1, -1};
  int port_ = 0;
  std::vector<int> kept_open_;  // the server's thread only
  std::atomic<size_t> connections_ = 0;

  std::mutex guard_;  // of what follows
  std::condition_variable changed_;
  std::vector<std::string> requests_;
  size_t unsent_ = 0;   // pieces of the present reply
  size_t tickets_ = 0;  // pieces that send_piece has let go
  bool stopping_ = false;

  std::thread thread_;
};

// A socket bound to a free port of 127.0.0.1; whose it is, closes it.
int bound_socket(int* port);
// A port of 127.0.0.1 on which nothing listens.
int closed_port();

// A new empty folder for one test, with a trailing "/".
std::string new_folder();

// Calls `is_so` until it is, or ten seconds have gone.
bool comes_true(const std::function<bool()>& is_so);

// Sends every request to 127.0.0.1 at `port`, as a proxy would take it.
void use_proxy_port(int port);

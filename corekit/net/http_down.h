// down_class: one HTTP request and its response. http_class owns these and judges them; nothing
// else needs this header. Main thread only: all objects share one receive buffer.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corekit/net/PCSBSocket.h"

class down_class {
 public:
  // Where the transfer stands, as the failure report numbers it.
  enum state_value : int {
    state_no_socket = 0,
    state_connecting = 1,
    state_socket_error = 2,
    state_closed = 3,
    state_sending = 4,  // part of the request is still to be sent
    state_body = 5,     // the head has been read
    state_waiting = 6,  // for the head
  };

  static constexpr size_t head_limit = 65536;           // bytes of all heads of one response
  static constexpr size_t memory_limit = 16 * 1048576;  // of a body that has no local path

  // Looks the host up (blocking) and starts to connect; nothing is sent yet. `headers` go out in
  // map order. `local_path` is below app_path; empty keeps the body in memory. Null `body` for
  // none.
  down_class(const char* server, unsigned short port, const char* file, bool post,
             const std::map<std::string, std::string>& headers, const char* body, int body_length,
             const char* local_path);
  ~down_class();
  down_class(const down_class&) = delete;
  down_class& operator=(const down_class&) = delete;

  // One step: a write, a read of up to 64 KB, and what follows from them.
  void DoProcessing();

  state_value state() const;
  bool complete() const { return content_length_ == received_; }
  int error() const { return error_; }  // see error_ below; 0 while all is well
  int os_error() const;  // that, or else the socket's errno, or 20009 without a socket

  int response_code() const { return response_code_; }  // 0 no socket, -1 none yet
  const std::string& response_text() const { return response_text_; }
  const std::map<std::string, std::string>& response_headers() const { return response_headers_; }
  const std::string& local_path() const { return local_path_; }
  const std::vector<char>& incoming() const { return incoming_; }  // the body, without a local path
  int64_t content_length() const { return content_length_; }       // -1 until known
  int64_t received() const { return received_; }          // body bytes passed on to the file
  float last_activity() const { return last_activity_; }  // frame clock

  static int64_t total_received;  // body bytes of all objects since start

  // What the transfer waits for, to be handed to poll. False if it waits for nothing.
  bool waits_for(int* descriptor, short* events) const;

  // Has the next transfer look the host up again.
  static void forget_address(const std::string& host);

 private:
  void parse_head();
  void parse_head_line(std::string_view line);
  void begin_body();
  void take_body(const char* bytes, size_t count);
  void close_file();

  std::unique_ptr<PCSBSocket> socket_;  // null if the lookup failed
  std::vector<char> outgoing_;          // request, not yet sent
  std::vector<char> incoming_;          // of the head, not yet parsed; a body without local path
  size_t head_bytes_ = 0;               // consumed by heads so far
  bool header_done_ = false;
  int response_code_ = 0;
  std::string response_text_;
  std::map<std::string, std::string> response_headers_;  // the first of two equal keys wins
  FILE* output_file_ = nullptr;                          // open while the body is being written
  std::string local_path_;
  // errno of a file failure; 20011 when the lookup failed; EMSGSIZE for a head (or a body in
  // memory) beyond its limit; EFBIG for a length that is negative or takes more than 31 bits.
  int error_ = 0;
  int64_t content_length_ = -1;
  int64_t received_ = 0;
  float last_activity_ = 0;
};

// down_class: one HTTP request and its answer. http_class owns these and judges them; nothing else
// needs this header. Main thread only: all objects share one receive buffer.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "corekit/net/PCSBSocket.h"
#include "corekit/net/http_answer.h"
#include "corekit/net/http_place.h"

// What the caller of a transfer grants it.
struct down_terms {
  int64_t max_body = 0;                 // bytes; more is a failure
  bool keep = false;                    // the connection is to outlive the transfer
  std::unique_ptr<PCSBSocket> line;     // that of an earlier transfer to the same place, or null
  std::vector<char>* memory = nullptr;  // gets the body where there is no local path; outlives this
};

class down_class {
 public:
  // Where the transfer stands, as the failure report numbers it.
  enum state_value : int {
    state_no_socket = 0,
    state_connecting = 1,
    state_socket_error = 2,
    state_closed = 3,   // also: the answer is here, and the connection is kept
    state_sending = 4,  // part of the request is still to be sent
    state_body = 5,     // the head has been read
    state_waiting = 6,  // for the head
  };

  // Looks the host up (blocking) and starts to connect, unless the terms bring a connection that is
  // still good; nothing is sent yet. `headers` go out in map order. `local_path` is below app_path;
  // empty for a body that stays in memory. Null `body` for none.
  down_class(const char* server, unsigned short port, const char* file, bool post,
             const std::map<std::string, std::string>& headers, const char* body, int body_length,
             const char* local_path, down_terms terms);
  ~down_class();
  down_class(const down_class&) = delete;
  down_class& operator=(const down_class&) = delete;

  // One step: a write, or a read of up to 64 KB, and what follows from them.
  void DoProcessing();

  state_value state() const;
  // The whole answer has come, to its last byte and no further.
  bool complete() const { return answer_.ended() && !has_excess_; }
  int error() const { return error_; }            // see error_ below; 0 while all is well
  int disk_error() const { return disk_error_; }  // errno: the file cannot be made or written
  int os_error() const;  // that, or else the socket's errno, or 20009 without a socket
  int connect_error() const { return socket_ ? socket_->ConnectError() : 0; }
  const char* error_text() const;  // for the log, where error() alone does not tell; else empty

  int response_code() const { return socket_ ? answer_.code() : 0; }     // -1 none yet
  const std::string& response_text() const { return answer_.reason(); }  // printable
  const std::string& local_path() const { return local_path_; }
  int64_t content_length() const { return answer_.length(); }  // -1 until known; chunks: for ever
  int64_t received() const { return received_; }  // body bytes passed on to the file or the memory
  double last_activity() const { return last_activity_; }  // frame clock

  static int64_t total_received;  // body bytes of all objects since start

  // The connection, if the transfer is complete and leaves it good for another; else null. It is no
  // longer this object's.
  std::unique_ptr<PCSBSocket> take_line();
  const net_place& place() const { return place_; }

  // What the transfer waits for, to be handed to poll. False if it waits for nothing.
  bool waits_for(int* descriptor, short* events) const;
  // A poll has found nothing: the next step of this frame need not ask again.
  void rest();

 private:
  void connect();
  void lose_line();
  void send_request();
  void take_bytes(std::string_view bytes);
  void begin_body();
  void take_body(std::string_view bytes);
  void end_answer(bool has_more);
  void watch_pace(size_t body_bytes);
  void close_file();

  const net_place server_;
  const net_place place_;  // the server, or the proxy
  const bool keep_;
  std::unique_ptr<PCSBSocket> socket_;  // null if the lookup failed
  bool is_reused_ = false;              // the socket has served another transfer
  std::string request_;
  size_t sent_ = 0;  // of the request
  http_answer answer_;
  bool has_excess_ = false;  // bytes came behind the answer that was to be the last
  double resting_ = -1;      // frame clock of a poll that found nothing
  std::vector<char>* memory_;
  int output_file_ = -1;  // open while the body is being written
  std::string local_path_;
  // errno of a file failure; 20011 when the lookup failed; EMSGSIZE for heads beyond their limit,
  // EFBIG for a body beyond what was granted, EPROTO for an answer that breaks the protocol,
  // ETIMEDOUT for one that trickles.
  int error_ = 0;
  int disk_error_ = 0;
  int64_t received_ = 0;
  double last_activity_ = 0;  // frame clock
  double pace_start_ = 0;     // of the stretch in which the pace is being watched,
  size_t pace_bytes_ = 0;     // and the body bytes in it
};

// down_class: one request out, one answer in.
//
// The constructor finds the server, or takes over a connection, and puts the request together. Each
// DoProcessing sends, or reads once and hands the body to its file. It is this side that closes as
// soon as the answer has ended, unless the connection is to be kept. Main thread; writes
// total_received and the receive buffer, which the objects share.

#include "corekit/net/http_down.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http_address.h"
#include "corekit/net/http_request.h"

int64_t down_class::total_received = 0;

namespace {

constexpr int code_no_connection = 20009;
constexpr int code_no_server = 20011;

// A body that brings less than this is one that somebody holds us up with: the slowest line in use
// shared by four streams brings more.
constexpr float pace_seconds = 60.0f;  // frame clock
constexpr size_t pace_least = 6000;    // bytes in that time

char readChunk[65536];

int error_of(http_fault fault) {
  switch (fault) {
    case fault_none:
      return 0;
    case fault_head_size:
      return EMSGSIZE;
    case fault_body_size:
      return EFBIG;
    default:
      return EPROTO;
  }
}

}  // namespace

// --- begin ---------------------------------------------------------------------------------------

down_class::down_class(const char* server, unsigned short port, const char* file, bool post,
                       const std::map<std::string, std::string>& headers, const char* body,
                       int body_length, const char* local_path, down_terms terms)
    : server_{server, port},
      place_(place_to_connect(server, port)),
      keep_(terms.keep),
      socket_(std::move(terms.line)),
      answer_(terms.max_body),
      memory_(terms.memory),
      last_activity_(xtim.now_sec),
      pace_start_(xtim.now_sec) {
  if (local_path != nullptr && *local_path != '\0') local_path_ = app_path + local_path;
  if (memory_ != nullptr) memory_->clear();

  std::string_view through;
  if (UseProxy(server, port)) {
    const auto host = headers.find("Host");
    if (host != headers.end()) through = host->second;
  }
  const bool has_body = body != nullptr && body_length > 0;
  request_ = http_request_text(
      post, through, file, headers,
      has_body ? std::string_view(body, static_cast<size_t>(body_length)) : std::string_view());

  is_reused_ = socket_ != nullptr && socket_->IsIdle();
  if (!is_reused_) connect();
}

down_class::~down_class() {
  close_file();
}

void down_class::connect() {
  socket_.reset();
  sent_ = 0;
  bool fresh = false;
  const uint32_t address = http_address_of(place_.host, &fresh);
  if (address == 0) {
    if (fresh) {
      xer << "Translated server " << str_printable(server_.host)
          << " to IP addy: 0.0.0.0 and port = " << server_.port << "\n";
    }
    error_ = code_no_server;
    return;
  }
  socket_ = std::make_unique<PCSBSocket>(static_cast<unsigned short>(0), false);
  if (socket_->GetStatus() != PCSBSocket::status_Error) {
    socket_->Connect(address, place_.port);
  }
}

// The connection is at its end, and nothing more is asked of it. A server may close one that it has
// kept, at any time and without a word: if nothing of the answer has come, another is opened, once.
void down_class::lose_line() {
  if (is_reused_ && !answer_.has_begun()) {
    is_reused_ = false;
    connect();
    return;
  }
  if (socket_->GetStatus() != PCSBSocket::status_Error) socket_->Disconnect();
  close_file();
}

// --- one step ------------------------------------------------------------------------------------

void down_class::DoProcessing() {
  if (std::exchange(resting_, -1) == xtim.now_sec) return;
  if (!socket_ || error_ != 0 || answer_.ended()) return;
  switch (socket_->GetStatus()) {
    case PCSBSocket::status_Connected:
      break;
    case PCSBSocket::status_Closed:
    case PCSBSocket::status_Error:
      lose_line();
      return;
    default:
      return;
  }

  if (sent_ < request_.size()) {
    send_request();
    return;  // no answer is here yet
  }
  const long got = socket_->ReadData(readChunk, sizeof readChunk);
  if (got > 0) {
    take_bytes({readChunk, static_cast<size_t>(got)});
  } else if (got < 0 || socket_->ReceivedRelease()) {
    lose_line();
  }
}

void down_class::send_request() {
  const long sent =
      socket_->http_WriteData(request_.data() + sent_, static_cast<long>(request_.size() - sent_));
  if (sent < 0) {
    lose_line();
  } else {
    sent_ += static_cast<size_t>(sent);
  }
}

void down_class::take_bytes(std::string_view bytes) {
  size_t body_bytes = 0;
  while (!bytes.empty() && !answer_.ended() && answer_.fault() == fault_none) {
    const bool head_was_done = answer_.head_done();
    std::string_view body;
    bytes.remove_prefix(answer_.take(bytes, &body));
    if (!head_was_done && answer_.head_done() && answer_.fault() == fault_none) begin_body();
    if (!body.empty()) take_body(body);
    body_bytes += body.size();
  }
  if (answer_.head_done()) last_activity_ = xtim.now_sec;
  if (answer_.fault() != fault_none) {
    error_ = error_of(answer_.fault());
  } else if (answer_.ended()) {
    end_answer(!bytes.empty());
  } else {
    watch_pace(body_bytes);
  }
}

// The head has ended.
void down_class::begin_body() {
  pace_start_ = xtim.now_sec;
  if (local_path_.empty()) {
    // In one piece, where the server tells: what grows by doubling takes up to three times as much.
    constexpr int64_t most = 4 << 20;
    if (memory_ != nullptr && answer_.length() > 0)
      memory_->reserve(static_cast<size_t>(std::min(answer_.length(), most)));
    return;
  }
  constexpr mode_t mode = 0666;
  output_file_ = open(local_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  if (output_file_ < 0) error_ = disk_error_ = errno;
}

void down_class::take_body(std::string_view bytes) {
  if (local_path_.empty()) {
    if (memory_ == nullptr) return;
    memory_->insert(memory_->end(), bytes.begin(), bytes.end());
  } else if (output_file_ < 0) {
    return;
  }
  received_ += static_cast<int64_t>(bytes.size());
  total_received += static_cast<int64_t>(bytes.size());
  while (output_file_ >= 0 && !bytes.empty()) {
    const ssize_t put = write(output_file_, bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      error_ = disk_error_ = put < 0 ? errno : ENOSPC;
      return;
    }
    bytes.remove_prefix(static_cast<size_t>(put));
  }
}

// Where the connection is to be closed, bytes behind the answer say that the length was not true;
// where it is kept, they are nobody's, and it is closed so that nobody takes them for his.
void down_class::end_answer(bool has_more) {
  has_excess_ = has_more && !keep_;
  if (!keep_ || has_more || !answer_.may_go_on()) socket_->Disconnect();
  close_file();
}

void down_class::watch_pace(size_t body_bytes) {
  pace_bytes_ += body_bytes;
  if (xtim.now_sec <= pace_start_ + pace_seconds) return;
  if (answer_.head_done() && pace_bytes_ < pace_least) error_ = ETIMEDOUT;
  pace_start_ = xtim.now_sec;
  pace_bytes_ = 0;
}

// A full disk may show only now, so the file is closed before the transfer is judged.
void down_class::close_file() {
  if (output_file_ < 0) return;
  if (close(output_file_) != 0 && error_ == 0) error_ = disk_error_ = errno;
  output_file_ = -1;
}

// --- what it has come to -------------------------------------------------------------------------

down_class::state_value down_class::state() const {
  if (!socket_) return state_no_socket;
  if (answer_.ended()) return state_closed;
  switch (socket_->GetStatus()) {
    case PCSBSocket::status_Connected:
      break;
    case PCSBSocket::status_Error:
      return state_socket_error;
    case PCSBSocket::status_Closed:
      return state_closed;
    default:
      return state_connecting;
  }
  if (sent_ < request_.size()) return state_sending;
  return answer_.head_done() ? state_body : state_waiting;
}

int down_class::os_error() const {
  if (error_ != 0) return error_;
  return socket_ ? socket_->GetOSError() : code_no_connection;
}

const char* down_class::error_text() const {
  if (answer_.fault() != fault_none) return http_fault_text(answer_.fault());
  if (error_ == ETIMEDOUT) return "the answer comes too slowly to be waited for";
  return "";
}

std::unique_ptr<PCSBSocket> down_class::take_line() {
  if (!socket_ || !complete() || socket_->GetStatus() != PCSBSocket::status_Connected) {
    return nullptr;
  }
  return std::move(socket_);
}

bool down_class::waits_for(int* descriptor, short* events) const {
  switch (state()) {
    case state_connecting:
    case state_sending:
      *events = POLLOUT;
      break;
    case state_waiting:
    case state_body:
      *events = POLLIN;
      break;
    default:
      return false;
  }
  *descriptor = socket_->Descriptor();
  return true;
}

void down_class::rest() {
  resting_ = xtim.now_sec;
}

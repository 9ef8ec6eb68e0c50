// down_class: one request out, one response in.
//
// The constructor finds the server and puts the request together. Each DoProcessing sends, reads
// once, parses the head as far as it has come, and writes the body to its file. It is this side
// that closes, as soon as the announced length is there. Main thread; writes total_received, the
// table of looked-up addresses and the receive buffer, all of which the objects share.

#include "corekit/net/http_down.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "corekit/base/exce.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"
#include "corekit/net/http.h"

int64_t down_class::total_received = 0;

namespace {

constexpr int code_no_connection = 20009;
constexpr int code_no_server = 20011;

char readChunk[65536];

// --- addresses -----------------------------------------------------------------------------------
// Each small file is a connection of its own. Asking the resolver for every one would cost more
// than the file, so an answer is kept for a minute, or until a transfer from that host fails. That
// there is no answer is kept for a moment too: transfers are tried again without a pause, and with
// the network down each question may stop the interface for as long as the resolver waits.
constexpr float address_lifetime = 60.0f;  // seconds of the frame clock
constexpr float failure_lifetime = 2.0f;
constexpr size_t address_limit = 16;  // more than the list has mirrors

struct known_address {
  std::string host;
  uint32_t address;  // 0 if the lookup failed
  float looked_up;   // frame clock
};
std::vector<known_address> known_addresses;

bool is_stale(const known_address& entry) {
  const float lifetime = entry.address == 0 ? failure_lifetime : address_lifetime;
  return xtim.now_sec < entry.looked_up || xtim.now_sec > entry.looked_up + lifetime;
}

// Address of `host`, 0 on failure. `fresh` tells whether the resolver was asked.
uint32_t address_of(const std::string& host, bool* fresh) {
  std::erase_if(known_addresses, is_stale);
  for (const known_address& entry : known_addresses) {
    if (entry.host == host) {
      *fresh = false;
      return entry.address;
    }
  }
  if (known_addresses.size() == address_limit) known_addresses.erase(known_addresses.begin());
  *fresh = true;
  const uint32_t address = PCSBSocket::LookupAddress(host.c_str());
  known_addresses.push_back({host, address, xtim.now_sec});
  return address;
}

// --- request -------------------------------------------------------------------------------------

// Adds text to the request's head. A line end in it would begin a header of the text's own
// choosing, so it is left out.
void add_text(std::vector<char>& request, std::string_view text) {
  for (const char c : text) {
    if (c != '\r' && c != '\n') request.push_back(c);
  }
}

void add_line_end(std::vector<char>& request) {
  request.push_back('\r');
  request.push_back('\n');
}

std::string with_blanks_escaped(std::string_view file) {
  std::string out;
  out.reserve(file.size() + 16);
  for (const char c : file) {
    if (c == ' ') {
      out += "%20";
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

void down_class::forget_address(const std::string& host) {
  std::erase_if(known_addresses, [&](const known_address& entry) {
    return entry.host == host && entry.address != 0;
  });
}

down_class::down_class(const char* server, unsigned short port, const char* file, bool post,
                       const std::map<std::string, std::string>& headers, const char* body,
                       int body_length, const char* local_path)
    : last_activity_(xtim.now_sec) {
  if (local_path != nullptr && *local_path != '\0') local_path_ = app_path + local_path;

  bool fresh = false;
  const uint32_t address = address_of(ProxyHost(server, port), &fresh);
  if (address == 0) {
    if (fresh) {
      xer << "Translated server " << server << " to IP addy: 0.0.0.0 and port = " << port << "\n";
    }
    error_ = code_no_server;
    return;
  }
  response_code_ = -1;
  socket_ = std::make_unique<PCSBSocket>(static_cast<unsigned short>(0), false);
  if (socket_->GetStatus() != PCSBSocket::status_Error) {
    socket_->Connect(address, ProxyPort(server, port));
  }

  add_text(outgoing_, post ? "POST " : "GET ");
  if (UseProxy(server, port)) {
    const auto host = headers.find("Host");
    add_text(outgoing_, "http://");
    add_text(outgoing_, host == headers.end() ? std::string_view() : host->second);
  }
  add_text(outgoing_, with_blanks_escaped(file));
  add_text(outgoing_, " HTTP/1.1");
  add_line_end(outgoing_);
  for (const auto& [key, value] : headers) {
    add_text(outgoing_, key);
    add_text(outgoing_, ": ");
    add_text(outgoing_, value);
    add_line_end(outgoing_);
  }
  const bool has_body = body != nullptr && body_length > 0;
  if (has_body) {
    add_text(outgoing_, "Content-Length: " + std::to_string(body_length));
    add_line_end(outgoing_);
  }
  add_line_end(outgoing_);
  if (has_body) outgoing_.insert(outgoing_.end(), body, body + body_length);
}

down_class::~down_class() {
  close_file();
}

// --- one step ------------------------------------------------------------------------------------

void down_class::DoProcessing() {
  if (!socket_) return;
  switch (socket_->GetStatus()) {
    case PCSBSocket::status_Connected:
      break;
    case PCSBSocket::status_Closed:
    case PCSBSocket::status_Error:
      close_file();
      return;
    default:
      return;
  }

  if (!outgoing_.empty()) {
    const long sent =
        socket_->http_WriteData(outgoing_.data(), static_cast<long>(outgoing_.size()));
    if (sent > 0) outgoing_.erase(outgoing_.begin(), outgoing_.begin() + sent);
  }
  const long got = socket_->ReadData(readChunk, sizeof readChunk);
  if (got < 1) return;

  if (!header_done_) {
    incoming_.insert(incoming_.end(), readChunk, readChunk + got);
    parse_head();
    if (!header_done_) return;
    std::vector<char> body;
    body.swap(incoming_);
    take_body(body.data(), body.size());
  } else {
    take_body(readChunk, static_cast<size_t>(got));
  }
}

// Reads whole lines from the front of `incoming_` until the head is done or the bytes run out.
void down_class::parse_head() {
  const char* const bytes = incoming_.data();
  const size_t count = incoming_.size();
  size_t at = 0;
  while (!header_done_ && count - at >= 2) {
    if (bytes[at] == '\r' && bytes[at + 1] == '\n') {
      at += 2;
      // After a head of 100 (or one without a status line) comes another, which is the answer.
      if (response_code_ > 199) begin_body();
      continue;
    }
    const std::string_view rest(bytes + at, count - at);
    const size_t end = rest.find("\r\n", 1);
    if (end == std::string_view::npos) break;
    parse_head_line(rest.substr(0, end));
    at += end + 2;
  }
  incoming_.erase(incoming_.begin(), incoming_.begin() + static_cast<ptrdiff_t>(at));
  head_bytes_ += at;
  const size_t unfinished = header_done_ ? 0 : incoming_.size();
  if (head_bytes_ + unfinished > head_limit) error_ = EMSGSIZE;
}

void down_class::parse_head_line(std::string_view line) {
  constexpr size_t code_at = 9;   // behind "HTTP/1.1 "
  constexpr size_t text_at = 13;  // and behind the code and a blank
  if (line.starts_with("HTTP/") && line.size() > text_at) {
    response_text_ = line.substr(text_at);
    response_code_ = std::atoi(std::string(line.substr(code_at, 3)).c_str());
    return;
  }
  const size_t colon = line.find(": ");
  if (colon == std::string_view::npos || colon + 2 == line.size()) return;
  response_headers_.emplace(line.substr(0, colon), line.substr(colon + 2));
}

// The head has ended: opens the file and learns the length.
void down_class::begin_body() {
  header_done_ = true;
  if (!local_path_.empty()) {
    output_file_ = std::fopen(local_path_.c_str(), "wbe");
    if (output_file_ == nullptr) error_ = errno;
  }
  // The key in this case alone: a server that writes it otherwise counts as giving no length.
  const auto length = response_headers_.find("Content-Length");
  if (length == response_headers_.end()) return;
  const long long announced = std::strtoll(length->second.c_str(), nullptr, 10);
  if (announced < 0 || announced > INT_MAX) {
    error_ = EFBIG;  // no archive of a release is that large; the server is not to be believed
  } else {
    content_length_ = announced;
  }
}

// Takes body bytes as they came, and hangs up once all that was announced is there. A body that
// goes on beyond that is counted too, so that it fails.
void down_class::take_body(const char* bytes, size_t count) {
  last_activity_ = xtim.now_sec;
  if (local_path_.empty()) {
    // Not counted as received: it has not been passed on.
    incoming_.insert(incoming_.end(), bytes, bytes + count);
    if (incoming_.size() > memory_limit) error_ = EMSGSIZE;
  } else if (output_file_ != nullptr && count > 0) {
    received_ += static_cast<int64_t>(count);
    total_received += static_cast<int64_t>(count);
    if (std::fwrite(bytes, 1, count, output_file_) != count) error_ = errno;
  }
  const int64_t have = received_ + static_cast<int64_t>(incoming_.size());
  if (content_length_ >= 0 && have >= content_length_) {
    socket_->Disconnect();
    close_file();
  }
}

// A full disk may show only now, so the file is closed before the transfer is judged.
void down_class::close_file() {
  if (output_file_ == nullptr) return;
  if (std::fclose(output_file_) != 0 && error_ == 0) error_ = errno;
  output_file_ = nullptr;
}

// --- what it has come to -------------------------------------------------------------------------

down_class::state_value down_class::state() const {
  if (!socket_) return state_no_socket;
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
  if (!outgoing_.empty()) return state_sending;
  return header_done_ ? state_body : state_waiting;
}

int down_class::os_error() const {
  if (error_ != 0) return error_;
  return socket_ ? socket_->GetOSError() : code_no_connection;
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

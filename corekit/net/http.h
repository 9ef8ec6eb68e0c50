// The polled HTTP client: GET of one file into one local file, in one of six slots.
//
// Call net_check once a frame with the same arguments until it returns something other than 0.
// Each call moves the slot's transfer by one non-blocking write or read. There is no callback and
// no thread; main thread only. No redirect is followed and no transfer is resumed. Answers are
// framed by RFC 9112, by length or in chunks; one that has neither fails at once.
//
// The slots of the transfer streams keep their connection from one file to the next, as long as
// both go to the same place (a mirror, or the proxy). A kept connection that the server has closed
// is opened anew without a word. drop() closes it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "corekit/net/http_place.h"

class down_class;
class PCSBSocket;
struct pollfd;

enum net_result : int {
  http_running = 0,
  http_done = 1,    // the whole file is in place and closed, and the status was 2xx
  http_failed = 2,  // reported in the log, unless the server fell silent; a part may be on disk
};

// What has become of a transfer that failed, for who has to tell a user.
enum net_trouble_kind : int {
  net_no_trouble,
  net_no_host,      // its name, or the proxy's, leads to no address
  net_unreached,    // no connection; `code` is its errno, 0 if unknown
  net_status,       // an answer that brings no file: `code` is its status, `words` its text
  net_silent,       // nothing came for as long as is waited
  net_broken,       // the answer ended too early, broke the rules or came too slowly
  net_too_large,    // the file there is longer than was granted
  net_not_written,  // the file on this side could not be written; `code` is its errno
};
struct net_trouble {
  net_trouble_kind kind = net_no_trouble;
  int code = 0;
  std::string words;  // printable
  net_place place;    // who was asked: the server, or the proxy on the way to it
};

class http_class {
 public:
  static constexpr int slot_count = 6;       // 0 list, 1 manifest or installer, 2 to 5 streams
  static constexpr int first_kept_slot = 2;  // this and the later ones keep their connections
  static constexpr int64_t default_budget = 512'000'000;  // bytes; for who knows no better

  http_class();
  ~http_class();
  http_class(const http_class&) = delete;
  http_class& operator=(const http_class&) = delete;

  // Starts the slot's transfer if it is free, moves it by a step, and judges it.
  //
  // `server` is a bare host name, no slash at its end; `file` an absolute path that begins with
  // "/", any bytes, which are percent-encoded; `local` the target, below app_path. Its folder must
  // exist. A breach of these is a fatal alert. After 1 or 2 the slot is free. A transfer fails 30
  // seconds (of the frame clock) after the last byte of its body, or when a minute brings less than
  // 6,000 bytes, and as soon as its body is, or says that it is, longer than `max_bytes`: no more
  // than that is ever written.
  //
  // With an empty `local` the body stays in memory: see body().
  int net_check(int slot, const std::string& server, const std::string& file,
                const std::string& local, int64_t max_bytes = default_budget);
  // The body that the slot's last transfer without a local file has left. The caller may move it
  // away; the slot's next such transfer clears it, keeping its memory.
  std::vector<char>& body(int slot);
  // What the slot's last failure was.
  const net_trouble& trouble(int slot) const { return slots_[slot].trouble; }
  // errno if that was because its local file could not be made or written, else 0: no server can
  // help.
  int disk_failure(int slot) const {
    return trouble(slot).kind == net_not_written ? trouble(slot).code : 0;
  }
  // Gives up what runs in a slot, without a report, and closes its connection. The part that has
  // come stays on disk.
  void drop(int slot);

  // --- waiting -----------------------------------------------------------------------------------
  // Waits until the network has something for one of the slots whose bits are set in `slots`, or
  // the descriptor `other` (-1 for none) can be read, at most `milliseconds`. Returns at once if
  // one of the slots is free or waits for nothing.
  void wait(unsigned slots, int milliseconds, int other = -1);
  // The same for who polls other things as well: fills `lines` (slot_count entries) with what these
  // slots wait for, and returns their number; 0 also if one of them must not be waited for.
  int poll_lines(unsigned slots, pollfd* lines) const;

  // --- progress, for the pages -------------------------------------------------------------------
  bool slot_active(int slot) const;       // a transfer is under way
  int64_t slot_received(int slot) const;  // body bytes so far; 0 for a free slot
  int64_t slot_length(int slot) const;    // body bytes announced; -1 while unknown or free
  int64_t total_received() const;         // body bytes of all transfers since start; only grows

  // --- proxy: written by the options dialog and the preference file ------------------------------
  std::string _proxy_host;
  std::string _proxy_port;  // as typed
  int _proxy_port_int = 0;  // 0: what the text says; see http_proxy_port

 private:
  struct slot_record {
    std::unique_ptr<down_class> down;
    std::unique_ptr<PCSBSocket> line;  // a connection between two transfers, or null,
    net_place line_place;              // where it leads to,
    double line_since = 0;             // and since when it has been idle, frame clock
    std::vector<char> body;
    net_trouble trouble;
    std::string last_report;      // of the last failure,
    double last_report_time = 0;  // and when it was logged, frame clock
  };

  void start(int slot, const std::string& server, const std::string& file, const std::string& local,
             int64_t max_bytes);
  int judge(slot_record& slot, const std::string& server, const std::string& file);
  int fail(slot_record& slot, const std::string& report);
  void end(slot_record& slot);

  bool started_ = false;
  slot_record slots_[slot_count];
};

extern http_class http;

// Of the proxy in the settings: the number, or, where none is set, the one in the text that an
// option may give alone. 0: no proxy, however the host is set.
int http_proxy_port();

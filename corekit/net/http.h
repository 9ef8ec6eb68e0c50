// The polled HTTP client: GET of one file into one local file, in one of six slots.
//
// Call net_check once a frame with the same arguments until it returns something other than 0.
// Each call moves the slot's transfer by one non-blocking write and one read. There is no callback
// and no thread; main thread only. No redirect is followed, no transfer is resumed, no chunked body
// is decoded, and a response without "Content-Length" never succeeds.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class down_class;

enum net_result : int {
  http_running = 0,
  http_done = 1,    // the whole file is in place and closed, and the status was 2xx
  http_failed = 2,  // reported in the log, unless the server fell silent; a part may be on disk
};

class http_class {
 public:
  static constexpr int slot_count = 6;  // 0 list, 1 manifest or installer, 2 to 5 transfer streams

  http_class();
  ~http_class();
  http_class(const http_class&) = delete;
  http_class& operator=(const http_class&) = delete;

  // Starts the slot's transfer if it is free, moves it by a step, and judges it.
  //
  // `server` is a bare host name, no slash at its end; `file` an absolute path that begins with
  // "/", in which blanks are escaped and nothing else; `local` the target, below app_path. Its
  // folder must exist. A breach of these is a fatal alert. After 1 or 2 the slot is free. A
  // transfer fails 30 seconds (of the frame clock) after the last byte of its body.
  int net_check(int slot, const std::string& server, const std::string& file,
                const std::string& local);
  // Waits until the network has something for one of the slots whose bits are set in `slots`, at
  // most `milliseconds`. Returns at once if one of them is free or waits for nothing.
  void wait(unsigned slots, int milliseconds) const;
  // Gives up what runs in a slot, without a report. The part that has come stays on disk.
  void drop(int slot);

  // --- progress, for the pages -------------------------------------------------------------------
  bool slot_active(int slot) const;       // a transfer is under way
  int64_t slot_received(int slot) const;  // body bytes written so far; 0 for a free slot
  int64_t slot_length(int slot) const;    // body bytes announced; -1 while unknown or free
  int64_t total_received() const;         // body bytes of all transfers since start; only grows

  // --- proxy: written by the options dialog and the preference file ------------------------------
  std::string _proxy_host;
  std::string _proxy_port;  // as typed
  int _proxy_port_int = 0;  // 0: no proxy, however the host is set

 private:
  void start(int slot, const std::string& server, const std::string& file,
             const std::string& local);
  int judge(int slot, const std::string& server, const std::string& file);
  void report(int slot, const std::string& text);

  bool started_ = false;
  std::unique_ptr<down_class> slots_[slot_count];
  std::string last_report_[slot_count];      // of the slot's last failure,
  float last_report_time_[slot_count] = {};  // and when it was logged, frame clock
};

extern http_class http;

// Host suffixes that bypass the proxy. Stays empty unless a setting comes to fill it.
extern std::vector<std::string> gProxyExclude;

// Whether a request to `host` goes through the proxy, and where it then connects to.
bool UseProxy(const char* host, unsigned short port);
std::string ProxyHost(const char* host, unsigned short port);
unsigned short ProxyPort(const char* host, unsigned short port);

// http_class: the slots, the requests that they make, and the judgement of what came back. Main
// thread; `http` is written here, its proxy fields by the options dialog and the preference file.

#include "corekit/net/http.h"

#include <poll.h>

#include <map>
#include <sstream>
#include <string_view>

#include "corekit/base/exce.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http_down.h"
#include "corekit/window/hl_alert.h"

http_class http;
std::vector<std::string> gProxyExclude;

namespace {

constexpr unsigned short http_port = 80;
constexpr float silence_limit = 30.0f;  // seconds of the frame clock
constexpr float report_pause = 1.0f;    // seconds between two equal reports of a slot
constexpr char source_name[] = "OOPS_cpp/http";

// The release by the last four characters of its title, a cut as blunt as the servers' statistics
// expect it.
std::string agent_name() {
  const std::string_view title = skyvane_version_title;
  return "Installer-APL/" + std::string(title.substr(title.size() - 4));
}

}  // namespace

http_class::http_class() = default;
http_class::~http_class() = default;

int http_class::net_check(int slot, const std::string& server, const std::string& file,
                          const std::string& local) {
  if (slot < 0 || slot >= slot_count) {
    MACIBM_fault(source_name, 398, "Too many download objects requested!");
    return http_failed;
  }
  if (!slots_[slot]) start(slot, server, file, local);
  slots_[slot]->DoProcessing();
  return judge(slot, server, file);
}

void http_class::start(int slot, const std::string& server, const std::string& file,
                       const std::string& local) {
  if (!started_) {
    started_ = true;
    PCSBSocket::StartupNetworking(true);
  }
  if (!server.empty() && server.back() == '/') {
    MACIBM_fault(
        source_name, 411, "net_check error! You have a dirchar at the end of the server name!",
        "You should not!",
        "Our convention is that a server name is simply a server name... with no slash!", server);
  }
  if (file.empty() || file.front() != '/') {
    MACIBM_fault(source_name, 419,
                 "net_check error! You do not have a dirchar at the beginning of the directory "
                 "name!",
                 "You should!",
                 "Our convention is that a directory name does start with a slash because it must "
                 "include the hard drive,which is a dir char on unix!",
                 file);
  }
  const std::map<std::string, std::string> headers = {
      {"Connection", "close"}, {"Host", server}, {"User-agent", agent_name()}};
  slots_[slot] = std::make_unique<down_class>(server.c_str(), http_port, file.c_str(), false,
                                              headers, nullptr, 0, local.c_str());
}

// Whether the slot's transfer is over, and how; frees the slot if it is.
int http_class::judge(int slot, const std::string& server, const std::string& file) {
  const down_class& down = *slots_[slot];
  const down_class::state_value state = down.state();
  const bool done = state == down_class::state_closed;
  const bool complete = down.complete();
  const bool failed = down.error() != 0 || state == down_class::state_no_socket ||
                      state == down_class::state_socket_error;

  if (!done && !complete && !failed) {
    if (xtim.now_sec <= down.last_activity() + silence_limit) return http_running;
    down_class::forget_address(ProxyHost(server.c_str(), http_port));
    drop(slot);  // without a report: a server that has fallen silent has nothing to tell
    return http_failed;
  }
  if (down.response_code() >= 200 && down.response_code() <= 299 && complete && !failed) {
    drop(slot);
    return http_done;
  }

  std::ostringstream text;
  text << "HTTP Error for " << down.local_path() << "\n"
       << "   server     =" << server << "\n"
       << "   file       =" << file << "\n"
       << "   IsDone     =" << done << "\n"
       << "   IsComplete =" << complete << "\n"
       << "   IsErr      =" << failed << "\n"
       << "   GetStat    =" << static_cast<int>(state) << "\n"
       << "   GetOSErr   =" << down.os_error() << "\n"
       << "   response   =" << down.response_text() << " (#" << down.response_code() << ")\n\n";
  report(slot, text.str());
  down_class::forget_address(ProxyHost(server.c_str(), http_port));
  drop(slot);
  return http_failed;
}

// Failures are tried again without a pause, so a server that refuses could fill the disk with its
// report: the same one of the same slot is logged once a second.
void http_class::report(int slot, const std::string& text) {
  const float since = xtim.now_sec - last_report_time_[slot];
  if (text == last_report_[slot] && since >= 0 && since < report_pause) return;
  xer << text;
  last_report_[slot] = text;
  last_report_time_[slot] = xtim.now_sec;
}

void http_class::wait(unsigned slots, int milliseconds) const {
  pollfd lines[slot_count] = {};
  int used = 0;
  for (int slot = 0; slot < slot_count; ++slot) {
    if ((slots >> slot & 1) == 0) continue;
    pollfd& line = lines[used++];
    if (!slots_[slot] || !slots_[slot]->waits_for(&line.fd, &line.events)) return;
  }
  if (used > 0) poll(lines, static_cast<nfds_t>(used), milliseconds);
}

void http_class::drop(int slot) {
  slots_[slot].reset();
}

// --- progress ------------------------------------------------------------------------------------

bool http_class::slot_active(int slot) const {
  return slots_[slot] != nullptr;
}

int64_t http_class::slot_received(int slot) const {
  return slots_[slot] ? slots_[slot]->received() : 0;
}

int64_t http_class::slot_length(int slot) const {
  return slots_[slot] ? slots_[slot]->content_length() : -1;
}

int64_t http_class::total_received() const {
  return down_class::total_received;
}

// --- proxy ---------------------------------------------------------------------------------------

bool UseProxy(const char* host, unsigned short /*port*/) {
  if (http._proxy_port_int == 0 || http._proxy_host.empty()) return false;
  const std::string_view name = host;
  for (const std::string& suffix : gProxyExclude) {
    if (name.ends_with(suffix)) return false;
  }
  return true;
}

std::string ProxyHost(const char* host, unsigned short port) {
  return UseProxy(host, port) ? http._proxy_host : host;
}

unsigned short ProxyPort(const char* host, unsigned short port) {
  return UseProxy(host, port) ? static_cast<unsigned short>(http._proxy_port_int & 0xFFFF) : port;
}

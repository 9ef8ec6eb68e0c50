// http_class: the slots, the requests that they make, and the judgement of what came back. Main
// thread; `http` is written here, its proxy fields by the options dialog and the preference file.

#include "corekit/net/http.h"

#include <poll.h>

#include <cerrno>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http_address.h"
#include "corekit/net/http_down.h"
#include "corekit/net/http_env.h"

http_class http;
std::vector<std::string> gProxyExclude;

int http_proxy_port() {
  return http._proxy_port_int != 0 ? http._proxy_port_int : str_to_int(http._proxy_port);
}

namespace {

constexpr unsigned short http_port = 80;
constexpr float silence_limit = 30.0f;  // seconds of the frame clock
constexpr float kept_limit = 15.0f;     // seconds for which an unused connection is believed in
constexpr float report_pause = 1.0f;    // seconds between two equal reports of a slot

// The release by the last four characters of its title, a cut as blunt as the servers' statistics
// expect it.
std::string agent_name() {
  const std::string_view title = skyvane_version_title;
  return "Installer-APL/" + std::string(title.substr(title.size() - 4));
}

// Where the settings name no proxy, that of the environment counts.
bool has_proxy_in_settings() {
  return http_proxy_port() != 0 && !http._proxy_host.empty();
}

// Of a transfer that has failed otherwise than by silence.
net_trouble trouble_of(const down_class& down, bool has_file) {
  net_trouble trouble = {net_broken, 0, "", down.place()};
  const int status = down.response_code();
  if (down.disk_error() != 0) {
    trouble.kind = net_not_written;
    trouble.code = down.disk_error();
  } else if (status > 0 && !has_file) {
    trouble.kind = net_status;
    trouble.code = status;
    trouble.words = down.response_text();
  } else if (status > 0) {
    trouble.kind = down.error() == EFBIG ? net_too_large : net_broken;
  } else if (down.state() == down_class::state_no_socket) {
    trouble.kind = net_no_host;
  } else if (down.connect_error() != 0 || down.state() == down_class::state_socket_error) {
    trouble.kind = net_unreached;
    trouble.code = down.connect_error() != 0 ? down.connect_error() : down.os_error();
  }
  return trouble;
}

}  // namespace

http_class::http_class() = default;
http_class::~http_class() = default;

int http_class::net_check(int slot, const std::string& server, const std::string& file,
                          const std::string& local, int64_t max_bytes) {
  if (slot < 0 || slot >= slot_count) {
    MACIBM_fault(at_http_slots, "Too many download objects requested!");
    return http_failed;
  }
  if (!slots_[slot].down) start(slot, server, file, local, max_bytes);
  slots_[slot].down->DoProcessing();
  return judge(slots_[slot], server, file);
}

void http_class::start(int slot, const std::string& server, const std::string& file,
                       const std::string& local, int64_t max_bytes) {
  if (!started_) {
    started_ = true;
    PCSBSocket::StartupNetworking(true);
    if (!has_proxy_in_settings()) http_log_env_proxy();
  }
  if (!server.empty() && server.back() == '/') {
    MACIBM_fault(
        at_http_server_slash, "net_check error! You have a dirchar at the end of the server name!",
        "You should not!",
        "Our convention is that a server name is simply a server name... with no slash!", server);
  }
  if (file.empty() || file.front() != '/') {
    MACIBM_fault(at_http_file_slash,
                 "net_check error! You do not have a dirchar at the beginning of the directory "
                 "name!",
                 "You should!",
                 "Our convention is that a directory name does start with a slash because it must "
                 "include the hard drive,which is a dir char on unix!",
                 file);
  }
  const bool keep = slot >= first_kept_slot;
  const std::map<std::string, std::string> headers = {{"Connection", keep ? "keep-alive" : "close"},
                                                      {"Host", server},
                                                      {"User-agent", agent_name()}};
  slot_record& record = slots_[slot];
  const bool leads_there = record.line && xtim.now_sec <= record.line_since + kept_limit &&
                           record.line_place == place_to_connect(server, http_port);
  if (!leads_there) record.line.reset();
  record.trouble = {};
  record.down = std::make_unique<down_class>(
      server.c_str(), http_port, file.c_str(), false, headers, nullptr, 0, local.c_str(),
      down_terms{max_bytes, keep, std::move(record.line), &record.body});
}

// Whether the slot's transfer is over, and how; frees the slot if it is.
int http_class::judge(slot_record& slot, const std::string& server, const std::string& file) {
  const down_class& down = *slot.down;
  const down_class::state_value state = down.state();
  const bool done = state == down_class::state_closed;
  const bool complete = down.complete();
  const bool failed = down.error() != 0 || state == down_class::state_no_socket ||
                      state == down_class::state_socket_error;

  if (!done && !complete && !failed) {
    if (xtim.now_sec <= down.last_activity() + silence_limit) return http_running;
    slot.trouble = {net_silent, 0, "", down.place()};
    return fail(slot, "");  // a server that has fallen silent has nothing to tell
  }
  const bool has_file = down.response_code() >= 200 && down.response_code() <= 299;
  if (has_file && complete && !failed) {
    end(slot);
    return http_done;
  }
  slot.trouble = trouble_of(down, has_file);

  std::ostringstream text;
  if (*down.error_text() != '\0') text << "WARNING: " << down.error_text() << ".\n";
  text << "HTTP Error for " << down.local_path() << "\n"
       << "   server     =" << str_printable(server) << "\n"
       << "   file       =" << str_printable(file) << "\n"
       << "   IsDone     =" << done << "\n"
       << "   IsComplete =" << complete << "\n"
       << "   IsErr      =" << failed << "\n"
       << "   GetStat    =" << static_cast<int>(state) << "\n"
       << "   GetOSErr   =" << down.os_error() << "\n"
       << "   response   =" << down.response_text() << " (#" << down.response_code() << ")\n\n";
  return fail(slot, text.str());
}

// Failures are tried again and again, so a server that refuses could fill the disk with its report:
// the same one of the same slot is logged once a second.
int http_class::fail(slot_record& slot, const std::string& report) {
  const double since = xtim.now_sec - slot.last_report_time;
  if (!report.empty() && (report != slot.last_report || since < 0 || since >= report_pause)) {
    xer << report;
    slot.last_report = report;
    slot.last_report_time = xtim.now_sec;
  }
  http_forget_address(slot.down->place().host);
  end(slot);
  return http_failed;
}

// Frees the slot, whose connection is kept if it is good for more.
void http_class::end(slot_record& slot) {
  slot.line = slot.down->take_line();
  slot.line_place = slot.down->place();
  slot.line_since = xtim.now_sec;
  slot.down.reset();
}

std::vector<char>& http_class::body(int slot) {
  return slots_[slot].body;
}

void http_class::drop(int slot) {
  slots_[slot].down.reset();
  slots_[slot].line.reset();
}

// --- waiting -------------------------------------------------------------------------------------

int http_class::poll_lines(unsigned slots, pollfd* lines) const {
  int used = 0;
  for (int slot = 0; slot < slot_count; ++slot) {
    if ((slots >> slot & 1) == 0) continue;
    pollfd& line = lines[used++] = {};
    const down_class* const down = slots_[slot].down.get();
    if (down == nullptr || !down->waits_for(&line.fd, &line.events)) return 0;
  }
  return used;
}

void http_class::wait(unsigned slots, int milliseconds, int other) {
  pollfd lines[slot_count + 1];
  const int used = poll_lines(slots, lines);
  if (used == 0 && slots != 0) return;
  lines[used] = {other, POLLIN, 0};  // one of -1 is passed over
  if (poll(lines, static_cast<nfds_t>(used) + 1, milliseconds) < 0) return;
  int at = 0;
  for (int slot = 0; slot < slot_count; ++slot) {
    if ((slots >> slot & 1) != 0 && lines[at++].revents == 0) slots_[slot].down->rest();
  }
}

// --- progress ------------------------------------------------------------------------------------

bool http_class::slot_active(int slot) const {
  return slots_[slot].down != nullptr;
}

int64_t http_class::slot_received(int slot) const {
  return slots_[slot].down ? slots_[slot].down->received() : 0;
}

int64_t http_class::slot_length(int slot) const {
  return slots_[slot].down ? slots_[slot].down->content_length() : -1;
}

int64_t http_class::total_received() const {
  return down_class::total_received;
}

// --- proxy ---------------------------------------------------------------------------------------

bool UseProxy(const char* host, unsigned short /*port*/) {
  if (!has_proxy_in_settings()) return http_goes_by(http_env_proxy(), host);
  const std::string_view name = host;
  for (const std::string& suffix : gProxyExclude) {
    if (name.ends_with(suffix)) return false;
  }
  return true;
}

std::string ProxyHost(const char* host, unsigned short port) {
  if (!UseProxy(host, port)) return host;
  return has_proxy_in_settings() ? http._proxy_host : http_env_proxy().host;
}

unsigned short ProxyPort(const char* host, unsigned short port) {
  if (!UseProxy(host, port)) return port;
  return has_proxy_in_settings() ? static_cast<unsigned short>(http_proxy_port() & 0xFFFF)
                                 : http_env_proxy().port;
}

net_place place_to_connect(const std::string& host, unsigned short port) {
  return {ProxyHost(host.c_str(), port), ProxyPort(host.c_str(), port)};
}

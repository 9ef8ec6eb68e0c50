// The HTTP client against a scripted server.
//
// Each file of tests/http_cases holds what a server sends and what is to come of it. A line that
// begins with "%" opens a section or gives a fact; the lines of a section are bytes, the line ends
// of the file not included, with \r \n \\ and \xHH for those that cannot be written plainly.
//
//   # text            a comment, above the first "%" line only
//   %file path        the file asked for; "/f.zip" if not given
//   %request          the request's head, byte for byte; not compared if not given
//   %serve            bytes to send; each such section is sent by itself
//   %fill N text      the text N times, with what follows it, as one more such section
//   %cut everywhere   runs the case once for each place at which the bytes can be cut in two
//   %cut bytes        sends the bytes one at a time
//   %keep_open        the server does not close after the last byte
//   %result R         1 or 2 as net_check returns it, or "silence": nothing until the frame clock
//                     has passed 30 seconds, then 2
//   %body             the local file's content, as %body_fill the text N times
//   %log              what the log holds afterwards, {local} being the local path

#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "corekit/Files/io_utils.h"
#include "corekit/OOPS_cpp/exce.h"
#include "corekit/OOPS_cpp/http.h"
#include "corekit/OOPS_cpp/http_down.h"
#include "corekit/OOPS_cpp/xtim.h"
#include "corekit/Platform/PLT_system.h"
#include "net_scripted_server.h"

namespace {

constexpr char host[] = "www.skyvane.example";

struct http_case {
  std::string name;
  std::string file = "/f.zip";
  std::optional<std::string> request;
  std::vector<std::string> pieces;
  std::string cut;
  bool keep_open = false;
  std::string result;
  std::optional<std::string> body;
  std::optional<std::string> log;
};

std::string unescaped(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      out += text[at];
      continue;
    }
    const char kind = text[++at];
    if (kind == 'r') {
      out += '\r';
    } else if (kind == 'n') {
      out += '\n';
    } else if (kind == 'x') {
      out += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      out += kind;
    }
  }
  return out;
}

std::string times(const std::string& count_and_text) {
  const size_t blank = count_and_text.find(' ');
  const std::string text = unescaped(count_and_text.substr(blank + 1));
  std::string out;
  for (int n = std::stoi(count_and_text); n > 0; --n)
    out += text;
  return out;
}

http_case read_case(const std::string& path, const std::string& name) {
  http_case c;
  c.name = name;
  std::istringstream in(bytes_of(path));
  std::string* section = nullptr;
  for (std::string line; std::getline(in, line);) {
    if (!line.starts_with('%')) {
      if (section != nullptr) *section += unescaped(line);
      continue;
    }
    const size_t blank = std::min(line.find(' '), line.size());
    const std::string key = line.substr(0, blank);
    const std::string value = blank < line.size() ? line.substr(blank + 1) : "";
    section = nullptr;
    if (key == "%file") {
      c.file = value;
    } else if (key == "%request") {
      section = &c.request.emplace();
    } else if (key == "%serve") {
      section = &c.pieces.emplace_back();
    } else if (key == "%fill") {
      section = &c.pieces.emplace_back(times(value));
    } else if (key == "%cut") {
      c.cut = value;
    } else if (key == "%keep_open") {
      c.keep_open = true;
    } else if (key == "%result") {
      c.result = value;
    } else if (key == "%body") {
      section = &c.body.emplace();
    } else if (key == "%body_fill") {
      c.body = times(value);
    } else if (key == "%log") {
      section = &c.log.emplace();
    } else {
      ADD_FAILURE() << name << ": " << line;
    }
  }
  return c;
}

// The folder of the case files: found from the program upward, as builds lie inside the source
// tree; another build names the folder of the tests.
std::string case_folder() {
#ifdef TESTS_FOLDER
  return TESTS_FOLDER "/http_cases/";
#else
  std::string above = PLT_executable_path();
  while (!above.empty()) {
    above.resize(std::min(above.rfind('/'), above.size()));
    if (dir_exists(above + "/tests/http_cases")) return above + "/tests/http_cases/";
    if (above.find('/') == std::string::npos) break;
  }
  return "";
#endif
}

std::vector<http_case> all_cases() {
  const std::string folder = case_folder();
  std::vector<http_case> cases;
  if (DIR* listing = opendir(folder.c_str())) {
    while (const dirent* entry = readdir(listing)) {
      const std::string name = entry->d_name;
      if (name.ends_with(".case")) cases.push_back(read_case(folder + name, name));
    }
    closedir(listing);
  }
  return cases;
}

// Calls `check` until it is not 0, or ten seconds have gone.
template <class F>
int until_over(F check) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  int result = http_running;
  while (result == http_running && std::chrono::steady_clock::now() < limit) {
    result = check();
    std::this_thread::yield();
  }
  return result;
}

struct log_file {
  std::string path = scratch_folder() + "log.txt";
  log_file() { xer_open(path); }
  ~log_file() { xer.close(); }
  std::string content() const {
    xer.flush();
    return bytes_of(path);
  }
};

// No proxy, the clock at its start, and no answer kept from a case before.
class NetHttp : public testing::Test {
 protected:
  NetHttp() {
    http._proxy_host.clear();
    http._proxy_port_int = 0;
    gProxyExclude.clear();
    xtim.now_sec = 0;
  }
};
using NetDown = NetHttp;

void run_case(const http_case& c, const std::vector<std::string>& pieces) {
  const log_file log;
  const std::string local = scratch_folder() + "got.zip";
  scripted_server server(
      [&](const std::string&) {
        return scripted_reply{pieces, c.keep_open};
      },
      true);
  use_proxy_port(server.port());
  xtim.now_sec = 100.0f;
  const auto check = [&] { return http.net_check(0, host, c.file, local); };

  int result = http_running;
  until_over([&] {
    result = check();
    return result != http_running || !server.requests().empty() ? 1 : 0;
  });
  ASSERT_EQ(server.requests().size(), 1u) << c.name;
  if (c.request) {
    EXPECT_EQ(server.requests()[0], *c.request) << c.name;
  }

  // One poll after each piece, so that the client sees it as it was cut.
  while (result == http_running && server.send_piece())
    result = check();
  if (c.result == "silence") {
    // What was sent is there in a poll or two; more of them must not change the verdict.
    for (int polls = 0; polls < 50 && result == http_running; ++polls)
      result = check();
    EXPECT_EQ(result, http_running) << c.name;
    xtim.now_sec = 130.0f;
    EXPECT_EQ(check(), http_running) << c.name << ": after 30.0 seconds";
    xtim.now_sec = 130.1f;
    EXPECT_EQ(check(), http_failed) << c.name << ": after more";
  } else {
    if (result == http_running) result = until_over(check);
    EXPECT_EQ(std::to_string(result), c.result) << c.name;
  }
  EXPECT_FALSE(http.slot_active(0)) << c.name;
  if (c.body) {
    EXPECT_EQ(bytes_of(local), *c.body) << c.name;
  }
  if (c.log) {
    std::string expected = *c.log;
    const size_t mark = expected.find("{local}");
    if (mark != std::string::npos) expected.replace(mark, 7, local);
    EXPECT_EQ(log.content(), expected) << c.name;
  }
  http.drop(0);
}

TEST_F(NetHttp, Cases) {
  const std::vector<http_case> cases = all_cases();
  ASSERT_GE(cases.size(), 20u) << "the case files were not found";
  for (const http_case& c : cases) {
    ASSERT_TRUE(c.result == "1" || c.result == "2" || c.result == "silence") << c.name;
    std::string whole;
    for (const std::string& piece : c.pieces)
      whole += piece;
    if (c.cut.empty()) {
      run_case(c, c.pieces);
    } else if (c.cut == "bytes") {
      std::vector<std::string> bytes;
      for (const char byte : whole)
        bytes.emplace_back(1, byte);
      run_case(c, bytes);
    } else {
      for (size_t at = 1; at < whole.size(); ++at) {
        run_case(c, {whole.substr(0, at), whole.substr(at)});
        if (testing::Test::HasFailure()) FAIL() << c.name << " cut at " << at;
      }
    }
  }
}

// --- net_check ----------------------------------------------------------------------------------

scripted_reply answer(const std::string& body) {
  return {
      {"HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body}};
}

TEST_F(NetHttp, ARefusedConnectionIsReportedOnceASecond) {
  const log_file log;
  use_proxy_port(closed_port());
  const std::string local = scratch_folder() + "x";
  const auto check = [&] { return http.net_check(3, host, "/x", local); };
  const std::string report = "HTTP Error for " + local + "\n   server     =" + host +
                             "\n   file       =/x\n   IsDone     =1\n   IsComplete =0\n"
                             "   IsErr      =0\n   GetStat    =3\n   GetOSErr   =0\n"
                             "   response   = (#-1)\n\n";
  xtim.now_sec = 5.0f;
  EXPECT_EQ(until_over(check), http_failed);
  EXPECT_EQ(log.content(), report);
  xtim.now_sec = 5.5f;
  EXPECT_EQ(until_over(check), http_failed) << "the same slot starts anew";
  EXPECT_EQ(log.content(), report);
  xtim.now_sec = 6.0f;
  EXPECT_EQ(until_over(check), http_failed);
  EXPECT_EQ(log.content(), report + report);
  EXPECT_EQ(bytes_of(local), "");
}

TEST_F(NetHttp, AFailedLookupIsReported) {
  const log_file log;
  for (const std::string name : {"", "no such host"}) {
    EXPECT_EQ(http.net_check(0, name, "/x y", "/nowhere"), http_failed) << "at once";
    const std::string expected =
        "Translated server " + name +
        " to IP addy: 0.0.0.0 and port = 80\nHTTP Error for /nowhere\n   server     =" + name +
        "\n   file       =/x y\n   IsDone     =0\n   IsComplete =0\n   IsErr      =1\n"
        "   GetStat    =0\n   GetOSErr   =20011\n   response   = (#0)\n\n";
    EXPECT_TRUE(log.content().ends_with(expected)) << log.content();
  }
}

// With the network down a transfer is tried again at once, over and over.
TEST_F(NetHttp, AFailedLookupIsNotRepeatedAtOnce) {
  const log_file log;
  const auto lookups = [&] {
    const std::string text = log.content();
    int count = 0;
    for (size_t at = 0; (at = text.find("Translated server", at)) != std::string::npos; ++at)
      ++count;
    return count;
  };
  const struct {
    float clock;
    int lookups;
  } rows[] = {{100.0f, 1}, {100.0f, 1}, {102.0f, 1}, {102.5f, 2}, {103.0f, 2}};
  for (const auto& row : rows) {
    xtim.now_sec = row.clock;
    EXPECT_EQ(http.net_check(0, "no such host here", "/x", "/nowhere"), http_failed);
    EXPECT_EQ(lookups(), row.lookups) << row.clock;
  }
}

TEST_F(NetHttp, BrokenConventionsAreFatal) {
  const std::string local = scratch_folder() + "x";
  const struct {
    int slot;
    const char* server;
    const char* file;
    const char* message;
  } rows[] = {
      {6, host, "/x", "Too many download objects requested!"},
      {-1, host, "/x", "Too many download objects requested!"},
      {0, "host/", "/x", "You have a dirchar at the end of the server name!"},
      {0, host, "x", "You do not have a dirchar at the beginning of the directory name!"},
      {0, host, "", "You do not have a dirchar at the beginning of the directory name!"},
  };
  for (const auto& row : rows) {
    EXPECT_EXIT(http.net_check(row.slot, row.server, row.file, local), testing::ExitedWithCode(1),
                row.message)
        << row.slot << " " << row.server << " " << row.file;
  }
}

TEST_F(NetHttp, ConventionsAreCheckedAtTheStartAlone) {
  scripted_server server([](const std::string&) { return answer("fine"); });
  use_proxy_port(server.port());
  const std::string local = scratch_folder() + "x";
  int result = http.net_check(0, host, "/x", local);
  if (result == http_running) {
    result = until_over([&] { return http.net_check(0, "host/", "x", local); });
  }
  EXPECT_EQ(result, http_done);
  EXPECT_EQ(bytes_of(local), "fine");
}

TEST_F(NetHttp, SixSlotsRunSideBySide) {
  scripted_server server([](const std::string& request) {
    return answer(request.substr(0, request.find(" HTTP/1.1")));
  });
  use_proxy_port(server.port());
  const std::string folder = scratch_folder();
  const int64_t before = http.total_received();
  int results[http_class::slot_count] = {};
  until_over([&] {
    int over = 0;
    for (int slot = 0; slot < http_class::slot_count; ++slot) {
      const std::string name = "/" + std::to_string(slot);
      if (results[slot] == 0) results[slot] = http.net_check(slot, host, name, folder + name);
      over += results[slot] != 0;
    }
    return over == http_class::slot_count ? 1 : 0;
  });
  for (int slot = 0; slot < http_class::slot_count; ++slot) {
    const std::string name = "/" + std::to_string(slot);
    EXPECT_EQ(results[slot], http_done) << slot;
    EXPECT_EQ(bytes_of(folder + name), "GET http://www.skyvane.example" + name) << slot;
  }
  EXPECT_EQ(http.total_received() - before, 6 * 32);
}

TEST_F(NetHttp, ProgressOfASlot) {
  scripted_server server(
      [](const std::string&) {
        return scripted_reply{{"HTTP/1.1 200 OK\r\n", "Content-Length: 10\r\n\r\n1234", "567890"}};
      },
      true);
  use_proxy_port(server.port());
  const std::string local = scratch_folder() + "x";
  const auto check = [&] { return http.net_check(2, host, "/x", local); };
  EXPECT_FALSE(http.slot_active(2));
  EXPECT_EQ(http.slot_length(2), -1);
  until_over([&] { return check() + static_cast<int>(server.requests().size()); });
  const struct {
    int64_t received, length;
    int result;
  } rows[] = {{0, -1, http_running}, {4, 10, http_running}, {0, -1, http_done}};
  for (const auto& row : rows) {
    ASSERT_TRUE(server.send_piece());
    EXPECT_EQ(check(), row.result);
    EXPECT_EQ(http.slot_received(2), row.received);
    EXPECT_EQ(http.slot_length(2), row.length);
    EXPECT_EQ(http.slot_active(2), row.result == http_running);
  }
  EXPECT_EQ(bytes_of(local), "1234567890");
}

TEST_F(NetHttp, ADroppedSlotTakesTheNextFile) {
  scripted_server server([](const std::string& request) {
    return answer(request.find("/second") != std::string::npos ? "second" : "first");
  });
  use_proxy_port(server.port());
  const std::string local = scratch_folder() + "x";
  http.net_check(2, host, "/first", local);
  http.drop(2);
  EXPECT_EQ(until_over([&] { return http.net_check(2, host, "/second", local); }), http_done);
  EXPECT_EQ(bytes_of(local), "second");
}

TEST_F(NetHttp, ALocalFileThatCannotBeWritten) {
  const log_file log;
  scripted_server server([](const std::string&) { return answer(std::string(300000, 'x')); });
  use_proxy_port(server.port());
  const struct {
    std::string local;
    int code;
  } rows[] = {
      {scratch_folder() + "missing/x", ENOENT},
      {scratch_folder(), EISDIR},
      {"/dev/full", ENOSPC},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(until_over([&] { return http.net_check(0, host, "/x", row.local); }), http_failed);
    EXPECT_NE(log.content().find("HTTP Error for " + row.local), std::string::npos);
    EXPECT_NE(log.content().find("GetOSErr   =" + std::to_string(row.code) + "\n"),
              std::string::npos)
        << row.local;
  }
}

TEST_F(NetHttp, ADiskFullAtCloseIsNoticed) {
  scripted_server server([](const std::string&) { return answer("small enough for the buffer"); });
  use_proxy_port(server.port());
  EXPECT_EQ(until_over([&] { return http.net_check(0, host, "/x", "/dev/full"); }), http_failed);
}

TEST_F(NetHttp, ProxyRules) {
  http._proxy_host = "proxy";
  const struct {
    const char* proxy;
    int port;
    std::vector<std::string> exclude;
    bool used;
  } rows[] = {
      {"proxy", 3128, {}, true},
      {"proxy", 0, {}, false},
      {"", 3128, {}, false},
      {"proxy", 3128, {".example"}, false},
      {"proxy", 3128, {"skyvane.example"}, false},
      {"proxy", 3128, {"www.skyvane.example"}, false},
      {"proxy", 3128, {"more.www.skyvane.example"}, true},  // longer than the host
      {"proxy", 3128, {"skyvane"}, true},                   // inside, not at the end
  };
  for (const auto& row : rows) {
    http._proxy_host = row.proxy;
    http._proxy_port_int = row.port;
    gProxyExclude = row.exclude;
    const std::string label = row.exclude.empty() ? row.proxy : row.exclude[0];
    EXPECT_EQ(UseProxy(host, 80), row.used) << label;
    EXPECT_EQ(ProxyHost(host, 80), row.used ? "proxy" : host) << label;
    EXPECT_EQ(ProxyPort(host, 80), row.used ? 3128 : 80) << label;
  }
  gProxyExclude.clear();
  http._proxy_host = "proxy";
  http._proxy_port_int = 65536 + 81;
  EXPECT_EQ(ProxyPort(host, 80), 81) << "the low 16 bits";
}

// --- down_class ---------------------------------------------------------------------------------

void run_until_closed(down_class& down) {
  until_over([&] {
    down.DoProcessing();
    return down.state() == down_class::state_closed || down.error() != 0 ? 1 : 0;
  });
}

TEST_F(NetDown, DirectFormAndBodyInMemory) {
  scripted_server server([](const std::string&) { return answer("kept in memory"); });
  down_class down("127.0.0.1", static_cast<unsigned short>(server.port()), "/a b  c%", false,
                  {{"Zeta", "1"}, {"Host", "h\r\nEvil: yes"}, {"Alpha", "2"}}, nullptr, 0, "");
  EXPECT_EQ(down.response_code(), -1);
  run_until_closed(down);
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests()[0],
            "GET /a%20b%20%20c% HTTP/1.1\r\nAlpha: 2\r\nHost: hEvil: yes\r\nZeta: 1\r\n\r\n")
      << "sorted keys, and no line end from a value";
  EXPECT_EQ(std::string(down.incoming().begin(), down.incoming().end()), "kept in memory");
  EXPECT_EQ(down.received(), 0);
  EXPECT_EQ(down.content_length(), 14);
  EXPECT_EQ(down.response_headers().at("Content-Length"), "14");
}

TEST_F(NetDown, PostSendsItsBody) {
  scripted_server server([](const std::string&) { return answer(""); });
  down_class down("127.0.0.1", static_cast<unsigned short>(server.port()), "/form", true,
                  {{"Host", "h"}}, "a=1", 3, "");
  run_until_closed(down);
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests()[0], "POST /form HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\n");
  EXPECT_EQ(down.response_code(), 200);
  EXPECT_EQ(down.response_text(), "OK");
}

TEST_F(NetDown, ABodyInMemoryIsBounded) {
  scripted_server server([](const std::string&) {
    return scripted_reply{{"HTTP/1.1 200 OK\r\n\r\n" + std::string(20 << 20, 'x')}};
  });
  down_class down("127.0.0.1", static_cast<unsigned short>(server.port()), "/", false, {}, nullptr,
                  0, nullptr);
  run_until_closed(down);
  EXPECT_EQ(down.error(), EMSGSIZE);
  EXPECT_LT(down.incoming().size(), down_class::memory_limit + 65536);
}

TEST_F(NetDown, AHostIsLookedUpAgainAfterAFailure) {
  // "localhost" is in the table now; forgetting a host that is not there does no harm.
  scripted_server server([](const std::string&) { return answer("x"); });
  for (int round = 0; round < 3; ++round) {
    down_class down("localhost", static_cast<unsigned short>(server.port()), "/", false, {},
                    nullptr, 0, "");
    run_until_closed(down);
    EXPECT_EQ(down.response_code(), 200) << round;
    xtim.now_sec += 40.0f;
    if (round == 1) down_class::forget_address("localhost");
  }
  down_class::forget_address("unknown");
}

}  // namespace

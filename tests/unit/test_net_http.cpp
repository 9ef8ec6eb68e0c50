// The HTTP client against a scripted server.

#include <cerrno>
#include <chrono>
#include <optional>

#include "corekit/base/exce.h"
#include "corekit/base/xtim.h"
#include "corekit/net/http_down.h"
#include "net_scripted_server.h"

using namespace std::string_literals;

namespace {

constexpr char host[] = "www.skyvane.example";

// What the log says of a failure.
struct facts {
  int is_done, is_complete, is_error, status, os_error;
  const char* response;
};

std::string report(const std::string& local, const std::string& server, const std::string& file,
                   const facts& f) {
  return "HTTP Error for " + local + "\n   server     =" + server + "\n   file       =" + file +
         "\n   IsDone     =" + std::to_string(f.is_done) +
         "\n   IsComplete =" + std::to_string(f.is_complete) +
         "\n   IsErr      =" + std::to_string(f.is_error) +
         "\n   GetStat    =" + std::to_string(f.status) +
         "\n   GetOSErr   =" + std::to_string(f.os_error) + "\n   response   =" + f.response +
         "\n\n";
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
    xtim.now_sec = 0;
  }
};
using NetDown = NetHttp;

// Nothing until the frame clock has passed 30 seconds, then a failure without a word in the log.
constexpr int silence = -1;

// What a server sends and what is to come of it.
struct http_case {
  std::string label, sent;
  int result;
  std::optional<std::string> body = {};  // of the local file
  const facts* log = nullptr;
  bool keep_open = false;  // else the server closes after the last byte
};

void run_case(const http_case& c, const std::vector<std::string>& pieces) {
  SCOPED_TRACE(c.label);
  const log_file log;
  const std::string local = scratch_folder() + "got.zip";
  scripted_server server(
      [&](const std::string&) {
        return scripted_reply{pieces, c.keep_open};
      },
      true);
  use_proxy_port(server.port());
  xtim.now_sec = 100.0f;
  const auto check = [&] { return http.net_check(0, host, "/f.zip", local); };

  int result = http_running;
  until_over([&] {
    result = check();
    return result != http_running || !server.requests().empty() ? 1 : 0;
  });
  ASSERT_EQ(server.requests().size(), 1u);
  // One poll after each piece, so that the client sees it as it was cut.
  while (result == http_running && server.send_piece())
    result = check();
  if (c.result == silence) {
    // What was sent is there in a poll or two; more of them must not change the verdict.
    for (int polls = 0; polls < 50 && result == http_running; ++polls)
      result = check();
    EXPECT_EQ(result, http_running);
    xtim.now_sec = 130.0f;
    EXPECT_EQ(check(), http_running) << "after 30.0 seconds";
    xtim.now_sec = 130.1f;
    EXPECT_EQ(check(), http_failed) << "after more";
    EXPECT_EQ(log.content(), "");
  } else {
    if (result == http_running) result = until_over(check);
    EXPECT_EQ(result, c.result);
  }
  EXPECT_FALSE(http.slot_active(0));
  if (c.body) {
    EXPECT_EQ(bytes_of(local), *c.body);
  }
  if (c.log) {
    EXPECT_EQ(log.content(), report(local, host, "/f.zip", *c.log));
  }
  http.drop(0);
}

const std::string ok = "HTTP/1.1 200 OK\r\n", of_two = "Content-Length: 2\r\n\r\n";

TEST_F(NetHttp, BrokenConventionsAreFatal) {
  const auto exits = testing::ExitedWithCode(1);
  for (const int slot : {-1, 6})
    EXPECT_EXIT(http.net_check(slot, host, "/x", "x"), exits, "Too many download objects");
  EXPECT_EXIT(http.net_check(0, "host/", "/x", "x"), exits, "a dirchar at the end of the server");
  EXPECT_EXIT(http.net_check(0, host, "", "x"), exits, "not have a dirchar at the beginning");
}

TEST_F(NetHttp, AnswersOfAServer) {
  std::string endless, digits;
  for (int i = 0; i < 4000; ++i)
    endless += "HTTP/1.1 100 Go on\r\n\r\n";
  for (int i = 0; i < 100000; ++i)
    digits += "0123456789";
  const facts not_found = {1, 1, 0, 3, 0, "Not Found (#404)"},
              too_long = {1, 0, 0, 3, 0, "OK (#200)"}, no_end = {0, 0, 1, 6, 90, "OK (#200)"},
              too_large = {0, 0, 1, 5, 27, "OK (#200)"};
  const auto any = std::nullopt;
  const http_case rows[] = {
      {"plain", ok + "Content-Length: 9\r\n\r\nh\x00\r\nabcde"s, http_done, "h\x00\r\nabcde"s},
      {"many reads", ok + "Content-Length: 1000000\r\n\r\n" + digits, http_done, digits},
      {"a head of 100 and one without a status line first",
       "HTTP/1.1 100 Continue\r\nX: y\r\n\r\nX: y\r\n\r\nHTTP/1.0 200 OK\r\n" + of_two + "ok",
       http_done, "ok"},
      {"of two equal keys the first one counts",
       ok + "Content-Length: 2\r\nContent-Length: 50\r\n\r\nok", http_done, "ok"},
      {"lines that are no key and value; a lone CR or LF ends none",
       ok + "no colon\r\nEmpty: \r\nTight:value\r\nX: a\rContent-Length: 9\n\r\n" + of_two + "ok",
       http_done, "ok"},
      {"an empty body is complete with its head", ok + "Content-Length: 0\r\n\r\n", http_done, "",
       nullptr, true},
      {"the last good status", "HTTP/1.1 299 Odd\r\n" + of_two + "ok", http_done, "ok"},
      {"the first bad one, which names another place",
       "HTTP/1.1 300 Many\r\nLocation: http://elsewhere.example/\r\n" + of_two + "ok", http_failed},
      {"a refusal is fetched and then judged", "HTTP/1.1 404 Not Found\r\n" + of_two + "no",
       http_failed, "no", &not_found},
      {"more body than announced is a failure, not a file", ok + of_two + "abc", http_failed, any,
       &too_long},
      {"a length that is no number reads as 0", ok + "Content-Length: many\r\n\r\nabc",
       http_failed},
      {"the largest length that is believed", ok + "Content-Length: 2147483647\r\n\r\nabc", silence,
       "abc", nullptr, true},
      {"refused at once", ok + "Content-Length: 2147483648\r\n\r\nabc", http_failed, any,
       &too_large, true},
      {"negative", ok + "Content-Length: -1\r\n\r\nabc", http_failed, any, &too_large, true},
      {"a head of nearly 64 KB", ok + "X: " + std::string(65400, 'x') + "\r\n" + of_two + "ok",
       http_done, "ok"},
      {"a line that never ends does not fill the memory", ok + "X: " + std::string(70000, 'x'),
       http_failed, any, &no_end, true},
      {"nor do heads of 100 for ever", endless, http_failed, any, nullptr, true},
      {"no answer", "", silence},
      {"a stop in the head", ok + "Content-Le", silence, any, nullptr, true},
      {"nothing behind the code, so no status line", "HTTP/1.1 200\r\n" + of_two + "ok", silence},
      {"without a length nothing is complete", ok + "\r\nall there is", silence, "all there is"},
      {"chunks give no length", ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n",
       silence},
      {"the key counts in its usual case alone", ok + "content-length: 3\r\n\r\nabc", silence,
       "abc"},
      {"a close before the end says nothing", ok + of_two + "o", silence, "o"},
  };
  for (const http_case& row : rows)
    run_case(row, {row.sent});
}

TEST_F(NetHttp, AnAnswerInPieces) {
  const std::string whole =
      "HTTP/1.1 100 Continue\r\n\r\n" + ok + "Content-Length: 7\r\n\r\n\r\n\r\n123";
  std::vector<std::string> bytes;
  for (const char byte : whole)
    bytes.emplace_back(1, byte);
  run_case({"byte by byte", "", http_done, "\r\n\r\n123"}, bytes);
  for (size_t at = 1; at < whole.size(); ++at) {
    run_case({"cut at " + std::to_string(at), "", http_done, "\r\n\r\n123"},
             {whole.substr(0, at), whole.substr(at)});
  }
}

// --- net_check ----------------------------------------------------------------------------------

TEST_F(NetHttp, ARefusedConnectionIsReportedOnceASecond) {
  const log_file log;
  use_proxy_port(closed_port());
  const std::string local = scratch_folder() + "x";
  const std::string once = report(local, host, "/x", {1, 0, 0, 3, 0, " (#-1)"});
  std::string expected;
  for (const auto& [clock, told] : {std::pair{5.0f, once}, {5.5f, ""}, {6.0f, once}}) {
    xtim.now_sec = clock;
    EXPECT_EQ(until_over([&] { return http.net_check(3, host, "/x", local); }), http_failed);
    expected += told;
    EXPECT_EQ(log.content(), expected) << clock;
  }
}

// With the network down a transfer is tried again at once, over and over.
TEST_F(NetHttp, AFailedLookupIsReportedAndNotRepeatedAtOnce) {
  const log_file log;
  const std::string failed =
                        report("/nowhere", "no such host", "/x y", {0, 0, 1, 0, 20011, " (#0)"}),
                    lookup = "Translated server no such host to IP addy: 0.0.0.0 and port = 80\n";
  const struct {
    float clock;
    std::string log;
  } rows[] = {{100.0f, lookup + failed},
              {100.0f, ""},
              {102.0f, failed},
              {102.5f, lookup},
              {103.0f, failed}};
  std::string expected;
  for (const auto& row : rows) {
    xtim.now_sec = row.clock;
    EXPECT_EQ(http.net_check(0, "no such host", "/x y", "/nowhere"), http_failed) << "at once";
    expected += row.log;
    EXPECT_EQ(log.content(), expected) << row.clock;
  }
}

// Blanks of the path are escaped, a "%" goes out as it is; the conventions are checked at the start
// alone.
TEST_F(NetHttp, TheRequest) {
  scripted_server server([](const std::string&) { return whole_answer("fine"); });
  use_proxy_port(server.port());
  const std::string local = scratch_folder() + "x";
  int result = http.net_check(0, host, "/a b/c %25d.zip", local);
  if (result == http_running) {
    result = until_over([&] { return http.net_check(0, "host/", "x", local); });
  }
  EXPECT_EQ(result, http_done);
  EXPECT_EQ(bytes_of(local), "fine");
  EXPECT_EQ(server.requests()[0],
            "GET http://www.skyvane.example/a%20b/c%20%25d.zip HTTP/1.1\r\nConnection: close\r\n"
            "Host: www.skyvane.example\r\nUser-agent: Installer-APL/10r1\r\n\r\n");
}

TEST_F(NetHttp, ALocalFileThatCannotBeWritten) {
  const log_file log;
  scripted_server server([](const std::string&) { return whole_answer(std::string(300000, 'x')); });
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
  // So little that only the close meets the full disk.
  scripted_server little(
      [](const std::string&) { return whole_answer("small enough for the buffer"); });
  use_proxy_port(little.port());
  EXPECT_EQ(until_over([&] { return http.net_check(0, host, "/x", "/dev/full"); }), http_failed);
}

TEST_F(NetHttp, ProxyRules) {
  for (const char* proxy : {"proxy", ""}) {
    http._proxy_host = proxy;
    http._proxy_port_int = 65536 + 3128;  // of which the low 16 bits count
    EXPECT_EQ(UseProxy(host, 80), *proxy != '\0') << proxy;
    EXPECT_STREQ(ProxyHost(host, 80).c_str(), *proxy ? proxy : host);
    EXPECT_EQ(ProxyPort(host, 80), *proxy ? 3128 : 80) << proxy;
  }
}

// --- down_class ---------------------------------------------------------------------------------

void run_until_closed(down_class& down) {
  until_over([&] {
    down.DoProcessing();
    return down.state() == down_class::state_closed || down.error() != 0 ? 1 : 0;
  });
}

TEST_F(NetDown, DirectFormsOfTheRequest) {
  scripted_server server([](const std::string&) { return whole_answer("kept in memory"); });
  const auto port = static_cast<unsigned short>(server.port());
  down_class get("127.0.0.1", port, "/a b  c%", false,
                 {{"Zeta", "1"}, {"Host", "h\r\nEvil: yes"}, {"Alpha", "2"}}, nullptr, 0, "");
  EXPECT_EQ(get.response_code(), -1);
  run_until_closed(get);
  EXPECT_EQ(std::string(get.incoming().begin(), get.incoming().end()), "kept in memory");
  EXPECT_EQ(get.received(), 0);
  EXPECT_EQ(get.content_length(), 14);
  EXPECT_EQ(get.response_headers().at("Content-Length"), "14");
  EXPECT_EQ(get.response_code(), 200);
  EXPECT_EQ(get.response_text(), "OK");
  ASSERT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(server.requests()[0],
            "GET /a%20b%20%20c% HTTP/1.1\r\nAlpha: 2\r\nHost: hEvil: yes\r\nZeta: 1\r\n\r\n")
      << "sorted keys, and no line end from a value";
}

}  // namespace

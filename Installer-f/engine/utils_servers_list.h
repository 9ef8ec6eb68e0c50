// The mirrors, and the file that lists them. Main thread only.
//
// serverlist9.txt: three header lines ("A" or "I"; "820 version"; "SERVERS"), then keyword lines:
//   BETA folder      release folder of the test release, taken if stg.beta_flag is set
//   FINAL folder     the same of the public release, taken if it is clear
//   SERVER host      a mirror; the path and the description follow, each on its own line
//   ENDOFLIST        stops the reading, as the end of the file does
// Lines with any other keyword are skipped; the about box reads some of them. A mirror whose host
// or path no server can have is left out, and a release that is no plain folder's name; the log
// says so.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "corekit/files/sign.h"

inline constexpr int server_limit = 10;                   // mirrors that count
inline constexpr int64_t server_list_budget = 1'000'000;  // bytes of a list

// The mirrors, 0 to stg.server_count - 1. One slot more than count: every entry past the tenth is
// read into it, each over the one before.
extern std::string server_name[server_limit + 1];  // host, never with a "/" at its end
extern std::string server_path[server_limit + 1];  // release folder, "/" at both ends
extern std::string server_desc[server_limit + 1];  // for the user; may hold a help text

// Reads a list file into the arrays, install_name and stg.server_count, which is left alone if it
// is refused or foreign.
enum server_list_result {
  list_foreign = -1,  // not a list of ours, or too large, or it cannot be read
  list_refused = 0,   // one of ours, in another version of the format
  list_read = 1,
  list_lacks_beta = 2,  // read, but stg.beta_flag is set and only a public release is there
  list_untrusted = 3    // one of ours, but not signed as it must be: list_verdict tells how
};
int read_server_list(const std::string& path);
// What the last list's signature was, where keys are built in; sign_good without.
sign_verdict list_verdict();

// Whether a release may have this name: a folder's name on a server or a disc, and the default for
// one on the hard drive, so that it leads nowhere else.
bool release_is_plain(std::string_view name);

// The mirror for a draw `fraction` in [0, 1): the early entries get more users than the late ones
// (of four, the first 40 % and the last 17 %). 0 if there is none.
int biased_server(float fraction, int count);
// A whole number from 0 to count - 1, each as likely. A count below 1 is a fatal alert.
int uniform_server(int count);
// Moves stg.server_index to a mirror drawn with that bias.
void draw_server();

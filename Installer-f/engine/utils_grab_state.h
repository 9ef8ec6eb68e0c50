// Where the network transfer stands: what grab_files and its streams share with the pages. Main
// thread.
#pragma once

#include <cstdint>
#include <string>

inline constexpr int stream_limit = 4;
inline constexpr int first_stream_slot = 2;  // HTTP slot of stream 0

// State of the transfer. Written by grab_files and grab_reset, read by the pages.
struct transfer_record {
  int32_t next_file = 0;                        // sim_info index to hand out next
  int32_t finished = 0;                         // every live stream has passed the end of the table
  int32_t stream_active[stream_limit] = {};     // the stream is live
  int32_t stream_take_next[stream_limit] = {};  // it takes a new file at its next step
  int32_t stream_file[stream_limit] = {};       // the sim_info index that it works on
  double start_time = 0;                        // frame clock when the transfer began, seconds
  float in_flight_kb = 0;  // share of zip_kb received of files being fetched; rebuilt at each call
  // Doubles: behind 16 GB a float would round each small file that is added to it.
  double done_zip_kb = 0;  // zip_kb of all finished files
  double done_raw_kb = 0;  // raw_kb of all finished files
};
// Always called plainly `next`; in a page, `screen.next` is another thing: where its Next button
// leads.
extern transfer_record next;

// What all transfers of this run have done and met; only grows. Written by the stream step.
struct transfer_totals {
  int fetched = 0;  // files unpacked into their place
  int deleted = 0;  // files that the release has dropped
  int failed = 0;   // fetches that failed, each of which is tried again
};
extern transfer_totals grab_totals;

extern std::string crnt_file_name;  // name of the file visited last
extern std::string crnt_file_path;  // its path on the server

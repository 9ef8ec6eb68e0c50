// The network transfer: up to four downloads at a time from a mirror, each file unpacked into its
// place. grab_files is polled by the transfer page for some 20 milliseconds a frame. Main thread.
//
// A stream takes a file, fetches its archive, has it unpacked by a worker, and takes the next. A
// failure draws another mirror and starts the file again, for ever: there is no resume within a
// file. The number of live streams follows the measured speed.
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
  float start_time = 0;                         // frame clock when the transfer began, seconds
  float in_flight_kb = 0;  // share of zip_kb received of files being fetched; rebuilt at each call
  float done_zip_kb = 0;   // zip_kb of all finished files
  float done_raw_kb = 0;   // raw_kb of all finished files
};
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

// One step of each live stream. 1 when the job is over, with every file done or with
// stg.extract_failed set; 0 when more calls are needed.
int grab_files();

// Waits until one of the live streams can move, by the network, by a worker, or because a mirror
// has rested; at most `milliseconds`, and not at all if one of them waits for nothing. For a page
// that would otherwise ask in vain until its time is up.
void grab_wait(int milliseconds);

// Readies `next` for a new transfer, which starts with two streams. What the streams still fetch is
// given up, what they unpack is finished and booked in sim_info first. Leaves next.finished and
// stg.extract_failed as they are.
void grab_reset();

// Ends a transfer with its threads, as the program ends. Safe without one.
void grab_kill();

// Deletes the archive left beside the place of each live stream's file, if it is one of ours: with
// that very file in it, and nothing else. Before grab_reset.
void grab_discard_partial();

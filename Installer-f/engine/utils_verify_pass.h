// What the workers of a verification share.
//
// A task brings its histories in: their files are opened in the manifest's order, and wait. Each
// worker digests a file in each of its lanes, and when one ends, takes the largest that waits, of
// whichever task. While few files wait and another task is there, a worker leaves its lanes as they
// stand, to be taken up by whoever comes next, and ends its task in order to bring that one in: a
// task lasts until its files are in the workers' hands, not until they are done, so no file that
// takes long holds up the others. Once there are no tasks left, a worker goes on to the end of all
// files; one that runs out of them gets half of another's.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Installer-f/engine/utils_md5_lanes.h"
#include "corekit/files/io_handle.h"

// A file that waits to be digested.
struct waiting_file {
  uint64_t size = 0;    // bytes
  uint32_t ahead = 0;   // of them, those that the disk was told to have ready
  int32_t history = 0;  // whose current version it is
  io_handle handle;     // open at its start
};

// A file that is being digested. Between two blocks it may go to another thread.
struct file_in_hand {
  int32_t history = 0;
  io_handle handle;                   // empty once all is read
  uint64_t size = 0;                  // bytes
  uint64_t left = 0;                  // of them, not yet read
  std::unique_ptr<uint8_t[]> buffer;  // what was read last
  size_t blocks = 0;                  // in it, still to be digested
  uint32_t chain[4] = {};             // while it is in no lane: the digest so far,
  const uint8_t* at = nullptr;        // and where in the buffer it goes on
};

// A worker's lanes: lane i digests files[i].
struct lane_set {
  MD5_lanes lanes = {};
  std::vector<file_in_hand> files;
  std::vector<std::unique_ptr<uint8_t[]>> spare;  // buffers of files that are done
};

// How many of `processors` may work side by side: each has files open, and the system has a limit.
int verify_workers(int processors);

class verify_pass {
 public:
  // Over the tree at `root`, which ends in "/" and holds app_path.
  verify_pass(const std::string& root, int workers, const MD5_lane_code& code);

  const std::string root;
  const int workers;
  const MD5_lane_code& code;

  // --- the main thread's
  // --------------------------------------------------------------------------

  void announce_task();  // before it is handed out
  void abandon();        // has every worker end its task at once; what is not done gets no finding

  // --- the workers'
  // -------------------------------------------------------------------------------

  // Begins and ends a task, with lanes of a worker that has left them, or lanes without files.
  std::unique_ptr<lane_set> begin_task();
  void end_task(std::unique_ptr<lane_set> set);

  // Whether the caller should end its task to begin another. No two do so for one.
  bool claim_task();

  void add(std::vector<waiting_file>& files);                // to those that wait
  void take(size_t room, std::vector<file_in_hand>& files);  // up to `room` of them
  void give(std::vector<file_in_hand>& files);               // to a worker that has none

  // For a worker that has none. False when it should end its task: to begin another, or because all
  // is done.
  bool wait_for_files(std::unique_ptr<lane_set>& set);

  size_t lane_count() const { return lanes_; }  // of the code's, those that a worker uses
  bool is_abandoned() const { return abandoned_; }
  bool has_files() const { return files_waiting_ > 0; }
  bool has_idle_workers() const { return idle_ > 0; }

  std::atomic<uint64_t> bytes_read = 0;
  std::atomic<bool> is_cold = false;  // files have to come from the disk

 private:
  size_t lanes_ = 1;
  int most_waiting_ = 0;  // files: with more, no other task is brought in

  std::atomic<bool> abandoned_ = false;
  std::atomic<int> tasks_waiting_ = 0;    // announced, and neither claimed nor begun
  std::atomic<int> files_waiting_ = 0;    // in waiting_ and returned_
  std::atomic<bool> is_filling_ = true;   // tasks are brought in, from half of most_waiting_ to all
  std::atomic<int64_t> bytes_ahead_ = 0;  // sum of waiting_'s
  std::atomic<int> idle_ = 0;             // workers that wait for files

  std::mutex lock_;                              // of all below; never held while files are read
  std::condition_variable changed_;              // there is something for a worker that waits
  std::vector<waiting_file> waiting_;            // a heap by size
  std::vector<file_in_hand> returned_;           // given away by a worker that has more
  std::vector<std::unique_ptr<lane_set>> sets_;  // that no worker has; those with files are last
  int claims_ = 0;  // of tasks by workers that have left theirs to begin another
  int busy_ = 0;    // workers at a task that do not wait
};

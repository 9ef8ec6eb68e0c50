// The workers that unpack what the streams have fetched, while the sockets go on.
//
// A stream hands its archive over, waits, and takes it back unpacked; so there is at most one for
// each stream. The workers look at no global, and of the manifest's table at nothing that the
// transfer writes: what they need was put into the task when it was made. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Installer-f/engine/utils_manifest_sig.h"
#include "Installer-f/engine/utils_place.h"
#include "corekit/base/UTL_workers.h"

// One archive on its way into its place.
class unpack_task : public UTL_work_task {
 public:
  void do_it() override;
  int check_error(std::string& message) override;  // the code; it has no message of its own

  // Set by the stream.
  int stream = 0;
  int file = 0;               // index into sim_info
  std::vector<char> archive;  // or, for a large one,
  std::string archive_path;   // its file, which is deleted, whatever comes of it
  uint64_t most_archive = 0;  // bytes that it may have
  std::shared_ptr<gate_class> gate;
  std::string path;  // of the file, below the destination
  file_sig sig_want;
  uint64_t most = 0;                  // bytes that the file may become
  const file_sum* sum = nullptr;      // what the archive must be; stands until all tasks are back
  std::function<bool()> may_replace;  // see place_order

  place_result result;  // set by the worker
};

extern UTL_worker_threads* unpack_pool;  // null when idle

void unpack_enqueue(std::unique_ptr<unpack_task> task);  // starts the threads, if need be
std::unique_ptr<unpack_task> unpack_take_finished();     // null for none
std::unique_ptr<unpack_task> unpack_wait_finished();     // waits for one; null once none is out
int unpack_descriptor();                                 // to be polled; -1 without threads
void unpack_end();                                       // ends the threads. REQUIRES: none is out

// The disc pipeline: every file goes through two stages, a copy of its archive from the disc by one
// thread, so that the drive's head does not jump, and its unpacking by as many threads as there are
// processors.
//
//   sim_info -> copy_pool (1 thread) -> unzip_pool (one a processor) -> its place
//
// Archives are copied into memory; when those on the way have grown to 64 MB, to the hard drive.
//
// The main thread feeds, hands over and reaps, once a frame, and never waits but in
// install_files_kill. The limits of the two pools bound how many archives are on the way.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "corekit/base/UTL_workers.h"
#include "corekit/files/io_gate.h"

struct file_sum;
struct file_version_struct;

inline constexpr int disc_queue_limit = 30;  // tasks that each pool holds at most

extern UTL_worker_threads* copy_pool;   // null when idle
extern UTL_worker_threads* unzip_pool;  // null when idle

enum install_step : int {
  install_working = 0,     // call again next frame
  install_done = 1,        // all files are through; the pools are gone
  install_needs_disc = 2,  // sim_info[index] lies on another disc; the pools are idle
  install_failed = 3,      // see install_files_get_error; calling again goes on with the rest
};

// One step of the pipeline: installs the files that selection has marked, in the manifest's order,
// as far as they lie on disc number `disk` at dvd_path. `index` is the next history to hand out and
// belongs to the page: 0 at the start of a job. The folders must exist. Returns an install_step.
// While a job is on, sig_have and sig_match of what it installs belong to the workers, and sim_info
// must not be read anew.
int install_files(int& index, int disk);

// A sign of life: bytes that the pools have copied and unpacked since the program began, rounded.
uint64_t install_bytes();

// Abandons the pipeline: what is in hand is finished, what is only queued is dropped. Safe without
// one.
void install_files_kill();

extern int install_err_num;          // last failure's code, 0 none
extern std::string install_err_msg;  // and its message

// The last failure's code, with its message in `message`; clears both.
int install_files_get_error(std::string& message);

// --- one file ------------------------------------------------------------------------------------

// Its strings are put together at creation, from what the globals say then: a worker looks at none
// of them. The same object goes through both pools.
class dvd_unpack_task : public UTL_work_task {
 public:
  // `index` is that of the history to install; `copy` and `temp` are the gates of the destination
  // and of temp_path, null if there is no such folder. Main thread.
  dvd_unpack_task(int32_t index, std::shared_ptr<gate_class> copy,
                  std::shared_ptr<gate_class> temp);
  ~dvd_unpack_task() override;

  void do_it() override;
  int check_error(std::string& message) override;

  int32_t file_index;      // into sim_info
  int32_t phase = 0;       // 0 copy to do, 1 unpack to do
  std::string source;      // the archive on the disc
  std::string temp_file;   // the archive on the hard drive, if it goes by there
  std::string suffix;      // ".zip" or ".7z"
  std::string dest_file;   // the file's place
  int32_t error_code = 0;  // 0 or the failure's code

 private:
  void copy_archive();
  int copy_from(int disc_file);
  void unpack_archive();
  void drop_archive();

  size_t base_;  // characters of dest_file that are the destination's
  std::shared_ptr<gate_class> copy_, temp_;
  file_version_struct* record_;    // the worker writes its sig_have and sig_match
  uint64_t most_archive_;          // bytes
  const file_sum* sum_ = nullptr;  // what the archive must be; null: anything
  std::unique_ptr<unsigned char[]> archive_;
  size_t archive_size_ = 0;
  bool in_temp_ = false;
  enum { went_well, copy_failed, unpack_failed, not_begun } outcome_ = went_well;
};

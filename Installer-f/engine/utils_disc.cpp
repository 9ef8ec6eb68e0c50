// The disc pipeline. Steps of install_files: make the pools; pass over what is not wanted; feed the
// copy pool; hand over what it has copied to the unpack pool; reap that, keeping the last failure;
// see whether the job is done or waits for another disc.
//
// Main thread: copy_pool, unzip_pool, install_err_num, install_err_msg, and every task while it is
// in no pool. Pool threads: the task in hand, and sig_have and sig_match of its history.

#include "Installer-f/engine/utils_disc.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <utility>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_guard.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_place.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

UTL_worker_threads* copy_pool = nullptr;
UTL_worker_threads* unzip_pool = nullptr;

int install_err_num = 0;
std::string install_err_msg;

namespace {

// Archives in memory, between the two pools and in them. The address is given out before the bytes
// are there, so several threads may be counting.
constexpr size_t most_in_memory = 64u << 20;
std::atomic<size_t> in_memory = 0;

// Bytes, of archives when they are copied and of files when they are unpacked.
std::atomic<uint64_t> worked_on = 0;

// Of the copy and of temp_path, as long as there are pools.
std::shared_ptr<gate_class> job_gate, temp_gate;

// Set while the pipeline is being given up, so that its tasks begin no further copy.
std::atomic<bool> abandoned = false;

int file_count() {
  return static_cast<int>(sim_info.size());
}

// Files that need nothing ask for no queue slot and for no disc.
void pass_over_unwanted(int& index) {
  while (index < file_count() && !sim_info[index].current().need_fetch)
    ++index;
}

// Strictly in the manifest's order, which is the order of the discs.
void feed(int& index, int disk) {
  if (index >= file_count() || !copy_pool->has_free_slot()) return;
  job_gate = copy_gate();
  while (index < file_count() && copy_pool->has_free_slot()) {
    if (sim_info[index].current().disk != disk) break;
    copy_pool->enqueue_task(new dvd_unpack_task(index, job_gate, temp_gate));
    ++index;
    pass_over_unwanted(index);
  }
}

void hand_over() {
  while (unzip_pool->has_free_slot()) {
    UTL_work_task* const task = copy_pool->check_retired_tasks();
    if (!task) return;
    unzip_pool->enqueue_task(task);
  }
}

// Takes the finished tasks back; false if there was none. A failure among them is kept although
// others went well; all are in the log, as the page tells the user of the last one only.
bool reap() {
  bool any = false;
  while (UTL_work_task* const task = unzip_pool->check_retired_tasks()) {
    any = true;
    std::string message;
    if (const int code = task->check_error(message)) {
      // The message has the name of the archive, which tells nobody which file is missing.
      xer << "WARNING: " << static_cast<dvd_unpack_task*>(task)->dest_file << ": " << message
          << " (" << error_str(code) << ")\n";
      xer.flush();  // a run that goes wrong may not end well either
      install_err_num = code;
      install_err_msg = message;
    }
    delete task;
  }
  if (any && job_gate) log_gate_notes(*job_gate);
  return any;
}

void end_pools() {
  delete copy_pool;
  delete unzip_pool;
  copy_pool = nullptr;
  unzip_pool = nullptr;
  if (job_gate) log_gate_notes(*job_gate);
  job_gate = temp_gate = nullptr;
}

void open_temp() {
  temp_gate = std::make_shared<gate_class>();
  if (temp_gate->open(temp_path) != 0) temp_gate = nullptr;
}

}  // namespace

int install_files(int& index, int disk) {
  if (!copy_pool) open_temp();
  if (!copy_pool) copy_pool = new UTL_worker_threads(1, disc_queue_limit);
  if (!unzip_pool) unzip_pool = new UTL_worker_threads(UTL_count_processors(), disc_queue_limit);

  if (index < 0) index = 0;
  pass_over_unwanted(index);
  feed(index, disk);
  hand_over();
  const bool reaped = reap();
  if (install_err_num != 0) return install_failed;

  if (reaped || copy_pool->count_total_tasks() > 0 || unzip_pool->count_total_tasks() > 0) {
    return install_working;
  }
  if (index >= file_count()) {
    end_pools();
    return install_done;
  }
  return sim_info[index].current().disk != disk ? install_needs_disc : install_working;
}

uint64_t install_bytes() {
  return worked_on;
}

void install_files_kill() {
  if (!copy_pool && !unzip_pool) return;
  abandoned = true;
  if (copy_pool && unzip_pool) {
    while (UTL_work_task* const task = copy_pool->wait_retired_tasks())
      unzip_pool->enqueue_task(task);
    while (UTL_work_task* const task = unzip_pool->wait_retired_tasks())
      delete task;
  }
  end_pools();
  abandoned = false;
}

int install_files_get_error(std::string& message) {
  const int code = install_err_num;
  message = install_err_msg;
  install_err_num = 0;
  install_err_msg.clear();
  return code;
}

// --- one file ------------------------------------------------------------------------------------

dvd_unpack_task::dvd_unpack_task(int32_t index, std::shared_ptr<gate_class> copy,
                                 std::shared_ptr<gate_class> temp)
    : file_index(index),
      copy_(std::move(copy)),
      temp_(std::move(temp)),
      record_(&sim_info[index].current()) {
  suffix = suffix_for_file(index);
  source.append(dvd_path)
      .append(install_name)
      .append("/")
      .append(record_->path.view())
      .append(suffix);
  // The suffix keeps its dot behind that of the format, as the name always had it.
  temp_file.append(temp_path)
      .append(record_->sig_want.text())
      .append(str_format("_%d.%s", file_index, suffix.c_str()));
  base_ = dest_dir_path.size();
  dest_file = record_->sig_have == sig_none ? install_location(record_->path)
                                            : location_on_disk(record_->path);
  // The manifest tells the size of a zip. Other packers may do worse, but not worse than not
  // packing.
  most_archive_ = place_budget(record_->zip_kb);
  if (suffix != ".zip") most_archive_ = std::max(most_archive_, 2 * place_budget(record_->raw_kb));
  sum_ = trust_sum(file_index);
  if (sum_) most_archive_ = sum_->archive_bytes;
}

dvd_unpack_task::~dvd_unpack_task() {
  drop_archive();
}

void dvd_unpack_task::do_it() {
  if (phase == 0) {
    phase = 1;
    copy_archive();
  } else {
    unpack_archive();
  }
}

void dvd_unpack_task::copy_archive() {
  if (abandoned) {
    outcome_ = not_begun;
    return;
  }
  if (source.size() > path_limit) {
    error_code = ENAMETOOLONG;
  } else {
    // Not waiting for the other end of a pipe.
    const io_handle file(
        open((app_path + source).c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    error_code = file ? copy_from(file.get()) : errno;
  }
  if (error_code != 0) outcome_ = copy_failed;
}

// Into memory if there is room for it, else to the hard drive.
int dvd_unpack_task::copy_from(int disc_file) {
  struct stat info;
  if (fstat(disc_file, &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return ENOENT;
  const uint64_t size = uint64_t(info.st_size);
  if (size > most_archive_) return EFBIG;
  if (in_memory.fetch_add(size) + size <= most_in_memory) {
    archive_ = std::make_unique_for_overwrite<unsigned char[]>(size);
    archive_size_ = size;
    size_t got = 0;
    if (const int code = io_read_all(disc_file, archive_.get(), size, got)) return code;
    worked_on += got;
    return got == size ? 0 : EIO;
  }
  in_memory -= size;
  if (!temp_) return ENOENT;
  in_temp_ = true;
  return temp_->put_copy(path_leaf(temp_file), disc_file, most_archive_, worked_on);
}

void dvd_unpack_task::unpack_archive() {
  // What failed before passes through here only to be reported.
  if (outcome_ == went_well) {
    const place_order order{std::string_view(dest_file).substr(base_), record_->sig_want,
                            place_budget(record_->raw_kb), sum_,
                            [this] { return guard_lets_go(dest_file, sim_info[file_index]); }};
    io_handle file;
    if (!copy_) {
      error_code = ENOENT;
    } else if (!in_temp_) {
      error_code = place_archive(*copy_, archive_.get(), archive_size_, order).code;
    } else if ((error_code = temp_->open_file(path_leaf(temp_file), file)) == 0) {
      error_code = place_archive_file(*copy_, file.get(), most_archive_, order).code;
    }
    if (error_code != 0) {
      outcome_ = unpack_failed;
    } else {
      // What was unpacked has been compared with its signature on the way.
      record_->sig_have = record_->sig_want;
      record_->sig_match = 1;
      worked_on += place_budget(record_->raw_kb);
    }
  }
  drop_archive();  // also after a failure: what is on the way is bounded
}

void dvd_unpack_task::drop_archive() {
  if (archive_) in_memory -= archive_size_;
  archive_.reset();
  if (in_temp_) temp_->remove_file(path_leaf(temp_file));
  in_temp_ = false;
}

int dvd_unpack_task::check_error(std::string& message) {
  message.clear();
  if (outcome_ == copy_failed) {
    message =
        tr("I was unable to copy the file ") + source + tr(" from the DVD to the hard drive.");
  } else if (outcome_ == unpack_failed) {
    message = tr("I was unable to unzip the file ") + temp_file + tr(" to the folder ") +
              std::string(path_folder(dest_file)) + ".";
  }
  return error_code;
}

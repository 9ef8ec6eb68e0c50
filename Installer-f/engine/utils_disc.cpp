// The disc pipeline. Steps of install_files: make the pools; pass over what is not wanted; feed the
// copy pool; hand over what it has copied to the unpack pool; reap that, keeping the last failure;
// see whether the job is done or waits for another disc.
//
// Main thread: copy_pool, unzip_pool, install_err_num, install_err_msg, and every task while it is
// in no pool. Pool threads: the task in hand, and sig_have and sig_match of its history.

#include "Installer-f/engine/utils_disc.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_unpack.h"
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

constexpr int code_bad_archive = 20002;  // "We were unable to read from a zip file..."

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
  while (index < file_count() && copy_pool->has_free_slot()) {
    if (sim_info[index].current().disk != disk) return;
    copy_pool->enqueue_task(new dvd_unpack_task(index));
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
      xer << "WARNING: " << message << " (" << error_str(code) << ")\n";
      xer.flush();  // a run that goes wrong may not end well either
      install_err_num = code;
      install_err_msg = message;
    }
    delete task;
  }
  return any;
}

void end_pools() {
  delete copy_pool;
  delete unzip_pool;
  copy_pool = nullptr;
  unzip_pool = nullptr;
}

}  // namespace

int install_files(int& index, int disk) {
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

void install_files_kill() {
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

dvd_unpack_task::dvd_unpack_task(int32_t index)
    : file_index(index), base_(dest_dir_path.size()), record_(&sim_info[index].current()) {
  suffix = suffix_for_file(index);
  source.append(dvd_path).append(install_name).append("/").append(record_->path).append(suffix);
  // The suffix keeps its dot behind that of the format, as the name always had it.
  temp_file.append(temp_path)
      .append(record_->sig_want)
      .append(str_format("_%d.%s", file_index, suffix.c_str()));
  dest_file = install_location(record_->path);
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
  // A longer path would end the program in the file services; here it is one file that fails.
  const size_t longest = std::max({source.size(), temp_file.size(), dest_file.size()});
  error_code = longest > path_limit ? ENAMETOOLONG : copy_file(source, temp_file);
  if (error_code != 0) outcome_ = copy_failed;
}

void dvd_unpack_task::unpack_archive() {
  // What failed before passes through here only to be reported.
  if (outcome_ != went_well) return;
  // Several threads may be at work in one folder.
  const std::string part = std::string(part_name) + "_" + std::to_string(file_index);
  int chmod_code = 0;
  error_code = unpack_into_place(temp_file, dest_file, base_, part, record_->sig_want, chmod_code);
  if (error_code == unpack_wrong_file) error_code = code_bad_archive;
  // Also after a failure: what is on the hard drive is bounded by the queues.
  delete_file(temp_file);
  if (error_code != 0) {
    outcome_ = unpack_failed;
    return;
  }
  // Nothing is hashed again: a repair does that.
  record_->sig_have = record_->sig_want;
  record_->sig_match = 1;
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

// What the workers of a verification share: the files that wait, and the lanes that nobody has.
//
// Any thread. The lock is held for a look at the lists and never while a file is read or digested.

#include "Installer-f/engine/utils_verify_pass.h"

#include <sys/resource.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// Enough to go on with while the main thread draws a picture, and for the largest to come first.
constexpr int usual_waiting = 512;
constexpr int64_t most_ahead = 64 << 20;  // bytes that the disk has to have ready

// Open files: of the rest of the program, and beyond most_waiting_ by each worker's next task.
constexpr int open_elsewhere = 128;
constexpr int open_by_worker = 12;

bool is_smaller(const waiting_file& a, const waiting_file& b) {
  return a.size < b.size;
}

int open_file_limit() {
  rlimit limit = {1024, 1024};
  getrlimit(RLIMIT_NOFILE, &limit);
  return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 1 << 20));
}

}  // namespace

int verify_workers(int processors) {
  constexpr int files_waiting = 4;  // of each worker, at least
  return std::clamp((open_file_limit() - open_elsewhere) / (open_by_worker + files_waiting), 1,
                    processors);
}

verify_pass::verify_pass(const std::string& root_, int workers_, const MD5_lane_code& code_)
    : root(root_), workers(workers_), code(code_) {
  const int handles = std::max(open_file_limit() - open_elsewhere - workers * open_by_worker, 2);
  const int lanes = std::clamp(handles / 2 / workers, 1, code.lanes);
  lanes_ = static_cast<size_t>(lanes);
  most_waiting_ = std::clamp(handles - workers * lanes, 1, usual_waiting);
}

void verify_pass::announce_task() {
  const std::lock_guard<std::mutex> hold(lock_);
  ++tasks_waiting_;
  changed_.notify_one();
}

void verify_pass::abandon() {
  const std::lock_guard<std::mutex> hold(lock_);
  abandoned_ = true;
  changed_.notify_all();
}

bool verify_pass::claim_task() {
  // In bursts: each task that ends wakes the main thread, which in a window costs a frame.
  if (files_waiting_ >= most_waiting_) is_filling_ = false;
  if (files_waiting_ <= most_waiting_ / 2) is_filling_ = true;
  if (tasks_waiting_ == 0 || !is_filling_ || bytes_ahead_ >= most_ahead) return false;
  const std::lock_guard<std::mutex> hold(lock_);
  if (tasks_waiting_ == 0) return false;
  --tasks_waiting_;
  ++claims_;
  return true;
}

std::unique_ptr<lane_set> verify_pass::begin_task() {
  const std::lock_guard<std::mutex> hold(lock_);
  if (claims_ > 0) {
    --claims_;
  } else {
    --tasks_waiting_;
  }
  ++busy_;
  if (sets_.empty()) return std::make_unique<lane_set>();
  std::unique_ptr<lane_set> set = std::move(sets_.back());
  sets_.pop_back();
  return set;
}

void verify_pass::end_task(std::unique_ptr<lane_set> set) {
  const std::lock_guard<std::mutex> hold(lock_);
  --busy_;
  const bool has_files = !set->files.empty();
  sets_.insert(has_files ? sets_.end() : sets_.begin(), std::move(set));
  // Of the last to go, those that wait learn that nothing more comes.
  if (busy_ == 0 || has_files) changed_.notify_all();
}

void verify_pass::add(std::vector<waiting_file>& files) {
  if (files.empty()) return;
  const std::lock_guard<std::mutex> hold(lock_);
  for (waiting_file& file : files) {
    bytes_ahead_ += file.ahead;
    waiting_.push_back(std::move(file));
    std::push_heap(waiting_.begin(), waiting_.end(), is_smaller);
  }
  files_waiting_ += static_cast<int>(files.size());
  files.clear();
  if (idle_ > 0) changed_.notify_all();
}

void verify_pass::take(size_t room, std::vector<file_in_hand>& files) {
  const std::lock_guard<std::mutex> hold(lock_);
  // No more than a fair share, so that the others need not wait to be given some.
  const size_t there = waiting_.size() + returned_.size();
  const size_t share = (there + static_cast<size_t>(workers) - 1) / static_cast<size_t>(workers);
  for (room = std::min(room, share); room > 0; --room) {
    --files_waiting_;
    if (!returned_.empty()) {
      files.push_back(std::move(returned_.back()));
      returned_.pop_back();
      continue;
    }
    std::pop_heap(waiting_.begin(), waiting_.end(), is_smaller);
    waiting_file from = std::move(waiting_.back());
    waiting_.pop_back();
    bytes_ahead_ -= from.ahead;
    file_in_hand& file = files.emplace_back();
    file.history = from.history;
    file.handle = std::move(from.handle);
    file.size = file.left = from.size;
  }
}

void verify_pass::give(std::vector<file_in_hand>& files) {
  const std::lock_guard<std::mutex> hold(lock_);
  files_waiting_ += static_cast<int>(files.size());
  std::move(files.begin(), files.end(), std::back_inserter(returned_));
  changed_.notify_all();
}

bool verify_pass::wait_for_files(std::unique_ptr<lane_set>& set) {
  std::unique_lock<std::mutex> hold(lock_);
  --busy_;
  ++idle_;
  if (busy_ == 0) changed_.notify_all();
  const auto left_with_files = [this] { return !sets_.empty() && !sets_.back()->files.empty(); };
  changed_.wait(hold, [&] {
    return files_waiting_ > 0 || left_with_files() || tasks_waiting_ > 0 || busy_ == 0 ||
           abandoned_;
  });
  --idle_;
  ++busy_;
  if (left_with_files()) {
    std::swap(set, sets_.back());
    std::rotate(sets_.begin(), sets_.end() - 1, sets_.end());
    return true;
  }
  if (files_waiting_ > 0) return true;
  if (tasks_waiting_ > 0) {
    --tasks_waiting_;
    ++claims_;
  }
  return false;
}

// A worker of the verification.
//
// Steps of a task: open its files, which gives each its size, or the finding at once where there is
// nothing to read; then, in turn, fill the free lanes, and digest in all of them until the first
// has come to the end of what was read of its file. Files are read in pieces that are small enough
// for those of all lanes to be in the processor's cache still when they are digested.
//
// Read, and not mapped: under a mapping, a file that is cut short by someone else and a sector that
// a disc cannot give are a bus error, which ends the program; here they are a file that cannot be
// read.
//
// Pool threads. Writes sig_have and sig_match of histories that were handed out; each of them by
// one thread.

#include "Installer-f/engine/utils_verify_worker.h"

#include <fcntl.h>
#include <sys/uio.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_verify_open.h"
#include "Installer-f/engine/utils_verify_pass.h"

namespace {

constexpr size_t piece_size = 32 * 1024;    // whole blocks
constexpr size_t ahead_size = 1024 * 1024;  // whole pieces

void write_finding(int32_t history, const file_sig& sig) {
  file_version_struct& current = sim_info[static_cast<size_t>(history)].current();
  current.sig_have = sig;
  current.sig_match = current.sig_have == current.sig_want;
}

void write_link_finding(int32_t history, const std::string& text) {
  MD5_state state;
  MD5Init(state);
  MD5UpdateWide(state, text.data(), static_cast<uint32_t>(text.size()));
  uint8_t digest[16];
  MD5Final(digest, state);
  write_finding(history, file_sig(digest));
}

// Has the disk fetch what comes next. Returns how many bytes that are.
uint32_t read_ahead(const io_handle& handle, uint64_t from, uint64_t size) {
  if (from >= size) return 0;
  const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(size - from, ahead_size));
  posix_fadvise(handle.get(), static_cast<off_t>(from), bytes, POSIX_FADV_WILLNEED);
  return bytes;
}

// For the time of one task.
class verify_worker {
 public:
  explicit verify_worker(verify_pass& pass) : pass_(pass), set_(pass.begin_task()) {}
  ~verify_worker() { pass_.end_task(std::move(set_)); }
  verify_worker(const verify_worker&) = delete;
  verify_worker& operator=(const verify_worker&) = delete;

  void run(int32_t first, uint32_t wanted);

 private:
  void bring_in(int32_t first, uint32_t wanted);
  void fill_lanes();
  void give_half();
  void digest();
  bool read_on(file_in_hand& file);
  void leave_lane(size_t lane);

  verify_pass& pass_;
  std::unique_ptr<lane_set> set_;
};

void verify_worker::run(int32_t first, uint32_t wanted) {
  bring_in(first, wanted);
  while (!pass_.is_abandoned()) {
    if (pass_.has_files() && set_->files.size() < pass_.lane_count()) fill_lanes();
    if (pass_.claim_task()) return;
    if (!set_->files.empty()) {
      digest();
      if (pass_.has_idle_workers() && !pass_.has_files()) give_half();
    } else if (!pass_.has_files() && !pass_.wait_for_files(set_)) {
      return;
    }
  }
}

void verify_worker::bring_in(int32_t first, uint32_t wanted) {
  tree_reader tree(pass_.root);
  std::vector<waiting_file> files;
  for (int32_t history = first; wanted != 0 && !pass_.is_abandoned(); ++history, wanted >>= 1) {
    if ((wanted & 1) == 0) continue;
    const std::string_view path = sim_info[static_cast<size_t>(history)].current().path;
    opened_file file = tree.open(installed_part(path));
    switch (file.kind) {
      case file_absent:
        write_finding(history, sig_none);
        break;
      case file_unreadable:
        write_finding(history, sig_unreadable);
        break;
      case file_link:
        write_link_finding(history, file.text);
        break;
      case file_plain:
        const uint32_t ahead = pass_.is_cold ? read_ahead(file.handle, 0, file.size) : 0;
        files.push_back({file.size, ahead, history, std::move(file.handle)});
    }
  }
  pass_.add(files);
}

void verify_worker::fill_lanes() {
  std::vector<file_in_hand> files;
  pass_.take(pass_.lane_count() - set_->files.size(), files);
  for (file_in_hand& file : files) {
    if (!file.buffer) {  // it has not begun
      std::copy_n(MD5_start_chain, 4, file.chain);
      if (!read_on(file)) {
        write_finding(file.history, sig_unreadable);
        continue;
      }
    }
    const int lane = static_cast<int>(set_->files.size());
    MD5_lane_load(set_->lanes, lane, file.chain);
    set_->lanes.at[lane] = file.at;
    set_->files.push_back(std::move(file));
  }
}

// To a worker that has none.
void verify_worker::give_half() {
  std::vector<file_in_hand> files;
  for (size_t count = set_->files.size() / 2; count > 0; --count) {
    const int lane = static_cast<int>(set_->files.size()) - 1;
    file_in_hand& file = files.emplace_back(std::move(set_->files.back()));
    set_->files.pop_back();
    MD5_lane_store(set_->lanes, lane, file.chain);
    file.at = set_->lanes.at[lane];
  }
  if (!files.empty()) pass_.give(files);
}

// Reads the next piece; at the end of the file, with the padding behind it. False when it cannot be
// read, be it because it has become shorter.
bool verify_worker::read_on(file_in_hand& file) {
  if (!file.buffer) {
    if (set_->spare.empty()) {
      file.buffer = std::make_unique_for_overwrite<uint8_t[]>(piece_size + MD5_padding);
    } else {
      file.buffer = std::move(set_->spare.back());
      set_->spare.pop_back();
    }
  }
  const size_t wanted = std::min<uint64_t>(file.left, piece_size);
  size_t got = 0;
  if (pass_.is_cold) {
    const uint64_t place = file.size - file.left;
    if (place % ahead_size == 0) read_ahead(file.handle, place + ahead_size, file.size);
  } else if (wanted > 0) {
    // Asks for what is in memory first. Once that is not all, the disk is told of files ahead.
    const iovec piece = {file.buffer.get(), wanted};
    const ssize_t at_once = preadv2(file.handle.get(), &piece, 1, -1, RWF_NOWAIT);
    if (at_once > 0) got = static_cast<size_t>(at_once);
    if (got < wanted) pass_.is_cold = true;
  }
  size_t more = 0;
  if (got < wanted) io_read_all(file.handle.get(), file.buffer.get() + got, wanted - got, more);
  if (got + more != wanted) return false;

  pass_.bytes_read += wanted;
  file.left -= wanted;
  size_t bytes = wanted;
  if (file.left == 0) {
    file.handle.close();
    bytes += MD5_pad(file.buffer.get() + wanted, file.size);
  }
  file.at = file.buffer.get();
  file.blocks = bytes / MD5_block;
  return true;
}

void verify_worker::digest() {
  std::vector<file_in_hand>& files = set_->files;
  size_t blocks = files[0].blocks;
  for (const file_in_hand& file : files)
    blocks = std::min(blocks, file.blocks);
  MD5_digest_lanes(pass_.code, set_->lanes, static_cast<int>(files.size()), blocks);

  for (size_t lane = files.size(); lane-- > 0;) {
    file_in_hand& file = files[lane];
    file.blocks -= blocks;
    if (file.blocks != 0) continue;
    if (!file.handle) {
      MD5_lane_store(set_->lanes, static_cast<int>(lane), file.chain);
      uint8_t digest[16];
      MD5_store(digest, file.chain);
      write_finding(file.history, file_sig(digest));
      leave_lane(lane);
    } else if (read_on(file)) {
      set_->lanes.at[lane] = file.at;
    } else {
      write_finding(file.history, sig_unreadable);
      leave_lane(lane);
    }
  }
}

// The last lane moves into the place of one whose file is done.
void verify_worker::leave_lane(size_t lane) {
  std::vector<file_in_hand>& files = set_->files;
  set_->spare.push_back(std::move(files[lane].buffer));
  if (lane + 1 != files.size()) {
    const int last = static_cast<int>(files.size()) - 1;
    uint32_t chain[4];
    MD5_lane_store(set_->lanes, last, chain);
    MD5_lane_load(set_->lanes, static_cast<int>(lane), chain);
    set_->lanes.at[lane] = set_->lanes.at[last];
    files[lane] = std::move(files.back());
  }
  files.pop_back();
}

}  // namespace

void verify_task_work(verify_pass& pass, int32_t first, uint32_t wanted) {
  verify_worker(pass).run(first, wanted);
}

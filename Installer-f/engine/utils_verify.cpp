// Verification: every wanted file of the copy is read and its signature compared.
//
// Steps: the main thread hands the histories out, ten to a task, as long as the pool has a free
// slot, and collects finished tasks; a task hashes its files one after the other and writes their
// findings; last, names that differ in case only are told apart. Which files are in hand is a
// task's own business; nothing else knows of it.
//
// Main thread: checksum_workers, pass_destination (which stands while a pool runs) and
// pass_abandoned. Pool threads: sig_have and sig_match of the histories of their task; the ranges
// are disjoint, and that is the table's whole protection.

#include "Installer-f/engine/utils_verify.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_thread.h"
#include "corekit/base/UTL_workers.h"
#include "corekit/base/exce.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_utils.h"

UTL_worker_threads* checksum_workers = nullptr;

namespace {

constexpr char source_name[] = "Installer-f/utils_verify";
constexpr int unreadable = 20006;
constexpr int task_files = 10;
constexpr size_t buffer_size = 256 * 1024;

// The destination as it was when the pass began: a page that the user leaves may set another one
// before it gives the pass up.
std::string pass_destination;

// Set while a pass is being given up, so that its tasks stop within the file in hand: the user
// waits.
std::atomic<bool> pass_abandoned = false;

// --- one file -----------------------------------------------------------------------------------

void write_signature(MD5_state& state, std::string& sig) {
  uint8_t digest[16];
  MD5Final(digest, state);
  constexpr char digits[] = "0123456789abcdef";
  sig.resize(2 * sizeof digest);
  for (size_t i = 0; i < sizeof digest; ++i) {
    sig[2 * i] = digits[digest[i] >> 4];
    sig[2 * i + 1] = digits[digest[i] & 15];
  }
}

// Not a link, which fails with ELOOP; not waiting for the other end of a FIFO.
int open_to_hash(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

// Digests the open file. Read in pieces and not mapped: under a mapping, a file that is cut short
// by someone else and a sector that a disc cannot give are a bus error, which ends the program;
// here they are a file that cannot be read. Reading is no slower, since the buffer stays in the
// cache.
bool digest_file(int handle, MD5_state& state) {
  struct stat info;
  if (fstat(handle, &info) != 0 || !S_ISREG(info.st_mode)) return false;

  thread_local std::unique_ptr<uint8_t[]> buffer;  // one for all files of a thread
  if (!buffer) buffer = std::make_unique_for_overwrite<uint8_t[]>(buffer_size);
  for (off_t left = info.st_size; left > 0;) {
    if (pass_abandoned) return false;
    const size_t wanted = static_cast<size_t>(std::min<off_t>(left, buffer_size));
    const ssize_t got = read(handle, buffer.get(), wanted);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    MD5UpdateWide(state, buffer.get(), static_cast<uint32_t>(got));
    left -= got;
  }
  return true;
}

// --- ten files ----------------------------------------------------------------------------------

class checksum_task : public UTL_work_task {
 public:
  // Histories `first` to `end` - 1. What is wanted is settled here, on the main thread, because the
  // settings that decide it belong to that thread.
  checksum_task(int32_t first, int32_t end) : first_(first), end_(end) {
    for (int32_t i = first_; i < end_; ++i)
      if (want_this_f(i, static_cast<int>(sim_info[i].versions.size()) - 1))
        wanted_ |= 1u << (i - first_);
  }

  void do_it() override {
    std::string location, sig;
    for (int32_t i = first_; i < end_ && !pass_abandoned; ++i) {
      if (!(wanted_ & 1u << (i - first_))) continue;
      file_version_struct& current = sim_info[i].current();
      location.assign(pass_destination).append(installed_part(current.path));
      sig = sig_none;
      calc_file_md5(location, sig);
      current.sig_have = sig;
      current.sig_match = current.sig_have == current.sig_want;
    }
  }

  // A file that cannot be read is a finding, not a failure.
  int check_error(std::string& message) override {
    message.clear();
    return 0;
  }

 private:
  int32_t first_, end_;
  uint32_t wanted_ = 0;  // one bit a history, from the lowest
};

// Nothing is installed where there is no folder.
void find_nothing() {
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    current.sig_have = sig_none;
    current.sig_match = current.sig_want == sig_none;
  }
}

// --- names that differ in case only -------------------------------------------------------------
// A release may rename a file by its case, or a manifest may list two such files. A file on disk is
// then found under both names, and would be kept or deleted on behalf of the one that it is not. So
// where the manifest has both, each answers for its own spelling.

// FNV-1a over the folded bytes. Two names with one hash cost a look at the disk and no more.
uint64_t folded_hash(std::string_view name) {
  uint64_t hash = 0xcbf29ce484222325u;
  for (char c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3u;
  }
  return hash;
}

void disown_other_spellings() {
  if (!g_case_sensitive) return;
  std::vector<std::pair<uint64_t, int>> names;
  names.reserve(sim_info.size());
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_version_struct& current = sim_info[i].current();
    if (!current.sig_have.empty() && !(current.sig_have == sig_none))
      names.emplace_back(folded_hash(installed_part(current.path)), i);
  }
  std::sort(names.begin(), names.end());

  const auto is_twin = [&names](size_t i) {
    return (i > 0 && names[i - 1].first == names[i].first) ||
           (i + 1 < names.size() && names[i + 1].first == names[i].first);
  };
  for (size_t i = 0; i < names.size(); ++i) {
    if (!is_twin(i)) continue;
    file_version_struct& current = sim_info[names[i].second].current();
    struct stat info;
    const std::string location =
        app_path + pass_destination + std::string(installed_part(current.path));
    if (lstat(location.c_str(), &info) == 0) continue;
    current.sig_have = sig_none;
    current.sig_match = 0;
  }
}

}  // namespace

int checksum_directory(int& index, float& progress) {
  const int count = static_cast<int>(sim_info.size());

  if (index == 0) checksum_directory_kill();  // of a pass that its page left behind
  if (checksum_workers == nullptr) {
    if (!dir_exists(dest_dir_path)) {
      find_nothing();
      index = count;
      progress = count > 0 ? 1.0f : 0.0f;
      return 1;
    }
    pass_destination = dest_dir_path;
    const int threads = UTL_count_processors();
    checksum_workers = new UTL_worker_threads(threads, 4 * threads);
    xer << " Start of MD5 at " << xtim.now_sec << '\n';
  }

  while (index < count && checksum_workers->has_free_slot()) {
    const int end = std::min(index + task_files, count);
    checksum_workers->enqueue_task(new checksum_task(index, end));
    index = end;
  }
  while (UTL_work_task* done = checksum_workers->check_retired_tasks())
    delete done;

  progress = count > 0 ? static_cast<float>(index) / static_cast<float>(count) : 0.0f;
  if (index < count || checksum_workers->count_total_tasks() > 0) return 0;

  delete checksum_workers;
  checksum_workers = nullptr;
  disown_other_spellings();
  xer << " End of MD5 at " << xtim.now_sec << '\n';
  return 1;
}

void checksum_directory_kill() {
  if (checksum_workers == nullptr) return;
  pass_abandoned = true;
  while (UTL_work_task* done = checksum_workers->wait_retired_tasks())
    delete done;
  delete checksum_workers;
  checksum_workers = nullptr;
  pass_abandoned = false;
}

int calc_file_md5(const std::string& path, std::string& sig) {
  std::string full = app_path + path;
  int handle = open_to_hash(full);
  if (handle < 0 && errno == ENOENT && g_case_sensitive) {
    findPath(full);
    handle = open_to_hash(full);
  }

  MD5_state state;
  MD5Init(state);
  if (handle < 0) {
    // A link is checked by what it says, so that one whose target is not there yet can be right.
    std::string target;
    if (errno != ELOOP || !is_sim_link(full.c_str() + app_path.size(), &target))
      return io_fail(unreadable, source_name, 141);
    MD5UpdateWide(state, target.data(), static_cast<uint32_t>(target.size()));
    write_signature(state, sig);
    return 0;
  }
  const bool whole = digest_file(handle, state);
  close(handle);
  if (!whole) return io_fail(unreadable, source_name, 152);
  write_signature(state, sig);
  return 0;
}

// Verification: every wanted file of the copy is read and its signature compared.
//
// Steps: the main thread hands the histories out, ten to a task, as long as the pool has a free
// slot, and collects finished tasks; the pool's threads work as utils_verify_pass.h tells; last,
// names that differ in case only are told apart.
//
// Main thread: stg.target_os, checksum_workers and the pass that its threads share. Pool threads:
// sig_have and sig_match of the histories that were handed out; each is written by one of them, and
// that is the table's whole protection.

#include "Installer-f/engine/utils_verify.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_platform.h"
#include "Installer-f/engine/utils_select.h"
#include "Installer-f/engine/utils_verify_open.h"
#include "Installer-f/engine/utils_verify_pass.h"
#include "Installer-f/engine/utils_verify_worker.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_thread.h"
#include "corekit/base/UTL_workers.h"
#include "corekit/base/exce.h"
#include "corekit/base/xtim.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"

UTL_worker_threads* checksum_workers = nullptr;

namespace {

constexpr char source_name[] = "Installer-f/utils_verify";
constexpr int unreadable = 20006;
constexpr int task_files = 10;
constexpr size_t buffer_size = 256 * 1024;

// The pass that the pool works on; it looks at the destination as it was when it began. Null
// without a pool.
std::unique_ptr<verify_pass> pass;

class checksum_task : public UTL_work_task {
 public:
  // Histories `first` to `end` - 1. What is wanted is settled here, on the main thread, because the
  // settings that decide it belong to that thread.
  checksum_task(int32_t first, int32_t end) : first_(first) {
    for (int32_t i = first; i < end; ++i)
      if (want_this_f(i, static_cast<int>(sim_info[i].versions.size()) - 1))
        wanted_ |= 1u << (i - first);
  }

  void do_it() override { verify_task_work(*pass, first_, wanted_); }

  // A file that cannot be read is a finding, not a failure.
  int check_error(std::string& message) override {
    message.clear();
    return 0;
  }

 private:
  int32_t first_;
  uint32_t wanted_ = 0;  // one bit a history, from the lowest
};

// The fastest that the machine has, or what the command line asks for, as "--md5=AVX2".
const MD5_lane_code& code_to_use() {
  const auto codes = MD5_lane_codes();
  const auto asked = std::find_if(codes.begin(), codes.end(), [](const MD5_lane_code& code) {
    return cmdline.has_option("--md5") && cmdline.get_option("--md5") == code.name;
  });
  return asked == codes.end() ? codes.front() : *asked;
}

timespec began = {};

void note_beginning() {
  clock_gettime(CLOCK_REALTIME_COARSE, &began);  // as the file system dates its changes
}

void begin_pass() {
  const int threads = verify_workers(UTL_count_processors());
  const MD5_lane_code& code = code_to_use();
  pass = std::make_unique<verify_pass>(app_path + dest_dir_path, threads, code);
  checksum_workers = new UTL_worker_threads(threads, 4 * threads);
  sim_info.before_clear = checksum_directory_kill;
  xer << " Start of MD5 at " << xtim.now_sec << '\n';
  xer << " Files side by side: " << code.lanes << " on each of " << threads << " threads ("
      << code.name << ")\n";
}

void end_pass() {
  delete checksum_workers;
  checksum_workers = nullptr;
  pass.reset();
  sim_info.before_clear = nullptr;
}

void collect_tasks() {
  while (UTL_work_task* done = checksum_workers->check_retired_tasks())
    delete done;
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

using hashed_history = std::pair<uint64_t, int>;

// Takes from a history what it has found under another spelling than its own. Where that is one
// file with its own, on a volume that does not tell cases apart, or under one name for two
// platforms, it is that of a history which the release still ships, and not of one which it has
// dropped.
void settle_one_name(const std::string& root, std::span<const hashed_history> names) {
  std::set<std::pair<dev_t, ino_t>> shipped;
  for (const bool is_dropped : {false, true}) {
    for (const auto& [hash, history] : names) {
      file_version_struct& current = sim_info[history].current();
      if ((current.sig_want == sig_gone) != is_dropped) continue;
      struct stat info;
      const std::string location = root + std::string(installed_part(current.path));
      const bool is_there = lstat(location.c_str(), &info) == 0;
      if (is_there && !is_dropped) shipped.emplace(info.st_dev, info.st_ino);
      if (is_there && !(is_dropped && shipped.contains({info.st_dev, info.st_ino}))) continue;
      current.sig_have = sig_none;
      current.sig_match = 0;
    }
  }
}

// `root` is where the copy lies.
void disown_other_spellings(const std::string& root) {
  if (!g_case_sensitive) return;
  std::vector<hashed_history> names;
  names.reserve(sim_info.size());
  for (int i = 0; i < static_cast<int>(sim_info.size()); ++i) {
    const file_version_struct& current = sim_info[i].current();
    if (!current.sig_have.empty() && !(current.sig_have == sig_none))
      names.emplace_back(folded_hash(installed_part(current.path)), i);
  }
  std::sort(names.begin(), names.end());

  for (size_t first = 0, end = 0; first < names.size(); first = end) {
    while (end < names.size() && names[end].first == names[first].first)
      ++end;
    if (end - first > 1) settle_one_name(root, std::span(names).subspan(first, end - first));
  }
}

}  // namespace

uint64_t checksum_bytes() {
  return pass ? pass->bytes_read.load() : 0;
}

timespec verification_began() {
  return began;
}

int checksum_directory(int& index, float& progress) {
  const int count = static_cast<int>(sim_info.size());

  if (index == 0) {
    checksum_directory_kill();  // of a pass that its page left behind
    note_beginning();
    settle_platform();
  }
  if (checksum_workers == nullptr) {
    if (!dir_exists(dest_dir_path)) {
      mark_all_absent();
      index = count;
      progress = count > 0 ? 1.0f : 0.0f;
      return 1;
    }
    begin_pass();
  }

  collect_tasks();  // first, so that the slots that they leave are filled in this frame
  while (index < count && checksum_workers->has_free_slot()) {
    const int end = std::min(index + task_files, count);
    pass->announce_task();
    checksum_workers->enqueue_task(new checksum_task(index, end));
    index = end;
  }
  collect_tasks();

  progress = count > 0 ? static_cast<float>(index) / static_cast<float>(count) : 0.0f;
  if (index < count || checksum_workers->count_total_tasks() > 0) return 0;

  disown_other_spellings(pass->root);
  end_pass();
  xer << " End of MD5 at " << xtim.now_sec << '\n';
  return 1;
}

void checksum_directory_kill() {
  if (checksum_workers == nullptr) return;
  pass->abandon();
  while (UTL_work_task* done = checksum_workers->wait_retired_tasks())
    delete done;
  end_pass();
}

void mark_all_absent() {
  note_beginning();
  for (file_history_struct& history : sim_info) {
    file_version_struct& current = history.current();
    current.sig_have = sig_none;
    current.sig_match = current.sig_want == sig_none;
  }
}

int calc_file_md5(const std::string& path, std::string& sig) {
  const opened_file file = open_to_hash(path);
  MD5_state state;
  MD5Init(state);
  if (file.kind == file_link) {
    // A link is checked by what it says, so that one whose target is not there yet can be right.
    MD5UpdateWide(state, file.text.data(), static_cast<uint32_t>(file.text.size()));
  } else if (file.kind != file_plain) {
    return io_fail(unreadable, source_name, 141);
  }
  thread_local std::unique_ptr<uint8_t[]> buffer;  // one for all files of a thread
  if (!buffer) buffer = std::make_unique_for_overwrite<uint8_t[]>(buffer_size);
  for (uint64_t left = file.size; left > 0;) {
    const size_t wanted = std::min<uint64_t>(left, buffer_size);
    size_t got = 0;
    if (io_read_all(file.handle.get(), buffer.get(), wanted, got) != 0 || got < wanted)
      return io_fail(unreadable, source_name, 152);
    MD5UpdateWide(state, buffer.get(), static_cast<uint32_t>(got));
    left -= got;
  }
  uint8_t digest[16];
  MD5Final(digest, state);
  sig = file_sig(digest).text();
  return 0;
}

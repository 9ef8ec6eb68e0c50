// The pass that a signature stands on: nothing is signed that was not read back from the master and
// found to hold what the manifest says. Several threads read, hash and unpack; the lines come out
// in the manifest's order. Main thread but for sum_task::do_it.

#include "Installer-f/builder/make_installer_sums.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

#include "Installer-f/builder/make_installer_bld.h"
#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_stop.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_workers.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/sign.h"

namespace {

constexpr uint64_t most_bytes = UINT32_MAX;
constexpr int64_t large = 256 << 20;  // one archive of that size at a time is in memory
constexpr int most_out = 64;

std::mutex large_one;

class sum_task final : public UTL_work_task {
 public:
  std::string stem;  // the archive's path, less its suffix
  std::string path;  // in the manifest
  file_sig sig_want;
  size_t index = 0;

  std::string line;   // what came of it,
  std::string wrong;  // or what is wrong with it
  std::string archive;
  int64_t bytes = 0;

  void do_it() override;
  int check_error(std::string& message) override {
    message = wrong;
    return wrong.empty() ? 0 : 1;
  }

 private:
  bool open_archive(io_handle& file);
  void read(int file);
};

bool sum_task::open_archive(io_handle& file) {
  for (const char* const suffix : {".zip", ".7z"}) {
    archive = stem + suffix;
    file = io_handle(open(archive.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (file) return true;
  }
  archive = stem;
  wrong = "the master lacks its archive";
  return false;
}

void sum_task::read(int file) {
  const unsigned char* archived = nullptr;
  size_t size = 0;
  single_file content;
  single_outcome outcome = io_load_archive(file, most_bytes, archived, size);
  if (outcome == single_ok) outcome = io_read_single(archived, size, most_bytes, content);
  if (outcome != single_ok) {
    wrong = "it cannot be read and unpacked";
    return;
  }
  MD5_state state;
  MD5Init(state);
  MD5UpdateWide(state, content.bytes, static_cast<uint32_t>(content.size));
  uint8_t digest[16];
  MD5Final(digest, state);
  if (!(file_sig(digest) == sig_want)) {
    wrong = "it does not hold the file that the manifest lists";
    return;
  }
  bytes = static_cast<int64_t>(size);
  const mode_t mode =
      content.is_link ? S_IFLNK | 0777 : S_IFREG | (content.mode ? content.mode : 0644);
  line = "SUM " + sign_hex(sign_hash(archived, size)) + " " + std::to_string(size) + " " +
         sign_hex(sign_hash(content.bytes, content.size)) + " " + std::to_string(content.size) +
         " " + str_format("%o", static_cast<unsigned>(mode)) + " " + path + "\n";
}

void sum_task::do_it() {
  io_handle file;
  if (!open_archive(file)) return;
  struct stat info;
  std::unique_lock<std::mutex> alone(large_one, std::defer_lock);
  if (fstat(file.get(), &info) == 0 && info.st_size >= large) alone.lock();
  read(file.get());
}

// Every archive is on the disc that its manifest says, or, when the discs have been merged for a
// mirror, on the first one.
std::string stem_of(const std::string& output, const std::string& name,
                    const file_version_struct& file) {
  const std::string below = name + "/" + std::string(file.path);
  for (const char* const suffix : {".zip", ".7z"}) {
    std::string stem = output + str_format("disk_%d/", int(file.disk)) + below;
    if (file_exists(stem + suffix)) return stem;
  }
  return output + "disk_0/" + below;
}

struct sum_job {
  UTL_worker_threads pool{PLT_processor_count(), most_out};
  std::vector<std::string> lines;
  std::vector<std::string> files;  // archives that there is a fault for have none
  size_t done = 0;
  int64_t bytes = 0;
};

void add_sum_fault(const sum_task& task) {
  add_fault(fault_build, {"I could not sign this archive!", task.archive, task.wrong}, task.archive,
            task.wrong);
}

void take_back(sum_job& job, bool wait) {
  for (;;) {
    UTL_work_task* const back =
        wait ? job.pool.wait_retired_tasks() : job.pool.check_retired_tasks();
    if (!back) return;
    const std::unique_ptr<sum_task> task(static_cast<sum_task*>(back));
    if (!task->wrong.empty()) add_sum_fault(*task);
    job.lines[task->index] = std::move(task->line);
    job.bytes += task->bytes;
    ++job.done;
    if (job.done % 500 == 0) {
      builder_progress(static_cast<int>(job.done),
                       str_format("archives read back: %zu, %lld MB", job.done,
                                  static_cast<long long>(job.bytes / 1000000)),
                       task->path);
    }
    if (wait) return;
  }
}

}  // namespace

bool make_sums(const std::string& output, const std::string& name, std::string& sums) {
  sum_job job;
  job.lines.resize(sim_info.size());
  for (size_t i = 0; i < sim_info.size() && !builder_stopped(); ++i) {
    const file_version_struct& file = sim_info[i].current();
    if (file.sig_want == sig_gone) continue;
    while (!job.pool.has_free_slot())
      take_back(job, true);
    auto task = std::make_unique<sum_task>();
    task->stem = stem_of(output, name, file);
    task->path = std::string(file.path);
    task->sig_want = file.sig_want;
    task->index = i;
    job.pool.enqueue_task(task.release());
  }
  while (job.pool.count_total_tasks() > 0)
    take_back(job, true);
  builder_progress_end();
  if (fault_count() > 0 || builder_stopped()) return false;
  sums = "I\n900 version\nSUMS\n\n";
  for (const std::string& line : job.lines)
    sums += line;
  return true;
}

// The pool that makes a master's archives.
//
// The owner hands files out, the largest first, so that none of them is left for the end, then in
// walk order; a thread reads a file once, and hashes, packs and writes it, or takes its archive
// over from the last output; the owner takes the outcomes back and commits them in walk order.
// Nobody knows the disc of a file before all files ahead of it have been packed: an archive goes to
// the disc that is current when its file is handed out, and is moved if that turns out wrong.
//
// Memory is bounded by what is out: so many files, and so many bytes of them. Main thread but for
// pack_task::do_it. A task belongs to its thread while it is out.

#include "Installer-f/builder/make_installer_pack.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "Installer-f/builder/make_installer_fault.h"
#include "Installer-f/builder/make_installer_reuse.h"
#include "Installer-f/builder/make_installer_say.h"
#include "Installer-f/builder/make_installer_stop.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/engine/utils_verify.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/base/UTL_workers.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_thread.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_pack.h"

namespace {

constexpr int most_out = 4096;                 // tasks handed out and not taken back
constexpr size_t most_waiting = 65536;         // files handed out and not committed
constexpr int64_t most_bytes_out = 512 << 20;  // of files that are packed in memory
constexpr int64_t large = 16 << 20;            // a file of that size is begun early
constexpr int comp_progress_step = 20;
constexpr uint64_t progress_interval = 200000;  // microseconds between two lines of one large file

std::atomic<bool> giving_up = false;  // tells the threads to leave off
std::atomic<int64_t> bytes_read = 0;  // of the sources, by all threads

// What went wrong with a file, in the words by which the makers know it.
enum pack_failure { pack_fine, cannot_link, cannot_zip, cannot_measure };

std::string sig_text_of(MD5_state& state) {
  uint8_t digest[16];
  MD5Final(digest, state);
  return file_sig(digest).text();
}

void look_at_bytes(void* with, const void* bytes, size_t size) {
  MD5UpdateWide(*static_cast<MD5_state*>(with), bytes, static_cast<uint32_t>(size));
  bytes_read.fetch_add(static_cast<int64_t>(size), std::memory_order_relaxed);
}

class pack_task final : public UTL_work_task {
 public:
  // What to do: the owner's.
  source_file file;
  std::string source, stem;  // the file, and its archive less the suffix
  int64_t weight = 0;        // bytes that it may hold in memory
  size_t index = 0;          // of the file in bld.comp_files

  // What came of it: the thread's.
  pack_outcome outcome;
  pack_failure failure = pack_fine;
  int code = 0;
  bool changed = false;  // the source, while it was being read

  void do_it() override;
  int check_error(std::string&) override { return code; }

  std::string archive() const { return stem + "." + outcome.suffix; }

 private:
  void fail(pack_failure what, int why) {
    failure = what;
    code = why;
  }
  bool take_over();
  bool is_intact(const old_archive& old);
  void link_by_hand();
  void pack();
};

void pack_task::do_it() {
  if (giving_up) return fail(cannot_zip, ECANCELED);
  if (take_over()) return;
  if (file.by_hand >= 0) {
    link_by_hand();
  } else {
    pack();
  }
}

// Whether the source and the old archive are what the record says of them, by their bytes.
bool pack_task::is_intact(const old_archive& old) {
  std::string sig;
  if (calc_file_md5(source, sig) != 0 || sig != old.sig) return false;
  if (old.is_7z) return true;  // the archive lies in the source tree, and is linked from there
  const io_handle archive(open(old.path.c_str(), O_RDONLY | O_CLOEXEC));
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  single_file content;
  if (!archive || io_load_archive(archive.get(), UINT32_MAX, bytes, size) != single_ok ||
      io_read_single(bytes, size, UINT32_MAX, content) != single_ok) {
    return false;
  }
  MD5_state state;
  MD5Init(state);
  MD5UpdateWide(state, content.bytes, static_cast<uint32_t>(content.size));
  return sig_text_of(state) == old.sig;
}

// Takes the archive of the last output, or of one made by hand its signature. Whatever speaks
// against it is no failure: the file is packed anew.
bool pack_task::take_over() {
  old_archive old;
  if (!find_reuse(file, old) || (bld.verify_reuse && !is_intact(old))) return false;
  if (old.is_7z) {
    outcome.sig = old.sig;
    return false;  // the archive is linked from the source tree as ever
  }
  outcome.suffix = "zip";
  const std::string target = archive();
  if (link(old.path.c_str(), target.c_str()) != 0) return false;
  struct stat info;
  if (lstat(target.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size != old.bytes) {
    unlink(target.c_str());
    return false;
  }
  outcome.archive_bytes = old.bytes;
  outcome.sig = std::move(old.sig);
  outcome.date = zip_date(std::min(file.modified.tv_sec, newest_date()));
  outcome.taken_over = true;
  bytes_read.fetch_add(file.bytes, std::memory_order_relaxed);
  return true;
}

// Compressed by hand beforehand, since the standard tool does better on it than zip. A link costs
// neither time nor space; it is made to the file itself where the makers have a symbolic link.
void pack_task::link_by_hand() {
  outcome.suffix = "7z";
  const std::string by_hand = source + ".7z", target = archive();
  if (linkat(AT_FDCWD, by_hand.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) != 0)
    return fail(cannot_link, errno);
  struct stat info;
  if (lstat(target.c_str(), &info) != 0) return fail(cannot_measure, errno);
  outcome.archive_bytes = info.st_size;
  // A word in place of what cannot be computed keeps the manifest's fields in their places.
  if (outcome.sig.empty() && calc_file_md5(source, outcome.sig) != 0) outcome.sig = sig_none.text();
  bytes_read.fetch_add(file.bytes, std::memory_order_relaxed);
}

void pack_task::pack() {
  thread_local std::unique_ptr<zip_packer> packer;
  if (!packer) packer = std::make_unique<zip_packer>();
  MD5_state state;
  MD5Init(state);
  packer->look = look_at_bytes;
  packer->look_with = &state;
  packer->stop = &giving_up;
  packer->newest = newest_date();
  zip_packed packed;
  outcome.suffix = "zip";
  const int err = packer->pack(source, archive(), packed);
  changed = packed.changed;
  if (err != 0) return fail(cannot_zip, err);
  file.bytes = packed.plain_bytes;
  file.modified = packed.modified;
  file.mode = packed.mode;
  outcome.archive_bytes = packed.archive_bytes;
  outcome.date = packed.date;
  outcome.sig = sig_text_of(state);
}

// --- the owner ----------------------------------------------------------------------------------

struct packing {
  UTL_worker_threads pool;
  std::vector<size_t> order;                     // of handing out: indices of bld.comp_files
  std::vector<std::unique_ptr<pack_task>> done;  // taken back, by index
  size_t handed = 0, committed = 0;
  int64_t bytes_out = 0;
  uint64_t began = PLT_microseconds(), shown = 0;

  explicit packing(int threads) : pool(threads, most_out), order(bld.comp_files.size()) {
    done.resize(order.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto rest = std::stable_partition(order.begin(), order.end(), [](size_t i) {
      return bld.comp_files[i].bytes >= large && bld.comp_files[i].by_hand < 0;
    });
    std::stable_sort(order.begin(), rest, [](size_t a, size_t b) {
      return bld.comp_files[a].bytes > bld.comp_files[b].bytes;
    });
  }
};

void hand_out(packing& job) {
  while (job.handed < job.order.size() && job.pool.has_free_slot() &&
         job.handed - job.committed < most_waiting) {
    const size_t index = job.order[job.handed];
    const source_file& file = bld.comp_files[index];
    const bool in_memory = file.by_hand < 0 && file.bytes <= int64_t{zip_packer::whole_limit};
    const int64_t weight = in_memory ? file.bytes : 0;
    if (job.bytes_out > 0 && job.bytes_out + weight > most_bytes_out) return;
    auto task = std::make_unique<pack_task>();
    task->file = file;
    task->source = source_path(file);
    task->outcome.disk = std::min(bld.dvd_now, discs_with_folders - 1);
    task->stem = archive_stem(file, task->outcome.disk);
    task->weight = weight;
    task->index = index;
    job.bytes_out += weight;
    job.pool.enqueue_task(task.release());
    ++job.handed;
  }
}

void add_pack_fault(const pack_task& task) {
  const std::string archive = task.archive();
  std::string why = error_str(task.code);
  if (task.changed) why = "it was written to while it was being read";
  switch (task.failure) {
    case pack_fine:
      break;
    case cannot_link:
      add_fault(fault_build,
                {"ERROR: could not make hard link!", task.source + ".7z", archive, why},
                task.source, "its .7z cannot be linked into the master: " + why);
      break;
    case cannot_measure:
      add_fault(fault_build, {"ERROR: could not get file size!", archive}, archive,
                "the archive has gone again: " + why);
      break;
    case cannot_zip:
      add_fault(fault_build, {"I could not zip a file!", task.source, archive, why}, task.source,
                "its archive cannot be made: " + why);
      break;
  }
}

// Takes back what has been done. False when something failed.
bool take_back(packing& job) {
  while (UTL_work_task* const back = job.pool.check_retired_tasks()) {
    std::unique_ptr<pack_task> task(static_cast<pack_task*>(back));
    job.bytes_out -= task->weight;
    if (task->failure != pack_fine) {
      add_pack_fault(*task);
      return false;
    }
    const size_t index = task->index;
    job.done[index] = std::move(task);
  }
  return true;
}

// The disc that was current when the file was handed out may have been filled since.
bool move_to_its_disc(pack_task& task) {
  if (task.outcome.disk == bld.dvd_now) return true;
  const std::string from = task.archive();
  task.stem = archive_stem(task.file, bld.dvd_now);
  task.outcome.disk = bld.dvd_now;
  const std::string to = task.archive();
  if (rename(from.c_str(), to.c_str()) == 0) return true;
  const char* const why = error_str(errno);
  add_fault(fault_build, {"I could not zip a file!", task.source, to, why}, to,
            std::string("the archive cannot be moved to its disc: ") + why);
  return false;
}

// Whether there is a disc for the next file.
bool has_disc(const std::string& source) {
  if (bld.dvd_now < discs_with_folders) return true;
  add_fault(fault_discs, {"I could not zip a file!", source, dest_dvd(bld.dvd_now)},
            bld.dst_fold_base,
            str_format("%d discs of %.0f MB are full, with this file and others still to come",
                       discs_with_folders, static_cast<double>(bld.disc_limit_kb / 1000)));
  return false;
}

void show_progress(packing& job, const std::string& path) {
  job.shown = PLT_microseconds();
  const double seconds = static_cast<double>(job.shown - job.began) * 1e-6;
  builder_progress(bld.num_files_com,
                   str_format("reg: %d: total files to compress: %d. now doing: %d. ", bld.reg,
                              bld.num_files_use, bld.num_files_com) +
                       builder_rate(bytes_read, bld.bytes_use, seconds) + ".",
                   path);
}

// Commits what is next in walk order. False when something failed.
bool commit_done(packing& job, void (*commit)(const source_file&, const pack_outcome&)) {
  while (job.committed < job.done.size() && job.done[job.committed]) {
    const std::unique_ptr<pack_task> task = std::move(job.done[job.committed]);
    if (!has_disc(task->source) || !move_to_its_disc(*task)) return false;
    commit(task->file, task->outcome);
    ++job.committed;
    if (bld.num_files_com % comp_progress_step == 0) show_progress(job, task->source);
  }
  return true;
}

// Files that are under way are given up: the master they belong to will not be kept.
void give_up(packing& job) {
  giving_up = true;
  while (UTL_work_task* const task = job.pool.wait_retired_tasks())
    delete task;
  giving_up = false;
}

}  // namespace

bool pack_files(void (*commit)(const source_file& file, const pack_outcome& outcome)) {
  bytes_read = 0;
  packing job(bld.threads > 0 ? bld.threads : PLT_processor_count());
  while (job.committed < job.order.size()) {
    hand_out(job);
    const size_t before = job.committed;
    if (!take_back(job) || !commit_done(job, commit) || builder_stopped()) {
      give_up(job);
      return false;
    }
    if (job.committed != before) continue;
    THREAD_check_exception(0);
    if (PLT_microseconds() - job.shown > progress_interval && job.committed < job.order.size())
      show_progress(job, source_path(bld.comp_files[job.committed]));
    usleep(500);
  }
  return true;
}

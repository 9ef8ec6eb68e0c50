// Files and links put into their place by the gate.
//
// Steps: reach the folder, making what is missing; at the first visit, remove what a stopped
// process left there; make the file without a name, write it, give it its mode and time; link it
// into its place, or, where something is in the way, link it under a hidden name, locked, and move
// it over that. Volumes that make no file without a name get it under the hidden one at once. Any
// thread; the counter of hidden names is the only state.

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>

#include "corekit/files/io_gate.h"
#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_gate_put";
constexpr int name_tries = 8;
constexpr mode_t modes_kept = 0755;

int fail(int code, int line) {
  return io_fail(code, this_file, line);
}

// --- hidden names --------------------------------------------------------------------------------

// What the hidden names of this process begin with. The number keeps a process apart from another
// of the same id on a shared volume, the id keeps a child apart from its parent.
class part_names {
 public:
  part_names() {
    draw();
    pthread_atfork(nullptr, nullptr, [] { own().draw(); });
  }
  static part_names& own() {
    static part_names names;
    return names;
  }
  std::string_view prefix() const { return prefix_; }
  std::string next() {
    return prefix_ + std::to_string(count_.fetch_add(1, std::memory_order_relaxed));
  }

 private:
  void draw() {
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) number = uint64_t(time(nullptr));
    std::snprintf(prefix_, sizeof prefix_, "%s_%lx_%lx_", gate_part_prefix.data(), long(getpid()),
                  static_cast<unsigned long>(number & 0xFFFFFFFFFFFFu));
  }

  char prefix_[64];
  std::atomic<unsigned> count_ = 0;
};

struct new_part {
  std::string name;  // empty: none yet, and nothing is left of the file if the process ends
  io_handle file;
  struct stat info;  // of the empty file
};

// A new file without a name. False where there is none to be had; an attempt with a name tells why.
bool make_nameless(int folder, new_part& part) {
  part.name.clear();
  part.file = io_handle(openat(folder, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666));
  return part.file && fstat(part.file.get(), &part.info) == 0;
}

// A new file of a hidden name, locked. A sweeper of another process may have had it in the moment
// before the lock; then another one is made.
int make_named(int folder, new_part& part) {
  for (int tries = 0; tries < name_tries; ++tries) {
    part.name = part_names::own().next();
    part.file = io_handle(openat(folder, part.name.c_str(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!part.file && errno == EEXIST) continue;
    if (!part.file) return fail(errno, 10);
    const bool locked = flock(part.file.get(), LOCK_EX | LOCK_NB) == 0;
    // A volume without locks is one that no sweeper can lock on either.
    if (!locked && errno == EWOULDBLOCK) continue;
    if (fstat(part.file.get(), &part.info) == 0 && part.info.st_nlink > 0) return 0;
  }
  return fail(EEXIST, 11);
}

// The folder of a path that ends in `leaf`, without a "/" behind it.
std::string_view folder_above(std::string_view path, const std::string& leaf) {
  return path.substr(0, path.size() - std::min(path.size(), leaf.size() + 1));
}

// Removes a hidden file if the process that made it is gone.
void remove_abandoned(int folder, const char* name) {
  struct stat info;
  if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (S_ISREG(info.st_mode)) {
    const io_handle file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    // One that may not be read can be nobody's at work.
    if (file && flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
    unlinkat(folder, name, 0);
  } else if (S_ISLNK(info.st_mode)) {
    unlinkat(folder, name, 0);
  }
}

// --- in place ------------------------------------------------------------------------------------

// Gives a nameless file a name that nothing has yet. 0 or errno.
int link_in(int folder, int file, const std::string& name) {
  if (linkat(file, "", folder, name.c_str(), AT_EMPTY_PATH) == 0) return 0;
  if (errno == EEXIST) return EEXIST;
  // Kernels before 6.10 let only the privileged link by the handle alone.
  const std::string way = "/proc/self/fd/" + std::to_string(file);
  return linkat(AT_FDCWD, way.c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
}

// A hidden name for a nameless file. The lock comes first, so that no sweeper takes it.
int name_part(int folder, new_part& part) {
  flock(part.file.get(), LOCK_EX | LOCK_NB);
  for (int tries = 0; tries < name_tries; ++tries) {
    const std::string name = part_names::own().next();
    const int code = link_in(folder, part.file.get(), name);
    if (code == 0) part.name = name;
    if (code != EEXIST) return code;
  }
  return EEXIST;
}

// Moves `part` over what is called `leaf`. An empty folder there holds nothing to lose and makes
// room; any other stays.
int move_in(int folder, const std::string& part, const std::string& leaf) {
  if (renameat(folder, part.c_str(), folder, leaf.c_str()) == 0) return 0;
  const int code = errno;
  if (code == EISDIR && unlinkat(folder, leaf.c_str(), AT_REMOVEDIR) == 0 &&
      renameat(folder, part.c_str(), folder, leaf.c_str()) == 0) {
    return 0;
  }
  return fail(code, 20);
}

int move_part_in(int folder, const new_part& part, const std::string& leaf) {
  const int code = move_in(folder, part.name, leaf);
  if (code != 0) unlinkat(folder, part.name.c_str(), 0);
  return code;
}

// What cannot be set is passed over: a volume that keeps neither is no reason to refuse the file.
// 0, or the errno that kept a program from being one that can be started.
int set_attributes(int file, const struct stat& info, const gate_attributes& attributes) {
  const mode_t mode = (attributes.mode & modes_kept) | 0400;
  int code = 0;
  if (attributes.mode != 0 && mode != (info.st_mode & 07777) && fchmod(file, mode) != 0 &&
      (mode & 0111 & ~info.st_mode) != 0) {
    code = errno;
  }
  const timespec times[2] = {{attributes.modified, 0}, {attributes.modified, 0}};
  if (attributes.modified != time_t(-1)) futimens(file, times);
  return code;
}

// `not_runnable` receives what set_attributes returns.
int fill(int file, const struct stat& info, const void* bytes, size_t size,
         const gate_attributes& attributes, int& not_runnable) {
  if (const int code = io_write_all(file, bytes, size)) return fail(code, 30);
  not_runnable = set_attributes(file, info, attributes);
  return 0;
}

int copy_into(int file, int source, uint64_t most, std::atomic<uint64_t>& copied) {
  constexpr size_t piece = 256 * 1024;
  thread_local const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(piece);
  if (lseek(source, 0, SEEK_SET) != 0) return fail(errno, 36);
  for (size_t got = piece; got == piece;) {
    if (const int code = io_read_all(source, buffer.get(), piece, got)) return fail(code, 31);
    if (got > most) return fail(EFBIG, 32);
    most -= got;
    if (const int code = io_write_all(file, buffer.get(), got)) return fail(code, 33);
    copied += got;
  }
  return 0;
}

// Volumes on this machine tell of a full disk when they are written to; others, such as NFS, may
// tell only when the file is closed.
bool tells_late(int file, dev_t device) {
  struct {
    bool known = false, late = false;
    dev_t device = 0;
  } static thread_local last;
  if (last.known && last.device == device) return last.late;
  struct statfs volume;
  last.known = fstatfs(file, &volume) == 0;
  last.device = device;
  constexpr unsigned at_once[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC,
                                  F2FS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC, MSDOS_SUPER_MAGIC,
                                  TMPFS_MAGIC};
  last.late = !last.known || std::count(std::begin(at_once), std::end(at_once),
                                        static_cast<unsigned>(volume.f_type)) == 0;
  return last.late;
}

// Closing a second handle brings out what such a volume has to tell. The first one stays open, and
// with it the lock: a part without one is anybody's.
int told_at_close(int file, dev_t device) {
  if (!tells_late(file, device)) return 0;
  io_handle second(fcntl(file, F_DUPFD_CLOEXEC, 0));
  return second ? fail(second.close(), 34) : fail(errno, 35);
}

// Lets a folder of our own take new files for a moment. Not two at a time: the one that shuts it
// would do so under the other. A kill in that moment leaves the folder open and every file in it
// whole.
class opened_folder {
 public:
  opened_folder(int folder, const std::string& leaf)
      : way_("/proc/self/fd/" + std::to_string(folder)) {
    struct stat file;
    const bool replaces = fstatat(folder, leaf.c_str(), &file, AT_SYMLINK_NOFOLLOW) == 0 &&
                          S_ISREG(file.st_mode) && file.st_nlink == 1 &&
                          faccessat(folder, leaf.c_str(), W_OK, AT_EACCESS) == 0;
    is_open_ = replaces && fstat(folder, &info_) == 0 && info_.st_uid == geteuid() &&
               chmod(way_.c_str(), (info_.st_mode & 07777) | 0300) == 0;
  }
  ~opened_folder() {
    if (is_open_) chmod(way_.c_str(), info_.st_mode & 07777);
  }
  opened_folder(const opened_folder&) = delete;
  opened_folder& operator=(const opened_folder&) = delete;
  bool is_open() const { return is_open_; }

 private:
  static std::mutex& one_at_a_time() {
    static std::mutex mutex;
    return mutex;
  }
  const std::lock_guard<std::mutex> turn_{one_at_a_time()};
  std::string way_;
  struct stat info_;
  bool is_open_ = false;
};
}  // namespace

// `handle` need not be open for reading.
void gate_class::sweep_once(std::string_view folder, int handle) {
  {
    const std::lock_guard<std::mutex> guard(lock_);
    if (!swept_.emplace(folder).second) return;
  }
  const int listing = openat(handle, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  DIR* const dir = listing < 0 ? nullptr : fdopendir(listing);
  if (!dir) {
    if (listing >= 0) close(listing);
    return;
  }
  const std::string_view own = part_names::own().prefix();
  std::vector<std::string> found;  // a folder is read to its end before it is changed
  while (const dirent* const entry = readdir(dir)) {
    const std::string_view name = entry->d_name;
    if (name.starts_with(gate_part_prefix) && !name.starts_with(own)) found.emplace_back(name);
  }
  for (const std::string& name : found)
    remove_abandoned(handle, name.c_str());
  closedir(dir);
}

// A part that `fill_part` fills, moved into its place.
int gate_class::put_part(std::string_view path, const gate_filler& fill_part, place& at,
                         std::string& leaf) {
  if (const int code = reach_parent(path, make, at, leaf)) return fail(code, 50);
  sweep_once(folder_above(path, leaf), at.folder);
  new_part part;
  const auto filled = [&] {
    const int code = fill_part(part.file.get(), part.info);
    return code != 0 ? code : told_at_close(part.file.get(), part.info.st_dev);
  };
  if (!walk_only && !no_nameless_ && make_nameless(at.folder, part)) {
    if (const int code = filled()) return code;
    int code = link_in(at.folder, part.file.get(), leaf);
    if (code == EEXIST) code = name_part(at.folder, part);
    if (code == 0) return part.name.empty() ? 0 : move_part_in(at.folder, part, leaf);
  }
  if (const int code = make_named(at.folder, part)) return code;
  if (const int code = filled()) {
    unlinkat(at.folder, part.name.c_str(), 0);
    return code;
  }
  no_nameless_ = true;  // this way works, and the other did not
  return move_part_in(at.folder, part, leaf);
}

int gate_class::put_file(std::string_view path, const void* bytes, size_t size,
                         const gate_attributes& attributes) {
  int not_runnable = 0;
  const int code = put_bytes(path, bytes, size, attributes, not_runnable);
  if (code == 0 && not_runnable != 0) {
    const std::lock_guard<std::mutex> guard(lock_);
    notes_.push_back("WARNING: this cannot be started as a program: " + std::string(path) + " (" +
                     error_str(not_runnable) + ")");
  }
  return code;
}

int gate_class::put_bytes(std::string_view path, const void* bytes, size_t size,
                          const gate_attributes& attributes, int& not_runnable) {
  place at;
  std::string leaf;
  const auto filler = [&](int file, const struct stat& info) {
    return fill(file, info, bytes, size, attributes, not_runnable);
  };
  const int code = put_part(path, filler, at, leaf);
  if (code != EACCES || at.folder < 0) return code;
  // Another's folder may let an old file be written, but then a kill would leave a part of the new.
  const opened_folder door(at.folder, leaf);
  place again;
  return door.is_open() ? put_part(path, filler, again, leaf) : code;
}

int gate_class::put_copy(std::string_view path, int source, uint64_t most,
                         std::atomic<uint64_t>& copied) {
  place at;
  std::string leaf;
  const auto filler = [&](int file, const struct stat&) {
    return copy_into(file, source, most, copied);
  };
  return put_part(path, filler, at, leaf);
}

int gate_class::put_link(std::string_view path, const std::string& target) {
  place at;
  std::string leaf;
  if (const int code = reach_parent(path, make, at, leaf)) return fail(code, 60);
  const int folder = at.folder;
  if (!stays_inside(at, target)) return fail(gate_leads_out, 61);

  sweep_once(folder_above(path, leaf), folder);
  for (int tries = 0; tries < name_tries; ++tries) {
    const std::string part = part_names::own().next();
    if (symlinkat(target.c_str(), folder, part.c_str()) != 0) {
      if (errno == EEXIST) continue;
      return fail(errno, 62);
    }
    const int code = move_in(folder, part, leaf);
    if (code == 0) return 0;
    unlinkat(folder, part.c_str(), 0);
    if (code != ENOENT) return code;  // else another process has swept it away
  }
  return fail(EEXIST, 63);
}

// The gate's way to a folder, and what it does there in one call; see io_gate.h. Files and links
// are put into place in io_gate_put.cpp, links are judged in io_gate_link.cpp.
//
// Steps: check the path; reach the folder, by openat2 or part by part; at a link, ask whether the
// release ships it, and follow it or refuse; act on the last part by the folder's handle.
// Any thread; writes only the gate's own record of links and folders, under its lock.

#include "corekit/files/io_gate.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>

#include "corekit/files/io_utils.h"

namespace {
constexpr char this_file[] = "Files/io_gate";
constexpr int folder_flags = O_PATH | O_DIRECTORY | O_CLOEXEC;

static_assert(gate_below_link == ELOOP && gate_leads_out == EXDEV);

bool path_is_plain(std::string_view path) {
  if (path.find('\0') != std::string_view::npos) return false;
  for (;;) {
    const size_t slash = path.find('/');
    const std::string_view part = path.substr(0, slash);
    if (part.empty() || part == "." || part == "..") return false;
    if (slash == std::string_view::npos) return true;
    path.remove_prefix(slash + 1);
  }
}

int fail(int code, int line) {
  return io_fail(code, this_file, line);
}

// A log line is one line, whatever a name holds.
std::string printable(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (static_cast<unsigned char>(c) < 32 || c == 127) c = '?';
  }
  return out;
}
}  // namespace

int gate_class::open(const std::string& folder, gate_ships ships) {
  io_handle root(::open((app_path + folder).c_str(), folder_flags));
  if (!root) return fail(errno, 10);
  root_ = std::move(root);
  root_length_ = app_path.size() + folder.size();
  ships_ = std::move(ships);
  const std::lock_guard<std::mutex> guard(lock_);
  links_.clear();
  swept_.clear();
  notes_.clear();
  return 0;
}

// --- the way to a folder -------------------------------------------------------------------------

// `folder` may be empty: the destination itself.
int gate_class::reach(std::string_view folder, missing_folders missing, place& found) {
  if (!root_) return EBADF;
  found = place();
  if (folder.empty()) {
    found.folder = root_.get();
    return 0;
  }
  if (!walk_only && !no_openat2_.load(std::memory_order_relaxed)) {
    found.below = folder;
    open_how how = {};
    how.flags = folder_flags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    found.own = io_handle(
        static_cast<int>(syscall(SYS_openat2, root_.get(), found.below.c_str(), &how, sizeof how)));
    found.folder = found.own.get();
    if (found.own) return 0;
    switch (errno) {
      case ELOOP:   // a link on the way: to be looked at
      case EAGAIN:  // somebody renames folders meanwhile
        break;
      case ENOENT:
        if (missing == make) break;
        return ENOENT;
      case ENOSYS:  // an older kernel, or a sandbox that does not know the call
      case EPERM:
      case EINVAL:
      case E2BIG:
        no_openat2_ = true;
        break;
      default:
        return errno;
    }
  }
  return walk(folder, missing, found);
}

int gate_class::walk(std::string_view folder, missing_folders missing, place& found) {
  found = place();
  int at = root_.get();
  for (size_t begin = 0; begin < folder.size();) {
    const size_t end = std::min(folder.find('/', begin), folder.size());
    const std::string name(folder.substr(begin, end - begin));
    if (const int code = step(at, folder.substr(0, end), name.c_str(), missing, found)) return code;
    at = found.folder;
    begin = end + 1;
  }
  return 0;
}

// From the folder `at` to the one that is called `name` in it; `way` is its path.
int gate_class::step(int at, std::string_view way, const char* name, missing_folders missing,
                     place& found) {
  io_handle next(openat(at, name, folder_flags | O_NOFOLLOW));
  if (!next && errno == ENOENT && missing == make) {
    if (mkdirat(at, name, 0755) != 0 && errno != EEXIST) return errno;
    next = io_handle(openat(at, name, folder_flags | O_NOFOLLOW));
  }
  if (next) {
    if (!found.below.empty()) found.below += '/';
    found.below += name;
    found.own = std::move(next);
    found.folder = found.own.get();
    return 0;
  }
  const int code = errno;
  if (code != ELOOP && code != ENOTDIR) return code;
  char text[1];
  if (readlinkat(at, name, text, sizeof text) < 0) return code;
  if (!may_follow(at, way, name)) return gate_below_link;
  next = io_handle(openat(at, name, folder_flags));
  if (!next) return errno;
  found.base = io_handle(fcntl(next.get(), F_DUPFD_CLOEXEC, 0));
  if (!found.base) return errno;
  found.below.clear();
  found.own = std::move(next);
  found.folder = found.own.get();
  return 0;
}

bool gate_class::may_follow(int at, std::string_view way, const char* name) {
  {
    const std::lock_guard<std::mutex> guard(lock_);
    const auto known = links_.find(way);
    if (known != links_.end()) return known->second;
  }
  const bool follow = ships_ && !ships_(way);
  std::string target(PATH_MAX, '\0');
  const ssize_t length = readlinkat(at, name, target.data(), target.size());
  target.resize(length > 0 ? static_cast<size_t>(length) : 0);
  const std::lock_guard<std::mutex> guard(lock_);
  if (!links_.emplace(way, follow).second) return follow;  // another thread was quicker
  notes_.push_back(follow
                       ? "The folder " + printable(way) + " is a link of the user's to " +
                             printable(target) + ", and is followed."
                       : "WARNING: " + printable(way) + " is a link; nothing below it is touched.");
  return follow;
}

int gate_class::reach_parent(std::string_view path, missing_folders missing, place& found,
                             std::string& leaf) {
  if (!path_is_plain(path)) return EINVAL;
  if (root_length_ + path.size() > path_limit) return ENAMETOOLONG;
  const size_t slash = path.rfind('/');
  const bool top = slash == std::string_view::npos;
  leaf = top ? path : path.substr(slash + 1);
  return reach(top ? std::string_view() : path.substr(0, slash), missing, found);
}

std::vector<std::string> gate_class::take_notes() {
  const std::lock_guard<std::mutex> guard(lock_);
  return std::exchange(notes_, {});
}

// --- in one call ---------------------------------------------------------------------------------

int gate_class::make_folder(std::string_view path) {
  place at;
  std::string leaf;
  if (const int code = reach_parent(path, report, at, leaf)) return fail(code, 20);
  return mkdirat(at.folder, leaf.c_str(), 0755) == 0 ? 0 : fail(errno, 21);
}

int gate_class::remove_file(std::string_view path) {
  place at;
  std::string leaf;
  if (const int code = reach_parent(path, report, at, leaf)) return fail(code, 40);
  return unlinkat(at.folder, leaf.c_str(), 0) == 0 ? 0 : fail(errno, 41);
}

int gate_class::remove_folder(std::string_view path) {
  place at;
  std::string leaf;
  if (const int code = reach_parent(path, report, at, leaf)) return fail(code, 50);
  if (unlinkat(at.folder, leaf.c_str(), AT_REMOVEDIR) == 0) return 0;
  const int code = errno;
  if (code != ENOTEMPTY && code != EEXIST) return fail(code, 51);
  // It may hold nothing but what a process that was stopped has left.
  const io_handle inner(openat(at.folder, leaf.c_str(), folder_flags | O_NOFOLLOW));
  if (!inner) return fail(code, 52);
  sweep_once(path, inner.get());
  return unlinkat(at.folder, leaf.c_str(), AT_REMOVEDIR) == 0 ? 0 : fail(errno, 53);
}

int gate_class::rename(std::string_view path, std::string_view new_leaf) {
  place at;
  std::string leaf;
  if (!path_is_plain(new_leaf) || new_leaf.find('/') != std::string_view::npos) {
    return fail(EINVAL, 60);
  }
  if (const int code = reach_parent(path, report, at, leaf)) return fail(code, 61);
  const int folder = at.folder;
  const std::string to(new_leaf);
  if (renameat2(folder, leaf.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return fail(errno, 62);
  // Volumes that cannot promise it are asked first.
  struct stat info;
  if (fstatat(folder, to.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) return fail(EEXIST, 63);
  return renameat(folder, leaf.c_str(), folder, to.c_str()) == 0 ? 0 : fail(errno, 64);
}

int gate_class::open_file(std::string_view path, io_handle& file) {
  place at;
  std::string leaf;
  if (const int code = reach_parent(path, report, at, leaf)) return fail(code, 70);
  // Not waiting for the other end of a pipe.
  io_handle opened(
      openat(at.folder, leaf.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!opened) return fail(errno, 71);
  struct stat info;
  if (fstat(opened.get(), &info) != 0) return fail(errno, 72);
  if (!S_ISREG(info.st_mode)) return fail(S_ISDIR(info.st_mode) ? EISDIR : EINVAL, 73);
  file = std::move(opened);
  return 0;
}

bool gate_class::is_no_link(std::string_view path) {
  place at;
  std::string leaf;
  struct stat info;
  return reach_parent(path, report, at, leaf) == 0 &&
         fstatat(at.folder, leaf.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
         !S_ISLNK(info.st_mode);
}

int gate_make_destination(const std::string& folder, std::string& failed) {
  std::string whole = folder;
  if (!whole.empty() && whole.back() == '/') whole.pop_back();
  if (whole.empty() && !folder.empty()) return 0;  // "/" is there
  for (size_t slash = whole.find('/', 1);; slash = whole.find('/', slash + 1)) {
    failed = whole.substr(0, slash);
    if (const int code = ::make_folder(failed); show_make_dir_err(code)) return code;
    if (slash == std::string::npos) return 0;
  }
}

// Mounted volumes: which of them may be discs, and how much room there is.
//
// A disc is asked for once a frame while the program waits for it. So the candidates are kept: the
// mount table is read again only when the system says that it has changed, and at the latest after
// a second, in case a system does not say. Finding them touches no disc.
//
// The table is read here and not by libmount: Debian has no archive of that library to link, and a
// program on a first disc must start where it is not installed.
//
// Any thread. Writes disc_cache, under its lock.

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <initializer_list>
#include <mutex>

#include "corekit/Platform/PLT_system.h"

namespace {
constexpr uint64_t keep_us = 1000000;  // how long the candidates are believed unasked

int open_mount_table() {
  return open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
}

std::string read_from_start(int file) {
  std::string text;
  char block[16384];
  for (off_t at = 0;;) {
    const ssize_t got = pread(file, block, sizeof block, at);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    text.append(block, static_cast<size_t>(got));
    at += got;
  }
  return text;
}

std::string read_mount_table() {
  const int file = open_mount_table();
  if (file < 0) return {};
  std::string text = read_from_start(file);
  close(file);
  return text;
}

struct {
  std::mutex lock;
  int file = -1;         // the mount table, held open to be told of changes
  uint64_t read_at = 0;  // microseconds
  std::vector<std::string> discs;
} disc_cache;

// The system reports a change once for each open file, as an exceptional condition. Asking before
// reading means that a change in between is reported again rather than lost.
bool mount_table_changed(int file) {
  pollfd asked = {file, POLLPRI, 0};
  return poll(&asked, 1, 0) > 0;
}

// The table writes blanks, tabs, line ends, "\" and "#" as "\" and three octal digits.
std::string decoded(std::string_view field) {
  const auto octal = [](char c) { return c >= '0' && c <= '7'; };
  std::string out;
  out.reserve(field.size());
  for (size_t at = 0; at < field.size(); ++at) {
    if (field[at] == '\\' && at + 3 < field.size() && field[at + 1] <= '3' &&
        octal(field[at + 1]) && octal(field[at + 2]) && octal(field[at + 3])) {
      out += static_cast<char>((field[at + 1] - '0') * 64 + (field[at + 2] - '0') * 8 +
                               (field[at + 3] - '0'));
      at += 3;
    } else {
      out += field[at];
    }
  }
  return out;
}

// Of "11:0"; 0 for anything else.
uint64_t device_number(std::string_view text) {
  unsigned parts[2] = {};
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, parts[0]);
  if (first.ptr == end || *first.ptr != ':') return 0;
  const auto second = std::from_chars(first.ptr + 1, end, parts[1]);
  return second.ec == std::errc() && second.ptr == end ? makedev(parts[0], parts[1]) : 0;
}

// Takes the next piece up to `separator` off the front of `text`.
std::string_view take(std::string_view& text, char separator) {
  const size_t end = std::min(text.find(separator), text.size());
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return piece;
}

bool is_one_of(std::string_view text, std::initializer_list<std::string_view> list) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool may_be_disc(const PLT_mount& mount) {
  // A server that has gone away would hold up whoever looks at its share; no disc comes that way.
  if (is_one_of(mount.fstype, {"nfs", "nfs4", "cifs", "smb3", "9p", "autofs", "fuse.sshfs"})) {
    return false;
  }
  if (is_one_of(mount.fstype, {"iso9660", "udf", "fuse.fuseiso"})) return true;
  const std::string point = mount.point + "/";
  return point.starts_with("/media/") || point.starts_with("/mnt/") ||
         (point.starts_with("/run/media/") && point.size() > sizeof "/run/media/");
}
}  // namespace

std::vector<PLT_mount> PLT_parse_mounts(std::string_view text) {
  std::vector<PLT_mount> mounts;
  while (!text.empty()) {
    // id, parent, device, root, mount point, options, any number of tags, "-", type, source, ...
    std::string_view line = take(text, '\n');
    take(line, ' ');
    take(line, ' ');
    const std::string_view device = take(line, ' ');
    take(line, ' ');
    const std::string_view point = take(line, ' ');
    std::string_view word;
    while (!line.empty() && word != "-")
      word = take(line, ' ');
    const std::string_view type = take(line, ' ');
    if (!point.starts_with('/') || type.empty()) continue;
    mounts.push_back({decoded(point), decoded(type), device_number(device)});
  }
  return mounts;
}

PLT_mount PLT_mount_at(const std::string& point) {
  PLT_mount found;
  for (PLT_mount& mount : PLT_parse_mounts(read_mount_table())) {
    if (mount.point == point) found = std::move(mount);
  }
  return found;
}

std::vector<std::string> PLT_pick_discs(const std::vector<PLT_mount>& mounts) {
  std::vector<std::string> discs;
  for (const PLT_mount& mount : mounts) {
    if (!may_be_disc(mount) || mount.point.find_first_of("\\:") != std::string::npos) continue;
    const std::string path = mount.point == "/" ? mount.point : mount.point + "/";
    // Volumes that are mounted on one another share a path, and only the last is seen through it.
    if (std::find(discs.begin(), discs.end(), path) == discs.end()) discs.push_back(path);
  }
  return discs;
}

std::vector<std::string> PLT_disc_volumes() {
  const std::lock_guard<std::mutex> hold(disc_cache.lock);
  const bool first = disc_cache.file < 0;
  if (first) disc_cache.file = open_mount_table();
  if (disc_cache.file < 0) return {};
  const uint64_t now = PLT_microseconds();
  if (mount_table_changed(disc_cache.file) || first || now - disc_cache.read_at > keep_us) {
    disc_cache.discs = PLT_pick_discs(PLT_parse_mounts(read_from_start(disc_cache.file)));
    disc_cache.read_at = now;
  }
  return disc_cache.discs;
}

std::string PLT_volume_of(const std::string& path) {
  char resolved[PATH_MAX];
  struct stat info;
  if (!realpath(path.c_str(), resolved) || stat(resolved, &info) != 0) return {};
  std::string at = resolved;
  while (at.size() > 1) {
    std::string above = at.substr(0, std::max<size_t>(at.rfind('/'), 1));
    struct stat info_above;
    if (stat(above.c_str(), &info_above) != 0 || info_above.st_dev != info.st_dev) break;
    at = std::move(above);
  }
  return at;
}

int PLT_volume_space(const std::string& path, uint64_t* total, uint64_t* available) {
  struct statvfs info;
  while (statvfs(path.c_str(), &info) != 0) {
    if (errno != EINTR) return errno;
  }
  // f_bavail and not f_bfree: what is kept for the administrator is of no use to a user.
  const uint64_t unit = info.f_frsize ? info.f_frsize : info.f_bsize;
  if (total) *total = unit * info.f_blocks;
  if (available) *available = unit * info.f_bavail;
  return 0;
}

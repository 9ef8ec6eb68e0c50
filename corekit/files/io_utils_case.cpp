// Repair of a path's case: finding the file that a manifest means under the spelling that it has on
// this disk.
//
// Steps: find the longest leading piece of the path that exists as it stands; from there on down,
// look each part up in the listing of its folder without regard to case, and put the spelling found
// in its place.
//
// A fresh install asks for thousands of files that are not there, each of which would read its
// whole folder again; so each thread keeps the listing of the folder that it read last, for as long
// as the folder's times say that nothing in it has changed.

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_int.h"

namespace {
// Times of the coarsest volumes (FAT) move in steps of two seconds: a listing younger than that
// might miss a change that left the folder's time as it was, and is not kept.
constexpr long settle_seconds = 3;

struct folder_listing {
  dev_t device = 0;
  ino_t number = 0;
  timespec modified = {};
  timespec changed = {};
  bool settled = false;
  std::vector<std::string> names;  // by strcasecmp, and those that are equal in the folder's order
};
thread_local folder_listing last_listing;

bool same_time(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool still_good(const folder_listing& listing, const struct stat& folder) {
  return listing.settled && listing.device == folder.st_dev && listing.number == folder.st_ino &&
         same_time(listing.modified, folder.st_mtim) && same_time(listing.changed, folder.st_ctim);
}

bool before(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) < 0;
}

// The listing of a folder; null when it cannot be read.
const folder_listing* list_by_case(const char* folder) {
  struct stat info;
  if (stat(folder, &info) != 0) return nullptr;
  if (still_good(last_listing, info)) return &last_listing;

  last_listing.settled = false;
  last_listing.names.clear();
  DIR* const dir = opendir(folder);
  if (!dir) return nullptr;
  // The times are taken before the reading: a change during it makes the listing stale at once.
  if (fstat(dirfd(dir), &info) != 0) info = {};
  while (const dirent* entry = readdir(dir))
    last_listing.names.emplace_back(entry->d_name);
  closedir(dir);
  std::stable_sort(last_listing.names.begin(), last_listing.names.end(), before);

  last_listing.device = info.st_dev;
  last_listing.number = info.st_ino;
  last_listing.modified = info.st_mtim;
  last_listing.changed = info.st_ctim;
  const time_t youngest = std::max(info.st_mtim.tv_sec, info.st_ctim.tv_sec);
  last_listing.settled = youngest + settle_seconds <= std::time(nullptr);
  return &last_listing;
}

// The spelling of `name` in a folder: its own if that is there, else the folder's first that
// differs only in case; null when there is none.
const std::string* spelling(const folder_listing& listing, const std::string& name) {
  const auto [first, last] =
      std::equal_range(listing.names.begin(), listing.names.end(), name, before);
  if (first == last) return nullptr;
  const auto exact = std::find(first, last, name);
  return &*(exact == last ? first : exact);
}

// Runs `use` on the first `length` characters of a path, without a copy of them.
template <typename use_type>
auto with_head(std::string& path, size_t length, use_type use) {
  const char saved = path[length];
  path[length] = '\0';
  const auto result = use(path.c_str());
  path[length] = saved;
  return result;
}

// The length of the longest head of a missing path that exists: 0 for a relative one of which
// nothing does. Searched from the end, since mostly only the last part is missing.
size_t existing_head(std::string& path) {
  size_t end = path.size();
  while (end > 0) {
    const size_t slash = path.rfind('/', end - 1);
    if (slash == std::string::npos) return 0;
    if (slash == 0) return 1;
    end = slash;
    const bool exists = with_head(path, end, [](const char* head) {
      struct stat info;
      return stat(head, &info) == 0;
    });
    if (exists) return end;
  }
  return 0;
}
}  // namespace

bool io_repair_case(std::string& path) {
  if (path.empty()) return false;
  size_t at = existing_head(path);
  std::string name;
  for (;;) {
    at = path.find_first_not_of('/', at);
    if (at == std::string::npos) return true;
    const size_t end = std::min(path.find('/', at), path.size());
    const folder_listing* const listing =
        at == 0 ? list_by_case(".") : with_head(path, at, list_by_case);
    if (!listing) return false;
    name.assign(path, at, end - at);
    const std::string* const found = spelling(*listing, name);
    if (!found) return false;
    path.replace(at, end - at, *found);
    at = end;
  }
}

void findPath(std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) io_repair_case(path);
}

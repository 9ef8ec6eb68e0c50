// Opening the files of a copy: no link is followed at a path's end, nothing is waited for, and a
// path that is not there is looked for once more without regard to case. No globals are written.

#include "Installer-f/engine/utils_verify_open.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"

namespace {

// Whether an error says that there is nothing of that name, rather than nothing to be had of it.
bool says_absent(int error) {
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

// `path` is the whole of what `name` names from the folder on. Leaves errno behind a file_absent,
// and 0 for a folder.
opened_file open_plain(int folder, const char* name, const std::string& path) {
  opened_file file;
  // Not a link, which fails with ELOOP; not waiting for the other end of a FIFO.
  file.handle =
      io_handle(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.handle) {
    const int error = errno;
    file.kind = says_absent(error) ? file_absent : file_unreadable;
    if (error == ELOOP && is_sim_link(path.c_str() + app_path.size(), &file.text))
      file.kind = file_link;
    errno = error;
    return file;
  }
  struct stat info;
  if (fstat(file.handle.get(), &info) != 0) {
    file.kind = file_unreadable;
  } else if (S_ISREG(info.st_mode)) {
    file.kind = file_plain;
    file.size = static_cast<uint64_t>(info.st_size);
  } else {
    file.kind = S_ISDIR(info.st_mode) ? file_absent : file_unreadable;
  }
  errno = 0;
  return file;
}

bool may_be_spelt_otherwise(const opened_file& file) {
  return file.kind == file_absent && errno == ENOENT && g_case_sensitive;
}

}  // namespace

opened_file open_to_hash(const std::string& path) {
  std::string full = app_path + path;
  opened_file file = open_plain(AT_FDCWD, full.c_str(), full);
  if (may_be_spelt_otherwise(file) && io_repair_case(full))
    file = open_plain(AT_FDCWD, full.c_str(), full);
  return file;
}

// Finds and opens a folder, or notes what is to be thought of its files.
void tree_reader::enter(std::string_view folder) {
  constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
  entered_ = true;
  folder_ = folder;
  place_.assign(root_).append(folder);
  handle_ = io_handle(::open(place_.c_str(), flags));
  int error = handle_ ? 0 : errno;
  if (error == ENOENT && g_case_sensitive && io_repair_case(place_)) {
    handle_ = io_handle(::open(place_.c_str(), flags));
    error = handle_ ? 0 : errno;
  }
  without_ = says_absent(error) ? file_absent : file_unreadable;
}

opened_file tree_reader::open(std::string_view part) {
  const std::string_view folder = path_folder(part);
  if (!entered_ || folder != folder_) enter(folder);
  if (!handle_) {
    opened_file nothing;
    nothing.kind = without_;
    return nothing;
  }
  leaf_ = part.substr(folder.size());
  full_.assign(place_).append(leaf_);
  opened_file file = open_plain(handle_.get(), leaf_.c_str(), full_);
  if (may_be_spelt_otherwise(file) && io_repair_case(full_))
    file = open_plain(AT_FDCWD, full_.c_str(), full_);
  return file;
}

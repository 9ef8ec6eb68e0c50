// Folders with what they hold: listing, recursive copy, recursive deletion.
//
// A folder is always listed in full before anything in it is touched, so that its own changes do
// not disturb the reading. Any thread, but for the copy (see copy_file).

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>

#include "corekit/base/cmnd.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_int.h"

namespace {
constexpr char this_file[] = "Files/io_utils_tree";

// Filters of opensave_getitems beyond the kinds of files.
constexpr int keep_all = 0;
constexpr int folders_only = 19;
constexpr int no_items = 20;
constexpr int commands = 21;

// Files by their last four characters; kind 1 is the first.
constexpr char kinds[][5] = {".AFL", ".WPN", ".ACF", ".OBJ", ".SIT", ".SMO",
                             ".TXT", ".FMS", ".TRA", ".CAR", ".SPA", ".REG",
                             ".WAV", ".BMP", ".PNG", ".FDR", ".DSF", ".HGT"};

int kind_of_name(const std::string& name) {
  constexpr size_t length = sizeof kinds[0] - 1;
  if (name.size() < length) return 0;
  char ending[length + 1] = {};
  for (size_t i = 0; i < length; ++i) {
    const char c = name[name.size() - length + i];
    ending[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  for (size_t i = 0; i < std::size(kinds); ++i) {
    if (std::equal(ending, ending + length, kinds[i])) return static_cast<int>(i) + 1;
  }
  return 0;
}

// The volume usually tells what an entry is along with its name; some leave it to be asked.
int is_real_folder(int dir, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat info;
  return fstatat(dir, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
}

struct io_item {
  std::string name;
  int is_folder;  // 1 for a folder; 0 for all else, links to folders too
};

// Reads what an open folder holds, hidden names left out, in ascending order of the names' bytes. 0
// or errno; on a failure midway `items` has what was read before it.
int list_folder(int folder, std::vector<io_item>& items) {
  items.clear();
  io_handle listing(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* const dir = listing ? fdopendir(listing.get()) : nullptr;
  if (!dir) return errno;
  listing.release();
  int failed = 0;
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(dir);
    if (!entry) {
      failed = errno;
      break;
    }
    if (entry->d_name[0] == '.' || entry->d_name[0] == '\0') continue;
    items.push_back({entry->d_name, is_real_folder(folder, *entry)});
  }
  closedir(dir);
  std::sort(items.begin(), items.end(),
            [](const io_item& a, const io_item& b) { return a.name < b.name; });
  return failed;
}

int list_folder(const std::string& path, std::vector<io_item>& items) {
  items.clear();
  const io_handle folder(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return folder ? list_folder(folder.get(), items) : errno;
}
}  // namespace

int opensave_takeit(const std::string& name, int is_folder, int filter, int* kind) {
  const int own_kind = is_folder ? 0 : kind_of_name(name);
  if (kind) *kind = own_kind;
  if (name.empty() || name[0] == '.') return 0;
  if (filter == keep_all || is_folder) return 1;
  return filter != folders_only && own_kind == filter;
}

int opensave_getitems(const std::string& folder, int filter, std::vector<std::string>& names,
                      std::vector<int>& is_folder, int* failed) {
  if (failed) *failed = 0;
  names.clear();
  is_folder.clear();
  if (filter == commands) {
    cmnd.get_cmds_in_path(folder, names);
    is_folder.assign(names.size(), 0);
  }
  if (filter >= no_items) return static_cast<int>(names.size());

  const std::string full = app_path + folder;
  if (full.size() > 1 && full.back() != '/') {
    __MACIBM_alert(0, "Working path does not appear to be a directory!",
                   "I need to end all paths with the directory indicator!",
                   "This is not consistent with my labelling practices!", full, t_exit,
                   at_list_no_folder);
    return 0;
  }
  std::vector<io_item> items;
  const int code = list_folder(full, items);
  if (failed) *failed = code;
  for (io_item& item : items) {
    if (!opensave_takeit(item.name, item.is_folder, filter, nullptr)) continue;
    names.push_back(std::move(item.name));
    is_folder.push_back(item.is_folder);
  }
  return static_cast<int>(names.size());
}

// --- recursive copy ------------------------------------------------------------------------------

namespace {
struct folder_id {
  dev_t device;
  ino_t number;
  bool operator==(const folder_id&) const = default;
};

// A link inside a tree is made anew with the same text. Following it would copy what lies
// elsewhere, without end where it points back up.
int copy_link(const std::string& source, const std::string& target) {
  std::string text(PATH_MAX, '\0');
  const ssize_t length = readlink(source.c_str(), text.data(), text.size());
  if (length < 0) return io_fail(errno, this_file, 140);
  text.resize(static_cast<size_t>(length));
  if (symlink(text.c_str(), target.c_str()) == 0) return 0;
  if (errno != EEXIST) return io_fail(errno, this_file, 143);
  // A link that an earlier copy left is replaced; a file in its place is somebody's own.
  struct stat info;
  if (lstat(target.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
    return io_fail(EEXIST, this_file, 147);
  }
  if (unlink(target.c_str()) != 0 || symlink(text.c_str(), target.c_str()) != 0) {
    return io_fail(errno, this_file, 150);
  }
  return 0;
}

int identify(const std::string& path, folder_id& id) {
  struct stat info;
  if (stat((app_path + path).c_str(), &info) != 0) return errno;
  id = {info.st_dev, info.st_ino};
  return 0;
}

// `root` is the target folder of the whole copy, null at its start: meeting it inside the source
// means that the copy would go on into itself for ever.
int copy_folder(const std::string& source, const std::string& target, const folder_id* root) {
  folder_id source_id, target_id;
  if (const int failed = identify(source, source_id)) return io_fail(failed, this_file, 162);
  if (root && source_id == *root) return io_fail(EINVAL, this_file, 163);
  if (const int failed = make_folder(target); show_make_dir_err(failed)) return failed;
  if (!root) {
    if (const int failed = identify(target, target_id)) return io_fail(failed, this_file, 166);
    if (source_id == target_id) return io_fail(EINVAL, this_file, 167);
    root = &target_id;
  }

  std::vector<io_item> items;
  if (const int failed = list_folder(app_path + source, items)) {
    return io_fail(failed, this_file, 168);
  }
  for (const io_item& item : items) {
    const std::string from = source + item.name;
    const std::string to = target + item.name;
    int failed = 0;
    if (item.is_folder) {
      failed = copy_folder(from + "/", to + "/", root);
    } else if (is_sim_link(from.c_str(), nullptr)) {
      failed = copy_link(app_path + from, app_path + to);
    } else {
      failed = copy_file(from, to);
    }
    if (failed) return failed;
  }
  return 0;
}
}  // namespace

int copy_file_recursive(const std::string& source, const std::string& target) {
  if (source.empty() || source.back() != '/') return copy_file(source, target);
  return copy_folder(source, target.empty() || target.back() != '/' ? target + "/" : target,
                     nullptr);
}

// --- recursive deletion --------------------------------------------------------------------------

namespace {
// By handles and not by paths: a folder that is swapped for a link meanwhile leads nowhere.
int delete_folder(int parent, const std::string& name) {
  const io_handle folder(
      openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  int unread = folder ? 0 : errno;
  if (unread == ENOTDIR || unread == ELOOP) return io_fail(ENOTDIR, this_file, 198);
  std::vector<io_item> items;
  if (folder) unread = list_folder(folder.get(), items);
  for (const io_item& item : items) {
    if (!item.is_folder) {
      if (unlinkat(folder.get(), item.name.c_str(), 0) != 0) return io_fail(errno, this_file, 203);
    } else if (const int failed = delete_folder(folder.get(), item.name)) {
      return failed;
    }
  }
  if (unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0) return 0;
  // A folder that could not be read and did not go says more by the first of the two reasons.
  return io_fail(unread ? unread : errno, this_file, 206);
}
}  // namespace

int recursive_delete_folder(const std::string& path) {
  if (path.empty()) return delete_file(path);
  std::string full = app_path + path;
  if (full.find_first_not_of('/') == std::string::npos) return io_fail(EPERM, this_file, 213);
  if (full.back() != '/') {
    __MACIBM_alert(0, "Working path does not appear to be a directory!",
                   "I need to end all paths with the directory indicator!",
                   "This is not consistent with my labelling practices!", full, t_exit,
                   at_delete_no_folder);
    return ENOTDIR;
  }
  // With a "/" at its end a path is followed through a link whatever the flags say.
  while (full.back() == '/')
    full.pop_back();
  return delete_folder(AT_FDCWD, full);
}

// Writes a tree to disk: folders, files with mode and date, links, and archives by the 7z program.

#include "sample/sample_tree.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

extern char** environ;

namespace {

// Dates that do not depend on the day: the first revision is of 1 June 2009, each next one a month
// younger.
constexpr time_t first_date = 1243857600, month = 30 * 86400;

int complain(const char* what, const std::string& path) {
  std::fprintf(stderr, "make-sample: cannot %s %s: %s\n", what, path.c_str(), std::strerror(errno));
  return 1;
}

// Every folder that `path` needs below the root. The map has one folder's files side by side, so
// that most calls end at the first comparison.
int make_folders(const std::string& root, const std::string& path, std::string* last) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  if (folder == *last) return 0;
  *last = folder;
  for (size_t slash = folder.find('/'); slash != std::string::npos;
       slash = folder.find('/', slash + 1)) {
    const std::string whole = root + "/" + folder.substr(0, slash);
    if (mkdir(whole.c_str(), 0755) != 0 && errno != EEXIST)
      return complain("make the folder", whole);
  }
  return 0;
}

int write_file(const std::string& whole, const std::string& bytes, const sample_file& file) {
  const int handle = open(whole.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
  if (handle < 0) return complain("make", whole);
  bool good = true;
  for (size_t at = 0; good && at < bytes.size();) {
    const ssize_t count = write(handle, bytes.data() + at, bytes.size() - at);
    good = count > 0;
    if (good) at += static_cast<size_t>(count);
  }
  const timespec date{first_date + file.revision * month, 0};
  const timespec dates[2] = {date, date};
  good = good && fchmod(handle, file.mode) == 0 && futimens(handle, dates) == 0;
  good = close(handle) == 0 && good;
  return good ? 0 : complain("write", whole);
}

// Makes leaf.7z beside the file. 0; 1 if the program failed; 127 if there is none. The program runs
// in the file's folder, so that the archive holds the bare name, and behind "--", since a tile's
// name may begin with "-".
int make_7z(const std::string& whole) {
  const size_t slash = whole.rfind('/');
  std::string folder = whole.substr(0, slash), leaf = whole.substr(slash + 1);
  std::string archive = leaf + ".7z";
  char program[] = "7z", add[] = "a", quiet[] = "-bso0", no_bar[] = "-bsp0", kind[] = "-t7z",
       end[] = "--";
  char* const arguments[] = {program,        add,         quiet,  no_bar, kind, end,
                             archive.data(), leaf.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  pid_t child = 0;
  const int code = posix_spawnp(&child, program, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (code != 0) return code == ENOENT ? 127 : 1;
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return 1;
  if (!WIFEXITED(status)) return 1;
  return WEXITSTATUS(status) == 127 ? 127 : WEXITSTATUS(status) != 0;
}

}  // namespace

int write_sample_tree(const sample_tree& tree, const std::string& root) {
  if (mkdir(root.c_str(), 0755) != 0) return complain("make the folder", root);
  std::string last;
  for (const auto& [folder, unused] : tree.folders)
    if (make_folders(root, folder, &last) != 0) return 1;

  bool with_7z = true;
  for (const auto& [path, file] : tree.files) {
    const std::string whole = root + "/" + path;
    if (make_folders(root, path, &last) != 0) return 1;
    if (file.kind == content::link) {
      if (symlink(file.target.c_str(), whole.c_str()) != 0) return complain("make the link", whole);
      continue;
    }
    if (write_file(whole, sample_content(path, file), file) != 0) return 1;
    if (!file.ready_7z || !with_7z) continue;
    const int code = make_7z(whole);
    if (code == 127) {
      std::fprintf(stderr, "make-sample: there is no 7z program; going on without its archives\n");
      with_7z = false;
    } else if (code != 0) {
      std::fprintf(stderr, "make-sample: 7z failed on %s\n", whole.c_str());
      return 1;
    }
  }
  return 0;
}

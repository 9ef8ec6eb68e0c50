// Any thread.

#include "corekit/files/io_own.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_string.h"

io_own_turn::io_own_turn(const std::string& path)
    : folder_(open(std::string(path_folder(path)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (folder_) flock(folder_.get(), LOCK_EX);
}

bool io_own_replace(const std::string& path, const std::string& text) {
  const std::string fresh = path + ".new";
  io_handle file(PLT_open_own(fresh, plt_own_anew));
  if (!file) return false;
  int code = io_write_all(file.get(), text.data(), text.size());
  if (code == 0) code = file.close();
  if (code == 0 && std::rename(fresh.c_str(), path.c_str()) == 0) return true;
  unlink(fresh.c_str());
  return false;
}

// The shared output stream. Main thread. Globals written: ouf.

#include "corekit/files/io_utils_ouf.h"

#include <ext/stdio_filebuf.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/files/io_utils.h"

std::ofstream ouf;

namespace {
constexpr char this_file[] = "Files/io_utils_ouf";
constexpr char no_note[] = "no-copyright-string";

bool open_anew(const std::string& full, int type) {
  if (ouf.is_open()) ouf.close();  // only one file is written at a time: the last one wins
  ouf.clear();
  const int own = PLT_open_own(full, plt_own_anew);
  if (own < 0) return false;
  // By its handle: the file that was looked at is the one that is written. The stream closes it.
  const auto mode = type == ouf_text ? std::ios::out : std::ios::out | std::ios::binary;
  *ouf.rdbuf() = __gnu_cxx::stdio_filebuf<char>(own, mode);
  return ouf.is_open();
}
}  // namespace

int ouf_open(const std::string& path, int type, int version, const std::string& note) {
  if (type != ouf_binary && type != ouf_text) {
    MACIBM_fault(at_ouf_type, "Bad ouf_open type!");
    return 0;
  }
  const std::string full = app_path + path;
  path_checked(full);
  bool opened = open_anew(full, type);
  if (!opened) {
    make_folder(std::string(path_folder(path)));
    opened = open_anew(full, type);
  }
  if (!opened) {
    __MACIBM_alert(0,
                   "I could not save the file! Could the directory that the file sits in be "
                   "missing? Or flagged as READ-ONLY by the operating system? (Windows machines "
                   "typically do this).",
                   "Could the file be flagged as read-only? This happens in Windows if you copy it "
                   "from a CD!",
                   full,
                   "Try putting this app in the background and then flag the file as NOT "
                   "read-only, or creating the folder listed in the path above.",
                   t_alert, at_ouf_not_saved);
    return 0;
  }
  if (type == ouf_text) {
    ouf << "I\n" << version << " version" << (note == no_note ? "" : note) << "\n";
  } else {
    const int32_t stamp = version;
    char bytes[1 + sizeof stamp] = {'i'};
    std::memcpy(bytes + 1, &stamp, sizeof stamp);
    ouf.write(bytes, sizeof bytes);
  }
  return 1;
}

int ouf_close() {
  if (!ouf.is_open()) return 0;
  const bool was_good = !ouf.fail();
  errno = 0;
  ouf.close();
  const int reason = errno;
  const bool closed = !ouf.fail();
  ouf.clear();
  if (was_good && closed) return 0;
  return io_fail(reason ? reason : EIO, this_file, 74);
}

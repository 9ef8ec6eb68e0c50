// The two special entries of a zip archive: a Macintosh file's fork and a symbolic link.
//
// Called by zip_to_file, on its thread; writes sErrFile and sErrLine.

#include <minizip/unzip.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_zip_extra";

// The head of an AppleDouble block, big-endian: magic 0x00051607, version 0x00020000 and a filler
// that must be zero. Behind it come the number of parts, and for each part an id (9 the Finder
// information, 2 the fork), an offset and a length.
constexpr unsigned char kAppleHeader[24] = {0x00, 0x05, 0x16, 0x07, 0x00, 0x02};

}  // namespace

bool zip_fork_is_sound(const zip_bytes& block) {
  return block.size >= sizeof kAppleHeader &&
         memcmp(block.data, kAppleHeader, sizeof kAppleHeader) == 0;
}

int unzip_resource_fork(void* zip, const std::string& /*path*/, const unz_file_info_s& info) {
  zip_room room;
  zip_bytes block;
  if (int err = zip_read_entry(*static_cast<zip_reader*>(zip), info, room, block)) return err;
  if (!zip_fork_is_sound(block)) return io_fail(zip_bad_fork, source_name, 310);
  // A damaged transfer shows in the header, and a fork without its file is dropped anyway; as no
  // file has a fork here, the parts are not looked at.
  return 0;
}

int unzip_symlink(void* zip, const std::string& path, const unz_file_info_s& info) {
  zip_room room;
  zip_bytes text;
  if (int err = zip_read_entry(*static_cast<zip_reader*>(zip), info, room, text)) return err;
  const std::string target(reinterpret_cast<const char*>(text.data), text.size);
  if (target.find('\0') != std::string::npos) return io_fail(zip_cannot_read, source_name, 320);
  unlink(path.c_str());
  const int err = symlink(target.c_str(), path.c_str()) == 0 ? 0 : errno;
  // A link whose folder is missing, or with an empty target, passes: it stops no install, and the
  // next verification finds it.
  return err == ENOENT ? 0 : io_fail(err, source_name, 321);
}

// minizip's view of an archive in memory, and what its table of contents says of an entry.
//
// Any thread, each on its own archive. Writes sErrFile, sErrLine and the log.

#include <minizip/unzip.h>

#include <algorithm>
#include <cstring>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_zip_memory";

zip_reader& reader_of(voidpf stream) {
  return *static_cast<zip_reader*>(stream);
}

voidpf stream_open(voidpf opaque, const void*, int) {
  return opaque;
}

uLong stream_read(voidpf, voidpf stream, void* buffer, uLong wanted) {
  zip_reader& zip = reader_of(stream);
  const uLong count = std::min<uLong>(wanted, zip.archive.size - zip.at);
  if (count > 0) memcpy(buffer, zip.archive.data + zip.at, count);
  zip.at += count;
  zip.fell_short = count < wanted;
  return count;
}

uLong stream_write(voidpf, voidpf, const void*, uLong) {
  return 0;
}

ZPOS64_T stream_tell(voidpf, voidpf stream) {
  return reader_of(stream).at;
}

// `offset` may be a negative number in unsigned form: the sum wraps to the place that is meant.
long stream_seek(voidpf, voidpf stream, ZPOS64_T offset, int origin) {
  zip_reader& zip = reader_of(stream);
  uint64_t to = offset;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) to += zip.at;
  if (origin == ZLIB_FILEFUNC_SEEK_END) to += zip.archive.size;
  if (to > zip.archive.size) return -1;
  zip.at = to;
  return 0;
}

int stream_close(voidpf, voidpf) {
  return 0;
}

// minizip asks after a read that fell short, and would else take what is missing for zeros.
int stream_error(voidpf, voidpf stream) {
  return reader_of(stream).fell_short;
}

}  // namespace

zip_reader::zip_reader(const zip_bytes& bytes) : archive(bytes) {
  zlib_filefunc64_def calls = {};
  calls.zopen64_file = stream_open;
  calls.zread_file = stream_read;
  calls.zwrite_file = stream_write;
  calls.ztell64_file = stream_tell;
  calls.zseek64_file = stream_seek;
  calls.zclose_file = stream_close;
  calls.zerror_file = stream_error;
  calls.opaque = this;
  file = unzOpen2_64("", &calls);
}

zip_reader::~zip_reader() {
  if (file) unzClose(file);
}

int zip_entry_info(const zip_reader& zip, unz_file_info_s& info, std::string& name) {
  char stored[257] = {};
  const int err =
      unzGetCurrentFileInfo(zip.file, &info, stored, sizeof stored - 1, nullptr, 0, nullptr, 0);
  if (err != UNZ_OK) {
    zip_log("unzGetCurrentFileInfo err != UNZ_OK! err=" + std::to_string(err) + "\n");
    return io_fail(err, source_name, 220);
  }
  name.assign(stored, std::min<size_t>(info.size_filename, sizeof stored));
  return 0;
}

// mktime carries fields that are out of range, which a damaged date holds, over into the next. It
// looks on the disk each time whether the zone has changed; so files of one minute share a call.
time_t zip_entry_time(const unz_file_info_s& info) {
  thread_local uLong known_minute =
      ~uLong{0};  // none: dates have 32 bits, of which five are seconds
  thread_local time_t minute_start = -1;
  if (known_minute != info.dosDate >> 5) {
    known_minute = info.dosDate >> 5;
    const tm_unz& date = info.tmu_date;
    tm t = {};
    t.tm_min = int(date.tm_min);
    t.tm_hour = int(date.tm_hour);
    t.tm_mday = int(date.tm_mday);
    t.tm_mon = int(date.tm_mon);
    t.tm_year = int(date.tm_year) - 1900;
    t.tm_isdst = -1;
    minute_start = mktime(&t);
  }
  return minute_start == -1 ? -1 : minute_start + time_t(info.tmu_date.tm_sec);
}

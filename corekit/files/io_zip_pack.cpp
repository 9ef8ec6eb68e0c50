// Writing zip archives. Every archive has one entry, and all that its headers say is known before
// the first byte is written: so it is composed in memory and goes out in one call. libdeflate packs
// it, since it takes half the time of zlib; zlib streams what is too large for memory.
//
// Any thread; writes sErrFile, sErrLine and, in file_to_zip, the log.

#include "corekit/files/io_zip_pack.h"

#include <fcntl.h>
#include <libdeflate.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "corekit/base/hl_string.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip.h"
#include "corekit/files/io_zip_head.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_zip_pack";

constexpr int stopped = ECANCELED;
constexpr int deflate_level = 6;
constexpr size_t stream_step = 1u << 20;  // bytes of a streamed file at a time

// What has been packed already, such as a picture, takes most of the time and yields nothing. So a
// file from `sampled_from` on is tried first: pieces of it, evenly spread, are packed together. If
// that saves less than one byte in 200, the file goes into stored blocks, which packing and
// unpacking merely copy. On 2.1 GB of a simulator's data that halves the time, and makes the
// archives 0.13 % larger, still below those of zip.
constexpr size_t sampled_from = 32 * 1024;
constexpr size_t sample_piece = 4096;
constexpr size_t sample_every = 64 * 1024;
constexpr size_t fewest_pieces = 4, most_pieces = 1024;
constexpr size_t least_saving = 200;        // one byte in so many
constexpr uint32_t link_mode = 0xA1ED0000;  // a link, rwxr-xr-x
bool same_time(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

using deflate_engine =
    std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;

struct zip_packer::engine {
  deflate_engine packs{libdeflate_alloc_compressor(deflate_level), libdeflate_free_compressor};
  deflate_engine tries{libdeflate_alloc_compressor(1), libdeflate_free_compressor};
  deflate_engine stores{libdeflate_alloc_compressor(0), libdeflate_free_compressor};
  zip_room sample;                       // pieces of a file, and what they pack to
  zip_room plain;                        // a whole file, or a piece of one
  zip_room archive;                      // a whole archive, or a piece of packed bytes
  unsigned char* plain_piece = nullptr;  // in these, while a file is streamed
  unsigned char* packed_piece = nullptr;

  bool is_packed_already(uint64_t size, const unsigned char* bytes, int file);
  int pack_link(const zip_packer& told, const std::string& path, const std::string& zip_path,
                zip_packed& packed);
  int pack_whole(const zip_packer& told, int file, entry_facts& entry, const std::string& zip_path,
                 zip_packed& packed);
  int pack_stream(const zip_packer& told, int file, entry_facts& entry, const std::string& zip_path,
                  zip_packed& packed);
  int stream_entry(const zip_packer& told, int file, entry_facts& entry, int out,
                   zip_packed& packed);
  int deflate_piece(z_stream& stream, int flush, int out, uint64_t& written);
  static int write_archive(const std::string& zip_path, const void* bytes, size_t size);
};

namespace {

void show(const zip_packer& told, const void* bytes, size_t size) {
  if (told.look) told.look(told.look_with, bytes, size);
}

bool must_stop(const zip_packer& told) {
  return told.stop && told.stop->load(std::memory_order_relaxed);
}

int create(const std::string& zip_path, io_handle& out) {
  out = io_handle(open(zip_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  return out ? 0 : io_fail(zip_cannot_create, source_name, 170);
}

// A file whose bytes moved under the reader would be packed as no one ever saw it.
int check_unchanged(int file, zip_packed& packed) {
  struct stat now;
  if (fstat(file, &now) != 0) return io_fail(errno, source_name, 177);
  packed.changed = now.st_size != packed.plain_bytes || !same_time(now.st_mtim, packed.modified);
  return packed.changed ? io_fail(zip_source_unread, source_name, 179) : 0;
}

}  // namespace

int zip_packer::engine::write_archive(const std::string& zip_path, const void* bytes, size_t size) {
  io_handle out;
  if (int err = create(zip_path, out)) return err;
  const int write_err = io_write_all(out.get(), bytes, size);
  const int close_err = out.close();
  return io_fail(write_err ? write_err : close_err, source_name, 190);
}

int zip_packer::engine::pack_link(const zip_packer& told, const std::string& path,
                                  const std::string& zip_path, zip_packed& packed) {
  char target[path_limit + 1];
  const ssize_t length = readlink(path.c_str(), target, sizeof target);
  if (length < 0) return io_fail(errno, source_name, 197);
  if (size_t(length) > path_limit) return io_fail(zip_name_too_long, source_name, 198);
  show(told, target, size_t(length));

  entry_facts entry;
  entry.name = path_leaf(path);
  entry.crc = libdeflate_crc32(0, target, size_t(length));
  entry.packed_size = entry.plain_size = static_cast<uint32_t>(length);
  entry.attributes = link_mode;
  const size_t size = head_size(entry) + size_t(length) + tail_size(entry);
  unsigned char* const at = archive.need(size);
  if (!at) return io_fail(zip_no_memory, source_name, 208);
  put_head(at, entry);
  std::memcpy(at + head_size(entry), target, size_t(length));
  put_tail(at + head_size(entry) + length, entry);
  packed.plain_bytes = length;
  packed.archive_bytes = static_cast<int64_t>(size);
  return write_archive(zip_path, at, size);
}

// By a sample of the file, from its bytes or, if these are not in memory, from the open file.
bool zip_packer::engine::is_packed_already(uint64_t size, const unsigned char* bytes, int file) {
  if (size < sampled_from) return false;
  const size_t pieces = std::clamp<size_t>(size / sample_every, fewest_pieces, most_pieces);
  const size_t sampled = pieces * sample_piece;
  const size_t room = libdeflate_deflate_compress_bound(tries.get(), sampled);
  unsigned char* const at = sample.need(sampled + room);
  if (!at) return false;
  for (size_t i = 0; i < pieces; ++i) {
    const uint64_t from = (size - sample_piece) * i / (pieces - 1);
    unsigned char* const to = at + i * sample_piece;
    if (bytes) {
      std::memcpy(to, bytes + from, sample_piece);
    } else if (pread(file, to, sample_piece, static_cast<off_t>(from)) != ssize_t{sample_piece}) {
      return false;
    }
  }
  const size_t packed = libdeflate_deflate_compress(tries.get(), at, sampled, at + sampled, room);
  return packed + sampled / least_saving > sampled;
}

int zip_packer::engine::pack_whole(const zip_packer& told, int file, entry_facts& entry,
                                   const std::string& zip_path, zip_packed& packed) {
  const size_t size = size_t(packed.plain_bytes);
  unsigned char* const bytes = plain.need(size + 1);
  if (!bytes) return io_fail(zip_no_memory, source_name, 223);
  size_t got = 0;
  // One byte more than there should be, to notice a file that grows.
  if (int err = io_read_all(file, bytes, size + 1, got)) return io_fail(err, source_name, 226);
  packed.changed = got != size;
  if (packed.changed) return io_fail(zip_source_unread, source_name, 228);
  if (int err = check_unchanged(file, packed)) return err;
  if (must_stop(told)) return stopped;
  show(told, bytes, size);
  if (must_stop(told)) return stopped;

  const size_t head = head_size(entry);
  libdeflate_compressor* const deflate =
      is_packed_already(size, bytes, -1) ? stores.get() : packs.get();
  const size_t room = libdeflate_deflate_compress_bound(deflate, size);
  unsigned char* const at = archive.need(head + room + tail_size(entry));
  if (!at) return io_fail(zip_no_memory, source_name, 237);
  entry.crc = libdeflate_crc32(0, bytes, size);
  const size_t deflated = libdeflate_deflate_compress(deflate, bytes, size, at + head, room);
  entry.packed_size = static_cast<uint32_t>(deflated);
  entry.plain_size = static_cast<uint32_t>(size);
  put_head(at, entry);
  put_tail(at + head + deflated, entry);
  packed.archive_bytes = static_cast<int64_t>(head + deflated + tail_size(entry));
  if (must_stop(told)) return stopped;
  return write_archive(zip_path, at, size_t(packed.archive_bytes));
}

// Writes what zlib has made of its present input.
int zip_packer::engine::deflate_piece(z_stream& stream, int flush, int out, uint64_t& written) {
  for (;;) {
    stream.next_out = packed_piece;
    stream.avail_out = stream_step;
    if (::deflate(&stream, flush) == Z_STREAM_ERROR) return io_fail(EINVAL, source_name, 255);
    const size_t made = stream_step - stream.avail_out;
    if (int err = io_write_all(out, packed_piece, made)) return io_fail(err, source_name, 258);
    written += made;
    if (stream.avail_out != 0) return 0;
  }
}

int zip_packer::engine::stream_entry(const zip_packer& told, int file, entry_facts& entry, int out,
                                     zip_packed& packed) {
  z_stream stream = {};
  const uint64_t size = static_cast<uint64_t>(packed.plain_bytes);
  const int level = is_packed_already(size, nullptr, file) ? Z_NO_COMPRESSION : deflate_level;
  if (deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL - 1, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    return io_fail(zip_no_memory, source_name, 269);
  }
  const std::unique_ptr<z_stream, int (*)(z_stream*)> ends(&stream, deflateEnd);
  uint64_t read = 0, written = 0;
  for (bool more = true; more;) {
    if (must_stop(told)) return stopped;
    size_t got = 0;
    if (int err = io_read_all(file, plain_piece, stream_step, got))
      return io_fail(err, source_name, 278);
    read += got;
    more = got == stream_step;
    packed.changed = read > size || (!more && read < size);
    if (packed.changed) return io_fail(zip_source_unread, source_name, 282);
    show(told, plain_piece, got);
    entry.crc = libdeflate_crc32(entry.crc, plain_piece, got);
    stream.next_in = plain_piece;
    stream.avail_in = static_cast<uInt>(got);
    if (int err = deflate_piece(stream, more ? Z_NO_FLUSH : Z_FINISH, out, written)) return err;
    if (written > zip_size_limit - 4096) return io_fail(zip_too_large, source_name, 288);
  }
  entry.packed_size = static_cast<uint32_t>(written);
  entry.plain_size = static_cast<uint32_t>(size);
  return check_unchanged(file, packed);
}

// The headers come last, when they are known: the first one's place is left open.
int zip_packer::engine::pack_stream(const zip_packer& told, int file, entry_facts& entry,
                                    const std::string& zip_path, zip_packed& packed) {
  plain_piece = plain.need(stream_step);
  packed_piece = archive.need(stream_step);
  if (!plain_piece || !packed_piece) return io_fail(zip_no_memory, source_name, 299);
  io_handle out;
  if (int err = create(zip_path, out)) return err;
  const off_t head = static_cast<off_t>(head_size(entry));
  if (lseek(out.get(), head, SEEK_SET) != head) return io_fail(errno, source_name, 303);
  if (int err = stream_entry(told, file, entry, out.get(), packed)) return err;

  put_tail(packed_piece, entry);
  int err = io_write_all(out.get(), packed_piece, tail_size(entry));
  put_head(packed_piece, entry);
  if (err == 0 && lseek(out.get(), 0, SEEK_SET) != 0) err = errno;
  if (err == 0) err = io_write_all(out.get(), packed_piece, head_size(entry));
  const int close_err = out.close();
  packed.archive_bytes = head + entry.packed_size + static_cast<int64_t>(tail_size(entry));
  return io_fail(err ? err : close_err, source_name, 313);
}

uint32_t zip_date(time_t when) {
  tm t = {};
  if (!localtime_r(&when, &t) || t.tm_year < 80) {
    t = {};
    t.tm_year = 80;
    t.tm_mday = 1;
  } else if (t.tm_year > 207) {
    t.tm_year = 207;
    t.tm_mon = 11;
    t.tm_mday = 31;
  }
  return static_cast<uint32_t>((t.tm_year - 80) << 25 | (t.tm_mon + 1) << 21 | t.tm_mday << 16 |
                               t.tm_hour << 11 | t.tm_min << 5 | t.tm_sec / 2);
}

zip_packer::zip_packer() : engine_(std::make_unique<engine>()) {}
zip_packer::~zip_packer() = default;

int zip_packer::pack(const std::string& path, const std::string& zip_path, zip_packed& packed) {
  packed = {};
  entry_facts entry;
  entry.name = path_leaf(path);
  if (entry.name.empty()) return io_fail(zip_source_unread, source_name, 323);
  const io_handle file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat info;
  if (!file && errno == ELOOP) {
    if (lstat(path.c_str(), &info) != 0) return io_fail(errno, source_name, 327);
  } else if (!file || fstat(file.get(), &info) != 0) {
    return io_fail(zip_source_unread, source_name, 329);
  }
  packed.modified = info.st_mtim;
  packed.mode = info.st_mode;
  if (!file) return engine_->pack_link(*this, path, zip_path, packed);
  if (!S_ISREG(info.st_mode)) return io_fail(zip_source_unread, source_name, 334);
  packed.plain_bytes = info.st_size;
  const auto size = static_cast<uint64_t>(info.st_size);
  if (info.st_size > most_bytes) return io_fail(zip_too_large, source_name, 337);

  if (!engine_->packs || !engine_->tries || !engine_->stores)
    return io_fail(zip_no_memory, source_name, 310);
  entry.method = Z_DEFLATED;
  entry.date = packed.date = zip_date(std::min(info.st_mtim.tv_sec, newest));
  entry.attributes = static_cast<uint32_t>(info.st_mode) << 16;
  return size <= whole_limit ? engine_->pack_whole(*this, file.get(), entry, zip_path, packed)
                             : engine_->pack_stream(*this, file.get(), entry, zip_path, packed);
}

int file_to_zip(const std::string& in_path, const std::string& zip_path) {
  std::string path = app_path + in_path;
  if (g_case_sensitive) findPath(path);
  zip_packer packer;
  zip_packed packed;
  const int err = packer.pack(path, app_path + zip_path, packed);
  if (err != 0) {
    zip_log("file_to_zip failed with error " + std::to_string(err) + ".\nfile = " + sErrFile +
            " line = " + std::to_string(sErrLine) + "\n");
  }
  return err;
}

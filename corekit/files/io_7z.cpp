// 7z archives, read by libarchive from memory.
//
// Each entry is unpacked into memory whole, where libarchive compares it with its CRC, and only
// then takes the place of the old file. Any thread; writes sErrFile, sErrLine and the log.

#include "corekit/files/io_7z.h"

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_7z";

constexpr unsigned char magic[6] = {'7', 'z', 0xBC, 0xAF, 0x27, 0x1C};

// LZMA's densest is some 7,050 to 1: a repeated match of 273 bytes, coded in 14 binary decisions of
// 0.022 bits each. Other methods do better on content that is all the same, so that up to
// `plain_floor` bytes any ratio is believed.
constexpr uint64_t lzma_ratio = 7200;
constexpr uint64_t plain_floor = 256u << 20;

// Names are UTF-16 in the archive and UTF-8 here, whatever the user's locale: libarchive converts
// to the locale of the thread.
class utf8_names {
 public:
  utf8_names() {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);  // never freed
    if (utf8) before = uselocale(utf8);
  }
  ~utf8_names() {
    if (before) uselocale(before);
  }
  utf8_names(const utf8_names&) = delete;
  utf8_names& operator=(const utf8_names&) = delete;

 private:
  locale_t before = nullptr;
};

using reader_7z = std::unique_ptr<archive, decltype(&archive_read_free)>;

int reader_code(archive* reader, int code, int line) {
  return io_fail(archive_errno(reader) == ENOMEM ? zip_no_memory : code, source_name, line);
}

// Memory that grows with what arrives, as the declared size is only a claim.
int reserve(zip_bytes& bytes, size_t& room, size_t needed, size_t declared) {
  if (needed <= room) return 0;
  room = std::max(needed, std::min(declared, std::max<size_t>(2 * room, 1u << 20)));
  auto* grown = static_cast<unsigned char*>(realloc(bytes.own.get(), room));
  if (!grown) return io_fail(zip_no_memory, source_name, 410);
  (void)bytes.own.release();
  bytes.own.reset(grown);
  bytes.data = grown;
  return 0;
}

// The entry's bytes, at most `allowed` of them. Any negative result of the reader is a failure: a
// bad CRC of a stored entry is no more than a warning to it.
int read_entry(archive* reader, archive_entry* entry, uint64_t allowed, zip_bytes& out) {
  const uint64_t declared = uint64_t(std::max<la_int64_t>(archive_entry_size(entry), 0));
  if (declared > allowed) return io_fail(zip_too_large, source_name, 420);
  size_t room = 0;
  for (;;) {
    const void* block = nullptr;
    size_t count = 0;
    la_int64_t offset = 0;
    const int result = archive_read_data_block(reader, &block, &count, &offset);
    if (result == ARCHIVE_EOF) break;
    if (result < 0) return reader_code(reader, zip_cannot_read, 421);
    if (uint64_t(offset) != out.size || count > declared - out.size) {
      return io_fail(zip_cannot_read, source_name, 422);
    }
    if (int err = reserve(out, room, out.size + count, declared)) return err;
    if (count > 0) memcpy(out.own.get() + out.size, block, count);
    out.size += count;
  }
  return out.size == declared ? 0 : io_fail(zip_cannot_read, source_name, 423);
}

int write_entry(const std::string& path, const zip_bytes& bytes) {
  int fd = -1;
  if (int err = zip_create_file(path, fd)) return err;
  const int write_err = zip_write_file(fd, bytes);
  const int close_err = zip_close_file(fd);
  return write_err != 0 || close_err != 0 ? io_fail(zip_cannot_write, source_name, 430) : 0;
}

int unpack_all(archive* reader, uint64_t allowed, const std::string& folder, std::string* name,
               bool use_name) {
  for (bool first_header = true, first_file = true;; first_header = false) {
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(reader, &entry);
    // Without a single entry there is nothing that could count as unpacked.
    if (result == ARCHIVE_EOF && !first_header) return 0;
    if (result != ARCHIVE_OK) {
      return reader_code(reader, first_header ? zip_cannot_open : zip_cannot_read, 440);
    }
    if (archive_entry_filetype(entry) == AE_IFDIR) continue;

    const char* stored = archive_entry_pathname(entry);
    const std::string as = first_file && use_name ? *name : stored ? stored : "";
    first_file = false;
    zip_bytes bytes;
    if (const char* target = archive_entry_symlink(entry)) {
      // No links are made here: the target's text is the file's content, as the archive has it.
      bytes.data = reinterpret_cast<const unsigned char*>(target);
      bytes.size = strlen(target);
    } else if (int err = read_entry(reader, entry, allowed, bytes)) {
      return err;
    }
    allowed -= std::min<uint64_t>(allowed, bytes.size);

    std::string path;
    if (int err = zip_place(folder, as, path)) return err;
    if (int err = write_entry(path, bytes)) return err;
    if (name) *name = path;
  }
}

int unpack(const std::string& path, const std::string& folder, std::string* name, bool use_name) {
  zip_bytes in;
  if (int err = zip_load(path, in)) return err;
  // The reader would also take a program that unpacks itself.
  if (in.size < sizeof magic || memcmp(in.data, magic, sizeof magic) != 0) {
    return io_fail(zip_cannot_open, source_name, 450);
  }
  const utf8_names while_reading;
  const reader_7z reader(archive_read_new(), archive_read_free);
  if (!reader) return io_fail(zip_no_memory, source_name, 451);
  if (archive_read_support_format_7zip(reader.get()) != ARCHIVE_OK ||
      archive_read_open_memory(reader.get(), in.data, in.size) != ARCHIVE_OK) {
    return reader_code(reader.get(), zip_cannot_open, 452);
  }
  const uint64_t allowed =
      std::min(zip_size_limit, std::max(plain_floor, uint64_t(in.size) * lzma_ratio));
  return unpack_all(reader.get(), allowed, folder, name, use_name);
}

}  // namespace

int p7z_to_file(const std::string& archive_path, const std::string& out_folder, std::string* name,
                int use_name) {
  const std::string path = app_path + archive_path;
  const int err = unpack(path, app_path + out_folder, name, use_name && name);
  if (err != 0) {
    zip_log("p7z_to_file failed with error " + std::to_string(err) + ". file = " + sErrFile +
            " line = " + std::to_string(sErrLine) + ". inFile=" + path + ".\n");
  }
  return err;
}

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

#include "corekit/files/io_7z_head.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr char source_name[] = "Files/io_7z";

// Many times what a package of a disc has.
constexpr size_t most_entries_7z = 65536;

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

// An archive that is being read, if what it claims is within reason.
class reader_7z {
 public:
  ~reader_7z() {
    archive_entry_free(entry);
    archive_read_free(reader);
  }
  // 0, 20001 or 12; `claims` receives what the head says.
  int open(const zip_bytes& in, size_t most_entries, claims_7z& claims);

  archive* const reader = archive_read_new();
  // Of our own: the library does not look whether there was memory for the one that it makes.
  archive_entry* const entry = archive_entry_new2(reader);

 private:
  const utf8_names while_reading;
};

int reader_code(archive* reader, int code, int line) {
  return io_fail(archive_errno(reader) == ENOMEM ? zip_no_memory : code, source_name, line);
}

// The entry's bytes, at most `allowed` of them. Any negative result of the reader is a failure: a
// bad CRC of a stored entry is no more than a warning to it. The memory grows with what arrives, as
// the declared size is only a claim.
int read_entry(archive* reader, archive_entry* entry, uint64_t allowed, zip_room& room,
               zip_bytes& out) {
  const uint64_t declared = uint64_t(std::max<la_int64_t>(archive_entry_size(entry), 0));
  if (declared > allowed) return io_fail(zip_too_large, source_name, 420);
  out = {};
  for (size_t ready = 0;;) {
    const void* block = nullptr;
    size_t count = 0;
    la_int64_t offset = 0;
    const int result = archive_read_data_block(reader, &block, &count, &offset);
    if (result == ARCHIVE_EOF) break;
    if (result < 0) return reader_code(reader, zip_cannot_read, 421);
    if (uint64_t(offset) != out.size || count > declared - out.size) {
      return io_fail(zip_cannot_read, source_name, 422);
    }
    if (out.size + count > ready) {
      ready = std::max(out.size + count, std::min<size_t>(declared, 2 * ready + (1u << 20)));
      out.data = room.grow(ready, out.size);
      if (!out.data) return io_fail(zip_no_memory, source_name, 410);
    }
    if (count > 0) memcpy(const_cast<unsigned char*>(out.data) + out.size, block, count);
    out.size += count;
  }
  return out.size == declared ? 0 : io_fail(zip_cannot_read, source_name, 423);
}

int write_entry(const std::string& path, const zip_bytes& bytes) {
  io_handle file;
  if (int err = zip_create_file(path, file)) return err;
  const int write_err = io_write_all(file.get(), bytes.data, bytes.size);
  const int close_err = file.close();
  return write_err != 0 || close_err != 0 ? io_fail(zip_cannot_write, source_name, 430) : 0;
}

int unpack_all(const reader_7z& zip, uint64_t allowed, const std::string& folder, std::string* name,
               bool use_name) {
  archive* const reader = zip.reader;
  archive_entry* const entry = zip.entry;
  zip_room room;
  for (bool first_header = true, first_file = true;; first_header = false) {
    const int result = archive_read_next_header2(reader, entry);
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
    } else if (int err = read_entry(reader, entry, allowed, room, bytes)) {
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
  zip_room room;
  zip_bytes in;
  if (int err = zip_load(path, room, in)) return err;
  reader_7z zip;
  claims_7z claims;
  if (int err = zip.open(in, most_entries_7z, claims)) return err;
  const uint64_t allowed =
      std::min(zip_size_limit, std::max(plain_floor, uint64_t(in.size) * lzma_ratio));
  return unpack_all(zip, allowed, folder, name, use_name);
}

single_outcome outcome_of(claims_7z claims) {
  switch (claims) {
    case claims_empty:
      return single_empty;
    case claims_too_large:
      return single_too_large;
    default:
      return single_no_archive;
  }
}

// The next entry of an archive that may hold one file and its fork.
single_outcome read_next(const reader_7z& zip, uint64_t most, zip_room& room, single_file& file,
                         std::string& file_name, std::string& fork_name) {
  archive* const reader = zip.reader;
  archive_entry* const entry = zip.entry;
  const int result = archive_read_next_header2(reader, entry);
  if (result == ARCHIVE_EOF) return single_empty;
  if (result != ARCHIVE_OK) {
    return archive_errno(reader) == ENOMEM ? single_no_memory : single_damaged;
  }
  const char* const stored = archive_entry_pathname(entry);
  std::string name = stored ? stored : "";
  const bool is_fork = name.starts_with(zip_fork_prefix);
  std::string& taken = is_fork ? fork_name : file_name;
  const auto type = archive_entry_filetype(entry);
  if (!taken.empty() || name.empty() || (type != AE_IFREG && type != AE_IFLNK)) {
    return single_other_file;
  }
  taken = std::move(name);
  if (is_fork) return single_ok;  // its bytes are passed over
  zip_bytes bytes;
  if (const char* target = archive_entry_symlink(entry)) {
    // No links are made of a 7z archive: the target's text is the file's content, as it is stored.
    bytes.size = strlen(target);
    unsigned char* const memory = room.need(bytes.size);
    if (!memory) return single_no_memory;
    memcpy(memory, target, bytes.size);
    bytes.data = memory;
    if (bytes.size > most) return single_too_large;
  } else if (const int err = read_entry(reader, entry, most, room, bytes)) {
    return single_of_code(err);
  }
  file.bytes = bytes.data;
  file.size = bytes.size;
  return single_ok;
}

}  // namespace

int reader_7z::open(const zip_bytes& in, size_t most_entries, claims_7z& claims) {
  claims = io_7z_claims(in.data, in.size, most_entries);
  if (claims != claims_fine) return io_fail(zip_cannot_open, source_name, 450);
  if (!reader || !entry) return io_fail(zip_no_memory, source_name, 451);
  if (archive_read_support_format_7zip(reader) != ARCHIVE_OK ||
      archive_read_open_memory(reader, in.data, in.size) != ARCHIVE_OK) {
    return reader_code(reader, zip_cannot_open, 452);
  }
  return 0;
}

single_outcome single_from_7z(const zip_bytes& archive, uint64_t most, zip_room& room,
                              single_file& file, std::string& name) {
  reader_7z zip;
  claims_7z claims;
  if (const int err = zip.open(archive, single_entries, claims)) {
    return claims == claims_fine ? single_of_code(err) : outcome_of(claims);
  }
  std::string fork_name;
  name.clear();
  for (size_t entries = 0;; ++entries) {
    const single_outcome outcome = read_next(zip, most, room, file, name, fork_name);
    if (outcome == single_empty && entries > 0) break;
    if (outcome != single_ok) return outcome;
  }
  return single_names_match(name, fork_name) ? single_ok : single_other_file;
}

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

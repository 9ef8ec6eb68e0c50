// The one file of an archive; see io_single.h. The 7z half is in io_7z.cpp.
//
// Steps for a zip: look at the whole table of contents, one file and its fork or nothing; check the
// fork; unpack the file and compare it with its sum. For an archive as the builder writes it, a
// look at both ends is all of that; minizip, which searches for them, would take a tenth of the
// time that a small file takes. Any thread; the memory is each thread's own.

#include "corekit/files/io_single.h"

#include <minizip/unzip.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "corekit/base/hl_string.h"
#include "corekit/files/io_zip_head.h"
#include "corekit/files/io_zip_parts.h"

namespace {

constexpr uint64_t most_fork = 16u << 20;

thread_local zip_room archive_room, content_room;
thread_local std::string content_name;

bool is_7z(const zip_bytes& archive) {
  constexpr unsigned char magic[6] = {'7', 'z', 0xBC, 0xAF, 0x27, 0x1C};
  return archive.size >= sizeof magic && memcmp(archive.data, magic, sizeof magic) == 0;
}

// The mark that ends a table of contents, with nothing before it.
bool is_empty_zip(const zip_bytes& archive) {
  return archive.size >= 22 && memcmp(archive.data, "PK\5\6", 4) == 0;
}

enum entry_kind { plain_entry, link_entry, fork_entry, other_entry };

entry_kind kind_of(const unz_file_info& info, std::string_view name) {
  if (name.empty() || name.ends_with('/')) return other_entry;
  if (name.starts_with(zip_fork_prefix)) return fork_entry;
  const unsigned mode = unsigned(info.external_fa >> 16);
  if ((mode & 0xA000) == 0xA000) return link_entry;
  const unsigned type = mode & S_IFMT;
  return type == 0 || type == S_IFREG ? plain_entry : other_entry;  // no folders, devices, pipes
}

// What the table of contents says, and where in it the entry stands.
struct listed_entry {
  unz_file_info info = {};
  std::string name;
  unz_file_pos position = {};
};

single_outcome list_entries(const zip_reader& zip, listed_entry& file, listed_entry& fork) {
  if (!zip.file) return is_empty_zip(zip.archive) ? single_empty : single_no_archive;
  int err = unzGoToFirstFile(zip.file);
  if (err == UNZ_END_OF_LIST_OF_FILE) return single_empty;
  for (size_t count = 0; err == UNZ_OK; err = unzGoToNextFile(zip.file), ++count) {
    if (count == single_entries) return single_other_file;
    listed_entry entry;
    if (zip_entry_info(zip, entry.info, entry.name) != 0 ||
        unzGetFilePos(zip.file, &entry.position) != UNZ_OK) {
      return single_damaged;
    }
    const entry_kind kind = kind_of(entry.info, entry.name);
    listed_entry& taken = kind == fork_entry ? fork : file;
    if (kind == other_entry || !taken.name.empty()) return single_other_file;
    taken = std::move(entry);
  }
  if (err != UNZ_END_OF_LIST_OF_FILE) return single_damaged;
  return single_names_match(file.name, fork.name) ? single_ok : single_other_file;
}

// What minizip would say of it.
unz_file_info info_of(const entry_facts& entry) {
  unz_file_info info = {};
  info.compression_method = entry.method;
  info.dosDate = entry.date;
  info.crc = entry.crc;
  info.compressed_size = entry.packed_size;
  info.uncompressed_size = entry.plain_size;
  info.external_fa = entry.attributes;
  // PKWARE's APPNOTE.TXT, 4.4.6: seconds are counted by two, months from 1, years from 1980.
  const auto field = [&](int shift, uint32_t mask) { return uInt(entry.date >> shift & mask); };
  info.tmu_date = {2 * field(0, 31), field(5, 63),      field(11, 31),
                   field(16, 31),    field(21, 15) - 1, field(25, 127) + 1980};
  return info;
}

void describe(const unz_file_info& info, std::string_view name, const zip_bytes& bytes,
              single_file& file) {
  file.bytes = bytes.data;
  file.size = bytes.size;
  file.is_link = kind_of(info, name) == link_entry;
  if (info.external_fa == 0) return;
  file.mode = mode_t(info.external_fa >> 16) & 0777;
  file.modified = zip_entry_time(info);
}

single_outcome from_plain_zip(const zip_bytes& archive, const entry_facts& entry, uint64_t most,
                              zip_room& room, single_file& file, std::string& name) {
  const unz_file_info info = info_of(entry);
  const entry_kind kind = kind_of(info, entry.name);
  if (kind != plain_entry && kind != link_entry) return single_other_file;
  if (entry.plain_size > most) return single_too_large;
  zip_bytes bytes;
  const zip_bytes packed{archive.data + head_size(entry), entry.packed_size};
  if (const int code = zip_unpack_entry(info, packed, room, bytes)) return single_of_code(code);
  name = entry.name;
  describe(info, name, bytes, file);
  return single_ok;
}

single_outcome read_entry(const zip_reader& zip, listed_entry& entry, uint64_t most, zip_room& room,
                          zip_bytes& bytes) {
  if (entry.info.uncompressed_size > most) return single_too_large;
  if (unzGoToFilePos(zip.file, &entry.position) != UNZ_OK) return single_damaged;
  return single_of_code(zip_read_entry(zip, entry.info, room, bytes));
}

}  // namespace

bool single_names_match(std::string_view file, std::string_view fork) {
  if (file.empty()) return false;
  if (fork.empty()) return true;
  std::string own(zip_fork_prefix);
  own.append("/").append(path_folder(file)).append("._").append(path_leaf(file));
  return fork == own;
}

single_outcome single_of_code(int code) {
  switch (code) {
    case 0:
      return single_ok;
    case zip_no_memory:
      return single_no_memory;
    case zip_too_large:
      return single_too_large;
    default:
      return single_damaged;
  }
}

single_outcome single_from_zip(const zip_bytes& archive, uint64_t most, zip_room& room,
                               single_file& file, std::string& name) {
  if (entry_facts entry; take_apart(archive.data, archive.size, entry)) {
    return from_plain_zip(archive, entry, most, room, file, name);
  }
  const zip_reader zip(archive);
  listed_entry content, fork;
  if (const single_outcome outcome = list_entries(zip, content, fork)) return outcome;
  zip_bytes bytes;
  if (!fork.name.empty()) {
    if (const single_outcome outcome = read_entry(zip, fork, most_fork, room, bytes))
      return outcome;
    if (!zip_fork_is_sound(bytes)) return single_damaged;
  }
  if (const single_outcome outcome = read_entry(zip, content, most, room, bytes)) return outcome;
  describe(content.info, content.name, bytes, file);
  name = std::move(content.name);
  return single_ok;
}

single_outcome io_read_single(const unsigned char* archive, size_t size, uint64_t most,
                              single_file& file) {
  file = {};
  if (size == 0) return single_empty;
  const zip_bytes bytes{archive, size};
  const single_outcome outcome =
      is_7z(bytes) ? single_from_7z(bytes, most, content_room, file, content_name)
                   : single_from_zip(bytes, most, content_room, file, content_name);
  file.name = content_name;
  return outcome;
}

single_outcome io_load_archive(int fd, uint64_t most, const unsigned char*& bytes, size_t& size) {
  zip_bytes loaded;
  const int code = zip_load(fd, most, archive_room, loaded);
  bytes = loaded.data;
  size = loaded.size;
  if (code == zip_no_memory || code == zip_too_large) return single_of_code(code);
  errno = code;
  return code == 0 ? single_ok : single_unread;
}

void io_release_single() {
  archive_room = {};
  content_room = {};
}

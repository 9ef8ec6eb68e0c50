// Archives of a few files; see io_set.h. Reading goes through the layer's one reader of entries,
// which believes no size; writing is minizip's. Any thread.

#include "corekit/files/io_set.h"

#include <minizip/unzip.h>
#include <minizip/zip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_parts.h"

namespace {

single_outcome read_entry(const zip_reader& zip, const unz_file_info& info, set_entry& entry) {
  entry.is_there = true;
  if (info.uncompressed_size > entry.most) return single_too_large;
  zip_room room;
  zip_bytes bytes;
  const single_outcome outcome = single_of_code(zip_read_entry(zip, info, room, bytes));
  if (outcome == single_ok)
    entry.bytes.assign(reinterpret_cast<const char*>(bytes.data), bytes.size);
  return outcome;
}

int write_entry(void* zip, const set_entry& entry, uint32_t date) {
  zip_fileinfo info = {};
  info.dosDate = date;
  info.external_fa = uLong{S_IFREG | 0644} << 16;
  constexpr uLong made_by = (3u << 8) | 20;  // Unix: else other unpackers disregard the mode
  const std::string name(entry.name);
  if (zipOpenNewFileInZip4_64(zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                              6, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0,
                              made_by, 0, 0) != ZIP_OK) {
    return zip_cannot_write;
  }
  if (entry.bytes.size() > zip_size_limit) return zip_too_large;
  const int failed = zipWriteInFileInZip(zip, entry.bytes.data(), unsigned(entry.bytes.size()));
  return zipCloseFileInZip(zip) == ZIP_OK && failed == ZIP_OK ? 0 : zip_cannot_write;
}

}  // namespace

single_outcome io_read_set(const unsigned char* archive, size_t size,
                           std::span<set_entry> entries) {
  for (set_entry& entry : entries) {
    entry.is_there = false;
    entry.bytes.clear();
  }
  if (size == 0) return single_empty;
  const zip_reader zip({archive, size});
  if (!zip.file) return single_no_archive;
  int err = unzGoToFirstFile(zip.file);
  for (; err == UNZ_OK; err = unzGoToNextFile(zip.file)) {
    unz_file_info info = {};
    std::string name;
    if (zip_entry_info(zip, info, name) != 0) return single_damaged;
    const auto known = std::find_if(entries.begin(), entries.end(),
                                    [&](const set_entry& entry) { return entry.name == name; });
    const unsigned type = unsigned(info.external_fa >> 16) & S_IFMT;
    if (known == entries.end() || known->is_there || (type != 0 && type != S_IFREG))
      return single_other_file;
    if (const single_outcome outcome = read_entry(zip, info, *known)) return outcome;
  }
  if (err != UNZ_END_OF_LIST_OF_FILE) return single_damaged;
  const bool is_whole = std::all_of(entries.begin(), entries.end(),
                                    [](const set_entry& entry) { return entry.is_there; });
  return is_whole ? single_ok : single_other_file;
}

int io_write_set(const std::string& path, std::span<const set_entry> entries, uint32_t date) {
  void* const zip = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
  if (!zip) return zip_cannot_create;
  int code = 0;
  for (const set_entry& entry : entries)
    if (code == 0) code = write_entry(zip, entry, date);
  if (zipClose(zip, nullptr) != ZIP_OK && code == 0) code = zip_cannot_write;
  if (code != 0) unlink(path.c_str());
  return code;
}

// The record of a build: reading the last one, writing the new one.
//
// Main thread; find_reuse reads what load_reuse has left, from any thread. The text of the record
// that was read stays in memory, as its rows look into it.

#include "Installer-f/builder/make_installer_reuse.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "corekit/base/hl_string.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"

namespace {

constexpr int record_version = 900;
constexpr int record_versions[] = {record_version, 0};
constexpr char keyword[] = "RECORD";
constexpr time_t unsettled_for = 2;  // seconds: the coarsest clock of a file system

struct record_row {
  int disk;
  std::string_view suffix;
  int64_t archive_bytes, bytes, seconds, nanoseconds, mode, date;
  std::string_view sig;
};

struct last_build {
  std::unique_ptr<xmap_class> text;
  std::string name;
  std::unordered_map<std::string_view, record_row> rows;  // by path below the source root
} last;

struct new_record {
  std::string text;
  time_t began = 0;
} record;

// The next field of a line, up to a blank, and what follows the blank.
std::string_view take(std::string_view& line) {
  const size_t end = std::min(line.find(' '), line.size());
  const std::string_view field = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  return field;
}

bool take_number(std::string_view& line, int64_t& number) {
  const std::string_view field = take(line);
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
  return error == std::errc() && end == field.data() + field.size() && !field.empty();
}

// A line that is not whole is passed over: its file is packed anew.
void read_file_line(std::string_view line) {
  record_row row;
  int64_t disk = 0;
  if (!take_number(line, disk) || disk < 0 || disk >= discs_with_folders) return;
  row.disk = static_cast<int>(disk);
  row.suffix = take(line);
  for (int64_t* const number :
       {&row.archive_bytes, &row.bytes, &row.seconds, &row.nanoseconds, &row.mode, &row.date})
    if (!take_number(line, *number)) return;
  row.sig = take(line);
  if (row.suffix != "zip" && row.suffix != "7z") return;
  if (row.sig.size() == 32 && !line.empty()) last.rows.emplace(line, row);
}

void read_lines(std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::string_view word = take(line);
    if (word == "NAME" && !str_holds(line, "/")) last.name = line;
    if (word == "FILE") read_file_line(line);
  }
}

bool is_same(const source_file& file, const record_row& row) {
  const time_t packed_as = std::min(file.modified.tv_sec, newest_date());
  return row.bytes == file.bytes && row.seconds == file.modified.tv_sec &&
         row.nanoseconds == file.modified.tv_nsec && row.mode == file.mode &&
         (row.suffix == "7z") == (file.by_hand >= 0) &&
         (row.suffix == "7z" || row.date == zip_date(packed_as));
}

}  // namespace

std::string load_reuse() {
  last = {};
  if (bld.reuse_fold.empty()) return {};
  const std::string path = bld.reuse_fold + build_record_name;
  last.text = std::make_unique<xmap_class>(path);
  if (!last.text->file_start ||
      last.text->check_file(ouf_text, record_versions, keyword, nullptr) == 0) {
    last = {};
    return "--reuse needs the output folder of a build, and there is no record of one: " + path;
  }
  read_lines({reinterpret_cast<const char*>(last.text->cursor),
              static_cast<size_t>(last.text->file_end - last.text->cursor)});
  return {};
}

bool find_reuse(const source_file& file, old_archive& old) {
  const auto found = last.rows.find(file.relative);
  if (file.is_link || found == last.rows.end() || !is_same(file, found->second)) return false;
  const record_row& row = found->second;
  old.path = bld.reuse_fold + str_format("disk_%d/", row.disk) + last.name + "/" + file.relative +
             "." + std::string(row.suffix);
  old.bytes = row.archive_bytes;
  old.is_7z = row.suffix == "7z";
  old.sig = row.sig;
  return true;
}

void start_record() {
  record.text.clear();
  record.began = time(nullptr);
}

void note_record(const source_file& file, int disk, const std::string& suffix, uint32_t date,
                 int64_t archive_bytes, const std::string& sig) {
  if (file.is_link || file.modified.tv_sec >= record.began - unsettled_for) return;
  record.text +=
      str_format("FILE %d %s %lld %lld %lld %ld %u %u %s ", disk, suffix.c_str(),
                 static_cast<long long>(archive_bytes), static_cast<long long>(file.bytes),
                 static_cast<long long>(file.modified.tv_sec), file.modified.tv_nsec, file.mode,
                 date, sig.c_str());
  record.text += file.relative + '\n';
}

int write_record() {
  if (!ouf_open(bld.dst_fold_base + build_record_name, ouf_text, record_version,
                "no-copyright-string")) {
    return EIO;
  }
  ouf << keyword << "\n\nNAME " << bld.sim_name << '\n' << record.text;
  return ouf_close();
}

// The highest serials seen, in a text file of the user's preferences folder: there no release, and
// nothing that a copy's own files do, reaches them. A line is only ever added, which two installers
// at once may do, and the highest counts.
//
//   "SERIAL" number key of     the key as 16 hexadecimal digits; of: what it was seen of, to the
//                              end of the line
//
// Main thread. Writes the file.

#include <cerrno>
#include <charconv>

#include "corekit/Platform/PLT_system.h"
#include "corekit/base/exce.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_utils.h"
#include "corekit/files/sign.h"

namespace {

constexpr char leaf[] = "skyvane_serials.txt";
constexpr std::string_view keyword = "SERIAL ";
constexpr size_t longest = 4'000'000;  // bytes of the file that are read; a release adds some 100

bool get_path(std::string& path) {
  if (get_OS_abs_path(os_dir_prefs, path) != 0 || path.empty()) return false;
  path += leaf;
  return true;
}

std::string load() {
  std::string path, text;
  if (!get_path(path)) return text;
  const io_handle file(PLT_open_own(path, plt_own_read));
  if (!file) return text;
  text.resize(longest);
  size_t got = 0;
  if (io_read_all(file.get(), text.data(), text.size(), got) != 0) got = 0;
  text.resize(got);
  return text;
}

// Whether `line` is one of this kind; `serial` and `id` receive what it says.
bool read_line(std::string_view line, std::string_view of, int64_t& serial, sign_key_id& id) {
  if (!line.starts_with(keyword)) return false;
  line.remove_prefix(keyword.size());
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), serial);
  if (error != std::errc() || serial < 0 || serial > sign_most_serial) return false;
  line.remove_prefix(static_cast<size_t>(end - line.data()));
  constexpr size_t digits = 2 * std::tuple_size_v<sign_key_id>;
  return line.size() == digits + 2 + of.size() && line[0] == ' ' && line[digits + 1] == ' ' &&
         line.ends_with(of) && sign_read_hex(line.substr(1, digits), id.data(), id.size());
}

bool is_of(const sign_key_id& id, std::span<const sign_public_key> keys) {
  for (const sign_public_key& key : keys)
    if (key.id == id) return true;
  return false;
}

// What is kept of a path: a line.
std::string one_line(std::string_view of) {
  std::string line(of);
  for (char& c : line)
    if (c == '\n' || c == '\r') c = '?';
  return line;
}

int append(const std::string& line) {
  std::string path;
  if (!get_path(path)) return ENOENT;
  io_handle file(PLT_open_own(path, plt_own_append));
  if (!file) return errno;
  const int code = io_write_all(file.get(), line.data(), line.size());
  return code != 0 ? code : file.close();
}

}  // namespace

int64_t sign_seen_serial(std::string_view of) {
  const std::string text = load(), wanted = one_line(of);
  const std::vector<sign_public_key> keys = sign_keys();
  int64_t highest = 0;
  for (std::string_view rest = text; !rest.empty();) {
    const size_t end = rest.find('\n');
    int64_t serial = 0;
    sign_key_id id;
    if (read_line(rest.substr(0, end), wanted, serial, id) && serial > highest && is_of(id, keys))
      highest = serial;
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
  }
  return highest;
}

void sign_note_serial(std::string_view of, const sign_statement& statement) {
  if (sign_seen_serial(of) >= statement.serial) return;
  const std::string line = std::string(keyword) + std::to_string(statement.serial) + " " +
                           sign_hex(statement.by) + " " + one_line(of) + "\n";
  if (const int code = append(line)) {
    xer << "WARNING: the serial that was seen cannot be kept: " << error_str(code) << '\n';
  }
}

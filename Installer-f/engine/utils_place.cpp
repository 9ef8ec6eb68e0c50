// From an archive to the file's place; see utils_place.h.
//
// Steps: unpack in memory within the manifest's budget; hash what was unpacked; compare; write by
// way of the gate. Any thread but for the gate of the copy, which the main thread keeps.

#include "Installer-f/engine/utils_place.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "Installer-f/engine/utils_decide.h"
#include "Installer-f/engine/utils_guard.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_md5.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_string.h"
#include "corekit/files/io_single.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr int code_no_archive = 20001, code_bad_archive = 20002, code_no_memory = 12,
              code_too_large = 27;

file_sig signature_of(const single_file& file) {
  MD5_state state;
  MD5Init(state);
  constexpr size_t slice = 1u << 30;
  for (size_t done = 0; done < file.size; done += slice)
    MD5UpdateWide(state, file.bytes + done, uint32_t(std::min(file.size - done, slice)));
  uint8_t digest[16];
  MD5Final(digest, state);
  return file_sig(digest);
}

// The main program of a bundle must be runnable, whatever its archive says.
mode_t mode_of(const single_file& file, std::string_view path) {
  return str_holds(path, "Contents/MacOS/") ? 0755 : file.mode;
}

// More than this, the archive and what is in it, is unpacked by one thread at a time, and its
// memory given back: what a transfer holds does not grow with the processors.
constexpr uint64_t large = 16u << 20;

class large_turn {
 public:
  explicit large_turn(uint64_t bytes) {
    if (bytes > large) turn_ = std::unique_lock(one_at_a_time);
  }
  ~large_turn() {
    if (turn_) io_release_single();
  }
  large_turn(const large_turn&) = delete;
  large_turn& operator=(const large_turn&) = delete;

 private:
  static inline std::mutex one_at_a_time;
  std::unique_lock<std::mutex> turn_;
};

place_result place_unpacked(gate_class& gate, const unsigned char* archive, size_t size,
                            const place_order& order) {
  if (order.sum && !order.sum->is_of(archive, size)) return {place_not_signed_for, sign_wrong};
  single_file file;
  if (const auto outcome = io_read_single(archive, size, order.most, file)) {
    return place_result_of(outcome);
  }
  if (order.sum && !order.sum->is_of_content(file)) return {place_not_signed_for, sign_wrong};
  if (!(signature_of(file) == order.sig_want)) return {place_wrong_signature, code_bad_archive};
  if (order.may_replace && !order.may_replace()) return {place_changed, code_changed};
  if (file.is_link) {
    const std::string target(reinterpret_cast<const char*>(file.bytes), file.size);
    return place_result_of_gate(gate.put_link(order.path, target));
  }
  return place_result_of_gate(
      gate.put_file(order.path, file.bytes, file.size, {mode_of(file, order.path), file.modified}));
}

// Main thread.
struct open_copy {
  std::string path;
  dev_t device = 0;
  ino_t number = 0;
  std::shared_ptr<gate_class> gate;
} present_copy;

bool release_ships(std::string_view path) {
  return std::any_of(sim_info.begin(), sim_info.end(), [path](const file_history_struct& history) {
    return gate_same_path(installed_part(history.current().path), path);
  });
}

}  // namespace

place_result place_result_of(single_outcome outcome) {
  switch (outcome) {
    case single_ok:
      return {};
    case single_no_archive:
      return {place_damaged, code_no_archive};
    case single_damaged:
      return {place_damaged, code_bad_archive};
    case single_empty:
      return {place_empty, code_no_archive};
    case single_too_large:
      return {place_too_large, code_too_large};
    case single_other_file:
      return {place_other_file, code_bad_archive};
    case single_no_memory:
      return {place_no_memory, code_no_memory};
    case single_unread:
      break;
  }
  return {place_unread, errno != 0 ? errno : EIO};
}

place_result place_result_of_gate(int code) {
  switch (code) {
    case 0:
      return {};
    case gate_below_link:
      return {place_below_link, code};
    case gate_leads_out:
      return {place_refused_link, code_bad_archive};
    case ENOSPC:
    case EDQUOT:
      return {place_disk_full, ENOSPC};
    default:
      return {place_cannot_write, code};
  }
}

uint64_t place_budget(float kb) {
  constexpr float most_kb = 1e9f;                          // a terabyte
  const float sane = kb >= 0 ? std::min(kb, most_kb) : 0;  // and what is no number is 0
  return uint64_t((double(sane) + 1) * 1000);
}

place_result place_archive(gate_class& gate, const unsigned char* archive, size_t size,
                           const place_order& order) {
  const large_turn turn(order.most);
  return place_unpacked(gate, archive, size, order);
}

place_result place_archive_file(gate_class& gate, int archive, uint64_t most_archive,
                                const place_order& order) {
  const large_turn turn(most_archive + order.most);
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  if (const auto outcome = io_load_archive(archive, most_archive, bytes, size)) {
    return place_result_of(outcome);
  }
  return place_unpacked(gate, bytes, size, order);
}

bool place_is_archive_of(int archive, uint64_t most_archive, const file_history_struct& history) {
  const large_turn turn(most_archive);
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  single_file file;
  const file_version_struct& current = history.current();
  return io_load_archive(archive, most_archive, bytes, size) == single_ok &&
         io_read_single(bytes, size, place_budget(current.raw_kb), file) == single_ok &&
         file.name == path_leaf(current.path) && is_known_state(history, signature_of(file));
}

void remove_temp_file(std::string_view path) {
  gate_class folder;
  if (folder.open(std::string(path_folder(path))) == 0) folder.remove_file(path_leaf(path));
}

std::shared_ptr<gate_class> open_copy_gate() {
  present_copy = {};
  struct stat info;
  if (stat((app_path + dest_dir_path).c_str(), &info) != 0) return nullptr;
  auto gate = std::make_shared<gate_class>();
  if (const int code = gate->open(dest_dir_path, release_ships)) {
    errno = code;
    return nullptr;
  }
  present_copy = {dest_dir_path, info.st_dev, info.st_ino, gate};
  return gate;
}

std::shared_ptr<gate_class> copy_gate() {
  struct stat info;
  const bool is_present = present_copy.gate && present_copy.path == dest_dir_path &&
                          stat((app_path + dest_dir_path).c_str(), &info) == 0 &&
                          present_copy.device == info.st_dev && present_copy.number == info.st_ino;
  return is_present ? present_copy.gate : open_copy_gate();
}

void log_gate_notes(gate_class& gate) {
  for (const std::string& note : gate.take_notes())
    xer << note << '\n';
}

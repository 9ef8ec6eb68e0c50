// The manifest out of its archive into the working folder; see utils_place.h.
//
// Steps: the archive into memory; its texts out of it; of a signed one the signature, the digests,
// the release and the serial; and only then the text to its place, by way of a gate. Main thread.

#include <fcntl.h>

#include <cerrno>

#include "Installer-f/engine/utils_place.h"
#include "Installer-f/settings/main_stg.h"
#include "corekit/files/io_set.h"
#include "corekit/files/io_utils.h"

namespace {

constexpr char manifest_name[] = "directory.txt";
constexpr uint64_t most_manifest = 512u << 20;

struct archive_bytes {
  const unsigned char* data = nullptr;
  size_t size = 0;
};

place_result load(const std::string& zip_path, archive_bytes& archive) {
  const io_handle file(
      open((app_path + zip_path).c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return {place_unread, errno};
  return place_result_of(io_load_archive(file.get(), most_manifest, archive.data, archive.size));
}

place_result read_plain(const std::string& zip_path, std::string_view& text) {
  archive_bytes archive;
  if (const place_result result = load(zip_path, archive); result.outcome != place_ok)
    return result;
  single_file file;
  if (const auto outcome = io_read_single(archive.data, archive.size, most_manifest, file)) {
    return place_result_of(outcome);
  }
  if (file.name != manifest_name || file.is_link) return place_result_of(single_other_file);
  text = {reinterpret_cast<const char*>(file.bytes), file.size};
  return text.empty() ? place_result_of(single_empty) : place_result();
}

place_result read_signed(const std::string& zip_path, const std::string& copy, std::string& text) {
  archive_bytes archive;
  if (const place_result result = load(zip_path, archive); result.outcome != place_ok)
    return result;
  enum { directory, sums, signature };
  set_entry entries[] = {{manifest_name, most_manifest},
                         {"directory.sum", most_manifest},
                         {"directory.sig", sign_most_statement}};
  if (const auto outcome = io_read_set(archive.data, archive.size, entries)) {
    return place_result_of(outcome);
  }
  const sign_verdict verdict =
      trust_accept({entries[directory].bytes, entries[sums].bytes, entries[signature].bytes},
                   sign_keys(), install_name, copy);
  if (verdict != sign_good) return {place_untrusted, verdict};
  text = std::move(entries[directory].bytes);
  return text.empty() ? place_result_of(single_empty) : place_result();
}

// The working folder, without the manifest of before.
place_result open_folder(gate_class& folder) {
  trust_forget();
  if (const int code = folder.open(temp_path)) return {place_cannot_write, code};
  const int removed = folder.remove_file(manifest_name);
  return removed == 0 || removed == ENOENT ? place_result()
                                           : place_result{place_cannot_write, removed};
}

place_result put(gate_class& folder, std::string_view text) {
  return place_result_of_gate(folder.put_file(manifest_name, text.data(), text.size()));
}

}  // namespace

const char* manifest_archive_asked_for() {
  return trust_is_on() ? signed_manifest_archive : manifest_archive;
}

place_result place_manifest(const std::string& zip_path) {
  gate_class folder;
  std::string_view text;
  place_result result = open_folder(folder);
  if (result.outcome == place_ok) result = read_plain(zip_path, text);
  return result.outcome == place_ok ? put(folder, text) : result;
}

place_result place_signed_manifest(const std::string& zip_path, const std::string& copy) {
  gate_class folder;
  std::string text;
  place_result result = open_folder(folder);
  if (result.outcome == place_ok) result = read_signed(zip_path, copy, text);
  return result.outcome == place_ok ? put(folder, text) : result;
}

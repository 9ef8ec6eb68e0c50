// From an archive to the file's place: unpacked in memory, compared with what the manifest says of
// it, and only then written, by way of the gate of the copy. Nothing is read back to be hashed.
//
//   place_archive        an archive in memory
//   place_archive_file   an archive on the disk
//   place_manifest         the manifest, from its archive into the working folder
//   place_signed_manifest  the same, once its signature has been found good
//   remove_temp_file     from the working folder
//   open_copy_gate       the gate of the copy at dest_dir_path, at the start of a job
//   copy_gate            the same gate, later in it
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Installer-f/engine/utils_manifest_sig.h"
#include "Installer-f/engine/utils_trust.h"
#include "corekit/files/io_gate.h"
#include "corekit/files/io_single.h"

enum place_outcome : int {
  place_ok,
  // What came is wrong. Another mirror may have it right.
  place_damaged,          // no archive, or a broken or encrypted one
  place_empty,            // an archive of nothing
  place_too_large,        // the archive, or the file in it, is larger than the manifest allows
  place_other_file,       // it holds something beside its one file
  place_wrong_signature,  // a sound archive of another file, or of another version of it
  place_refused_link,     // a link that would lead out of the copy
  place_not_signed_for,   // another archive than the makers have signed for
  place_untrusted,        // a manifest that is not signed as it must be; `code` is a sign_verdict
  // What came may be right, but cannot be put there.
  place_below_link,    // its folder lies below what the release ships as a link
  place_disk_full,     //
  place_cannot_write,  // `code` tells why
  place_changed,       // something lies there that may not be replaced
  place_no_memory,     //
  place_unread,        // place_archive_file: the archive cannot be read; `code` tells why
};

struct place_result {
  place_outcome outcome = place_ok;
  int code = 0;  // for error_str: 0 only with place_ok
};

// Whether another mirror is to be asked.
constexpr bool place_is_wrong_content(place_outcome outcome) {
  return outcome >= place_damaged && outcome <= place_untrusted;
}

struct file_history_struct;

// What is to become of an archive.
struct place_order {
  std::string_view path;  // below the destination: the installed part of the manifest's path
  file_sig sig_want;      // the MD5; a word is matched by no file
  uint64_t most = 0;      // bytes that the file may become
  const file_sum* sum = nullptr;  // what the archive must be, before it is opened; null: anything
  std::function<bool()> may_replace =
      nullptr;  // asked before it is written; null: whatever lies there
};

// The most bytes that a size in the manifest allows: one unit is added for what its rounding took
// off.
uint64_t place_budget(float kb);

// Unpacks `archive`, compares and writes. The mode is the archive's, but for the main program of a
// bundle, which is always made runnable. After any outcome but place_ok the place is as it was.
// Any thread, with a gate that stands meanwhile.
place_result place_archive(gate_class& gate, const unsigned char* archive, size_t size,
                           const place_order& order);

// The same with an open archive file of at most `most_archive` bytes.
place_result place_archive_file(gate_class& gate, int archive, uint64_t most_archive,
                                const place_order& order);

// The manifest's two archives, which lie side by side. The second holds the same text, what is said
// of each archive, and the signature of both; programs with keys ask for no other.
inline constexpr char manifest_archive[] = "directory.txt.zip";
inline constexpr char signed_manifest_archive[] = "directory.signed.zip";
const char* manifest_archive_asked_for();  // of mirrors, by this program

// The manifest out of its archive at `zip_path`, as temp_path + "directory.txt", in place of an
// earlier one, which is gone after a failure, too. The archive holds no other file, and no more
// than 512 MB.
place_result place_manifest(const std::string& zip_path);

// The same out of the signed archive. Its three texts are read into memory, and nothing is written
// unless the makers have signed them for the release install_name, and with no lower serial than
// the copy in the folder `copy` (trailing "/"; empty: none) has had.
place_result place_signed_manifest(const std::string& zip_path, const std::string& copy);

// Whether an open archive is one of a file that the makers have shipped under the history's name:
// of at most `most_archive` bytes, with nothing else in it.
bool place_is_archive_of(int archive, uint64_t most_archive, const file_history_struct& history);

// What the two layers below say, in the words of this one.
place_result place_result_of(single_outcome outcome);
place_result place_result_of_gate(int code);

// Deletes a file of the working folder, named by its whole path, if it is there. Any thread.
void remove_temp_file(std::string_view path);

// The gate of the copy at dest_dir_path. It knows the release from sim_info, so every job opens it
// anew when it begins (make_dirs does), and sim_info must not be read while it is in use; in
// between, copy_gate gives the same one, as long as the destination is the same folder. Null, with
// errno, if there is no such folder. Main thread; a worker gets its copy of the pointer with its
// task.
std::shared_ptr<gate_class> open_copy_gate();
std::shared_ptr<gate_class> copy_gate();

// What the gate has met since the last call, into the log. Main thread.
void log_gate_notes(gate_class& gate);

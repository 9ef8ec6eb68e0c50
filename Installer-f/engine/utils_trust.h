// Whom a release is from: the signature that came with the manifest, and what it says of each
// archive. docs/security.md has the formats, and what all this holds against.
//
// A program without keys (see sign_built_in_keys) looks at none of it. Main thread, except that the
// sums may be read by any thread while sim_info stands.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "corekit/files/io_single.h"
#include "corekit/files/sign.h"

// What directory.sum says of a file of the release.
struct file_sum {
  sign_sha256 archive_sha256 = {}, file_sha256 = {};
  uint64_t archive_bytes = 0, file_bytes = 0;
  uint32_t mode = 0;  // with its kind, as stat gives it

  // Whether this is the archive that was signed for.
  bool is_of(const unsigned char* archive, size_t size) const;
  // Whether this is what was in it: bytes, kind and mode.
  bool is_of_content(const single_file& file) const;
};

bool trust_is_on();  // keys are built in

// What a signed manifest's archive holds.
struct manifest_texts {
  std::string_view directory, sums, signature;
};

// The texts against the keys, the release's folder, `name`, and what the copy in the folder `copy`
// (trailing "/"; empty: none) has had. If all is well, they are what trust_take_sums reads; else
// there is no signed manifest any more.
sign_verdict trust_accept(const manifest_texts& texts, std::span<const sign_public_key> keys,
                          const std::string& name, const std::string& copy);
void trust_forget();  // what comes next is not signed, and is taken all the same

// The statement that the manifest came with; null if it is not signed.
const sign_statement* trust_statement();

// After the manifest was read: finds each file's line. False, and no file can be installed, if the
// sums are none of ours, or a file has none. True if nothing is signed.
bool trust_take_sums();

// What the file's archive must be; null where nothing is signed. A file without a line has a sum
// that no archive has.
const file_sum* trust_sum(int index);  // into sim_info

// Whether the copy in `folder` has had a higher serial than the manifest in hand; of test releases
// and of others each by itself, since a user may go back from the one to the other.
bool trust_is_behind(const std::string& folder);
// From now on the copy in `folder` has had this one.
void trust_note_copy(const std::string& folder);

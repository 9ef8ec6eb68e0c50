// What the archive tests share: a folder beside a sentinel, and a writer of zips that can lie.
#pragma once

#include <functional>
#include <map>

#include "corekit/files/io_7z.h"
#include "corekit/files/io_zip.h"
#include "tests/unit/test_files_scratch.h"

struct stat;

std::string file_text(const std::string& path);
void write_text(const std::string& path, const std::string& text);
struct stat file_stat(const std::string& path);  // of a link itself

// Kind, permissions and content (or target) of everything below a folder, by relative path.
std::map<std::string, std::string> tree_of(const std::string& folder);

// Runs a shell command; its output. A status other than 0 is a test failure.
std::string run(const std::string& command);

// `size` bytes that do not compress, the same for the same seed.
std::string noise(size_t size, unsigned seed);

// Of a raw_entry that is no plain file.
constexpr unsigned link_attributes = 0xA1ED0000, folder_attributes = 0x41ED0010;

// One entry, honest by default; each field may be set to a lie.
struct raw_entry {
  raw_entry(std::string name_, std::string text, unsigned attributes_ = 0x81A40000u);

  std::string name;
  std::string packed;
  unsigned attributes;
  unsigned method = 0;
  unsigned flags = 0;
  unsigned date = (44u << 25) | (3u << 21) | (5u << 16) | (6u << 11) | (7u << 5) | 4u;
  unsigned crc;
  unsigned packed_size;
  unsigned size;
  bool again = false;  // only in the table of contents, over the bytes of the entry before
};
raw_entry deflated_entry(const std::string& name, const std::string& text);
std::string raw_zip(const std::vector<raw_entry>& entries);

// As the readers in memory want them.
inline const unsigned char* bytes_of(const std::string& archive) {
  return reinterpret_cast<const unsigned char*>(archive.data());
}

// An archive that is cut at every byte, and one in which that byte is flipped by each of these.
void for_each_damage(const std::string& archive, const std::vector<int>& flips,
                     const std::function<void(const std::string& bytes, const std::string& label,
                                              bool is_cut)>& check);

// root/ with out/, where archives are unpacked, and things that no archive may touch.
class ArchiveTest : public testing::Test {
 protected:
  void SetUp() override;

  std::string put(const std::string& bytes);  // as root/../in.archive; its path
  // Unpacks the bytes into out/, by their first byte as zip or 7z.
  int unpack(const std::string& bytes);
  // Packs files of base/src/ with 7z as base/made.7z; the archive's bytes.
  std::string pack_7z(const std::string& options, const std::string& files);
  // Everything but out/ is as it was, in the tree around it.
  void expect_untouched(const std::string& label);
  void empty_out();

  const scratch_folder here;
  const std::string base = here.path(), root = base + "root/", out = root + "out/";
  std::map<std::string, std::string> before;
};

// The packer that builds masters: in memory and streamed, what it shows, and when it gives up.

#include <atomic>
#include <functional>

#include "corekit/files/io_utils.h"
#include "corekit/files/io_zip_head.h"
#include "corekit/files/io_zip_pack.h"
#include "tests/unit/test_archive_util.h"

namespace {

class ArchivePack : public ArchiveTest {
 protected:
  // A file of `size` bytes, most of them a hole.
  void write_large(const std::string& path, uint64_t size) const {
    write_text(path, noise(100000, 3));
    ASSERT_EQ(truncate(path.c_str(), off_t(size)), 0);
  }
};

// Adds up what it is shown.
struct viewer {
  size_t bytes = 0;
  int pieces = 0;
  std::function<void()> act = [] {};
  static void look(void* with, const void*, size_t size) {
    auto& self = *static_cast<viewer*>(with);
    self.bytes += size;
    ++self.pieces;
    self.act();
  }
};

TEST_F(ArchivePack, WholeAndStreamed) {
  zip_packer packer;
  packer.look = viewer::look;
  const uint64_t limit = zip_packer::whole_limit;
  for (const uint64_t size : {uint64_t{0}, uint64_t{1}, uint64_t{70000}, limit, limit + 1}) {
    SCOPED_TRACE(size);
    const std::string source = base + "source.bin", zip = base + "a.zip";
    write_large(source, size);
    viewer seen;
    packer.look_with = &seen;
    zip_packed packed;
    ASSERT_EQ(packer.pack(source, zip, packed), 0);
    EXPECT_EQ(packed.plain_bytes, int64_t(size));
    EXPECT_EQ(packed.archive_bytes, file_stat(zip).st_size);
    EXPECT_EQ(packed.modified.tv_nsec, file_stat(source).st_mtim.tv_nsec);
    EXPECT_EQ(packed.mode, file_stat(source).st_mode);
    EXPECT_EQ(seen.bytes, size);
    EXPECT_EQ(seen.pieces > 1, size > limit);
    const std::string bytes = file_text(zip);
    entry_facts facts;
    EXPECT_TRUE(take_apart(bytes_of(bytes), bytes.size(), facts)) << "the short way of the reader";
    EXPECT_EQ(facts.plain_size, size);
    run("unzip -tq '" + zip + "' && unzip -p '" + zip + "' | cmp - '" + source + "'");
    // A packer that has packed others makes the same bytes as a new one.
    ASSERT_EQ(file_to_zip(source, base + "b.zip"), 0);
    run("cmp '" + zip + "' '" + base + "b.zip'");
  }
}

TEST_F(ArchivePack, ALinkSaysAsMuchAsAPathMay) {
  zip_packer packer;
  zip_packed packed;
  const std::string link = base + "link";
  for (const size_t length : {path_limit, path_limit + 1}) {
    unlink(link.c_str());
    ASSERT_EQ(symlink(std::string(length, 'x').c_str(), link.c_str()), 0);
    EXPECT_EQ(packer.pack(link, base + "a.zip", packed) == 0, length == path_limit) << length;
  }
}

// The sample that tells what is not worth packing must not cost what is.
TEST_F(ArchivePack, WhatCanBePackedIs) {
  const std::string text(300000, 'x'), noisy = noise(300000, 5);
  std::string skewed = noisy;
  for (size_t i = 0; i < skewed.size(); i += 20)
    skewed[i] = 'x';
  // The most that the archive may be, as a part of the file.
  const std::tuple<std::string, std::string, double> rows[] = {
      {"noise", noisy, 1.01},
      {"text", text, 0.01},
      {"skewed noise", skewed, 0.99},
      {"noise, then text", noisy + text, 0.51},
      {"text, then noise", text + noisy, 0.51}};
  for (const auto& [label, bytes, most] : rows) {
    write_text(base + "a", bytes);
    ASSERT_EQ(file_to_zip(base + "a", base + "a.zip"), 0);
    run("unzip -tq '" + base + "a.zip'");
    EXPECT_LT(double(file_stat(base + "a.zip").st_size), most * double(bytes.size())) << label;
  }
}

TEST(ArchiveDate, IsWithinWhatAZipHas) {
  setenv("TZ", "UTC", 1);
  tzset();
  const std::pair<time_t, uint32_t> rows[] = {
      {0, 0x0021'0000},              // 1980-01-01
      {315'532'799, 0x0021'0000},    // a second too early
      {1'735'732'803, 0x5A21'6001},  // 2025-01-01 12:00:02
      {7'258'118'400, 0xFF9F'0000},  // 2107-12-31
  };
  for (const auto& [when, date] : rows)
    EXPECT_EQ(zip_date(when), date) << when;
}

TEST_F(ArchivePack, GivesUp) {
  const std::string source = base + "source.bin", zip = base + "a.zip";
  write_large(source, zip_packer::whole_limit + 5000000);
  const std::atomic<bool> stop = true;
  viewer seen;
  zip_packer packer;
  packer.look = viewer::look;
  packer.look_with = &seen;
  zip_packed packed;
  packer.stop = &stop;
  EXPECT_EQ(packer.pack(source, zip, packed), ECANCELED);
  packer.stop = nullptr;

  // Somebody writes to the file while it is being read: in place, behind its end, cutting it.
  const auto touch = [&source] { utimensat(AT_FDCWD, source.c_str(), nullptr, 0); };
  const auto size = file_stat(source).st_size;
  const std::function<void()> meddling[] = {
      touch, [&] { ASSERT_EQ(truncate(source.c_str(), size + 1), 0); },
      [&] { ASSERT_EQ(truncate(source.c_str(), size - 2), 0); }};
  for (const auto& one : meddling) {
    write_large(source, uint64_t(size));
    seen.pieces = 0;
    seen.act = [&] {
      if (seen.pieces == 1) one();
    };
    EXPECT_EQ(packer.pack(source, zip, packed), 20006);
    EXPECT_TRUE(packed.changed);
  }
  seen.act = [] {};
  write_text(source, "x");
  const std::tuple<std::string, std::string, int> rows[] = {{base + "none", zip, 20006},
                                                            {base, zip, 20006},
                                                            {source, base + "none/a.zip", 20003},
                                                            {source, "/dev/full", 28}};
  for (const auto& [from, to, code] : rows) {
    EXPECT_EQ(packer.pack(from, to, packed), code) << from << " " << to;
    EXPECT_FALSE(packed.changed);
  }
}

}  // namespace

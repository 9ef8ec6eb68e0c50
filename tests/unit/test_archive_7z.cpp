// 7z archives: names and kinds, refusals, and damage.

#include "corekit/files/io_7z_head.h"
#include "tests/unit/test_archive_util.h"

class Archive7z : public ArchiveTest {
 protected:
  void SetUp() override {
    ArchiveTest::SetUp();
    mkdir((base + "src").c_str(), 0755);
  }
  std::string source(const std::string& name, const std::string& text) {
    write_text(base + "src/" + name, text);
    return text;
  }
};

TEST_F(Archive7z, NamesAndKinds) {
  run("cd '" + base +
      "src' && mkdir d && printf one > 'd/\xC3\xBCml\xC3\xA4ut' && : > d/none &&"
      " printf two > '\xE6\x97\xA5' && ln -s ../gone link && chmod 755 d/none");
  const std::string archive = pack_7z("-snl", ".");
  EXPECT_EQ(unpack(archive), ENOENT);  // folder entries make no folders
  mkdir((out + "d").c_str(), 0755);
  EXPECT_EQ(unpack(archive), 0);
  EXPECT_EQ(file_text(out + "d/\xC3\xBCml\xC3\xA4ut"), "one");
  EXPECT_EQ(file_text(out + "\xE6\x97\xA5"), "two");
  EXPECT_EQ(file_text(out + "d/none"), "");
  EXPECT_EQ(file_stat(out + "d/none").st_mode & 0100, 0u);  // and no permissions
  EXPECT_EQ(file_text(out + "link"), "../gone");            // and no links
  EXPECT_TRUE(S_ISREG(file_stat(out + "link").st_mode));
  source("a", "first");
  source("b", "second");
  pack_7z("", "a b");
  std::string name = "renamed";
  EXPECT_EQ(p7z_to_file(base + "made.7z", out, &name, 1), 0);
  EXPECT_EQ(name, out + "b");
  EXPECT_EQ(file_text(out + "renamed"), "first");
  EXPECT_EQ(file_text(out + "b"), "second");
  expect_untouched("names");
}

TEST_F(Archive7z, Refusals) {
  source("a", "some text, some text");
  write_text(out + "a", "old");
  const std::string good = pack_7z("", "a");
  const std::tuple<std::string, std::string, int> rows[] = {
      {"empty file", "", 20001},
      {"not an archive", "7z is what this begins with", 20001},
      {"a program that unpacks itself", "\177ELF" + std::string(1000, '\0') + good, 20001},
      {"encrypted", pack_7z("-psecret", "a"), 20002},
      {"encrypted contents", pack_7z("-psecret -mhe=on", "a"), 20001},
      {"no entries",
       std::string("7z\xBC\xAF\x27\x1C\0\4\x8D\x9B\xD5\x0F", 12) + std::string(20, '\0'), 20001},
      {"a method without a reader", pack_7z("-m0=Deflate64", "a"), 20002},
  };
  for (const auto& [label, bytes, result] : rows) {
    EXPECT_EQ(p7z_to_file(put(bytes), out, nullptr, 0), result) << label;
    EXPECT_EQ(file_text(out + "a"), "old") << label;
  }
  run("cd '" + base + "src' && 7z a -ttar '" + base + "made.other' a");
  EXPECT_EQ(p7z_to_file(base + "made.other", out, nullptr, 0), 20001);
  EXPECT_EQ(p7z_to_file(base + "none.7z", out, nullptr, 0), ENOENT);
  EXPECT_EQ(p7z_to_file(root, out, nullptr, 0), EISDIR);
  EXPECT_EQ(unpack(good), 0);
  EXPECT_EQ(p7z_to_file(put(good), out + "missing/", nullptr, 0), ENOENT);
  EXPECT_EQ(p7z_to_file(put(good), "/dev/full/", nullptr, 0), ENOTDIR);
  // The same gate stands before the names of the archive and those of the caller.
  ASSERT_EQ(symlink("..", (out + "up").c_str()), 0);
  for (std::string name : {"../evil", "/evil", "..", "C:evil", "x/../../evil", "up/evil"}) {
    const std::string renamed = base + "renamed.7z";
    write_text(renamed, good);
    run("7z rn '" + renamed + "' a '" + name + "'");
    EXPECT_EQ(p7z_to_file(renamed, out, nullptr, 0), 20002) << name;
    EXPECT_EQ(p7z_to_file(put(good), out, &name, 1), 20002) << name;
    expect_untouched(name);
  }
  ASSERT_EQ(symlink("../evil", (out + "link").c_str()), 0);
  std::string in_place = "link";
  EXPECT_EQ(p7z_to_file(put(good), out, &in_place, 1), 0);
  EXPECT_TRUE(S_ISREG(file_stat(out + "link").st_mode));
  expect_untouched("refusals");
}

// Stored, where only the sum tells; by each method, ArchiveSingle sees to it.
TEST_F(Archive7z, EveryTruncationAndDamage) {
  const std::string good = source("a", "good content, good content, good content");
  const std::string archive = pack_7z("-mx0 -mhc=off", "a");
  const auto check = [&](const std::string& bytes, const std::string& label, bool must_fail) {
    write_text(out + "a", "old");
    const int result = p7z_to_file(put(bytes), out, nullptr, 0);
    EXPECT_TRUE(result != 0 || !must_fail) << label;
    EXPECT_EQ(file_text(out + "a"), result == 0 ? good : "old") << label;
    EXPECT_EQ(tree_of(out).size(), 1u) << label;
    expect_untouched(label);
  };
  for_each_damage(archive, {0x01, 0x80, 0xFF}, check);
}

// A table of contents that is kept in a stream of its own, byte by byte.
TEST_F(Archive7z, ATableThatIsStored) {
  const auto claims = [](const std::string& stream, const std::string& table) {
    std::string bytes = "7z\xBC\xAF\x27\x1C" + std::string(26, '\0') + stream + table;
    bytes[12] = static_cast<char>(stream.size());
    bytes[20] = static_cast<char>(table.size());
    return io_7z_claims(bytes_of(bytes), bytes.size(), 10);
  };
  std::string table{0x17, 6, 0, 1, 9, 2, 0, 7, 0x0B, 1, 0, 1, 1, 0, 0x0C, 2, 0, 0};
  const std::tuple<const char*, size_t, char, claims_7z> rows[] = {
      {"as it is", 17, 0, claims_empty},
      {"as long as the archive", 5, 20, claims_empty},
      {"longer", 5, 21, claims_damaged},
      {"begins behind the archive", 2, 21, claims_damaged},
      {"ends behind it", 2, 19, claims_damaged},
      {"is no table", 2, 1, claims_damaged},
      {"an unknown method", 13, 5, claims_damaged},
      {"a method without what it needs", 13, 0x21, claims_damaged},
  };
  for (const auto& [label, at, put, verdict] : rows) {
    std::string changed = table;
    changed[at] = put;
    EXPECT_EQ(claims({1, 0}, changed), verdict) << label;
  }
  const auto packed_by = [](const std::string& coder) {
    return std::string{1, 4, 7, 0x0B, 1, 0, 1} + coder + std::string{0x0C, 5, 0, 0, 0};
  };
  const std::tuple<const char*, std::string, claims_7z> streams[] = {
      {"no entries", {1, 5, 0}, claims_empty},
      {"one", {1, 5, 1, 0}, claims_fine},
      {"no room for one", {1, 5, 1}, claims_too_large},
      {"ten", {1, 5, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, claims_fine},
      {"one too many", {1, 5, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, claims_too_large},
      {"a number of two bytes", {1, 5, '\x80', 1, 0}, claims_fine},
      {"a large one", {1, 5, '\x81', 1, 0}, claims_too_large},
      {"properties of the archive", {1, 2, 7, 2, 0, 9, 0, 0}, claims_empty},
      {"sums of what is packed", {1, 4, 6, 0, 1, 9, 2, 10, 1, 1, 2, 3, 4, 0, 0, 0}, claims_empty},
      {"something else", {1, 3}, claims_damaged},
      {"LZMA2 with 256 MB", packed_by({0x21, 0x21, 1, 32}), claims_empty},
      {"with more", packed_by({0x21, 0x21, 1, 33}), claims_too_large},
      {"with no end of it", packed_by({0x21, 0x21, 1, 41}), claims_too_large},
      {"LZMA with 256 MB", packed_by({0x23, 3, 1, 1, 5, 93, 0, 0, 0, 16}), claims_empty},
      {"with a byte more", packed_by({0x23, 3, 1, 1, 5, 93, 1, 0, 0, 16}), claims_too_large},
  };
  for (const auto& [label, stream, verdict] : streams) {
    table[5] = table[15] = static_cast<char>(stream.size());
    EXPECT_EQ(claims(stream, table), verdict) << label;
  }
}

// One file out of its archive, in memory: what may come in a package, and what it may cost.

#include <algorithm>
#include <tuple>

#include "corekit/files/io_7z_head.h"
#include "corekit/files/io_handle.h"
#include "corekit/files/io_single.h"
#include "tests/unit/test_archive_util.h"

namespace {

const std::string fork_block("\0\5\x16\7\0\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 24);

class ArchiveSingle : public ArchiveTest {
 protected:
  // The outcome, with what was unpacked in `text`.
  single_outcome read(const std::string& bytes, uint64_t most = 1000) {
    const single_outcome outcome = read_plainly(bytes, most);
    // A comment takes a zip off the short way of the builder's: both ways come to the same.
    const size_t end = bytes.size() - std::min<size_t>(bytes.size(), 22);
    if (bytes.compare(end, 4, "PK\5\6") != 0 || !bytes.ends_with(std::string(2, '\0')))
      return outcome;
    const auto found = [this] {
      return std::tuple(text, std::string(file.name), file.is_link, file.mode, file.modified);
    };
    const auto first = found();
    const std::string longer = bytes.substr(0, bytes.size() - 2) + std::string("\1\0c", 3);
    EXPECT_EQ(read_plainly(longer, most), outcome);
    if (outcome == single_ok) {
      EXPECT_EQ(found(), first);
    }
    return outcome;
  }
  single_outcome read_plainly(const std::string& bytes, uint64_t most) {
    const single_outcome outcome = io_read_single(bytes_of(bytes), bytes.size(), most, file);
    text.assign(reinterpret_cast<const char*>(file.bytes), outcome == single_ok ? file.size : 0);
    return outcome;
  }

  single_file file;
  std::string text;
};

TEST_F(ArchiveSingle, WhatAZipMayHold) {
  const raw_entry plain("a.txt", "content"), second("b.txt", "content");
  const raw_entry fork("__MACOSX/._a.txt", fork_block), deep("d/e/a.txt", "content");
  raw_entry locked = plain, method = plain, lying = plain;
  locked.flags = 1;
  method.method = 12;
  lying.crc ^= 1;
  const std::tuple<std::string, std::string, single_outcome> rows[] = {
      {"one file", raw_zip({plain}), single_ok},
      {"deflated", raw_zip({deflated_entry("x", "content")}), single_ok},
      {"with its fork", raw_zip({plain, fork}), single_ok},
      {"after its fork", raw_zip({fork, plain}), single_ok},
      {"deeper, with its fork", raw_zip({deep, {"__MACOSX/d/e/._a.txt", fork_block}}), single_ok},
      {"any name", raw_zip({{"../../../etc/passwd", "content"}}), single_ok},
      {"a link", raw_zip({{"l", "content", link_attributes}}), single_ok},
      {"no bytes", "", single_empty},
      {"no entries", raw_zip({}), single_empty},
      {"only a fork", raw_zip({fork}), single_other_file},
      {"two files", raw_zip({plain, second}), single_other_file},
      {"one file twice", raw_zip({plain, plain}), single_other_file},
      {"two forks", raw_zip({plain, fork, fork}), single_other_file},
      {"another's fork", raw_zip({plain, {"__MACOSX/._b.txt", fork_block}}), single_other_file},
      {"a fork elsewhere", raw_zip({deep, fork}), single_other_file},
      {"a third entry", raw_zip({plain, fork, second}), single_other_file},
      {"a folder", raw_zip({{"d/", "", folder_attributes}}), single_other_file},
      {"a folder ahead", raw_zip({{"d/", "", folder_attributes}, plain}), single_other_file},
      {"forks' folder", raw_zip({plain, {"__MACOSX/", "", folder_attributes}}), single_other_file},
      {"no name", raw_zip({{"", "content"}}), single_other_file},
      {"a pipe", raw_zip({{"p", "content", 0x11A40000}}), single_other_file},
      {"a device", raw_zip({{"p", "content", 0x61A40000}}), single_other_file},
      {"a terminal", raw_zip({{"p", "content", 0x21A40000}}), single_other_file},
      {"a folder by its mode", raw_zip({{"p", "content", 0x41A40000}}), single_other_file},
      {"a bad fork", raw_zip({plain, {"__MACOSX/._a.txt", "content"}}), single_damaged},
      {"encrypted", raw_zip({locked}), single_damaged},
      {"another method", raw_zip({method}), single_damaged},
      {"a wrong sum", raw_zip({lying}), single_damaged},
      {"no archive", "<html>log in, please</html>", single_no_archive},
  };
  for (const auto& [label, bytes, outcome] : rows) {
    EXPECT_EQ(read(bytes), outcome) << label;
    EXPECT_EQ(text, outcome == single_ok ? "content" : "") << label;
    if (outcome == single_ok) {
      EXPECT_EQ(file.is_link, label == std::string("a link"));
    }
  }
  EXPECT_EQ(read(raw_zip({{"a", "x", 0x8FED0000}})), single_ok);
  EXPECT_EQ(file.mode, 0755u);
  EXPECT_EQ(file.name, "a");
  EXPECT_NE(file.modified, time_t(-1));
  EXPECT_EQ(read(raw_zip({{"a", "x", 0}})), single_ok);
  EXPECT_EQ(file.mode, 0u);
  EXPECT_EQ(file.modified, time_t(-1));
}

TEST_F(ArchiveSingle, TheBudgetHoldsBeforeAnythingIsUnpacked) {
  raw_entry bomb = deflated_entry("a", std::string(60'000'000, '\0')), liar = bomb, grown = bomb;
  liar.size = 1000;
  grown.size = 0xFFFFFFFE;
  const std::tuple<std::string, std::string, uint64_t, single_outcome> rows[] = {
      {"at the limit", raw_zip({{"a", std::string(1000, 'x')}}), 1000, single_ok},
      {"above", raw_zip({{"a", std::string(1001, 'x')}}), 1000, single_too_large},
      {"none allowed", raw_zip({{"a", ""}}), 0, single_ok},
      {"bomb", raw_zip({bomb}), 1000, single_too_large},
      {"bomb within a large limit", raw_zip({bomb}), 60'000'000, single_ok},
      {"bomb that says 1 KB", raw_zip({liar}), 1000, single_damaged},
      {"more than it can hold", raw_zip({grown}), UINT64_MAX, single_damaged},
      {"a fork of 60 MB",
       raw_zip({{"a", "x"}, deflated_entry("__MACOSX/._a", std::string(60'000'000, '\0'))}), 1000,
       single_too_large},
  };
  for (const auto& [label, bytes, most, outcome] : rows)
    EXPECT_EQ(read(bytes, most), outcome) << label;
}

TEST_F(ArchiveSingle, SevenZip) {
  run("cd '" + base +
      "' && mkdir -p src/__MACOSX src/d && cd src && printf content > a.txt &&"
      " printf content > b.txt && printf fork > __MACOSX/._a.txt && ln -s content link &&"
      " : > none && head -c 3000000 /dev/zero > zeros");
  for (const char* options : {"", "-m0=LZMA", "-m0=PPMd", "-m0=BZip2", "-m0=Deflate", "-mx0",
                              "-m0=BCJ -m1=LZMA", "-mhc=off", "-mx9", "-m0=LZMA:d=256m"}) {
    EXPECT_EQ(read(pack_7z(options, "a.txt")), single_ok) << options;
    EXPECT_EQ(text, "content") << options;
    EXPECT_EQ(read(pack_7z(options, "zeros"), 3'000'000), single_ok) << options;
    EXPECT_EQ(text.size(), 3'000'000u) << options;
    EXPECT_EQ(read(file_text(base + "made.7z"), 2'999'999), single_too_large) << options;
  }
  const std::tuple<const char*, const char*, single_outcome> rows[] = {
      {"", "none", single_ok},
      {"", "a.txt __MACOSX/._a.txt", single_ok},
      {"", "a.txt b.txt", single_other_file},
      {"", "b.txt __MACOSX/._a.txt", single_other_file},
      {"", "__MACOSX/._a.txt", single_other_file},
      {"", "d", single_other_file},
      {"", "d a.txt", single_other_file},
      {"", "a.txt b.txt link none", single_too_large},
      {"-psecret", "a.txt", single_damaged},
      {"-psecret -mhe=on", "a.txt", single_no_archive},
  };
  for (const auto& [options, files, outcome] : rows)
    EXPECT_EQ(read(pack_7z(options, files), 3'000'000), outcome) << options << files;
  EXPECT_EQ(read(pack_7z("-snl", "link"), 6), single_too_large);
  EXPECT_EQ(read(pack_7z("-snl", "link"), 7), single_ok);
  EXPECT_FALSE(file.is_link);
  EXPECT_EQ(text, "content");
  const std::string none("7z\xBC\xAF\x27\x1C\0\4\x8D\x9B\xD5\x0F", 12);
  EXPECT_EQ(read(none + std::string(20, '\0')), single_empty);
}

// Heads of a hundred bytes that claim the world.
TEST_F(ArchiveSingle, SevenZipClaims) {
  const auto archive = [](const std::string& head) {
    std::string bytes("7z\xBC\xAF\x27\x1C\0\4\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    bytes += char(head.size());
    return bytes + std::string(11, '\0') + head;
  };
  const std::string millions = "\xE0\x01\xE1\xF5";  // 16,113,921
  const std::string lzma = std::string("\x01\x23\x03\x01\x01\x05\x5D", 7);
  const auto streams = [&](const std::string& coders) {
    return std::string("\1\4\6\0\1\x09\x05\0\7\x0B\1\0", 12) + coders +
           std::string("\x0C\x07\0\0\5\1\x11\1\0\0", 10);
  };
  const std::string one_file = streams(std::string("\1\1\0", 3));
  const std::tuple<std::string, std::string, claims_7z> rows[] = {
      {"one file", one_file, claims_fine},
      {"a part that no archive has", std::string(one_file).insert(8, "\x0F"), claims_damaged},
      {"files", "\1\5" + millions, claims_too_large},
      {"three files", std::string("\1\5\3xxxxxxxxx", 12), claims_too_large},
      {"no files", std::string("\1\5\0\0", 4), claims_empty},
      {"nothing", std::string("\1\0", 2), claims_empty},
      {"packed streams", std::string("\1\4\6\0", 4) + millions, claims_too_large},
      {"folders", std::string("\1\4\7\x0B", 4) + millions, claims_too_large},
      {"coders", streams("\x7F"), claims_too_large},
      {"inputs", streams(std::string("\1\x11\0\x7F\1", 5)), claims_too_large},
      {"dictionary of 16 MB", streams(lzma + std::string("\0\0\0\1", 4)), claims_fine},
      {"dictionary of 4 GB", streams(lzma + std::string("\xFF\xFF\xFF\xFF", 4)), claims_too_large},
      {"LZMA2 of 4 GB", streams(std::string("\1\x21\x21\1\x28", 5)), claims_too_large},
      {"PPMd of 2 GB", streams(std::string("\1\x23\3\4\1\5\6\0\0\0\x80", 11)), claims_too_large},
      {"properties past the end", streams(std::string("\1\x21\x21\x7F", 4)), claims_damaged},
      {"files that share one stream",
       std::string("\1\4\7\x0B\1\0\1\1\0\x0C\7\0\x08\x0D", 14) + millions, claims_too_large},
      {"another kind", "\2", claims_damaged},
  };
  for (const auto& [label, head, claims] : rows) {
    const std::string bytes = archive(head);
    EXPECT_EQ(io_7z_claims(bytes_of(bytes), bytes.size(), 2), claims) << label;
    EXPECT_NE(read(bytes), single_ok) << label;
    for (size_t cut = 0; cut < bytes.size(); ++cut)
      EXPECT_NE(io_7z_claims(bytes_of(bytes), cut, 2), claims_fine) << label << cut;
  }
}

TEST_F(ArchiveSingle, EveryTruncationAndFlippedByte) {
  const std::string good = "good content, good content, good content";
  run("mkdir '" + base + "src'");
  write_text(base + "src/a", good);
  const std::string archives[] = {
      raw_zip({deflated_entry("a", good)}),
      raw_zip({{"a", good}, {"__MACOSX/._a", fork_block}}),
      pack_7z("", "a"),
      pack_7z("-mhc=off -m0=PPMd", "a"),
  };
  for (const std::string& archive : archives) {
    for_each_damage(archive, {0x01, 0x20, 0x80, 0xFF},
                    [&](const std::string& bytes, const std::string& label, bool is_cut) {
                      const bool is_good = read(bytes) == single_ok;
                      EXPECT_FALSE(is_good && (is_cut || text != good)) << label;
                    });
    EXPECT_EQ(read(archive), single_ok);
  }
  for (const char* folder : {"/../fuzz/corpus_zip", "/../fuzz/corpus_7z"})
    for (const auto& item : std::filesystem::directory_iterator(TESTS_FOLDER + std::string(folder)))
      read(file_text(item.path()), 1u << 20);
}

TEST_F(ArchiveSingle, WhatIsLoaded) {
  const unsigned char* bytes = nullptr;
  size_t size = 0;
  const io_handle folder(open(root.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(io_load_archive(folder.get(), 1000, bytes, size), single_unread);
  EXPECT_EQ(errno, EISDIR);
  const io_handle handle(open(put("12345").c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(io_load_archive(handle.get(), 4, bytes, size), single_too_large);
  EXPECT_EQ(io_load_archive(handle.get(), 5, bytes, size), single_ok);
  EXPECT_EQ(size, 5u);
}

}  // namespace

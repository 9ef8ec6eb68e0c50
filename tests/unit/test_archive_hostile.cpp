// Archives that do harm or are damaged: a code or a correct file, and nothing outside changed.

#include "tests/unit/test_archive_util.h"

using ArchiveHostile = ArchiveTest;

TEST_F(ArchiveHostile, NamesThatLeadOut) {
  std::vector<std::string> names = {"../evil",        "..",
                                    "a/../../evil",   "a/..",
                                    "./../evil",      "/",
                                    "//evil",         "a\\b",
                                    "C:evil",         "",
                                    "../out/../evil", "../evil/",
                                    "a/../../new/",   "__MACOSX/../../evil"};
  names.insert(names.end(), {root + "evil", std::string("evil\0.txt", 9), std::string(257, 'n')});
  for (const std::string& name : names) {
    mkdir((out + "a").c_str(), 0755);
    for (const unsigned attributes : {0x81A40000u, link_attributes, folder_attributes}) {
      EXPECT_EQ(unpack(raw_zip({{name, "evil", attributes}})), 20002) << name;
      EXPECT_EQ(tree_of(out).size(), 1u) << name;
      expect_untouched(name);
    }
  }
  EXPECT_EQ(zip_to_file(put(raw_zip({{"./evil", "evil"}})), out + ".", nullptr, 0), 20002);
  EXPECT_EQ(zip_to_file(put(raw_zip({{"x", "evil"}})), out + std::string(500, 'y'), nullptr, 0),
            20002);
  expect_untouched("glued");
}

TEST_F(ArchiveHostile, NamesThatOnlyLookSo) {
  std::vector<std::string> names = {"..a", "a..",  "...",        "d/..a",   "d/.../b",     "d/./c",
                                    "./e", "d//f", "d/__MACOSX", "_MACOSX", "\xFF\xFE\x01"};
  names.push_back("d/" + std::string(254, 'n'));
  mkdir((out + "d").c_str(), 0755);
  mkdir((out + "d/...").c_str(), 0755);
  for (const std::string& name : names) {
    EXPECT_EQ(unpack(raw_zip({{name, "fine"}})), 0) << name;
    EXPECT_EQ(file_text(out + name), "fine") << name;
  }
}

TEST_F(ArchiveHostile, NothingGoesThroughALink) {
  const std::pair<const char*, std::vector<raw_entry>> rows[] = {
      {"to the parent", {{"l", "..", link_attributes}, {"l/evil", "evil"}}},
      {"absolute", {{"l", root, link_attributes}, {"l/evil", "evil"}}},
      {"deep",
       {{"d/", "", folder_attributes},
        {"d/l", "../..", link_attributes},
        {"d/l/other/new", "evil"}}},
      {"a folder through it", {{"l", "..", link_attributes}, {"l/new/", "", folder_attributes}}},
      {"a link through it", {{"l", "..", link_attributes}, {"l/evil", "x", link_attributes}}},
      {"made of the folder", {{"d/", "", folder_attributes}, {"disk/evil", "evil"}}},
      {"spelled oddly", {{"l", "..", link_attributes}, {".//l//evil", "evil"}}},
      {"a folder of its name first",
       {{"l", "..", link_attributes}, {"l/", "", folder_attributes}, {"l/evil", "evil"}}},
  };
  for (const auto& [label, entries] : rows) {
    ASSERT_EQ(symlink("..", (out + "disk").c_str()), 0);
    EXPECT_EQ(unpack(raw_zip(entries)), 20002) << label;
    expect_untouched(label);
    empty_out();
  }
  // A link in the place of the file is replaced, not followed, wherever it came from.
  ASSERT_EQ(symlink("../evil", (out + "disk").c_str()), 0);
  EXPECT_EQ(unpack(raw_zip({{"l", "../evil", link_attributes}, {"l", "mine"}, {"disk", "mine"}})),
            0);
  EXPECT_EQ(file_text(out + "l"), "mine");
  EXPECT_EQ(file_text(out + "disk"), "mine");
  EXPECT_TRUE(S_ISREG(file_stat(out + "disk").st_mode));
  expect_untouched("replaced");
  // A link whose text is damaged, and one that the system does not make.
  EXPECT_EQ(unpack(raw_zip({{"n", std::string("a\0b", 3), link_attributes}})), 20002);
  EXPECT_EQ(unpack(raw_zip({{"n", std::string(5000, 'x'), link_attributes}})), ENAMETOOLONG);
  EXPECT_EQ(unpack(raw_zip({{"n", "", link_attributes}})), 0);
}

TEST_F(ArchiveHostile, LiesAboutSizes) {
  const std::string text(1000, 't');
  const raw_entry honest = deflated_entry("a", text), stored("a", text);
  const auto with = [](raw_entry entry, auto field, unsigned lie) {
    entry.*field = lie;
    return entry;
  };
  const auto size = &raw_entry::size, packed_size = &raw_entry::packed_size;
  const unsigned densest = honest.packed_size * 1032;
  raw_entry twice = stored;
  twice.again = true;
  const std::tuple<const char*, std::vector<raw_entry>, int> rows[] = {
      {"honest", {honest}, 0},
      {"3 GB", {with(honest, size, 3000000000u)}, 20002},
      {"just denser than deflate", {with(honest, size, densest + 1033)}, 20002},
      {"as dense as deflate", {with(honest, size, densest)}, 20002},
      {"all bits", {with(honest, size, 0xFFFFFFFF)}, 27},
      {"one more", {with(honest, size, 1001)}, 20002},
      {"one less", {with(honest, size, 999)}, 20002},
      {"none", {with(honest, size, 0)}, 20002},
      {"packed 3 GB", {with(honest, packed_size, 3000000000u)}, 20002},
      {"packed short", {with(honest, packed_size, honest.packed_size - 1)}, 20002},
      {"stored, unequal", {with(stored, size, 1001)}, 20002},
      {"stored, past the end", {with(with(stored, size, 5000), packed_size, 5000)}, 20002},
      {"wrong sum", {with(stored, &raw_entry::crc, stored.crc ^ 0x80000000)}, 20002},
      {"encrypted", {with(honest, &raw_entry::flags, 1)}, 20002},
      {"another method", {with(honest, &raw_entry::method, 12)}, 20002},
      {"deflated as stored", {with(honest, &raw_entry::method, 0)}, 20002},
      {"empty, deflated to nothing", {with({"a", ""}, &raw_entry::method, 8)}, 0},
      {"no entries", {}, 20001},
      {"one entry's bytes five times over", {stored, twice, twice, twice, twice}, 20002},
  };
  for (const auto& [label, honest_entries, result] : rows) {
    for (const unsigned attributes : {0x81A40000u, link_attributes}) {
      auto entries = honest_entries;
      for (raw_entry& entry : entries)
        entry.attributes = attributes;
      // A link's target of this length is good, and its text is what the entry holds.
      EXPECT_EQ(unpack(raw_zip(entries)), result) << label;
    }
    expect_untouched(label);
    empty_out();
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ArchiveHostile, NoMemoryIsACode) {
  // A limit on the address space, with which the sanitizers cannot live.
  const size_t size = 64u << 20;
  const std::string zip = put(raw_zip({deflated_entry("a", std::string(size, 'x'))}));
  write_text(out + "a", "old");
  rlimit limit, before_limit;
  getrlimit(RLIMIT_AS, &before_limit);
  limit = before_limit;
  limit.rlim_cur = std::stoul(file_text("/proc/self/statm")) * size_t(getpagesize()) + size / 2;
  setrlimit(RLIMIT_AS, &limit);
  const int result = zip_to_file(zip, out, nullptr, 0);
  setrlimit(RLIMIT_AS, &before_limit);
  EXPECT_EQ(result, 12);
  EXPECT_EQ(file_text(out + "a"), "old");
  EXPECT_EQ(zip_to_file(zip, out, nullptr, 0), 0);
  EXPECT_EQ(file_stat(out + "a").st_size, off_t(size));
}
#endif

TEST_F(ArchiveHostile, EveryTruncationAndEveryFlippedBit) {
  const std::string good = "good content, good content, good content";
  const std::string zips[] = {raw_zip({deflated_entry("a", good)}), raw_zip({{"a", good}}),
                              raw_zip({deflated_entry("a", good), {"b", good}})};
  const auto check = [&](const std::string& bytes, const std::string& label, bool must_fail) {
    write_text(out + "a", "old");
    const int result = unpack(bytes);
    EXPECT_TRUE(result != 0 || !must_fail) << label;
    bool unpacked = false;
    for (const auto& [name, what] : tree_of(out)) {
      const std::string text = what.substr(what.find(' ') + 1);
      EXPECT_TRUE(text == good || text == "old" || text.empty()) << label << " " << name;
      unpacked = unpacked || text == good;
    }
    EXPECT_TRUE(unpacked || file_text(out + "a") == "old" || result == 0) << label;
    expect_untouched(label);
    for (const auto& item : tree_of(out))
      remove((out + item.first).c_str());
  };
  for (const std::string& zip : zips)
    for_each_damage(zip, {1, 2, 4, 8, 16, 32, 64, 128}, check);
}

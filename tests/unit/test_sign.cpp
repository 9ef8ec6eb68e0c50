// Keys, signatures and statements, against what minisign has made and what it has not.

#include "corekit/files/sign.h"

#include "corekit/files/io_set.h"
#include "tests/unit/sign_test_key.h"
#include "tests/unit/test_archive_util.h"
#include "tests/unit/test_files_scratch.h"

using namespace std::string_literals;

namespace {

constexpr char message[] = "what is signed\n";
// minisign -S, and the same with -l.
const std::string by_digest =
    "untrusted comment: c\n"
    "RUQD0MnvBXAU5nqicxENqi2QfDxvvgCPT4YREATNiKgNUlxqFfHodi45+BJY2KEpnhbYpb1XW95JvHhKdrbyQ/"
    "96XfRiwmzmhA8=\n"
    "trusted comment: a trusted comment\n"
    "/NBHKNI2wWdpkB/2hSNm4WopA8WYsJW35sOJP++Ql+XgEhfQz/XK7TRh0ZGeIckjC+/YFmvOY/6pSuOJwDcxDA==\n";
const std::string by_text =
    "untrusted comment: c\n"
    "RWQD0MnvBXAU5mbZg0xKKTe6UNMr+N0Jl6dZ73X5FGOfCsUHDahiDO0ayNXeRc+GPAWFwy/"
    "ZiDPgj5waosbUdL427TNnZ0bjSwg=\n"
    "trusted comment: a trusted comment\n"
    "HDavNoKnm5pW/h1zCvhNNOBjgbe9JcAA9xNA0SKNoeeq9H0UG8iU6Mg7xx88Exr0XELcHakc5LcovypnM+WeAA==\n";

std::string changed(std::string text, size_t at, char by) {
  text[at] = by;
  return text;
}

std::string without(std::string text, const std::string& part) {
  return text.erase(text.find(part), part.size());
}

TEST(Sign, NothingIsLeftOfAMakersKey) {
  alignas(maker_key) unsigned char room[sizeof(maker_key)] = {};
  const auto zeros = [&room] { return std::count(room, room + sizeof room, 0); };
  auto* const key = new (room) maker_key;
  read_test_key(*key);
  EXPECT_LT(zeros(), 20);
  key->~maker_key();
  EXPECT_GE(zeros(), 64);
}

TEST(Sign, WhatMinisignHasMadeAndNothingElse) {
  const std::vector<sign_public_key> keys = {test_key()};
  sign_public_key other = test_key();
  other.id[0] ^= 1;
  const size_t comment = by_digest.find("trusted comment: a"), line = by_digest.find("RUQ");
  using key_list = std::vector<sign_public_key>;
  const std::tuple<const char*, std::string, std::string, sign_verdict, key_list> rows[] = {
      {"of the digest", message, by_digest, sign_good, keys},
      {"of the text", message, by_text, sign_good, keys},
      {"by the second key", message, by_text, sign_good, {other, test_key()}},
      {"with CR LF", message, "untrusted comment: \r\n" + by_text.substr(by_text.find("RWQ")),
       sign_good, keys},
      {"of another text", "What is signed\n", by_digest, sign_wrong, keys},
      {"of a shorter text", "what is signed", by_text, sign_wrong, keys},
      {"by another key", message, by_digest, sign_other_key, {other}},
      {"by no key", message, by_digest, sign_other_key, {}},
      {"another comment", message, changed(by_digest, comment + 17, 'A'), sign_wrong, keys},
      {"a changed signature", message, changed(by_digest, line + 20, 'A'), sign_wrong, keys},
      {"the other algorithm", message, changed(by_digest, line + 1, 'W'), sign_wrong, keys},
      {"no algorithm", message, changed(by_digest, line, 'A'), sign_malformed, keys},
      {"no base64", message, changed(by_digest, line + 20, '!'), sign_malformed, keys},
      {"cut", message, by_digest.substr(0, by_digest.size() - 3), sign_malformed, keys},
      {"no trusted comment", message, by_digest.substr(0, comment), sign_malformed, keys},
      {"something behind it", message, by_digest + "x", sign_malformed, keys},
      {"another head", message, changed(by_digest, 0, 'U'), sign_malformed, keys},
      {"nothing", message, "", sign_malformed, keys},
  };
  for (const auto& [label, text, signature, verdict, trusted] : rows) {
    sign_key_id by = {};
    EXPECT_EQ(sign_check(text, signature, trusted, by), verdict) << label;
    EXPECT_EQ(by, verdict == sign_good ? test_key().id : sign_key_id()) << label;
  }
  for (const char* const text :
       {"", "RW", "RWQD", "RWQD0MnvBXAU5gcYVDbKd1MmBHQ2BLcNw88CW1imG9F82ILtTLgndV8",
        "RUQD0MnvBXAU5gcYVDbKd1MmBHQ2BLcNw88CW1imG9F82ILtTLgndV8J"}) {
    sign_public_key key;
    EXPECT_FALSE(sign_read_key(text, key)) << text;
  }
}

// What the makers' side signs is what the users' side takes; every byte of it counts.
TEST(Sign, AStatementAndEveryByteOfIt) {
  const std::string list = "I\n820 version\nSERVERS\nENDOFLIST\n";
  sign_statement made = statement_of_list(list, 7);
  made.release = "Skyvane 9";
  made.number = 91001;
  const std::string stated = sign_statement_text(made), text = signed_by_test_key(stated);

  const std::vector<sign_public_key> keys = {test_key()};
  sign_statement read;
  ASSERT_EQ(sign_read_statement(text, sign_of_servers, keys, read), sign_good);
  EXPECT_EQ(sign_statement_text(read), stated);
  EXPECT_EQ(read.by, test_key().id);
  EXPECT_TRUE(read.covers_bytes(sign_list_name, list));
  EXPECT_FALSE(read.covers_bytes(sign_list_name, list + "\n"));
  EXPECT_FALSE(read.covers_bytes("directory.txt", list));
  EXPECT_EQ(sign_read_statement(text, sign_of_release, keys, read), sign_other_use);
  const auto verdict_on = [&keys, &read](const std::string& bytes) {
    return sign_read_statement(bytes, sign_of_servers, keys, read);
  };
  for (size_t at = 0; at < stated.size(); ++at)
    EXPECT_NE(verdict_on(changed(text, at, char(text[at] ^ 1))), sign_good) << at;
  for (size_t size = 0; size + 1 < text.size(); ++size)
    EXPECT_NE(verdict_on(text.substr(0, size)), sign_good) << size;

  // Signed, and still no statement of ours.
  for (const std::string& wrong :
       {without(stated, "DOMAIN skyvane.installer\n"), without(stated, "SERIAL 7\n"),
        without(stated, "EXPIRES 2030-01-31\n"), without(stated, "STATEMENT 900\n"),
        stated + "SERIAL 0\n", stated + "SERIAL 9007199254740992\n", stated + "SERIAL 7x\n",
        stated + "EXPIRES 2030-13-01\n", stated + "DOMAIN another\n", stated + "NUMBER -1\n",
        stated + stated.substr(stated.find("SHA256")), stated + "SHA256 00 1 a\n"})
    EXPECT_EQ(verdict_on(signed_by_test_key(wrong)), sign_malformed) << wrong;
  const std::string later = stated + "COLOUR blue\n";  // of a later program
  EXPECT_EQ(verdict_on(signed_by_test_key(later)), sign_good);

  time_t last = 1896134399;  // 2030-01-31, the last second
  EXPECT_FALSE(sign_has_expired(made, last));
  EXPECT_TRUE(sign_has_expired(made, last + 1));
}

TEST(Sign, DaysAreYearMonthAndDay) {
  for (const char* day : {"2026-01-01", "2026-12-31", "0000-10-09"})
    EXPECT_TRUE(sign_is_day(day)) << day;
  for (const char* day : {"2026-00-01", "2026-13-01", "2026-01-00", "2026-01-32", "2026-1-001",
                          "2026/01/01", "x026-01-01", "2026-01-1x", "2026-01-011", ""})
    EXPECT_FALSE(sign_is_day(day)) << day;
}

TEST(Sign, WhereAListEnds) {
  const std::pair<const char*, const char*> rows[] = {
      {"I\nENDOFLIST\nrest", "I\nENDOFLIST\n"},
      {"I\n \tENDOFLIST \r\nrest\n", "I\n \tENDOFLIST \r\n"},
      {"I\nENDOFLIST", "I\nENDOFLIST"},
      {"I\nENDOFLISTS\nENDOFLIST x\nrest\n", "I\nENDOFLISTS\nENDOFLIST x\nrest\n"},
      {"ENDOFLIST\nENDOFLIST\n", "ENDOFLIST\n"},
      {"", ""},
  };
  for (const auto& [list, body] : rows)
    EXPECT_EQ(sign_list_body(list), body) << list;
}

// The list as a user's program meets it, and the highest serial that it keeps.
TEST(Sign, ListsAndTheSerialsSeen) {
  const scratch_folder here;
  setenv("XDG_CONFIG_HOME", here.path().c_str(), 1);
  const std::string body = "I\n820 version\nSERVERS\nENDOFLIST\n";
  const auto list_of = [&body](int64_t serial) {
    return body + signed_by_test_key(sign_statement_text(statement_of_list(body, serial)));
  };
  const std::string both = "RWQ= "s + test_public_key;
  const char* const foreign = "RWQAAAAAAAAAAAcYVDbKd1MmBHQ2BLcNw88CW1imG9F82ILtTLgndV8J";
  const std::tuple<const char*, const char*, std::string, sign_verdict, int64_t> rows[] = {
      {"unsigned", test_public_key, body, sign_unsigned, 0},
      {"blank behind it", test_public_key, body + "\r\n", sign_unsigned, 0},
      {"something behind it", test_public_key, body + "x\n", sign_malformed, 0},
      {"the first", test_public_key, list_of(7), sign_good, 7},
      {"again", both.c_str(), list_of(7), sign_good, 7},
      {"another list", test_public_key, "\n" + list_of(9), sign_wrong, 7},
      {"the next", test_public_key, list_of(8), sign_good, 8},
      {"the first once more", test_public_key, list_of(7), sign_superseded, 8},
      {"by nobody", foreign, list_of(9), sign_other_key, 0},
      {"as it was", test_public_key, list_of(8), sign_good, 8},
  };
  for (const auto& [label, key, text, verdict, seen] : rows) {
    const built_in_keys built_in(key);
    sign_statement statement;
    EXPECT_EQ(sign_accept_list(text, statement), verdict) << label;
    EXPECT_EQ(sign_seen_serial(sign_list_name), seen) << label;
  }
  const built_in_keys built_in(test_public_key);
  EXPECT_EQ(sign_seen_serial("final /another"), 0) << "each by itself";
  std::string prefs;
  ASSERT_EQ(get_OS_abs_path(os_dir_prefs, prefs), 0);
  std::ofstream(prefs + "skyvane_serials.txt", std::ios::app)
      << "SERIAL 99 03d0c9ef057014e6 final /a\nSERIAL 98 03d0c9ef057014e6 final /a\nSERIAL 100x "
         "03d0c9ef057014e6 final /a\nSERIAL 100 03d0c9ef057014 final /a\nSERIAL 9007199254740992 "
         "03d0c9ef057014e6 final /a\nSERIAL 100 03d0c9ef057014e6 final /a/b\n\nSERIAL\nSERIAL 100 "
         "03d0c9ef057014e6 final /";
  EXPECT_EQ(sign_seen_serial("final /a"), 99);
  EXPECT_EQ(sign_seen_serial("final /"), 100);
  unsetenv("XDG_CONFIG_HOME");
}

TEST(Sign, SetsOfFiles) {
  const raw_entry one("a", "1"), two("b", "22");
  const std::tuple<std::string, std::string, single_outcome> rows[] = {
      {"both", raw_zip({one, two}), single_ok},
      {"in any order", raw_zip({two, one}), single_ok},
      {"one", raw_zip({one}), single_other_file},
      {"one twice", raw_zip({one, two, one}), single_other_file},
      {"a third", raw_zip({one, two, {"c", "3"}}), single_other_file},
      {"a link", raw_zip({one, {"b", "22", link_attributes}}), single_other_file},
      {"in a folder", raw_zip({one, {"x/b", "22"}}), single_other_file},
      {"too large", raw_zip({one, {"b", "22222"}}), single_too_large},
      {"nothing", "", single_empty},
      {"no archive", "PK\3\4", single_no_archive},
  };
  for (const auto& [label, archive, outcome] : rows) {
    set_entry entries[] = {{"a", 4}, {"b", 4}};
    EXPECT_EQ(io_read_set(bytes_of(archive), archive.size(), entries), outcome) << label;
    if (outcome != single_ok) continue;
    EXPECT_EQ(entries[0].bytes + entries[1].bytes, "122") << label;
  }
}

}  // namespace

TEST(SignSet, IsReadAsItWasWritten) {
  const scratch_folder here;
  const std::string path = here / "set.zip", large(100'000, 'x');
  const uint32_t date = 0x5A21'6000;  // 2025-01-01 12:00
  EXPECT_EQ(
      io_write_set(path, std::vector<set_entry>{{"b", 0, false, large}, {"a", 0, false, ""}}, date),
      0);
  const std::string zip = content_of(path);
  set_entry entries[] = {{"a", 4}, {"b", 100'000}};
  EXPECT_EQ(io_read_set(bytes_of(zip), zip.size(), entries), single_ok);
  EXPECT_TRUE(entries[0].bytes.empty());
  EXPECT_EQ(entries[1].bytes, large);
  entries[1].most = 99'999;
  EXPECT_EQ(io_read_set(bytes_of(zip), zip.size(), entries), single_too_large);
  // Packed; of Unix, mode 0644, with its date, in the order given.
  EXPECT_LT(zip.size(), 1000u);
  const size_t central = zip.find("PK\1\2");
  EXPECT_EQ(zip.substr(central + 4, 2), "\x14\3");
  EXPECT_EQ(zip.substr(central + 12, 4), (std::string{0, 0x60, 0x21, 0x5A}));
  EXPECT_EQ(zip.substr(central + 40, 2),
            (std::string{static_cast<char>(0xA4), static_cast<char>(0x81)}));
  EXPECT_EQ(zip[central + 46], 'b');
  EXPECT_NE(io_write_set(here / "none/set.zip", entries, date), 0);
}

// What a signed release says of its archives, and what is placed by it.

#include "Installer-f/engine/utils_trust.h"

#include "Installer-f/engine/utils_place.h"
#include "engine_tree.h"
#include "tests/unit/sign_test_key.h"
#include "tests/unit/test_archive_util.h"

namespace {

constexpr unsigned file_0644 = 0x81A40000, file_0755 = 0x81ED0000;
constexpr char sig_of_new[] = "22af645d1859cb5ca6da0c484f1f37ea";

class Trust : public engine_tree {
 protected:
  static std::string statement(const std::string& directory, const std::string& sums) {
    sign_statement made;
    made.kind = sign_of_release;
    made.release = "Skyvane";
    made.serial = 7;
    made.expires = "2030-01-31";
    made.covers = {cover_of("directory.txt", directory), cover_of("directory.sum", sums)};
    return signed_by_test_key(sign_statement_text(made));
  }
  static std::string sum_line(const std::string& archive, const std::string& content,
                              const char* mode, const std::string& path) {
    return "SUM " + sign_hex(sign_hash(archive.data(), archive.size())) + " " +
           std::to_string(archive.size()) + " " +
           sign_hex(sign_hash(content.data(), content.size())) + " " +
           std::to_string(content.size()) + " " + mode + " " + path + "\n";
  }
  static sign_verdict accept(const std::string& directory, const std::string& sums,
                             const std::string& signature) {
    const sign_public_key keys[] = {test_key()};
    return trust_accept({directory, sums, signature}, keys, "Skyvane", "");
  }
};

constexpr char head[] = "I\n900 version\nSUMS\n\n";

TEST_F(Trust, TheTextsThatWereSigned) {
  const std::string list = "the list", sums = head, signature = statement(list, sums);
  EXPECT_EQ(accept(list, sums, signature), sign_good);
  ASSERT_NE(trust_statement(), nullptr);
  EXPECT_EQ(accept(list + "x", sums, signature), sign_wrong);
  EXPECT_EQ(trust_statement(), nullptr) << "what was good before is forgotten";
  EXPECT_EQ(accept(list, sums + "x", signature), sign_wrong);
  EXPECT_EQ(accept(sums, list, signature), sign_wrong) << "each text by its name";
  EXPECT_EQ(accept(list, sums, ""), sign_malformed);
  const sign_public_key keys[] = {test_key()};
  EXPECT_EQ(trust_accept({list, sums, signature}, keys, "Skyvane 10", ""), sign_other_use);
}

TEST_F(Trust, EachFileItsLine) {
  add("All/a b", {sig_of_new});
  add("All/gone", {sig_of_new, "GONE"});
  add("All/z", {sig_of_new});
  const std::string a = sum_line("A", "a", "100644", "All/a b"),
                    other = sum_line("B", "b", "100755", "All/left out"),
                    z = sum_line("Z", "z", "120777", "All/z");
  const std::tuple<std::string, std::string, bool> rows[] = {
      {"whole", head + a + z, true},
      {"with lines that the reader has left out", head + other + a + other + z + other, true},
      {"without the last", head + a, false},
      {"without the first", head + z, false},
      {"in another order", head + z + a, false},
      {"without a head", a + z, false},
      {"without a path", head + a + z.substr(0, z.size() - 7) + "\n", false},
      {"a digit short", head + a + "SUM " + z.substr(5), false},
      {"another line", head + a + "\n" + z, false},
  };
  for (const auto& [label, sums, is_whole] : rows) {
    ASSERT_EQ(accept("list", sums, statement("list", sums)), sign_good);
    EXPECT_EQ(trust_take_sums(), is_whole) << label;
    if (!is_whole) continue;
    EXPECT_TRUE(trust_sum(0)->is_of(bytes_of("A"), 1)) << label;
    EXPECT_EQ(trust_sum(1)->archive_bytes, 0u) << label;
    EXPECT_EQ(trust_sum(2)->mode, unsigned(S_IFLNK | 0777)) << label;
  }
  trust_forget();
  EXPECT_EQ(trust_sum(0), nullptr);
}

TEST_F(Trust, AnArchiveThatWasSignedForAndItsContent) {
  write("copy/old.txt", "old");
  const std::string zip = raw_zip({{"any", "new", file_0644}});
  file_sum good;
  good.archive_sha256 = sign_hash(zip.data(), zip.size());
  good.archive_bytes = zip.size();
  good.file_sha256 = sign_hash("new", 3);
  good.file_bytes = 3;
  good.mode = S_IFREG | 0644;
  const auto as_signed = [](file_sum&) {};
  const std::tuple<std::string, std::string, void (*)(file_sum&)> rows[] = {
      {"the archive", zip, as_signed},  // the one that is placed
      {"longer", zip + '\0', as_signed},
      {"shorter", zip.substr(1), as_signed},
      {"the same file, packed otherwise", raw_zip({deflated_entry("any", "new")}), as_signed},
      {"another mode", raw_zip({{"any", "new", file_0755}}), as_signed},
      {"a link", raw_zip({{"any", "new", link_attributes}}), as_signed},
      {"another digest", zip, [](file_sum& sum) { sum.archive_sha256[31] ^= 1; }},
      {"its content's digest", zip, [](file_sum& sum) { sum.file_sha256[0] ^= 1; }},
      {"its content's size", zip, [](file_sum& sum) { ++sum.file_bytes; }},
      {"its content's mode", zip, [](file_sum& sum) { sum.mode = S_IFREG | 0755; }},
      {"its content's kind", zip, [](file_sum& sum) { sum.mode = S_IFLNK | 0777; }},
      {"no line", zip, [](file_sum& sum) { sum = {}; }},
      {"no line, nothing", "", [](file_sum& sum) { sum = {}; }},
  };
  for (const auto& [label, archive, change] : rows) {
    const bool is_good = label == "the archive";
    write("copy/old.txt", "old");
    file_sum sum = good;
    change(sum);
    const place_result result = place_archive(*copy_gate(), bytes_of(archive), archive.size(),
                                              {"old.txt", std::string(sig_of_new), 1000, &sum});
    EXPECT_EQ(result.outcome, is_good ? place_ok : place_not_signed_for) << label;
    EXPECT_EQ(read("copy/old.txt"), is_good ? "new" : "old") << label;
  }
}

}  // namespace

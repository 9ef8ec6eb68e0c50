// The reader of data files: opening, headers, scanners.

#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "tests/unit/test_files_scratch.h"
#include "tests/unit/test_runtime_util.h"

using namespace std::string_literals;

namespace {
std::string rest_of(const xmap_class& file) {
  return {file.cursor, file.file_end};
}
}  // namespace

TEST(Xmap, OpensPlainFilesOnly) {
  const scratch_folder here;
  here.file("Plain", "content");
  here.file("empty", "");
  here.folder("folder");
  here.link("link", "Plain");
  here.link("dangling", "nothing");
  mkfifo((here / "pipe").c_str(), 0600);

  xmap_class nothing{""};
  EXPECT_EQ(nullptr, nothing.file_start);
  EXPECT_EQ(0, nothing.file_handle);

  const int open_before = mapped_files_open;
  {
    xmap_class file(here / "Plain");
    ASSERT_NE(nullptr, file.file_start);
    EXPECT_EQ("content", rest_of(file));
    EXPECT_GT(file.file_handle, 0);
    EXPECT_EQ(open_before + 1, mapped_files_open);

    for (const char* name : {"missing", "folder", "folder/", "pipe", "dangling", "empty/x"}) {
      EXPECT_EQ(nullptr, file.retry(here / name)) << name;
      EXPECT_EQ(nullptr, file.file_start) << name;
      EXPECT_EQ(0, file.file_handle) << name;
      EXPECT_EQ(open_before, mapped_files_open) << name;
    }
    EXPECT_NE(nullptr, file.retry(here / "link"));
    EXPECT_NE(nullptr, file.retry(here / "pLAIN")) << "case is repaired";
    EXPECT_EQ("content", rest_of(file));
    here.file("one", "x");
    EXPECT_NE(nullptr, file.retry(here / "one"));
    EXPECT_EQ("x", rest_of(file));
    EXPECT_NE(nullptr, file.retry(here / "empty"));
    EXPECT_NE(nullptr, file.file_start);
    EXPECT_EQ(file.cursor, file.file_end);
    EXPECT_EQ(open_before + 1, mapped_files_open);
    const int versions[] = {900, 0};
    EXPECT_EQ(0, file.check_file(ouf_text, versions, nullptr, nullptr));
    std::string out = "old";
    file.TXT_str_scan_space(&out);
    EXPECT_EQ("", out);
    EXPECT_EQ(nullptr, file.retry("/dev/zero"));
  }
  EXPECT_EQ(open_before, mapped_files_open);
}

TEST(Xmap, KeepsItsContentWhenTheFileChangesAndMapsLargeOnes) {
  const scratch_folder here;
  const std::string path = here.file("plain", std::string(300000, 'a'));
  const auto is_mapped = [&path] { return str_holds(content_of("/proc/self/maps"), path); };
  xmap_class file(path);
  ASSERT_EQ(0, truncate(path.c_str(), 0));
  EXPECT_EQ(std::string(300000, 'a'), rest_of(file));
  const off_t size = 300'000'000;  // sparse, so that it costs nothing
  ASSERT_EQ(0, truncate(here.file("plain", "first").c_str(), size));
  ASSERT_NE(nullptr, file.retry(path));
  EXPECT_EQ(size, file.file_end - file.file_start);
  EXPECT_EQ("first", std::string(file.cursor, file.cursor + 5));
  EXPECT_EQ(0, file.file_end[-1]);
  EXPECT_TRUE(is_mapped());
  ASSERT_EQ(nullptr, file.retry(here / "none"));
  EXPECT_FALSE(is_mapped());
}

TEST(XmapDeathTest, BrokenPathsAreFatal) {
  const auto exits = testing::ExitedWithCode(1);
  for (const char* path : {"a:b", "a\\b"})
    EXPECT_EXIT(xmap_class{path}, exits, "I got a bad dirchar! I only want '/'!");
  EXPECT_EXIT(xmap_class(std::string(500, 'a')), exits, "String too long!");
  EXPECT_EQ(nullptr, xmap_class(std::string(499, 'a')).file_start);
}

TEST(Xmap, TextHeaders) {
  const scratch_folder here;
  // What is asked for, and what comes of it: the version, its note, and what is still to be read.
  const std::tuple<const char*, std::string, const char*, int, std::string, std::string> rows[] = {
      {"other byte, other version", "A\n840 x\nbody", nullptr, 840, "x", "body"},
      {"rest of the first line is ignored", "I junk 5\n900\tver sion \nbody", nullptr, 900,
       "ver sion ", "body"},
      {"CRLF", "I\r\n900 version\r\nbody", nullptr, 900, "version", "body"},
      {"blanks around", "I\n\n\t \n  900  version\n\n \tbody", nullptr, 900, "version", "body"},
      {"version ends the file", "I\n900", nullptr, 900, "", ""},
      {"wrong byte", "i\n900 version\nbody", nullptr, 0, "unset", "900 version\nbody"},
      {"unknown version", "I\n901 version\nKEY body", "KEY", 0, "version", "KEY body"},
      {"version with junk", "I\n900x version\nbody", nullptr, 0, "version", "body"},
      {"no version", "I\n", nullptr, 0, "", ""},
      {"version 0 is the end of the list", "I\n0 version\nbody", nullptr, 0, "version", "body"},
      {"keyword before a line end", "I\n900 version\nKEY\nbody", "KEY", 900, "version", "\nbody"},
      {"keyword too long", "I\n900 version\nKEYS body", "KEY", 0, "version", "KEYS body"},
      {"keyword missing", "I\n900 version\n", "KEY", 0, "version", ""},
  };
  const int versions[] = {900, 840, -7, 0};
  for (const auto& [label, content, keyword, result, note, rest] : rows) {
    xmap_class file(here.file("f", content));
    std::string got = "unset";
    EXPECT_EQ(result, file.check_file(ouf_text, versions, keyword, &got)) << label;
    EXPECT_EQ(note, got) << label;
    EXPECT_EQ(rest, rest_of(file)) << label;
  }
}

TEST(Xmap, TokensAndLines) {
  const scratch_folder here;
  for (const std::string& end : {"\n"s, "\r"s, "\r\n"s, "\0"s}) {
    xmap_class file(here.file(
        "f", " \tone\t two" + end + end + " \t" + end + "\tthree four \t" + end + "last one"));
    std::string out;
    // A token stops on its delimiter and never crosses a line end.
    for (const auto& [token, next] :
         {std::pair{"one", '\t'}, std::pair{"two", end[0]}, std::pair{"", end[0]}}) {
      file.TXT_str_scan_space(&out);
      EXPECT_EQ(token, out);
      EXPECT_EQ(next, *file.cursor);
    }
    file.TXT_str_scan_eoln(&out);
    EXPECT_EQ("", out);
    EXPECT_EQ('t', *file.cursor) << "blank lines vanish";
    file.TXT_str_scan_eoln(&out);
    EXPECT_EQ("three four \t", out) << "blanks behind the text stay";
    file.TXT_str_scan_space(nullptr);
    file.TXT_str_scan_eoln(&out);
    EXPECT_EQ("one", out) << "without a line end";
    EXPECT_EQ(file.file_end, file.cursor);
    file.TXT_str_scan_space(&out);
    EXPECT_EQ("", out);
  }
}

// The first byte says in which order the numbers' bytes stand.
TEST(Xmap, BinaryFilesInBothOrders) {
  const scratch_folder here;
  const int versions[] = {900, 840, 0};
  xmap_class file("");
  ASSERT_EQ(1, file.io_file_open(1, here / "f", versions, ouf_binary));
  ouf << "body";
  EXPECT_EQ(0, file.io_file_close());
  EXPECT_EQ("i\x84\x03\0\0body"s, content_of(here / "f"));
  const std::tuple<std::string, int, std::string> rows[] = {
      {"i\x84\x03\0\0"s, 1, "12345678901"},
      {"a\0\0\x03\x48"s, 1, "43218765901"},
      {"i\x85\x03\0\0"s, 0, ""},
      {"I\x84\x03\0\0"s, 0, ""},
  };
  for (const auto& [head, result, expected] : rows) {
    here.file("f", head + "12345678901");
    EXPECT_EQ(result, file.io_file_open(0, here / "f", versions, ouf_binary));
    EXPECT_EQ(0, file.io_file_close());
    if (!result) continue;
    char got[12] = {};
    file.read_n_rev(got, 0);
    file.read_n_rev(got, 11);
    EXPECT_EQ(expected, got);
    for (const long bytes : {1l, -1l})
      EXPECT_EXIT(file.read_n_rev(got, bytes), testing::ExitedWithCode(1), "Invalid read_n_rev");
  }
  here.file("f", "i\x84\x03\0"s);
  EXPECT_EQ(0, file.io_file_open(0, here / "f", versions, ouf_binary)) << "cut short";
  EXPECT_EQ(0, file.io_file_open(0, here / "missing", versions, ouf_binary));
  EXPECT_EXIT(file.check_file(7, versions, nullptr, nullptr), testing::ExitedWithCode(1),
              "Bad check_file type!");
  EXPECT_EXIT(ouf_open(here / "f", 7, 1, ""), testing::ExitedWithCode(1), "Bad ouf_open type!");
}

TEST(Xmap, ALineIsToldByItsNumber) {
  const log_capture log;
  xmap_class file("");
  const std::string text = "one\r\ntwo\rthree\n\nfive";
  file.look_at(text.data(), text.data() + text.size());
  std::string expected;
  const std::pair<int, const char*> rows[] = {{0, "1: one"},   {3, "1: one"},   {5, "2: two"},
                                              {8, "2: two"},   {9, "3: three"}, {15, "4: "},
                                              {16, "5: five"}, {20, "5: five"}};
  for (const auto& [at, line] : rows) {
    file.cursor = file.file_start + at;
    file.TXT_xer_line();
    expected += "Line "s + line + "\n";
  }
  EXPECT_EQ(log.text(), expected);
}

// The programs of a desktop may start us without a standard input.
TEST(Xmap, HandleZeroIsNoFile) {
  const scratch_folder here;
  here.file("f", "content");
  const int input = dup(0);
  close(0);
  {
    const xmap_class file(here / "f");
    EXPECT_GE(file.file_handle, 3);
    EXPECT_EQ("content", rest_of(file));
  }
  EXPECT_EQ(0, dup2(input, 0)) << "and was given back";
  close(input);
}

// The reader of data files: opening, headers, scanners.

#include "corekit/files/io_utils_ouf.h"
#include "corekit/files/xmap.h"
#include "tests/unit/test_files_scratch.h"

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
    EXPECT_EQ("content", rest_of(file));
    EXPECT_NE(nullptr, file.retry(here / "pLAIN")) << "case is repaired";

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
  xmap_class file(path);
  ASSERT_EQ(0, truncate(path.c_str(), 0));
  EXPECT_EQ(std::string(300000, 'a'), rest_of(file));
  const off_t size = 300'000'000;  // sparse, so that it costs nothing
  ASSERT_EQ(0, truncate(here.file("plain", "first").c_str(), size));
  ASSERT_NE(nullptr, file.retry(path));
  EXPECT_EQ(size, file.file_end - file.file_start);
  EXPECT_EQ("first", std::string(file.cursor, file.cursor + 5));
  EXPECT_EQ(0, file.file_end[-1]);
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
  const struct {
    const char* label;
    std::string content;
    const char* keyword;
    int result;
    std::string note, rest;
  } rows[] = {
      {"other byte, other version", "A\n840 x\nbody", nullptr, 840, "x", "body"},
      {"rest of the first line is ignored", "I junk 5\n900\tver sion \nbody", nullptr, 900,
       "ver sion ", "body"},
      {"CRLF", "I\r\n900 version\r\nbody", nullptr, 900, "version", "body"},
      {"blank lines and margins", "I\n\n\t \n  900  version\n\n \tbody", nullptr, 900, "version",
       "body"},
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
  for (const auto& row : rows) {
    xmap_class file(here.file("f", row.content));
    std::string note = "unset";
    EXPECT_EQ(row.result, file.check_file(ouf_text, versions, row.keyword, &note)) << row.label;
    EXPECT_EQ(row.note, note) << row.label;
    EXPECT_EQ(row.rest, rest_of(file)) << row.label;
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

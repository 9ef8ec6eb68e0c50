// The shared output stream and the words for codes.

#include "corekit/files/io_utils_ouf.h"
#include "tests/unit/test_files_scratch.h"

TEST(FilesOuf, WritesTheHeaders) {
  const scratch_folder here;
  ASSERT_EQ(1, ouf_open(here / "new folder/text", ouf_text, 900, "no-copyright-string"));
  ouf << "body\n";
  EXPECT_EQ(0, ouf_close());
  EXPECT_EQ("I\n900 version\nbody\n", content_of(here / "new folder/text"));
  here.file("text", std::string(100, 'x'));
  ASSERT_EQ(1, ouf_open(here / "text", ouf_text, -5, " some note"));
  EXPECT_EQ(0, ouf_close());
  EXPECT_EQ("I\n-5 version some note\n", content_of(here / "text")) << "truncates";
  EXPECT_EQ(0, ouf_close()) << "nothing open";
}

TEST(FilesOuf, CloseTellsOfAFullDisk) {
  const scratch_folder here;
  // Little enough to wait in the stream's buffer until the end, and so much that it does not.
  for (const size_t bytes : {60'000u, 1'000'000u}) {
    ASSERT_EQ(1, ouf_open(here / "file", ouf_text, 1, ""));
    const small_disk full(50000);
    for (size_t i = 0; i < bytes; i += 10)
      ouf << "0123456789";
    EXPECT_EQ(EFBIG, ouf_close()) << bytes;
  }
  ASSERT_EQ(1, ouf_open(here / "after", ouf_text, 1, ""));
  EXPECT_EQ(0, ouf_close());
}

TEST(FilesError, WordsForCodes) {
  const std::pair<int, const char*> rows[] = {
      {20001, "We were unable to open a zip file. It may be missing or damaged"},
      {2, "No such file or directory"},
      {11, "Resource deadlock avoided"},  // as the family's first system numbers it
      {35, "Resource temporarily unavailable"},
      {-43, "File not found"},
      {30, "The destination file system is read-only"},
      // This system's own numbers.
      {ENOTEMPTY, "Directory not empty"},
      {ENAMETOOLONG, "File name too long"},
  };
  for (const auto& [code, message] : rows)
    EXPECT_STREQ(message, error_str(code)) << code;
  for (const int code : {0, -1, 20000, 20020, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ("Unknown error occurred (" + std::to_string(code) + ")", error_str(code));
  }
}

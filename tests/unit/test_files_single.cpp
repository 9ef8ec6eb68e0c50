// Services on single files: questions, deletion, renaming, copying.

#include <climits>

#include "tests/unit/test_files_scratch.h"

TEST(FilesSingle, QuestionsTellFilesFromFolders) {
  const scratch_folder here;
  here.file("plain", "12345");
  here.file("empty", "");
  here.file("caf\xe9 \"na\\me':1",
            "123");  // Latin-1 byte, blank, quotes, other systems' separators
  here.folder("folder");
  here.link("to_file", "plain");
  here.link("to_folder", "folder");
  here.link("dangling", "nothing");
  mkfifo((here / "pipe").c_str(), 0600);

  const std::tuple<const char*, int, int, int> rows[] = {
      {"plain", 1, 0, 5},      {"empty", 1, 0, 0},     {"caf\xe9 \"na\\me':1", 1, 0, 3},
      {"folder", 0, 1, -1},    {"folder/", 0, 1, -1},  {"to_file", 1, 0, 5},
      {"to_folder", 0, 1, -1}, {"dangling", 0, 0, -1}, {"pipe", 1, 0, 0},
      {"missing", 0, 0, -1},   {"plain/", 0, 0, -1},   {"plain/below", 0, 0, -1},
  };
  for (const auto& [name, file, dir, size] : rows) {
    EXPECT_EQ(file, file_exists(here / name)) << name;
    EXPECT_EQ(dir, dir_exists(here / name)) << name;
    EXPECT_EQ(size, APL_file_size(here / name)) << name;
  }
  EXPECT_EQ(0, file_exists(""));
  EXPECT_EQ(0, dir_exists(""));
  // Sizes above 2 GB are clipped; the last one is -1 in its low half.
  for (const off_t size : {0x7FFFFFFFL, 0x80000000L, 0x1FFFFFFFFL}) {
    ASSERT_EQ(0, truncate((here / "plain").c_str(), size));
    EXPECT_EQ(INT_MAX, APL_file_size(here / "plain")) << size;
  }
}

TEST(FilesSingle, DeleteTakesTheKindThatThePathNames) {
  const scratch_folder here;
  here.folder("empty");
  here.file("full/inside");
  here.file("plain");
  here.folder("target");
  here.link("link", "target");
  EXPECT_EQ(ENOENT, delete_file(""));
  // Those that are deleted in the end were left by what named another kind.
  const std::pair<const char*, int> rows[] = {
      {"missing", ENOENT}, {"empty", EISDIR}, {"plain/", ENOTDIR}, {"full/", ENOTEMPTY},
      {"link/", ENOTDIR},  {"empty/", 0},     {"plain", 0},        {"link", 0}};
  for (const auto& [name, code] : rows)
    EXPECT_EQ(code, delete_file(here / name)) << name;
  EXPECT_TRUE(is_there(here / "target"));
}

TEST(FilesSingle, MakeFolder) {
  const scratch_folder here;
  umask(022);
  EXPECT_EQ(0, make_folder(here / "new/"));
  EXPECT_EQ(0755u, mode_of(here / "new"));
  EXPECT_EQ(17, make_folder(here / "new/"));
  EXPECT_EQ(ENOENT, make_folder(here / "no/parents/"));
  EXPECT_EQ(17, make_folder(here.file("file") + "/"));
  EXPECT_NE(0, make_folder(""));
  for (const int code : {0, 17, -48, 2, 16, 18, 48})
    EXPECT_EQ(code != 0 && code != 17 && code != -48, show_make_dir_err(code)) << code;
}

TEST(FilesSingle, Links) {
  const scratch_folder here;
  std::string target = "untouched";
  EXPECT_EQ(0, is_sim_link(here.file("plain").c_str(), &target));
  EXPECT_EQ(0, is_sim_link((here / "missing").c_str(), &target));
  EXPECT_EQ("untouched", target);
  EXPECT_EQ(1, is_sim_link(here.link("dangling", "no/such \xe9").c_str(), &target));
  EXPECT_EQ("no/such \xe9", target);
  EXPECT_EQ(1, is_sim_link((here / "dangling").c_str(), nullptr));
  for (const size_t length : {498u, 499u, 500u, 3000u}) {
    std::string text(length, 'q');
    const std::string name = here.link("long" + std::to_string(length), text);
    EXPECT_EQ(1, is_sim_link(name.c_str(), &target));
    EXPECT_EQ(text.substr(0, 499), target) << length;
  }
}

// Sizes on both sides of the buffer's, and each kind of permission bits.
TEST(FilesSingle, CopyKeepsContentAndBits) {
  const scratch_folder here;
  const std::pair<size_t, unsigned> rows[] = {{0, 0755},     {1, 0600},     {65535, 0644},
                                              {65536, 0444}, {65537, 0777}, {200000, 0640}};
  for (const auto& [bytes, mode] : rows) {
    std::string content(bytes, '\0');
    for (size_t i = 0; i < bytes; ++i)
      content[i] = static_cast<char>(i * 7 + i / 251);
    const std::string from = here.file("from", content);
    chmod(from.c_str(), mode);
    here.file("to", std::string(bytes == 0 ? 1 : 70000, 'o'));  // longer than some, with other bits
    EXPECT_EQ(0, copy_file(from, here / "to")) << bytes;
    EXPECT_TRUE(content == content_of(here / "to")) << bytes;
    EXPECT_EQ(mode, mode_of(here / "to")) << bytes;
    unlink(from.c_str());
    chmod((here / "to").c_str(), 0600);
  }
}

TEST(FilesSingle, CopyRefusesWhatItCannotOpenAndKeepsWhatItCopiesOntoItself) {
  const scratch_folder here;
  const std::string path = here.file("plain", "content");
  here.folder("folder");
  mkfifo((here / "pipe").c_str(), 0600);
  for (const char* from : {"missing", "folder", "pipe"})  // and it does not wait for a writer
    EXPECT_EQ(2, copy_file(here / from, here / "to")) << from;
  EXPECT_FALSE(is_there(here / "to"));
  for (const char* to : {"no/folder", "folder", "pipe"})
    EXPECT_EQ(2, copy_file(here / "plain", here / to)) << to;
  here.link("symbolic", "plain");
  ASSERT_EQ(0, link(path.c_str(), (here / "hard").c_str()));
  for (const char* other : {"plain", "./plain", "symbolic", "hard"}) {
    EXPECT_EQ(0, copy_file(path, here / other)) << other;
    EXPECT_EQ(0, copy_file(here / other, path)) << other;
    EXPECT_EQ("content", content_of(path)) << other;
  }
}

TEST(FilesSingle, CopyReportsWhatTheVolumeRefuses) {
  const scratch_folder here;
  const std::string from = here.file("from", std::string(200000, 'c'));
  here.file("present", "old");
  // A limit on file sizes stops a write halfway, whoever runs the test.
  const small_disk full(100000);
  EXPECT_EQ(EFBIG, copy_file(from, here / "new"));
  EXPECT_FALSE(is_there(here / "new")) << "a half file is left";
  EXPECT_EQ(EFBIG, copy_file(from, here / "present"));
}

namespace {
// The least that the flag's place needs: "MZ", the offset of "PE", and a header of 24 bytes there.
std::string windows_program(uint32_t pe_at, unsigned char flags, size_t size) {
  std::string image(size, '\x11');
  image.replace(0, 2, "MZ");
  for (int i = 0; i < 4; ++i)
    image[0x3C + i] = static_cast<char>(pe_at >> (8 * i));
  if (pe_at + 24ull <= size) {
    image.replace(pe_at, 4, std::string("PE\0\0", 4));
    image[pe_at + 22] = static_cast<char>(flags);
  }
  return image;
}
}  // namespace

TEST(FilesExe, SetsOneBitOfAWholeProgramAndLeavesOthersAlone) {
  const scratch_folder here;
  const std::string path = here.file("a.exe", windows_program(0x80, 0x02, 4000));
  EXPECT_EQ(0, make_file_large_address_aware(path));
  EXPECT_TRUE(windows_program(0x80, 0x22, 4000) == content_of(path));
  EXPECT_EQ(0, make_file_large_address_aware(path)) << "a second time";
  const std::string far = here.file("c.exe", windows_program(0x12345, 0, 0x20000));
  EXPECT_EQ(0, make_file_large_address_aware(far));
  EXPECT_TRUE(windows_program(0x12345, 0x20, 0x20000) == content_of(far));
  const std::string tight = here.file("b.exe", windows_program(64, 0, 88));
  EXPECT_EQ(0, make_file_large_address_aware(tight));
  EXPECT_TRUE(windows_program(64, 0x20, 88) == content_of(tight));
  const std::string whole = windows_program(0x80, 0x02, 0x80 + 24);
  for (size_t length = 0; length < whole.size(); ++length) {
    const std::string cut = here.file("cut.exe", whole.substr(0, length));
    EXPECT_EQ(8, make_file_large_address_aware(cut)) << length;
    EXPECT_TRUE(whole.substr(0, length) == content_of(cut)) << length;
  }
  for (const uint32_t pe_at : {0u, 63u, 0x81u, 0x7FFFFFFFu, 0xFFFFFFE8u, 0xFFFFFFFFu}) {
    std::string image = whole;
    for (int i = 0; i < 4; ++i)
      image[0x3C + i] = static_cast<char>(pe_at >> (8 * i));
    const std::string odd = here.file("offset.exe", image);
    EXPECT_EQ(8, make_file_large_address_aware(odd)) << pe_at;
    EXPECT_TRUE(image == content_of(odd)) << pe_at;
  }
  EXPECT_EQ(2, make_file_large_address_aware(here / "missing.exe"));
  EXPECT_NE(0, make_file_large_address_aware(here.folder("folder")));
}

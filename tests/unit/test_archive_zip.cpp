// Zip archives of honest origin: our own, and those of zip and 7z; and what unzip makes of ours.

#include <thread>

#include "corekit/base/xer.h"
#include "corekit/files/io_utils.h"
#include "tests/unit/test_archive_util.h"

using ArchiveZip = ArchiveTest;

namespace {

constexpr time_t even_time = 1234567890;  // an even second: the format counts in twos

void set_time(const std::string& path, time_t when) {
  const timespec times[2] = {{when, 0}, {when, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

}  // namespace

TEST_F(ArchiveZip, RoundTripAndUnzip) {
  const std::tuple<const char*, std::string, mode_t, const char*> rows[] = {
      {"a.txt", "hello hello hello hello\n", 0644, "-rw-r--r--"},
      {"empty", "", 0600, "-rw-------"},
      {"readonly", "r", 0555, "-r-xr-xr-x"},
      {"odd 'n\"ame;$x [1]*?~", "odd", 0640, "-rw-r-----"},
      {"latin1 \xE9\xDF", "bytes", 0644, "-rw-r--r--"},
      {"noise.bin", noise(3000001, 7), 0644, "-rw-r--r--"},
      {"zeros.bin", std::string(20000000, '\0'), 0644, "-rw-r--r--"},
  };
  xer_open(base + "log.txt");
  for (const auto& [file_name, text, mode, shown] : rows) {
    SCOPED_TRACE(file_name);
    const std::string source = base + file_name, zip = base + "a.zip";
    write_text(source, text);
    chmod(source.c_str(), mode);
    set_time(source, even_time);
    ASSERT_EQ(file_to_zip(source, zip), 0);

    run("unzip -tq '" + zip + "'");
    EXPECT_EQ(run("unzip -p '" + zip + "'"), text);
    const std::string listing = run("unzip -Z -s '" + zip + "'");
    for (const std::string part : {shown, " unx ", " defN "})
      EXPECT_TRUE(str_holds(listing, part)) << listing;
    const std::string target = out + file_name;
    write_text(target, "old");
    chmod(target.c_str(), 0400);
    std::string name;
    ASSERT_EQ(zip_to_file(zip, out, &name, 0), 0);
    EXPECT_EQ(name, file_name);
    EXPECT_EQ(file_text(target), text);
    EXPECT_EQ(file_stat(target).st_mode, mode_t(S_IFREG | mode));
    EXPECT_EQ(file_stat(target).st_mtime, even_time);
    chmod(source.c_str(), 0600);
  }
  xer.close();
  EXPECT_FALSE(str_holds(file_text(base + "log.txt"), "failed"));
}

TEST_F(ArchiveZip, Links) {
  for (const std::string& target : {std::string("../../gone"), std::string(499, 'x')}) {
    ASSERT_EQ(symlink(target.c_str(), (base + "link").c_str()), 0);
    ASSERT_EQ(file_to_zip(base + "link", base + "a.zip"), 0);
    const std::string listing = run("unzip -Z -s '" + base + "a.zip'");
    EXPECT_TRUE(str_holds(listing, "\nlrwxr-xr-x ")) << listing;
    write_text(out + "link", "an old file");
    ASSERT_EQ(zip_to_file(base + "a.zip", out, nullptr, 0), 0);
    std::string read;
    EXPECT_EQ(is_sim_link((out + "link").c_str(), &read), 1);
    EXPECT_EQ(read, target);
    unlink((out + "link").c_str());
    run("unzip -qq '" + base + "a.zip' -d '" + out + "'");
    EXPECT_EQ(is_sim_link((out + "link").c_str(), &read), 1);
    EXPECT_EQ(read, target);
    unlink((base + "link").c_str());
  }
  ASSERT_EQ(symlink(std::string(500, 'x').c_str(), (base + "link").c_str()), 0);
  EXPECT_EQ(file_to_zip(base + "link", base + "a.zip"), 63);
  expect_untouched("links");
}

TEST_F(ArchiveZip, ArchivesOfOthers) {
  const std::string tree = base + "tree/";
  run("mkdir -p '" + tree + "deep/er' && cd '" + tree +
      "' && printf one > deep/one && printf two > deep/er/two && chmod 750 deep/er/two &&"
      " : > none && ln -s deep/one link");
  for (const std::string command :
       {"zip -qry0 $zip .", "zip -qr -fd $zip . -x link && zip -qy $zip link",
        "7z a -tzip -snl $zip ."}) {
    const std::string zip = base + "other.zip";
    run("cd '" + tree + "' && zip='" + zip + "' && " + command);
    ASSERT_EQ(zip_to_file(zip, out, nullptr, 0), 0) << command;
    EXPECT_EQ(tree_of(out), tree_of(tree)) << command;
    empty_out();
    unlink(zip.c_str());
  }
  run("cd '" + tree + "' && zip -q -P secret '" + base + "locked.zip' deep/one");
  mkdir((out + "deep").c_str(), 0755);
  EXPECT_EQ(zip_to_file(base + "locked.zip", out, nullptr, 0), 20002);
}

TEST_F(ArchiveZip, NamesForTheCaller) {
  const std::string zip = put(raw_zip({{"first", "1"}, {"second", "2"}}));
  std::string name = "renamed";
  EXPECT_EQ(zip_to_file(zip, out, &name, 1), 0);
  EXPECT_EQ(name, "first");
  EXPECT_EQ(file_text(out + "renamed"), "1");
  EXPECT_EQ(file_text(out + "second"), "2");
  EXPECT_EQ(tree_of(out).size(), 2u);
  name = "../evil";
  EXPECT_EQ(zip_to_file(zip, out, &name, 1), 20002);
  EXPECT_EQ(zip_to_file(zip, out, nullptr, 1), 0);
  EXPECT_EQ(file_text(out + "first"), "1");
  // Without its "/" the folder's last part is glued to the name; a link as the folder is followed.
  EXPECT_EQ(zip_to_file(zip, out + "glued-", nullptr, 0), 0);
  EXPECT_EQ(file_text(out + "glued-first"), "1");
  ASSERT_EQ(symlink("out", (root + "chosen").c_str()), 0);
  EXPECT_EQ(zip_to_file(zip, root + "chosen/", nullptr, 0), 0);
  unlink((root + "chosen").c_str());
  expect_untouched("names");
}

TEST_F(ArchiveZip, Attributes) {
  const mode_t mask = umask(0);
  umask(mask);
  const mode_t plain = 0666 & ~mask;
  const time_t stored = 1709618828;  // 5 March 2024, 06:07:08, in the zone set below
  setenv("TZ", "UTC0", 1);
  tzset();
  const std::tuple<unsigned, mode_t, bool> rows[] = {
      {0, plain, false},        {0x81ED0000, 0755, true},  {0x8FFF0000, 0777, true},
      {0x01000000, 0400, true}, {0x00000020, plain, true},
  };
  for (const auto& [attributes, mode, dated] : rows) {
    SCOPED_TRACE(attributes);
    ASSERT_EQ(unpack(raw_zip({{"a", "x", attributes}})), 0);
    const struct stat st = file_stat(out + "a");
    EXPECT_EQ(st.st_mode & 07777, mode);
    if (dated) {
      EXPECT_EQ(st.st_mtime, stored);
      EXPECT_EQ(st.st_atime, stored);
    } else {
      EXPECT_LT(time(nullptr) - st.st_mtime, 60);
    }
  }
}

TEST_F(ArchiveZip, ForkEntriesAreCheckedAndDropped) {
  const std::string header("\0\5\x16\7\0\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 24);
  const std::string parts("\0\2\0\0\0\x09\0\0\0\x32\0\0\0\x20\0\0\0\2\0\0\0\x52\0\0\0\4", 26);
  std::string bad = header;
  bad[23] = 1;
  const std::tuple<std::string, std::string, int> rows[] = {
      {"whole", header + parts + std::string(32, 'F') + "fork", 0},
      {"header only", header, 0},
      {"beyond the block", header + std::string("\0\1\0\0\0\2\xFF\xFF\xFF\xFF\0\0\0\1", 14), 0},
      {"filler", bad + parts, 20012},
      {"short", header.substr(0, 23), 20012},
  };
  for (const auto& [label, block, result] : rows) {
    for (const char* name : {"__MACOSX/deep/._a.txt", "__MACOSX", "__MACOSXa"}) {
      EXPECT_EQ(
          unpack(raw_zip({{"__MACOSX/", "", folder_attributes}, {name, block}, {"a.txt", "a"}})),
          result)
          << label << " " << name;
      EXPECT_EQ(tree_of(out).size(), result == 0 ? 1u : 0u) << label << " " << name;
      empty_out();
    }
  }
}

TEST_F(ArchiveZip, FailuresOfTheDisk) {
  const std::string big = base + "big.zip";
  write_text(big, raw_zip({deflated_entry("big", std::string(100000, 'x'))}));
  mkdir((out + "big").c_str(), 0755);
  EXPECT_EQ(zip_to_file(big, out, nullptr, 0), EISDIR);
  rmdir((out + "big").c_str());
  EXPECT_EQ(unpack(raw_zip({{"missing/a", "x"}})), ENOENT);
  write_text(out + "file", "in the way");
  EXPECT_EQ(unpack(raw_zip({{"file/", "", folder_attributes}, {"file/a", "x"}})), ENOTDIR);
  write_text(base + "noise", noise(4000, 1));
  {
    const small_disk full(4096);
    EXPECT_EQ(zip_to_file(big, out, nullptr, 0), EFBIG);
    EXPECT_EQ(file_to_zip(base + "noise", base + "small.zip"), EFBIG);
  }
  write_text(base + "a", "a");
  EXPECT_EQ(file_to_zip(base + "a", "/dev/full"), ENOSPC);
  EXPECT_EQ(file_to_zip(base + "a", base + "missing/a.zip"), 20003);
  EXPECT_EQ(file_to_zip(base + "missing", base + "a.zip"), 20006);
  EXPECT_EQ(file_to_zip(base + "root/", base + "a.zip"), 20006);
  ASSERT_EQ(truncate((base + "a").c_str(), 0xFFFFFFFF), 0);
  EXPECT_EQ(file_to_zip(base + "a", base + "a.zip"), 27);
}

TEST_F(ArchiveZip, ManyThreads) {
  write_text(base + "packed", noise(50000, 9) + std::string(500000, 'z'));
  run("cd '" + base + "' && 7z a made.7z packed");
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < 8; ++t) {
    threads.emplace_back([this, t] {
      for (unsigned i = 0; i < 8; ++i) {
        const std::string name = std::to_string(t) + "_" + std::to_string(i);
        const std::string text = noise(10000 * (i + 1), t) + std::string(50000, char(i));
        write_text(base + name, text);
        EXPECT_EQ(file_to_zip(base + name, base + name + ".zip"), 0);
        EXPECT_EQ(zip_to_file(base + name + ".zip", out, nullptr, 0), 0);
        EXPECT_TRUE(file_text(out + name) == text) << name;
        EXPECT_EQ(zip_to_file(base + name, out, nullptr, 0), 20001);
        std::string renamed = name + ".7";
        EXPECT_EQ(p7z_to_file(base + "made.7z", out, &renamed, 1), 0);
        EXPECT_TRUE(file_text(out + name + ".7") == file_text(base + "packed")) << name;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

// Archives on their way into a copy: what reaches its place, and how everything else is told apart.

#include "Installer-f/engine/utils_place.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <cmath>

#include "engine_tree.h"
#include "tests/unit/test_archive_util.h"

namespace {

class Place : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    temp_path = root + "tmp/";
    write("copy/d/old.txt", "old");
    write("outside/mine.txt", "mine");
    ASSERT_EQ(mkdir(temp_path.c_str(), 0755), 0);
  }
  static std::string md5(const std::string& text) {
    const scratch_folder folder;
    return run("md5sum < " + folder.file("text", text)).substr(0, 32);
  }
  place_result place(const std::string& path, const std::string& archive, const std::string& sig,
                     uint64_t most = 1000) {
    return place_archive(*copy_gate(), bytes_of(archive), archive.size(), {path, sig, most});
  }
};

TEST_F(Place, ByOutcome) {
  add("All/link", {md5("x")});
  here.link("copy/link", "../outside");
  here.link("copy/users", "../outside");
  write("copy/full/inner", "kept");
  const std::string sum = md5("new"), zip = raw_zip({deflated_entry("any", "new")});
  const struct {
    const char *label, *path;
    std::string archive, sig;
    place_outcome outcome;
    int code;
  } rows[] = {
      {"whole", "d/old.txt", zip, sum, place_ok, 0},
      {"a new folder", "e/f/new.txt", zip, sum, place_ok, 0},
      {"by the user's link", "users/sub/new.txt", zip, sum, place_ok, 0},
      {"a page", "d/old.txt", "<html>", sum, place_damaged, 20001},
      {"nothing", "d/old.txt", "", sum, place_empty, 20001},
      {"large", "d/old.txt", raw_zip({{"any", std::string(1001, 'x')}}), sum, place_too_large, 27},
      {"another", "d/old.txt", raw_zip({{"a", "new"}, {"b", "new"}}), sum, place_other_file, 20002},
      {"a newer one", "d/old.txt", raw_zip({{"any", "newer"}}), sum, place_wrong_signature, 20002},
      {"no signature", "d/old.txt", zip, "", place_wrong_signature, 20002},
      {"a dropped file's", "d/old.txt", zip, "GONE", place_wrong_signature, 20002},
      {"upper case", "d/old.txt", zip, "22AF645D1859CB5CA6DA0C484F1F37EA", place_ok, 0},
      {"a link out", "d/old.txt", raw_zip({{"l", "../../outside/mine.txt", link_attributes}}),
       md5("../../outside/mine.txt"), place_refused_link, 20002},
      {"below the release's link", "link/mine.txt", zip, sum, place_below_link, ELOOP},
      {"below it in another case", "LINK/mine.txt", zip, sum, place_ok, 0},
      {"a full folder", "full", zip, sum, place_cannot_write, EISDIR},
      {"no folder", "d/old.txt/x", zip, sum, place_cannot_write, ENOTDIR},
      {"out of the copy", "../outside/mine.txt", zip, sum, place_cannot_write, EINVAL},
  };
  for (const auto& row : rows) {
    write("copy/d/old.txt", "old");
    const place_result result = place(row.path, row.archive, row.sig);
    EXPECT_EQ(result.outcome, row.outcome) << row.label;
    EXPECT_EQ(result.code, row.code) << row.label;
    EXPECT_EQ(read("copy/d/old.txt"),
              row.outcome == place_ok && row.path == std::string("d/old.txt") ? "new" : "old")
        << row.label;
    EXPECT_TRUE(row.outcome != place_ok || read(std::string("copy/") + row.path) == "new");
    EXPECT_EQ(place_is_wrong_content(row.outcome),
              row.code == 20001 || row.code == 20002 || row.code == 27)
        << row.label;
  }
  EXPECT_EQ(read("outside/mine.txt"), "mine");
  EXPECT_EQ(read("copy/full/inner"), "kept");
}

TEST_F(Place, ModesAndLinks) {
  const raw_entry program("S", "#!", 0x81A40000), script("s", "#!", 0x8FED0000);
  EXPECT_EQ(place("S.app/Contents/MacOS/S", raw_zip({program}), md5("#!")).outcome, place_ok);
  EXPECT_EQ(place("plain", raw_zip({program}), md5("#!")).outcome, place_ok);
  EXPECT_EQ(place("script", raw_zip({script}), md5("#!")).outcome, place_ok);
  EXPECT_EQ(file_stat(root + "copy/S.app/Contents/MacOS/S").st_mode & 07777, 0755u);
  EXPECT_EQ(file_stat(root + "copy/plain").st_mode & 07777, 0644u);
  EXPECT_EQ(file_stat(root + "copy/script").st_mode & 07777, 0755u);
  EXPECT_EQ(place("V/Current", raw_zip({{"c", "A", link_attributes}}), md5("A")).outcome, place_ok);
  std::string target;
  EXPECT_EQ(is_sim_link((root + "copy/V/Current").c_str(), &target), 1);
  EXPECT_EQ(target, "A");
}

TEST_F(Place, FromTheDisk) {
  const std::string zip = write("a.zip", raw_zip({deflated_entry("any", "new")}));
  const io_handle file(open(zip.c_str(), O_RDONLY | O_CLOEXEC));
  const size_t size = size_t(file_stat(zip).st_size);
  const place_order order{"n", "22af645d1859cb5ca6da0c484f1f37ea", 3};
  EXPECT_EQ(place_archive_file(*copy_gate(), file.get(), size - 1, order).outcome, place_too_large);
  EXPECT_EQ(place_archive_file(*copy_gate(), file.get(), size, order).outcome, place_ok);
  EXPECT_EQ(read("copy/n"), "new");
  const io_handle folder(open(root.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(place_archive_file(*copy_gate(), folder.get(), size, order).outcome, place_unread);
}

// A disk of its own that is full, in a namespace of its own.
TEST_F(Place, AFullDisk) {
  const std::string sum = md5(noise(100'000, 1)), zip = raw_zip({{"any", noise(100'000, 1)}});
  const pid_t child = fork();
  if (child == 0) {
    if (unshare(CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0) _exit(1);
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) _exit(2);
    if (mount("disk", (root + "copy").c_str(), "tmpfs", 0, "size=64k") != 0) _exit(3);
    write("copy/old.txt", "old");
    const place_result result = place("old.txt", zip, sum, 100'000);
    const bool whole = read("copy/old.txt") == "old" && !there("copy/.skyvane_part");
    _exit(result.outcome == place_disk_full && result.code == ENOSPC && whole ? 0 : 4);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(Place, TheManifest) {
  const std::tuple<std::string, std::string, place_outcome> rows[] = {
      {"whole", raw_zip({deflated_entry("directory.txt", "list")}), place_ok},
      {"another file", raw_zip({{"other.txt", "list"}}), place_other_file},
      {"in a folder", raw_zip({{"a/directory.txt", "list"}}), place_other_file},
      {"climbing", raw_zip({{"../directory.txt", "list"}}), place_other_file},
      {"a link", raw_zip({{"directory.txt", "/etc/passwd", link_attributes}}), place_other_file},
      {"and another file", raw_zip({{"directory.txt", "list"}, {"0.zip", "x"}}), place_other_file},
      {"empty", raw_zip({{"directory.txt", ""}}), place_empty},
      {"a page", "<html>log in</html>", place_damaged},
  };
  const std::string zip = root + "m.zip";
  for (const auto& [label, archive, outcome] : rows) {
    write("tmp/directory.txt", "of an earlier download");
    write_text(zip, archive);
    EXPECT_EQ(place_manifest(zip).outcome, outcome) << label;
    EXPECT_EQ(there("tmp/directory.txt"), outcome == place_ok) << label;
    EXPECT_EQ(read("tmp/directory.txt"), outcome == place_ok ? "list" : "") << label;
  }
  here.link("tmp/directory.txt", "../outside/mine.txt");
  write_text(zip, raw_zip({{"directory.txt", "list"}}));
  EXPECT_EQ(place_manifest(zip).outcome, place_ok);
  EXPECT_EQ(read("outside/mine.txt"), "mine");
  unlink(zip.c_str());
  EXPECT_EQ(place_manifest(zip).outcome, place_unread);
}

TEST_F(Place, Budgets) {
  constexpr uint64_t most = 1'000'000'001'000;
  const std::pair<float, uint64_t> rows[] = {{0, 1000},   {1.5f, 2500},     {-1, 1000},
                                             {NAN, 1000}, {INFINITY, most}, {1e30f, most}};
  for (const auto& [kb, bytes] : rows)
    EXPECT_EQ(place_budget(kb), bytes) << kb;
}

TEST_F(Place, TheGateOfTheCopy) {
  open_log();
  here.link("copy/users", "../outside");
  const auto first = copy_gate();
  EXPECT_EQ(copy_gate(), first);
  EXPECT_EQ(first->put_file("users/a", "x", 1), 0);
  EXPECT_EQ(first->put_file("users/b", "x", 1), 0);
  log_gate_notes(*first);
  log_gate_notes(*first);
  EXPECT_EQ(log(), "The folder users is a link of the user's to ../outside, and is followed.\n");
  rename((root + "copy").c_str(), (root + "moved").c_str());
  EXPECT_EQ(copy_gate(), nullptr);
  ASSERT_EQ(mkdir((root + "copy").c_str(), 0755), 0);
  const auto second = copy_gate();
  EXPECT_NE(second, nullptr);
  EXPECT_NE(second, first);
  EXPECT_NE(open_copy_gate(), second);
}

}  // namespace

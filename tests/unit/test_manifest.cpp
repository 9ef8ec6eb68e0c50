// The manifest's reader: what each line does, and what is refused.

#include "Installer-f/engine/utils_manifest.h"

#include <numeric>

#include "Installer-f/engine/utils_decide.h"
#include "corekit/window/hl_init.h"
#include "engine_tree.h"

using namespace std::string_literals;

namespace {

constexpr char header[] = "I\n900 version\nINSTALLER\n\n";
constexpr char sig_a[] = "0123456789abcdef0123456789abcdef";

class EngineManifest : public engine_tree {
 protected:
  // In `text`, "<1>" stands for a signature of 32 times that digit.
  int load(std::string_view text) {
    std::string whole;
    for (size_t i = 0; i < text.size(); ++i) {
      const bool is_signature = text[i] == '<' && i + 2 < text.size() && text[i + 2] == '>';
      whole.append(is_signature ? 32 : 1, text[is_signature ? i + 1 : i]);
      if (is_signature) i += 2;
    }
    return read_directory(write("directory.txt", whole), "");
  }
  int load_body(const std::string& body) { return load(header + body); }
  // The table in one line: "path=sig,sig path=sig", of signatures the first character.
  std::string table() {
    std::string text;
    for (const file_history_struct& history : sim_info) {
      text += (text.empty() ? "" : " ") + std::string(history.current().path) + "=";
      for (const file_version_struct& version : history.versions) {
        EXPECT_EQ(version.path.view(), history.current().path.view());
        EXPECT_TRUE(version.sig_want == sig_gone || version.sig_want.is_digest());
        text += (&version == &history.versions.front() ? "" : ",") +
                version.sig_want.text().substr(0, 1);
      }
    }
    return text;
  }
};

TEST_F(EngineManifest, ReadsEveryField) {
  ASSERT_EQ(load_body("DIR ALL_os/Resources/airfoils/\n"
                      "FILE 0 0 90500 12 34 0123456789abcdef0123456789abcdef NACA 0012.afl\n"
                      "FILE 0 0 91001 13 36 fedcba9876543210fedcba9876543210 NACA 0012.afl\n"
                      "FILE 0 0 91001 0 0 GONE old_wing.afl\n"
                      "DISK 1\n"
                      "\n"
                      "DIR APL_os/Resources/plugins/\n"
                      "FILE 0 1 91001 120 300 aabbccddeeff00112233445566778899 engine.bin\n"),
            3);
  ASSERT_EQ(sim_info.size(), 3u);
  ASSERT_EQ(sim_info[0].versions.size(), 2u);
  const file_version_struct& first = sim_info[0].versions[0];
  EXPECT_EQ(first.path, "ALL_os/Resources/airfoils/NACA 0012.afl");
  EXPECT_EQ(first.sig_want, sig_a);
  EXPECT_EQ(first.version, 90500);
  EXPECT_EQ(first.zip_kb, 12.0f);
  EXPECT_EQ(first.raw_kb, 34.0f);
  EXPECT_TRUE(first.sig_have.empty());
  EXPECT_EQ(sim_info[2].current().os, 1);
  EXPECT_EQ(sim_info[2].current().disk, 1);
  EXPECT_EQ(stg.has_sim_files, 1);
  EXPECT_EQ(stg.has_global_files, 0);
}

TEST_F(EngineManifest, Lines) {
  const std::tuple<std::string, std::string, const char*> rows[] = {
      {"no line end at the end", "DIR A/\nFILE 0 0 1 2 3 <1> a", "A/a=1"},
      {"CR", "DIR A/\rFILE 0 0 1 2 3 <1> a\rFILE 0 0 1 2 3 <2> b\r", "A/a=1 A/b=2"},
      {"NUL", "DIR A/\0FILE 0 0 1 2 3 <1> a\0FILE 0 0 1 2 3 <2> b"s, "A/a=1 A/b=2"},
      {"tabs and blanks", " \tDIR\t A/\n\t FILE\t0 \t0 1 2 3 <1> \t a  b \n", "A/a  b =1"},
      {"other words", "FILES 0 0 1 2 3 s a\nDIRX A/\nfile 0 0 1 2 3 s b\n#\nFILE 0 0 1 2 3 <1> c\n",
       "c=1"},
      {"DIR back to nothing", "DIR A/\nDIR \nFILE 0 0 1 2 3 <1> a\n", "a=1"},
      {"versions over a DIR", "DIR A/\nFILE 0 0 1 2 3 <1> b/c\nDIR A/b/\nFILE 0 0 2 2 3 <2> c\n",
       "A/b/c=1,2"},
      {"runs", "FILE 0 0 1 2 3 <1> a\nFILE 0 0 1 2 3 <1> b\nFILE 0 0 1 2 3 <2> a\n", "a=1 b=1 a=2"},
      {"old data sets",
       "DIR A/Earth Orbit Textures/\nFILE 0 0 1 2 3 <1> a\nDIR A/\nFILE 0 0 1 2 3 <1> 900 red "
       "terrain.t\n"
       "FILE 0 0 1 2 3 <1> Earth Orbit Texture\nDIR A/900 red\nFILE 0 0 1 2 3 <1>  terrain\n",
       "A/Earth Orbit Texture=1 A/900 redterrain=1"},
      {"old set between versions",
       "FILE 0 0 1 2 3 <1> a\nFILE 0 0 1 2 3 <1> 900 red terrain\nFILE 0 0 1 2 3 <2> a\n", "a=1,2"},
      {"fields missing", "DIR A/x\nFILE 0 0 1\nFILE 0 0 1 2 3 <1>\nFILE \n", "A/x=1"},
      {"no signature",
       "FILE 0 0 1 2 3 <1> a\nFILE 0 0 1 2 3 NONE a\nFILE 0 0 1 2 3 GONE a\nFILE 0 0 1 2 3 gone b\n"
       "FILE 0 0 1 2 3 ../../x b\nFILE 0 0 1 2 3 0123456789abcdef0123456789abcdeg b\n"
       "FILE 0 0 1 2 3 0123456789abcdef0123456789abcde b\n"
       "FILE 0 0 1 2 3 0123456789ABCDEF0123456789abcdef b\n",
       "a=1,G b=0"},
      {"a name with folders",
       "DIR A/\nFILE 0 0 1 2 3 <1> b/c\nFILE 0 0 1 2 3 <1> b//c\n"
       "FILE 0 0 1 2 3 <1> ./c\nFILE 0 0 1 2 3 <1> .c\nFILE 0 0 1 2 3 <1> ..\n",
       "A/b/c=1 A/.c=1"},
  };
  for (const auto& [label, body, expected] : rows) {
    EXPECT_EQ(load_body(body), 3) << label;
    EXPECT_EQ(table(), expected) << label;
  }
}

TEST_F(EngineManifest, Numbers) {
  const std::tuple<std::string, int, int, float> rows[] = {
      {"0 3 91001 7", 3, 91001, 7.0f},
      {"0 +2 -+12 -5", 2, -12, -5.0f},
      {"0 1 1a 0", 1, 10 + 'a' - '0', 0.0f},  // a letter is a digit like any other
      {"0 1 4294967297 0", 1, 1, 0.0f},       // wraps at 32 bits
      {"0 9 0 0", 6, 0, 0.0f},
      {"0 -1 0 0", 0, 0, 0.0f},
  };
  for (const auto& [fields, os, version, zip_kb] : rows) {
    load_body("FILE " + fields + " 0 <1> a\n");
    ASSERT_EQ(sim_info.size(), 1u) << fields;
    EXPECT_EQ(sim_info[0].current().os, os) << fields;
    EXPECT_EQ(sim_info[0].current().version, version) << fields;
    EXPECT_EQ(sim_info[0].current().zip_kb, zip_kb) << fields;
  }
  const std::pair<std::string, int> disks[] = {
      {"DISK 2", 2}, {"DISK 3 FILE 0", 3}, {"DISK ", 0}, {"DISK -4", 0}, {"DISK 4000000", 99}};
  for (const auto& [line, disk] : disks) {
    load_body("DISK 1\n" + line + "\nFILE 0 0 0 0 0 <1> a\n");
    ASSERT_EQ(sim_info.size(), 1u) << line;
    EXPECT_EQ(sim_info[0].current().disk, disk) << line;
  }
}

TEST_F(EngineManifest, Headers) {
  const std::string file = "\nFILE 0 0 1 2 3 <1> a\n";
  const std::pair<std::string, int> rows[] = {
      {"I\n900 version\nINSTALLER\n" + file, 3},
      {"A\r840\rINSTALLER\r" + file, 3},
      {"I\n841 version\nINSTALLER\n" + file, 2},
      {"i\n900 version\nINSTALLER\n" + file, 0},
      {"I\n900 version\nSERVERS\n" + file, 0},
      {"I\n901 version\nSERVERS\n" + file, 0},
      {"I", 0},
      {"I\n900 version\nINSTALLER\n\n", 0},  // no file
      {"I\n900 version\nINSTALLER\nFILE 0 0 1 2 3 none a\n", 0},
      {"<html><body>Please log in.</body></html>\n", 0},
  };
  for (const auto& [text, result] : rows) {
    stg = stg_record();
    app_done = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(load(text), result) << text;
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(str_holds(told, "you need to get a new installer!"), result == 2) << text;
    EXPECT_EQ(app_done, result == 2) << text;
    EXPECT_EQ(stg.new_format_state, result == 2 ? 2 : 0) << text;
    EXPECT_EQ(stg.directory_state, result == 2 ? manifest_refused : manifest_none) << text;
    EXPECT_EQ(sim_info.empty(), result != 3);
  }
  app_done = 0;
}

TEST_F(EngineManifest, FatalFiles) {
  const auto exits = testing::ExitedWithCode(1);
  EXPECT_EXIT(load(""), exits, "I tried to read a directory file that does not exist!");
  EXPECT_EXIT(load_body("DIR A/b/\nFILE 0 0 1 2 3 <1>\n"), exits, "a path that has no file!.*A/b/");
}

TEST_F(EngineManifest, PathsThatLeaveTheDestination) {
  open_log();
  const std::string at_limit = "A/" + std::string(497, 'n');
  std::string body =
      "DIR ALL_os/../\nFILE 0 0 1 2 3 <1> up\nDIR ALL_os//etc/\nFILE 0 0 1 2 3 <1> passwd\n";
  body += "DIR \n";
  for (const std::string& name :
       {"ALL_os/a/../../b"s, "ALL_os/./c"s, ".."s, at_limit, at_limit + "n", "A/..d"s})
    body += "FILE 0 0 1 2 3 <1> " + name + "\n";
  ASSERT_EQ(load_body(body), 3);
  EXPECT_EQ(table(), at_limit + "=1 A/..d=1");
  EXPECT_TRUE(str_holds(log(), "WARNING: "));
  EXPECT_TRUE(str_holds(log(), "ALL_os/../up"));
  std::string many = "DIR A/\n";
  for (int i = 0; i < 1000; ++i)
    many += "FILE 0 0 1 2 3 <1> ../" + std::to_string(i) + "/x\n";
  const size_t before = log().size();
  load_body(many);
  const std::string lines = log().substr(before);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 101);
}

// A huge folder name must not be multiplied by the files in it, nor a long line be read past.
TEST_F(EngineManifest, HugeLines) {
  const std::string huge(1 << 20, 'x');
  ASSERT_EQ(load_body("DIR " + huge + "\nFILE 0 0 1 2 3 <1> a\nFILE 0 0 1 2 3 " + huge + " b\n" +
                      huge + "\nDIR A/\nFILE " + huge + " 0 1 2 3 <1> c\n"),
            3);
  ASSERT_EQ(sim_info.size(), 1u);
  EXPECT_EQ(sim_info[0].current().path, "A/c");
}

// More than a block of anything, and than the thread that makes blocks ready is worth.
TEST_F(EngineManifest, HundredThousandLines) {
  constexpr int long_history = 40000;
  std::string body = "DIR A/\n";
  for (int i = 0; i < long_history; ++i)
    body += "FILE 0 0 " + std::to_string(i) + " 2 3 <1> a\n";
  for (int i = 0; i < 60000; ++i) {
    if (i % 30 == 0) body += "DIR A/folder " + std::to_string(i) + "/of some length/\n";
    body += "FILE 0 0 1 2 3 <2> file " + std::to_string(i) + "\nFILE 0 0 2 2 3 <3> file " +
            std::to_string(i) + "\n";
  }
  ASSERT_EQ(load_body(body), 3);
  ASSERT_EQ(sim_info.size(), 60001u);
  ASSERT_EQ(sim_info[0].versions.size(), size_t{long_history});
  for (int i = 0; i < long_history; i += 999)
    EXPECT_EQ(sim_info[0].versions[i].version, i);
  for (int i = 0; i < 60000; i += 997) {
    const file_history_struct copy = sim_info[i + 1];
    copy.versions[0].version = 7;  // its own record
    EXPECT_EQ(sim_info[i + 1].versions.size(), 2u);
    EXPECT_EQ(sim_info[i + 1].versions[0].version, 1);
    EXPECT_EQ(copy.current().sig_want, file_sig(std::string(32, '3')));
    EXPECT_EQ(copy.current().path, "A/folder " + std::to_string(i / 30 * 30) +
                                       "/of some length/file " + std::to_string(i));
  }
}

TEST(EngineManifestPath, AsLongAsAPathMayBe) {
  const std::string a(path_limit - 1, 'a'), b(path_limit, 'b');
  EXPECT_EQ(manifest_path(a, b).view(), a + 'b');
  EXPECT_EQ(manifest_path(b, a).view(), b);
  EXPECT_EQ(manifest_path("", b + 'b').view(), b);
  EXPECT_EQ(manifest_path("a", "b").view(), "ab");
}

TEST(EngineManifestSig, Texts) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"0123456789abcdefABCDEF0123456789", "0123456789abcdefabcdef0123456789", true},
      {"0123456789abcdefABCDEF012345678g", "0123456789abcdef", false},
      {"/123456789abcdefABCDEF0123456789", "/123456789abcdef", false},
      {"012345678:abcdefABCDEF0123456789", "012345678:abcdef", false},
      {"0123456789abcdefABCDEF012345678", "0123456789abcdef", false},
      {"GONE", "GONE", false},
      {"", "", false},
  };
  for (const auto& [text, back, is_digest] : rows) {
    const file_sig sig = text;
    EXPECT_EQ(sig.text(), back);
    EXPECT_EQ(sig.is_digest(), is_digest) << text;
    EXPECT_EQ(sig, file_sig(back)) << text;
    EXPECT_EQ(sig.empty(), *text == 0);
  }
}

TEST_F(EngineManifest, ANewReadReplacesAll) {
  load_body("DIR A/Global Scenery/\nFILE 0 0 1 2 3 <1> +34-118.dsf\nFILE 0 0 1 2 3 <1> readme\n");
  EXPECT_EQ(stg.has_global_files + stg.has_sim_files, 2);
  EXPECT_EQ(stg.sector_available[sector_cell(6, 12)], 1);
  stg.todo_zip_kb = stg.todo_raw_kb = 5;
  stg.todo_install_count = stg.todo_delete_count = 5;
  deleted_files.insert("x/");
  sim_info[0].current().sig_have = sig_a;
  // A tile without a sector is an ordinary file.
  load_body(
      "DIR A/Global Scenery/\nFILE 0 0 1 2 3 <2> -90-180.dsf\nFILE 0 0 1 2 3 <2> +90+000.dsf\n");
  EXPECT_EQ(table(), "A/Global Scenery/-90-180.dsf=2 A/Global Scenery/+90+000.dsf=2");
  EXPECT_TRUE(sim_info[0].current().sig_have.empty());
  EXPECT_EQ(sim_info[1].current().is_global, 0);
  EXPECT_EQ(std::accumulate(std::begin(stg.sector_available), std::end(stg.sector_available), 0),
            1);
  EXPECT_EQ(stg.sector_available[sector_cell(0, 0)], 1);
  EXPECT_EQ(stg.todo_zip_kb + stg.todo_raw_kb, 0);
  EXPECT_EQ(stg.todo_install_count + stg.todo_delete_count, 0);
  EXPECT_TRUE(deleted_files.empty());
}

TEST(EngineManifestNames, GlobalScenery) {
  for (const char* path : {"ALL_os/Global Scenery/x/+34-118.DsF", "A/-global overlays-/a.dsf",
                           "A/-global terrain-/a.dsf", "A/default scenery/DSF 820 earth/a.dsf"})
    EXPECT_EQ(is_global_scenery_f(path), 1) << path;
  for (const char* path : {"A/Custom Scenery/+34-118.dsf", "A/global scenery/a.dsf",
                           "A/Global Scenery/a.dsf.txt", ".dsf"})
    EXPECT_EQ(is_global_scenery_f(path), 0) << path;
}

TEST(EngineManifestNames, Sectors) {
  const std::tuple<const char*, int, int, int> rows[] = {
      {"a/+34-118.dsf", 1, 6, 12},
      {"-90-180.dsf", 1, 0, 0},
      {"+89+179.dsf", 1, 35, 17},
      {"+90+000.dsf", 0, 0, 0},
      {"+00+180.dsf", 0, 0, 0},
      {"-99-180.dsf", 1, 0, 0},  // a truncating division takes -9 to row 0
      {"+34", 1, 18, 12},
      {"", 1, 18, 9},
      {"\xff\xff\xff\xff\xff\xff\xff", 0, 0, 0},
  };
  for (const auto& [path, found, lon, lat] : rows) {
    int32_t found_lon = -7, found_lat = -7;
    EXPECT_EQ(find_sector(found_lon, found_lat, path), found) << path;
    EXPECT_EQ(found_lon, found ? lon : -7) << path;
    EXPECT_EQ(found_lat, found ? lat : -7) << path;
  }
}

TEST(EngineDecide, SafePaths) {
  for (const char* path : {"ALL_os/a", "ALL_os/...", "ALL_os/a..b/..c", "ALL_os/a:b\\c"})
    EXPECT_TRUE(manifest_path_is_safe(path)) << path;
  for (const std::string& path : {""s, "ALL_os/"s, "ALL_os/../a"s, "ALL_os/./a"s, "ALL_os/a/.."s,
                                  "ALL_os//a"s, "ALL_os/a/"s, "//a"s, "ALL_os/a\0b"s, "A\0/a"s})
    EXPECT_FALSE(manifest_path_is_safe(path)) << path;
}

}  // namespace

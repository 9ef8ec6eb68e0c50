// The manifest's reader: what each line does, what is refused, damage at every place.

#include "Installer-f/engine/utils_manifest.h"

#include <numeric>

#include "Installer-f/engine/utils_decide.h"
#include "corekit/window/hl_init.h"
#include "engine_tree.h"

namespace {

constexpr char header[] = "I\n900 version\nINSTALLER\n\n";
constexpr char sig_a[] = "0123456789abcdef0123456789abcdef";

class EngineManifest : public engine_tree {
 protected:
  int load(std::string_view text) { return read_directory(write("directory.txt", text), ""); }
  int load_body(const std::string& body) { return load(header + body); }
  // The table in one line: "path=sig,sig path=sig".
  std::string table() {
    std::string text;
    for (const file_history_struct& history : sim_info) {
      text += (text.empty() ? "" : " ") + std::string(history.current().path) + "=";
      for (const file_version_struct& version : history.versions) {
        EXPECT_EQ(version.path, history.current().path);
        text += (&version == &history.versions.front() ? "" : ",") + std::string(version.sig_want);
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
  const struct {
    const char* label;
    std::string body;
    const char* table;
  } rows[] = {
      {"no line end at the end", "DIR A/\nFILE 0 0 1 2 3 s a", "A/a=s"},
      {"CR", "DIR A/\rFILE 0 0 1 2 3 s a\rFILE 0 0 1 2 3 t b\r", "A/a=s A/b=t"},
      {"NUL", std::string("DIR A/\0FILE 0 0 1 2 3 s a\0FILE 0 0 1 2 3 t b", 44), "A/a=s A/b=t"},
      {"tabs and blanks", " \tDIR\t A/\n\t FILE\t0 \t0 1 2 3 s \t a  b \n", "A/a  b =s"},
      {"other words", "FILES 0 0 1 2 3 s a\nDIRX A/\nfile 0 0 1 2 3 s b\n#\nFILE 0 0 1 2 3 s c\n",
       "c=s"},
      {"DIR back to nothing", "DIR A/\nDIR \nFILE 0 0 1 2 3 s a\n", "a=s"},
      {"versions over a DIR", "DIR A/\nFILE 0 0 1 2 3 s b/c\nDIR A/b/\nFILE 0 0 2 2 3 t c\n",
       "A/b/c=s,t"},
      {"two runs", "FILE 0 0 1 2 3 s a\nFILE 0 0 1 2 3 s b\nFILE 0 0 1 2 3 t a\n", "a=s b=s a=t"},
      {"old data sets",
       "DIR A/Earth Orbit Textures/\nFILE 0 0 1 2 3 s a\nDIR A/\nFILE 0 0 1 2 3 s 900 red "
       "terrain.t\n"
       "FILE 0 0 1 2 3 s Earth Orbit Texture\nDIR A/900 red\nFILE 0 0 1 2 3 s  terrain\n",
       "A/Earth Orbit Texture=s A/900 redterrain=s"},
      {"old set between versions",
       "FILE 0 0 1 2 3 s a\nFILE 0 0 1 2 3 s 900 red terrain\nFILE 0 0 1 2 3 t a\n", "a=s,t"},
      {"fields missing", "DIR A/x\nFILE 0 0 1\nFILE 0 0 1 2 3 s\nFILE \n", "A/x=,s,"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(load_body(row.body), 3) << row.label;
    EXPECT_EQ(table(), row.table) << row.label;
  }
}

TEST_F(EngineManifest, Numbers) {
  const struct {
    const char* fields;
    int os, version;
    float zip_kb;
  } rows[] = {
      {"0 3 91001 7", 3, 91001, 7},
      {"0 +2 -+12 -5", 2, -12, -5},
      {"0 1 1a 0", 1, 10 + 'a' - '0', 0},  // a letter is a digit like any other
      {"0 1 4294967297 0", 1, 1, 0},       // wraps at 32 bits
  };
  for (const auto& row : rows) {
    load_body("FILE " + std::string(row.fields) + " 0 s a\n");
    ASSERT_EQ(sim_info.size(), 1u) << row.fields;
    EXPECT_EQ(sim_info[0].current().os, row.os) << row.fields;
    EXPECT_EQ(sim_info[0].current().version, row.version) << row.fields;
    EXPECT_EQ(sim_info[0].current().zip_kb, row.zip_kb) << row.fields;
  }
  load_body(
      "DISK 2\nFILE 0 0 0 0 0 s a\nDISK 3 FILE 0\nFILE 0 0 0 0 0 s b\nDISK \nFILE 0 0 0 0 0 s c\n");
  ASSERT_EQ(sim_info.size(), 3u);
  EXPECT_EQ(sim_info[0].current().disk, 2);
  EXPECT_EQ(sim_info[1].current().disk, 3);
  EXPECT_EQ(sim_info[2].current().disk, 0);
}

TEST_F(EngineManifest, Headers) {
  const struct {
    const char* text;
    int result;
  } rows[] = {
      {"I\n900 version\nINSTALLER\n\n", 3}, {"A\r840\rINSTALLER\r", 3},
      {"I\n841 version\nINSTALLER\n", 2},   {"i\n900 version\nINSTALLER\n", 2},
      {"I\n900 version\nSERVERS\n", 2},     {"I", 2},
  };
  for (const auto& row : rows) {
    stg = stg_record();
    app_done = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(load(row.text), row.result) << row.text;
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.find("you need to get a new installer!") != std::string::npos, row.result == 2)
        << row.text;
    EXPECT_EQ(app_done, row.result == 2) << row.text;
    EXPECT_EQ(stg.new_format_state, row.result == 2 ? 2 : 0) << row.text;
    EXPECT_EQ(stg.directory_state, row.result == 2 ? manifest_refused : manifest_none) << row.text;
    EXPECT_TRUE(sim_info.empty());
  }
  app_done = 0;
}

TEST_F(EngineManifest, FatalFiles) {
  const auto exits = testing::ExitedWithCode(1);
  EXPECT_EXIT(load(""), exits, "I tried to read a directory file that does not exist!");
  EXPECT_EXIT(load_body("DIR A/b/\nFILE 0 0 1 2 3 s\n"), exits, "a path that has no file!.*A/b/");
}

TEST_F(EngineManifest, PathsThatLeaveTheDestination) {
  open_log();
  const std::string at_limit = "A/" + std::string(497, 'n');
  std::string body =
      "DIR ALL_os/../\nFILE 0 0 1 2 3 s up\nDIR ALL_os//etc/\nFILE 0 0 1 2 3 s passwd\n";
  body += "DIR \n";
  for (const std::string& name :
       {std::string("ALL_os/a/../../b"), std::string("ALL_os/./c"), std::string(".."), at_limit,
        at_limit + "n", std::string("A/..d")})
    body += "FILE 0 0 1 2 3 s " + name + "\n";
  ASSERT_EQ(load_body(body), 3);
  EXPECT_EQ(table(), at_limit + "=s A/..d=s");
  EXPECT_NE(log().find("WARNING: "), std::string::npos);
  EXPECT_NE(log().find("ALL_os/../up"), std::string::npos);
  std::string many = "DIR A/\n";
  for (int i = 0; i < 1000; ++i)
    many += "FILE 0 0 1 2 3 s ../" + std::to_string(i) + "/x\n";
  const size_t before = log().size();
  load_body(many);
  const std::string lines = log().substr(before);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 101);
}

// A huge folder name must not be multiplied by the files in it, nor a long line be read past.
TEST_F(EngineManifest, HugeLines) {
  const std::string huge(1 << 20, 'x');
  ASSERT_EQ(load_body("DIR " + huge + "\nFILE 0 0 1 2 3 s a\nFILE 0 0 1 2 3 " + huge + " b\n" +
                      huge + "\nDIR A/\nFILE " + huge + " 0 1 2 3 " + huge + " c\n"),
            3);
  ASSERT_EQ(sim_info.size(), 1u);
  EXPECT_EQ(sim_info[0].current().path, "A/c");
  EXPECT_EQ(sim_info[0].current().sig_want, huge);
}

TEST_F(EngineManifest, CutAtEveryByte) {
  const std::string whole =
      std::string(header) +
      "DIR ALL_os/a\nFILE 0 0 90500 12 34 0123456789abcdef b c.txt\n"
      "FILE 0 1 91001 1 2 GONE b c.txt\r\nDISK 12\nFILE 0 0 1 2 3 s +34-118.dsf";
  testing::internal::CaptureStderr();  // the alerts about the cut headers
  for (size_t size = 1; size <= whole.size(); ++size) {
    const int result = load(std::string_view(whole).substr(0, size));
    EXPECT_EQ(result, size < std::string_view("I\n900 version\nINSTALLER").size() ? 2 : 3) << size;
    for (const file_history_struct& history : sim_info) {
      ASSERT_FALSE(history.versions.empty()) << size;
      EXPECT_TRUE(manifest_path_is_safe(history.current().path)) << size;
      EXPECT_TRUE(history.current().path.starts_with("ALL_os/a")) << size;
    }
  }
  testing::internal::GetCapturedStderr();
  app_done = 0;
  EXPECT_EQ(table(), "ALL_os/ab c.txt=0123456789abcdef,GONE ALL_os/a+34-118.dsf=s");
}

TEST_F(EngineManifest, ANewReadReplacesAll) {
  load_body("DIR A/Global Scenery/\nFILE 0 0 1 2 3 s +34-118.dsf\nFILE 0 0 1 2 3 s readme\n");
  EXPECT_EQ(stg.has_global_files + stg.has_sim_files, 2);
  EXPECT_EQ(stg.sector_available[sector_cell(6, 12)], 1);
  stg.todo_zip_kb = stg.todo_raw_kb = 5;
  stg.todo_install_count = stg.todo_delete_count = 5;
  deleted_files.insert("x/");
  sim_info[0].current().sig_have = sig_a;
  // A tile without a sector is an ordinary file.
  load_body("DIR A/Global Scenery/\nFILE 0 0 1 2 3 t -90-180.dsf\nFILE 0 0 1 2 3 t +90+000.dsf\n");
  EXPECT_EQ(table(), "A/Global Scenery/-90-180.dsf=t A/Global Scenery/+90+000.dsf=t");
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
  const struct {
    const char* path;
    int global;
  } rows[] = {
      {"ALL_os/Global Scenery/x/+34-118.DsF", 1},
      {"A/-global overlays-/a.dsf", 1},
      {"A/default scenery/DSF 820 earth/a.dsf", 1},
      {"A/Custom Scenery/+34-118.dsf", 0},
      {"A/global scenery/a.dsf", 0},
      {"A/Global Scenery/a.dsf.txt", 0},
      {".dsf", 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(is_global_scenery_f(row.path), row.global) << row.path;
}

TEST(EngineManifestNames, Sectors) {
  const struct {
    const char* path;
    int found, lon, lat;
  } rows[] = {
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
  for (const auto& row : rows) {
    int32_t lon = -7, lat = -7;
    EXPECT_EQ(find_sector(lon, lat, row.path), row.found) << row.path;
    EXPECT_EQ(lon, row.found ? row.lon : -7) << row.path;
    EXPECT_EQ(lat, row.found ? row.lat : -7) << row.path;
  }
}

TEST(EngineDecide, SafePaths) {
  const struct {
    std::string_view path;
    bool safe;
  } rows[] = {
      {"ALL_os/a", true},           {"ALL_os/...", true},  {"ALL_os/a..b/..c", true},
      {"ALL_os/a:b\\c", true},      {"", false},           {"ALL_os/", false},
      {"ALL_os/../a", false},       {"ALL_os/./a", false}, {"ALL_os/a/..", false},
      {"ALL_os//a", false},         {"ALL_os/a/", false},  {"//a", false},
      {{"ALL_os/a\0b", 10}, false}, {{"A\0/a", 4}, false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(manifest_path_is_safe(row.path), row.safe) << row.path;
}

}  // namespace

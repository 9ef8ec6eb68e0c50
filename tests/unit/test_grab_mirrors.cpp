// Mirrors that fail: who is asked next, how often, and when the user is told.

#include <algorithm>

#include "Installer-f/engine/utils_grab_mirrors.h"
#include "corekit/base/hl_alert.h"
#include "grab_fixture.h"

namespace {

using GrabMirrors = Grab;

constexpr char signature[] = "0cc175b9c0f1b6a831c399e269772661";  // of "a"

// What three mirrors send for one file, each by a letter.
TEST_F(GrabMirrors, AWrongArchiveIsThatMirrorsFailure) {
  const std::string good = archive_of("f", "a");
  std::string flipped = good;
  flipped[flipped.size() / 2] ^= 0x55;
  const std::map<char, std::string> kinds = {{'g', good},
                                             {'w', archive_of("f", "another file")},
                                             {'f', flipped},
                                             {'t', good.substr(0, 20)},
                                             {'p', "<html>log in</html>"},
                                             {'l', std::string(2001, 'l')},
                                             {'e', ""}};
  // Of the mirrors '-' refuses; then the file in the end, and how many alerts.
  const std::tuple<const char*, const char*, const char*, int> rows[] = {
      {"one damaged", "fgg", "a", 0},
      {"cut off, and a page for the log-in", "tpg", "a", 0},
      {"the only one that has it", "wfg", "a", 0},
      {"behind others that refuse", "--g", "a", 0},
      {"empty beside one that refuses", "e-g", "a", 0},
      {"larger than its line says", "lfg", "a", 0},
      {"all wrong", "wlf", "old", 1},
  };
  for (const auto& [label, mirrors, content, alerts] : rows) {
    SCOPED_TRACE(label);
    std::map<std::string, std::string> files;
    stg.server_count = 3;
    stg.extract_failed = 0;
    for (int i = 0; i < 3; ++i) {
      server_name[i] = std::string("m") + static_cast<char>('0' + i);
      server_path[i] = "/";
      if (mirrors[i] != '-') files["http://" + server_name[i] + "/A/f.zip"] = kinds.at(mirrors[i]);
    }
    mirror m(files);
    put("f", "old");
    sim_info.clear();
    add_history(wanted_file("A/f", 1, signature));
    const int alerts_before = alerts_shown;
    grab_reset();
    ASSERT_TRUE(run_job());
    EXPECT_EQ(content_of(dest_dir_path + "f"), content);
    EXPECT_EQ(alerts_shown - alerts_before, alerts);
    EXPECT_EQ(stg.extract_failed, alerts);
    EXPECT_EQ(sim_info[0].current().sig_have == signature, alerts == 0);
    std::vector<std::string> asked = m.requests();
    std::sort(asked.begin(), asked.end());
    EXPECT_EQ(std::adjacent_find(asked.begin(), asked.end()), asked.end()) << "each once";
  }
}

// A mirror that refuses is asked after half a second, then after twice as long each time, up to
// half a minute; not for each of the streams. The clock is the frame's.
TEST_F(GrabMirrors, ARefusingMirrorIsLeftAlone) {
  mirror m({});
  stg.server_count = 1;
  for (const char* path : {"A/f", "A/g", "A/h"})
    add_history(wanted_file(path));
  const double start = xtim.now_sec = 6e6;  // ten weeks on
  grab_reset();
  size_t seen = 0;
  std::vector<double> asked_at;
  for (int step = 0; step < 1300; ++step) {
    xtim.now_sec = start + 0.1 * step;
    for (int i = 0; i < 200; ++i) {
      ASSERT_EQ(grab_files(), 0);
      grab_wait(0);
      if (stream_where(0) == stream_resting && stream_where(1) == stream_resting) break;
      usleep(100);
    }
    if (m.requests().size() == seen) continue;
    EXPECT_LE(m.requests().size() - seen, 2u) << "each stream once";
    seen = m.requests().size();
    if (asked_at.empty() || xtim.now_sec - start > asked_at.back() + 0.15)
      asked_at.push_back(xtim.now_sec - start);
  }
  const double want[] = {0, 0.5, 1.5, 3.5, 7.5, 15.5, 31.5, 61.5, 91.5, 121.5};
  ASSERT_EQ(asked_at.size(), std::size(want));
  for (size_t i = 0; i < std::size(want); ++i)
    EXPECT_NEAR(asked_at[i], want[i], 0.15 * static_cast<double>(i + 1)) << i;
  EXPECT_EQ(stg.server_down, 1);
  EXPECT_EQ(stg.extract_failed, 0);
}

// The page says of a mirror that it does not answer, until another one begins to.
TEST_F(GrabMirrors, AnAnswerTakesTheComplaintAway) {
  const scripted_reply good = whole_answer(archive_of("f", "a"));
  const size_t half = good.pieces[0].size() - 20;
  scripted_server m(
      [&](const std::string& request) {
        if (str_holds(request, "//one/")) return whole_answer("", "404 Not Found");
        return scripted_reply{{good.pieces[0].substr(0, half), good.pieces[0].substr(half)}};
      },
      true);
  use_proxy_port(m.port());
  stg.server_index = 0;
  add_history(wanted_file("A/f", 1, signature));
  grab_reset();
  const auto step_until = [](const std::function<bool()>& done) {
    for (int i = 0; i < 2000; ++i) {
      if (done()) return true;
      EXPECT_EQ(grab_files(), 0);
      grab_wait(5);
    }
    return false;
  };
  ASSERT_TRUE(step_until([&] { return m.send_piece(); }));
  ASSERT_TRUE(step_until([&] { return stg.server_down == 1; }));
  xtim.now_sec += 0.1f;
  ASSERT_TRUE(step_until([&] { return m.send_piece(); }));
  EXPECT_TRUE(step_until([&] { return stg.server_down == 0; }));
  EXPECT_FALSE(file_exists(dest_dir_path + "f")) << "not only once the file is whole";
  EXPECT_TRUE(m.send_piece());
  EXPECT_TRUE(run_job());
}

TEST_F(GrabMirrors, WhoIsAskedNext) {
  stg.server_count = 3;
  stg.server_index = 1;
  mirrors_forget();
  EXPECT_EQ(mirror_to_ask(0), 1) << "the one in use";
  mirror_failed(1, xtim.now_sec);
  const int other = mirror_to_ask(0);
  EXPECT_NE(other, 1);
  EXPECT_EQ(stg.server_index, other);
  EXPECT_EQ(mirror_to_ask(mirror_set{1} << other | 1u << 1), 2 - other) << "the third";
  EXPECT_EQ(mirror_to_ask(0b101), no_mirror) << "all but the one that rests";
  EXPECT_FLOAT_EQ(mirror_rests_for(0b101), 0.5f);
  stg.server_index = 1;
  EXPECT_EQ(mirror_to_ask(0), 1) << "the user's choice is asked at once";
  EXPECT_TRUE(mirrors_are_all(0b111));
  EXPECT_FALSE(mirrors_are_all(0b011));
  stg.server_count = 0;
  EXPECT_EQ(mirror_to_ask(0), no_mirror);
}

}  // namespace

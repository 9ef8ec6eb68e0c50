// The transfer loop: whole jobs against a scripted mirror, and the decisions of its streams.

#include "Installer-f/engine/utils_stream.h"
#include "Installer-f/engine/utils_trouble.h"
#include "Installer-f/engine/utils_verify.h"
#include "grab_fixture.h"

namespace {

TEST(GrabStreams, CountFollowsTheSpeed) {
  const std::tuple<float, int, int> rows[] = {{50.0f, 0, 2},  {50.1f, 0, 4},  {100.0f, 0, 4},
                                              {100.1f, 0, 6}, {150.0f, 0, 6}, {150.1f, 0, 8},
                                              {200.0f, 0, 8}, {200.1f, 0, 9}, {1e9f, 1, 1},
                                              {0, 4, 4},      {60.0f, -1, 4}};
  for (const auto& [rate, manual, wanted] : rows) {
    EXPECT_EQ(wanted_streams(rate, manual), wanted) << rate << " " << manual;
  }
}

// What settling does to the streams: active ones as digits of `before` and `after`.
TEST_F(Grab, StreamsStartAndStopAtTheEndOfAFile) {
  // What was done is that of the 10 seconds since the start.
  const std::tuple<const char*, const char*, int, float, int, const char*, const char*> rows[] = {
      {"slow", "1100", 0, 500, 0, "1100", "1000"},
      {"faster: one more at a time", "1100", 1, 501, 0, "1110", "0110"},
      {"lowest free slot", "0110", 2, 9999, 0, "1110", "1010"},
      {"all live", "1111", 3, 9999, 0, "1111", "0001"},
      {"slowed down", "1111", 2, 100, 0, "1101", "0000"},
      {"one by hand", "1100", 1, 9999, 1, "1000", "0000"},
      {"the last one stays", "1000", 0, 0, 1, "1000", "1000"},
  };
  for (const auto& [label, before, settled, done_kb, manual, after, take_next] : rows) {
    next = {};
    next.start_time = 0;
    next.done_zip_kb = done_kb - 1;
    next.in_flight_kb = 1;
    stg.stream_count = manual;
    for (int s = 0; s < stream_limit; ++s)
      next.stream_active[s] = before[s] - '0';
    settle_stream_count(settled);
    for (int s = 0; s < stream_limit; ++s) {
      EXPECT_EQ(next.stream_active[s], after[s] - '0') << label << ", stream " << s;
      EXPECT_EQ(next.stream_take_next[s], take_next[s] - '0') << label << ", stream " << s;
    }
  }
}

TEST_F(Grab, FetchesAndDeletes) {
  mirror m({{"http://one/up/rel/ALL_os/a%20b.txt.zip", archive_of("a b.txt", "AB")},
            {"http://one/up/rel/ALL_os/sub/c.zip", archive_of("c", "new")},
            {"http://one/up/rel/APL_os/Sky.app/Contents/MacOS/sky.zip", archive_of("sky", "run")}});
  put("sub/c", "old");
  put("gone/deep/d.txt", "dropped by the release");
  put("half/e.txt", "dropped too");
  put("half/mine.txt", "the user's own");
  put("Sky.app/Contents/MacOS/x", "");
  // An archive that may be so large goes by way of the disk.
  add_history(wanted_file("ALL_os/a b.txt", 5000, "b86fc6b051f63d73de262d4c34e3a0a9"));
  add_history(wanted_file("ALL_os/sub/c", 4, "22af645d1859cb5ca6da0c484f1f37ea"));
  for (const char* path :
       {"ALL_os/gone/deep/d.txt", "ALL_os/half/e.txt", "ALL_os/half/never.txt"}) {
    file_version_struct file = wanted_file(path);
    file.need_fetch = 0;
    file.need_delete = 1;
    add_history(file);
  }
  add_history(
      wanted_file("APL_os/Sky.app/Contents/MacOS/sky", 5, "a53108f7543b75adbb34afc035d4cdf6"));
  // An old version that was wanted once does not count; the current one does.
  const file_version_struct newest = sim_info[1].current();
  sim_info[1].current() = wanted_file("ALL_os/sub/c", 100);
  sim_info[1].versions.push_back(newest);
  stg.log_actions = 1;

  ASSERT_TRUE(run_job());
  EXPECT_EQ(content_of(dest_dir_path + "a b.txt"), "AB");
  EXPECT_EQ(content_of(dest_dir_path + "sub/c"), "new");
  EXPECT_EQ(content_of(dest_dir_path + "half/mine.txt"), "the user's own");
  EXPECT_FALSE(file_exists(dest_dir_path + "half/e.txt"));
  EXPECT_FALSE(dir_exists(dest_dir_path + "gone/")) << "both folders, the inner one first";
  EXPECT_EQ(mode_of(dest_dir_path + "Sky.app/Contents/MacOS/sky"), 0755u);

  EXPECT_EQ(next.done_zip_kb, 5009);
  EXPECT_EQ(next.done_raw_kb, 10018);
  EXPECT_EQ(next.in_flight_kb, 0);
  EXPECT_EQ(sim_info[1].current().sig_match, 1);
  for (int s = 0; s < stream_limit; ++s) {
    EXPECT_FALSE(file_exists(temp_path + std::to_string(s) + ".zip")) << s;
  }
  EXPECT_EQ(m.requests().size(), 3u);
  const std::string text = log();
  for (const std::string& line :
       {"now we want to nuke a file: DELETING  file " + dest_dir_path +
            "half/never.txt, with result=2.\n",
        "EXPANDING file " + dest_dir_path + "sub/c, with result=0.\n",
        "CHMODING  file " + dest_dir_path + "Sky.app/Contents/MacOS/sky, with result=0.\n"}) {
    EXPECT_TRUE(str_holds(text, line)) << line << "not in\n" << text;
  }
}

TEST_F(Grab, AStreamThatFailsKeepsItsFile) {
  use_proxy_port(closed_port());
  for (const char* path : {"ALL_os/a", "ALL_os/b", "ALL_os/c"})
    add_history(wanted_file(path));
  stg.server_count = 1;
  while (stg.server_down == 0)
    grab_files();
  EXPECT_EQ(next.stream_file[0], 0);
  EXPECT_EQ(next.stream_file[1], 1) << "no file is handed to two streams";
  EXPECT_EQ(next.stream_take_next[0], 0) << "it keeps its file";
  EXPECT_EQ(stg.server_index, 0);
  stg.server_count = 0;
  EXPECT_EQ(grab_files(), 0) << "no mirror known: no request, no end";
  EXPECT_EQ(stg.server_down, 1);
}

// Without a user to ask for another mirror, what all of them refuse is left out.
TEST_F(Grab, AFileThatEveryMirrorRefusesIsPassedOver) {
  const std::string other = archive_of("b.txt", "another");
  mirror m({{"http://one/up/rel/ALL_os/c.txt.zip", archive_of("c.txt", "C")},
            {"http://two/pub/rel/ALL_os/c.txt.zip", archive_of("c.txt", "C")},
            {"http://one/up/rel/ALL_os/b.txt.zip", other},
            {"http://two/pub/rel/ALL_os/d.txt.zip", archive_of("d.txt", "D")}},
           0, "http://two/pub/rel/ALL_os/d.txt.zip");
  add_history(wanted_file("ALL_os/d.txt", 1, "f623e75af30e62bbd73d6df5b50bb7b5"));
  add_history(wanted_file("ALL_os/a.txt", 1, "0cc175b9c0f1b6a831c399e269772661"));
  add_history(wanted_file("ALL_os/b.txt", 1, "92eb5ffee6ae2fec3ad71c777531578f"));
  add_history(wanted_file("ALL_os/c.txt", 1, "0d61f8370cad1d412f80b84d143e1257"));
  passes_over_missing = true;
  missing_files.clear();
  const int alerts_before = alerts_shown;
  const auto begin = std::chrono::steady_clock::now();
  for (float gone = 0; gone < 10 && grab_files() == 0;) {
    grab_wait(10);
    gone = std::chrono::duration<float>(std::chrono::steady_clock::now() - begin).count();
    xtim.now_sec = 10 + gone;  // mirrors rest meanwhile
  }
  EXPECT_EQ(next.finished, 1);
  passes_over_missing = false;
  EXPECT_EQ(content_of(dest_dir_path + "c.txt"), "C");
  EXPECT_EQ(content_of(dest_dir_path + "d.txt"), "D") << "refused by one, and the other came back";
  EXPECT_EQ(stg.extract_failed, 1) << "the job has not done what it was to do";
  EXPECT_LE(alerts_shown, alerts_before + 1);
  ASSERT_EQ(missing_files.size(), 2u);
  std::string told;
  for (const missing_file& file : missing_files)
    for (const fetch_trouble& trouble : file.answers)
      told += file.path + " " + trouble_line(trouble) + "\n";
  for (const char* const line :
       {"a.txt http://one/up/rel/ALL_os/a.txt.zip: the server answered 404 Not Found (by",
        "a.txt http://two/pub/rel/ALL_os/a.txt.zip: the server answered 404 Not Found (by",
        "b.txt http://one/up/rel/ALL_os/b.txt.zip: the server sent something else\n",
        "b.txt http://two/pub/rel/ALL_os/b.txt.zip: the server answered 404 Not Found (by"}) {
    EXPECT_TRUE(str_holds(told, line)) << line << " is not in\n" << told;
  }
  missing_files.clear();
}

// One that may be so large goes by way of the disk.
TEST_F(Grab, NoPlaceForAnArchiveIsToldOnce) {
  const std::string archive = archive_of("a", "A");
  mirror m(
      {{"http://one/up/rel/ALL_os/a.zip", archive}, {"http://two/pub/rel/ALL_os/a.zip", archive}});
  add_history(wanted_file("ALL_os/a", 5000, "7fc56270e7a70fa81a5935b72eacbe29"));
  temp_path += "none/";
  const int alerts_before = alerts_shown;
  EXPECT_TRUE(run_job());
  EXPECT_EQ(alerts_shown, alerts_before + 1);
  EXPECT_EQ(stg.extract_failed, 1);
  EXPECT_EQ(m.requests().size(), 1u) << "no other mirror would change that";
}

TEST_F(Grab, APathOutsideTheDestinationIsRefused) {
  const std::string outside = new_folder() + "victim";
  std::ofstream(outside) << "untouched";
  const std::string absolute = "ALL_os/" + outside;  // behind the platform folder
  for (const std::string_view path :
       {std::string_view("ALL_os/../victim"), std::string_view(absolute)}) {
    for (const int deletes : {0, 1}) {
      file_version_struct file = wanted_file(path);
      file.need_fetch = 1 - deletes;
      file.need_delete = deletes;
      add_history(file);
    }
  }
  mirror m({});
  EXPECT_TRUE(run_job());
  EXPECT_TRUE(m.requests().empty());
  EXPECT_EQ(content_of(outside), "untouched");
  EXPECT_TRUE(str_holds(log(), "WARNING: "));
  sim_info.clear();
}

TEST_F(Grab, ProgressOfFilesInFlightAndItsReset) {
  scripted_server server(
      [](const std::string&) {
        return scripted_reply{{"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n12", "3456"}, true};
      },
      true);
  use_proxy_port(server.port());
  add_history(wanted_file("ALL_os/a", 100));
  stg.stream_count = 1;
  while (server.requests().empty())
    grab_files();
  EXPECT_FLOAT_EQ(stg.file_fraction, -0.01f) << "length unknown";
  EXPECT_FLOAT_EQ(next.in_flight_kb, -1.0f);
  for (const float fraction : {0.25f, 0.75f}) {
    ASSERT_TRUE(server.send_piece());
    EXPECT_EQ(grab_files(), 0);
    EXPECT_FLOAT_EQ(stg.file_fraction, fraction);
    EXPECT_FLOAT_EQ(next.in_flight_kb, 100 * fraction);
    EXPECT_EQ(stg.activity, activity_fetching);
  }
  ASSERT_TRUE(http.slot_active(first_stream_slot));
  next.stream_active[3] = 1;
  stg.extract_failed = 1;
  next.done_zip_kb = next.done_raw_kb = 5;
  grab_reset();
  EXPECT_EQ(next.done_zip_kb + next.done_raw_kb, 0);
  EXPECT_FALSE(http.slot_active(first_stream_slot));
  EXPECT_EQ(next.stream_active[1], 1);
  EXPECT_EQ(next.stream_active[3], 0);
  EXPECT_EQ(next.start_time, xtim.now_sec);
  EXPECT_EQ(next.in_flight_kb, 0);
  EXPECT_EQ(stg.extract_failed, 1) << "left for the last page";
}

TEST_F(Grab, WhatHasChangedSinceItWasVerifiedStays) {
  const mirror m({{"http://one/up/rel/ALL_os/a.zip", archive_of("a", "new")}});
  const struct {
    const char *label, *verified, *then;  // what "a" holds; "" for nothing
    bool deletes, stays;
  } rows[] = {
      {"put there meanwhile", "", "mine", false, true},
      {"changed meanwhile", "old", "mine", false, true},
      {"changed before it is deleted", "old", "mine", true, true},
      {"gone before it is deleted, and another has its name by the case", "old", "", true, true},
      {"put back to an earlier state", "mine", "old", false, false},
      {"touched, when its user had let it go", "mine", "mine", false, false},
      {"touched, and dropped", "old", "old", true, false},
  };
  put("A", "another's");
  for (const auto& [label, verified, then, deletes, stays] : rows) {
    SCOPED_TRACE(label);
    sim_info.clear();
    add_history(wanted_file("ALL_os/a", 5, "149603e6c03516362a8da23f624db945"));  // of "old"
    sim_info[0].versions.push_back(
        wanted_file("ALL_os/a", 5, deletes ? "GONE" : "22af645d1859cb5ca6da0c484f1f37ea"));
    delete_file(dest_dir_path + "a");
    if (*verified) put("a", verified);
    int index = 0;
    float progress = 0;
    while (checksum_directory(index, progress) == 0) {
    }
    delete_file(dest_dir_path + "a");
    if (*then) put("a", then);
    sim_info[0].current().need_fetch = !deletes;
    sim_info[0].current().need_delete = deletes;
    stg.extract_failed = 0;
    grab_reset();
    run_job();
    EXPECT_EQ(content_of(dest_dir_path + "a"), stays ? then : deletes ? "" : "new");
    EXPECT_EQ(stg.extract_failed, stays && !deletes);
    EXPECT_EQ(content_of(dest_dir_path + "A"), "another's");
  }
}

TEST_F(Grab, DiscardDeletesOurArchivesOfLiveStreamsAlone) {
  for (const char* path : {"ALL_os/a", "ALL_os/b", "ALL_os/c", "ALL_os/../up", "ALL_os/photos"})
    add_history(wanted_file(path, 1, "9dd4e461268c8034f5c8564e155c67a6"));  // of "x"
  for (const char* name : {"a", "b", "c"})
    put(name + std::string(".zip"), archive_of(name, "x"));
  put("a", "x");
  const std::string above = dest_dir_path + "../up.zip";
  std::ofstream(above) << "x";
  next.stream_file[0] = 1;   // live
  next.stream_file[1] = 99;  // live, past the end
  next.stream_file[2] = 2;   // not live
  next.stream_active[3] = 1;
  next.stream_file[3] = 3;  // live, outside the destination
  grab_discard_partial();
  // The user's own, beside the file of a stream that is live.
  next.stream_file[0] = 4;
  for (const std::string& own :
       {archive_of("holiday", "x"), archive_of("photos", "mine"), std::string("no archive")}) {
    put("photos.zip", own);
    grab_discard_partial();
    EXPECT_EQ(content_of(dest_dir_path + "photos.zip"), own);
  }
  EXPECT_TRUE(file_exists(dest_dir_path + "a"));
  EXPECT_TRUE(file_exists(dest_dir_path + "a.zip"));
  EXPECT_FALSE(file_exists(dest_dir_path + "b.zip"));
  EXPECT_TRUE(file_exists(dest_dir_path + "c.zip"));
  EXPECT_TRUE(file_exists(above));
  delete_file(above);
}

}  // namespace

// Selection: what is fetched, deleted, asked about and left, and what it comes to.

#include "Installer-f/engine/utils_select.h"

#include <numeric>

#include "Installer-f/engine/utils_sizes.h"
#include "engine_tree.h"

namespace {

// The user: gives the answers in turn and notes what was asked.
std::vector<int> answers;
std::vector<std::string> questions;

int scripted_user(const std::string& location, int gone) {
  questions.push_back((gone ? "delete " : "install ") + location.substr(dest_dir_path.size()));
  if (answers.empty()) return answer_cancel_install;
  const int answer = answers.front();
  answers.erase(answers.begin());
  return answer;
}

class EngineSelect : public engine_tree {
 protected:
  void SetUp() override {
    engine_tree::SetUp();
    dest_dir_path = "/copy/";
    answers.clear();
    questions.clear();
    engine_ask.modified = scripted_user;
  }

  // A file with three shipped versions, of which the disk has `have`.
  file_version_struct& file(std::string_view path, std::string_view have,
                            std::string_view want = "new") {
    file_version_struct& current = add(path, {"old", "older", want});
    current.sig_have = have;
    current.sig_match = current.sig_have == current.sig_want;
    return current;
  }

  void make_tile(file_version_struct& current, int lon, int lat) {
    current.is_global = 1;
    current.lon_index = lon;
    current.lat_index = lat;
  }
  // "F" to fetch, "D" to delete, "-" for neither, in table order.
  static std::string flags() {
    std::string text;
    for (const file_history_struct& history : sim_info) {
      const file_version_struct& current = history.current();
      EXPECT_FALSE(current.need_fetch && current.need_delete);
      text += current.need_fetch ? 'F' : current.need_delete ? 'D' : '-';
    }
    return text;
  }
};

// Answers for a folder hold for it alone, for installs and deletions alike, and for one run.
TEST_F(EngineSelect, AnswersForAFolder) {
  file("A/a/1", "mine");
  file("A/a/2", "mine", "GONE");
  file("A/a/sub/3", "mine");
  file("A/ab/4", "mine");
  file("A/a/5", "mine");
  answers = {answer_keep_folder, answer_overwrite_folder, answer_overwrite};
  EXPECT_EQ(choose_files(), 1);
  EXPECT_EQ(flags(), "--FF-");
  EXPECT_EQ(questions,
            (std::vector<std::string>{"install a/1", "install a/sub/3", "install ab/4"}));
  questions.clear();
  answers = {answer_overwrite_folder, answer_keep_folder, answer_keep};
  EXPECT_EQ(choose_files(), 1);
  EXPECT_EQ(flags(), "FD--F");
  EXPECT_EQ(questions.size(), 3u);
}

TEST_F(EngineSelect, CancelLeavesTheRestClear) {
  open_log();
  file("A/1", "NONE");
  file("A/2", "mine");
  file("A/3", "NONE").need_fetch = 1;
  EXPECT_EQ(choose_files(), 0);
  EXPECT_EQ(flags(), "F--");
  EXPECT_EQ(log(), "File: /copy/2  sig_want=new  sig_have=mine\n");
}

TEST_F(EngineSelect, Wanted) {
  file_version_struct& record = file("A/1", "NONE");
  const std::pair<int, const char*> rows[] = {// the second for os 0 to 6
                                              {target_mac, "1100000"},
                                              {target_windows, "1010000"},
                                              {target_linux, "1001001"}};
  for (const auto& [target, by_os] : rows) {
    stg.target_os = target;
    for (int os = 0; os <= 6; ++os) {
      record.os = os;
      EXPECT_EQ(want_this_f(0, 2), by_os[os] - '0') << "target " << target << " os " << os;
    }
  }
  record.os = 0;
  for (int filter = 0; filter < 4; ++filter) {
    set_install_filter(filter & 1, filter >> 1);
    record.is_global = 0;
    EXPECT_EQ(want_this_f(0, 2), filter & 1) << filter;
    record.is_global = 1;
    EXPECT_EQ(want_this_f(0, 2), filter >> 1) << filter;
  }
  EXPECT_EQ(want_this_f(0, 0), 1);  // goes by the record named, not by the current one
}

// What is not for this run is left alone, whatever its state, and its old flags go.
TEST_F(EngineSelect, UnwantedIsLeftAlone) {
  make_tile(file("A/tile", "new"), 3, 3);
  file("A/windows", "NONE").os = 2;
  file("A/modified", "mine").os = 4;
  for (file_history_struct& history : sim_info)
    history.current().need_delete = 1;
  set_install_filter(1, 0);
  EXPECT_EQ(choose_files(), 1);
  EXPECT_EQ(flags(), "---");
  EXPECT_TRUE(questions.empty());
}

TEST_F(EngineSelect, Progress) {
  const float sizes[] = {10, 20, 0, 30, 40};
  for (int i = 0; i < 5; ++i)
    file("A/" + std::to_string(i), i == 1 ? "new" : "NONE").raw_kb = sizes[i];
  ASSERT_EQ(choose_files(), 1);
  const float starts[] = {0, 0.125f, 0.125f, 0.125f, 0.5f};
  for (int i = 0; i < 5; ++i)
    EXPECT_FLOAT_EQ(sim_info[i].current().progress_start, starts[i]) << i;
  for (file_history_struct& history : sim_info)
    history.current().sig_have = "new";
  ASSERT_EQ(choose_files(), 1);
  for (const file_history_struct& history : sim_info)
    EXPECT_EQ(history.current().progress_start, 0.5f);
}

TEST_F(EngineSelect, Scenery) {
  make_tile(file("A/1", "new"), 1, 2);
  make_tile(file("A/2", "NONE"), 3, 4);
  make_tile(file("A/3", "mine"), 35, 17);
  file("A/4", "new").lon_index = 9;  // no tile
  stg.sector_selected[sector_cell(5, 5)] = 1;
  scenery_from_install();
  EXPECT_EQ(std::accumulate(std::begin(stg.sector_selected), std::end(stg.sector_selected), 0), 2);
  EXPECT_EQ(stg.sector_selected[sector_cell(1, 2)] + stg.sector_selected[sector_cell(35, 17)], 2);
  stg.sector_available[sector_cell(7, 7)] = 1;
  scenery_take_all();
  EXPECT_EQ(stg.sector_selected[sector_cell(7, 7)], 1);
  EXPECT_EQ(stg.sector_selected[sector_cell(1, 2)], 0);
}

// A sector that has lost its last tile is told by its folder, if that is its own.
TEST_F(EngineSelect, SceneryThatIsLost) {
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"its folder is there", "A/Earth/+30-120/+34-118.dsf", "Earth/+30-120", true},
      {"in another case", "A/Earth/+30-120/+34-118.dsf", "EARTH/+30-120", true},
      {"and is not", "A/Earth/+30-120/+34-118.dsf", "Earth/+30-110", false},
      {"only the one above", "A/Earth/+30-120/+34-118.dsf", "Earth", false},
      {"that of another sector", "A/Earth/+30-110/+34-118.dsf", "Earth/+30-110", false},
      {"one for all sectors", "A/Earth/tiles/+34-118.dsf", "Earth/tiles", false},
      {"none of its own", "A/+34-118.dsf", "Earth", false},
  };
  for (const auto& [name, path, folder, selected] : rows) {
    dest_dir_path = root + name + "/";
    write(std::string(name) + "/" + folder + "/x", "");
    sim_info.clear();
    make_tile(file(path, "NONE"), 6, 12);
    scenery_from_install();
    EXPECT_EQ(stg.sector_selected[sector_cell(6, 12)] != 0, selected) << name;
  }
}

TEST_F(EngineSelect, TotalsAndWhatBecomesOfEach) {
  const auto sized = [](file_version_struct& current, float zip) -> file_version_struct& {
    current.zip_kb = zip;
    current.raw_kb = 2 * zip;
    return current;
  };
  sized(file("A/absent", "NONE"), 1);
  sized(file("A/modified", "mine"), 10);
  sized(file("A/current", "new"), 100);
  sized(file("A/dropped and there", "old", "GONE"), 100);  // not counted: a preview of scenery
  sized(file("A/windows", "NONE"), 100).os = 2;
  make_tile(sized(file("A/tile taken", "NONE"), 1000), 1, 1);
  make_tile(sized(file("A/tile left, there", "new"), 100), 2, 2);
  make_tile(sized(file("A/tile left, absent", "NONE"), 100), 2, 2);
  stg.sector_selected[sector_cell(1, 1)] = 1;
  stg.todo_install_count = stg.todo_delete_count = 77;

  recalc_disk_sizes();
  EXPECT_EQ(stg.todo_zip_kb, 1011.0f);
  EXPECT_EQ(stg.todo_raw_kb, 2022.0f);
  EXPECT_EQ(stg.todo_install_count, 3);
  EXPECT_EQ(stg.todo_delete_count, 1);
  answers = {answer_keep};
  EXPECT_EQ(choose_files(), 1);
  EXPECT_EQ(flags(), "F--D-FD-");

  set_install_filter(0, 1);
  recalc_disk_sizes();
  EXPECT_EQ(stg.todo_install_count, 1);
  EXPECT_EQ(stg.todo_delete_count, 1);
}

TEST(EngineSizes, ForTheUser) {
  const std::pair<float, const char*> rows[] = {
      {1024, "1024 KB"}, {1025, "1 MB"}, {1024000, "1000 MB"}, {1024001, "1.0 GB"}};
  for (const auto& [kb, text] : rows)
    EXPECT_EQ(size_string(kb), text) << kb;
}

// A release that lists a link and, below it, files that an earlier release had there as a folder:
// what lies below is reached through the link and belongs to whoever it leads to.
TEST_F(EngineSelect, NothingBelowAShippedFileIsTouched) {
  file("ALL_os/plugin/Resources", "NONE");           // the link, to be fetched
  file("ALL_os/plugin/Resources/a", "old", "GONE");  // dropped; the disk shows it through the link
  file("ALL_os/plugin/Resources/b", "NONE");         // a manifest that contradicts itself
  file("ALL_os/plugin/Resources b", "NONE");         // only begins alike
  file("ALL_os/old/link", "old", "GONE");            // no longer shipped, so nothing stands above
  file("ALL_os/old/link/c", "NONE");
  EXPECT_EQ(choose_files(), 1);
  EXPECT_EQ(flags(), "F--FDF");
}

}  // namespace

// The wizard engine, frame by frame, by clicks on its own buttons; the words of the transfer page.

#include <algorithm>
#include <map>
#include <sstream>

#include "Installer-f/engine/utils_grab.h"
#include "Installer-f/engine/utils_manifest.h"
#include "Installer-f/engine/utils_registry.h"
#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_demo.h"
#include "Installer-f/wizard/main_dvd_util.h"
#include "Installer-f/wizard/main_face.h"
#include "Installer-f/wizard/main_map.h"
#include "Installer-f/wizard/main_patch.h"
#include "Installer-f/wizard/main_wizard.h"
#include "Installer-f/wizard/main_wizard_draw.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/colr.h"
#include "tests/unit/gl_fixture.h"

namespace {

// What page_a says in the next frame, and what it is told.
struct script {
  int result = 0;
  page_function back = nullptr, next = nullptr, extra = nullptr;
};
script said;
int kills, leaves;

constexpr wizard_page page_a = {
    page_choice, [](int, wizard_screen& screen) {
      // A blank record every frame: nothing of the last one may be left.
      EXPECT_TRUE(!screen.back && !screen.next && !screen.kill_proc && screen.button_pages.empty());
      EXPECT_LT(screen.progress, 0);
      screen.back = said.back;
      screen.next = said.next;
      screen.kill_proc = [] { ++kills; };
      screen.leave_proc = [] { ++leaves; };
      if (said.extra) {
        screen.button_names = {"more"};
        screen.button_pages = {said.extra};
      }
      return said.result;
    }};
constexpr wizard_page page_b = {
    page_choice, [](int, wizard_screen&) { return 0; }, {}, [] { return true; }};
constexpr wizard_page page_shut = {
    page_choice, [](int, wizard_screen&) { return 0; }, {}, [] { return false; }};

class Wizard : public gl_fixture {
 protected:
  void SetUp() override {
    gl_fixture::SetUp();
    scratch_dx = scratch_dy = 16;  // any picture will do for a background
    tman.load_texture(tex_fail_silent, 395, 1281, tex_load_now, "scratch_array:background");
    app_done = 0;
  }

  void frame() {
    clear();
    move(0, 0);
    mnw.mouse_clicked = 0;
    APP_update();
  }
  void frame_with_click(float x, float y) {
    clear();
    click(x, y);
    APP_update();
    mnw.mouse_clicked = 0;
  }
};

constexpr float row = 20;  // height of the bottom row's middle
constexpr float quit_x = 50, back_x = 600, next_x = 720;

}  // namespace

TEST_F(Wizard, FacesBearTheTranslationThatFits) {
  UTL_translate_add("Back====Retour");
  UTL_translate_add("Next====A word that no face has room for");
  UTL_translate_use();
  colr.assign(col_label, 1, 1, 1);  // what the map can count
  // A text has cells over the plate; a picture is one layer.
  const auto is_text = [](float tex_x, float dx) {
    const picture_map map([&] { face_draw(100, 100, tex_x, 46, dx, 22, 1); });
    int most = 0;
    for (int x = 110; x < 90 + static_cast<int>(dx); ++x)
      most = std::max(most, map.times(x, 111));
    return most > map.times(102, 111);
  };
  EXPECT_TRUE(is_text(54, 89));
  EXPECT_FALSE(is_text(150, 100));
  UTL_translate_clear();
  EXPECT_FALSE(is_text(54, 89));
}

TEST_F(Wizard, WhereAClickOrAResultLeads) {
  const struct {
    const char* label;
    script says;
    float x, y;  // 0 for no click
    page_function leads_to;
    bool quits = false;
  } rows[] = {
      {"no click", {0, page_b, page_b}, 0, 0, page_a},
      {"next", {0, nullptr, page_b}, next_x, row, page_b},
      {"back", {0, page_b}, back_x, row, page_b},
      {"a greyed next", {0, page_b}, next_x, row, page_a},
      {"left of next", {0, nullptr, page_b}, 669, row, page_a},
      {"above the row", {0, nullptr, page_b}, next_x, 34.5f, page_a},
      {"an extra button", {0, nullptr, nullptr, page_b}, 500, 350, page_b},
      {"a result", {1, nullptr, page_b}, 0, 0, page_b},
      {"it beats back", {1, page_a, page_b}, back_x, row, page_b},
      {"it leads nowhere", {1}, 0, 0, page_a},
      {"a shut one, by its button", {0, nullptr, nullptr, page_shut}, 500, 350, page_a},
      {"by next", {0, nullptr, page_shut}, next_x, row, page_a},
      {"by a result", {1, nullptr, page_shut}, 0, 0, page_a},
      {"quit", {0, nullptr, page_b}, quit_x, row, page_a, true},
      {"it is not there on the last page", {0, nullptr, wizard_quit}, quit_x, row, page_a},
      {"but where next was", {0, nullptr, wizard_quit}, 690, row, wizard_quit},
  };
  for (const auto& test : rows) {
    SCOPED_TRACE(test.label);
    said = test.says;
    kills = leaves = app_done = 0;
    g_wizard = page_a;
    test.x > 0 ? frame_with_click(test.x, test.y) : frame();
    EXPECT_EQ(g_wizard, test.leads_to);
    EXPECT_EQ(leaves, g_wizard != page_a) << "a page is told when it is left";
    EXPECT_EQ(app_done, test.quits);
    EXPECT_EQ(kills, test.quits) << "and when the program ends";
  }
  for (const page_function last : {page_function(wizard_quit), page_function(nullptr)}) {
    app_done = 0;
    g_wizard = last;
    frame();
    EXPECT_EQ(app_done, 1);
  }
}

// Each click is the frame's only one, on a page that has just been drawn without.
TEST_F(Wizard, WhatAClickOnAPageDoes) {
  tman.load_texture(tex_fail_silent, t_map, 1281, tex_load_now, "scratch_array:background");
  const auto licence = [] {
    wizard_screen screen;
    demo_eula.show(0, screen);
  };
  const auto mirrors = [] {
    wizard_screen screen;
    screen.show_servers = 1;
    wizard_draw_record(screen);
  };
  // How many copies and mirrors there are, where the click is, and then: the licence, the copy, how
  // many sectors, the mirror.
  const std::tuple<const char*, void (*)(), int, float, float, const char*> rows[] = {
      {"nothing", licence, 1, 500, 300, "0 1 0 0"},
      {"the licence's words", licence, 1, 300, 104, "1 1 0 0"},
      {"its box", licence, 1, 230, 103, "1 1 0 0"},
      {"the last copy that has room", UTIL_pick_install, 13, 285, 154, "0 10 0 0"},
      {"the first copy", UTIL_pick_install, 2, 285, 404, "0 0 0 0"},
      {"the second", UTIL_pick_install, 2, 285, 379, "0 1 0 0"},
      {"the first one's mark", UTIL_pick_install, 2, 250, 403, "0 0 0 0"},
      {"beside them", UTIL_pick_install, 2, 270, 404, "0 1 0 0"},
      {"a sector", UTIL_world_map, 1, map_x + 3.5f * map_cell, map_y + 4.5f * map_cell, "0 1 1 0"},
      {"all of them", UTIL_world_map, 1, 480, 130, "0 1 648 0"},
      {"the right edge of all", UTIL_world_map, 1, 583, 130, "0 1 648 0"},
      {"none", UTIL_world_map, 1, 750, 130, "0 1 0 0"},
      {"a mirror", mirrors, 3, 60, 82, "0 1 0 2"},
      {"a mirror's mark", mirrors, 3, 30, 121, "0 1 0 1"},
      {"the top one of more than have room", mirrors, 10, 60, 362, "0 1 0 2"},
  };
  for (const auto& [label, draw, many, x, y, after] : rows) {
    all_skyroots.clear();
    for (int i = 0; i < many; ++i)
      all_skyroots.push_back(std::to_string(i));
    accept_eula_demo = 0;
    dest_dir_path = "1";
    stg = stg_record();
    stg.server_count = many;
    if (many == 10) stg.server_index = 9;
    wizard_set_steps(std::vector<wizard_step>(6, {"Step", demo_start}));
    for (const bool clicked : {false, true}) {
      clear();
      clicked ? click(x, y) : move(x, y);
      mnw.mouse_held = clicked;
      wizard_draw_frame();
      draw();
    }
    std::ostringstream then;
    then << accept_eula_demo << ' ' << dest_dir_path << ' '
         << std::count(std::begin(stg.sector_selected), std::end(stg.sector_selected), 1) << ' '
         << stg.server_index;
    EXPECT_EQ(then.str(), after) << label;
  }
}

TEST_F(Wizard, TheLastPageHasATickAndAMainButton) {
  wizard_screen screen;
  screen.title = "  ";
  screen.outcome = outcome_good;
  screen.next = wizard_quit;
  screen.button_names = {"Start"};
  const auto draw = [&screen] { wizard_draw_record(screen); };
  colr.assign(col_good, 0, 0, 0);
  colr.assign(col_white, 1, 0, 0);
  draw();
  const int tick_x = 484 - OGL_string_width(screen.title) / 2;
  const auto light = [&](int dx, int y) { return read_pixel(tick_x + dx, y).r; };
  for (const auto& [dx, y] : {std::pair(-3, 480), std::pair(1, 482), std::pair(3, 484)})
    EXPECT_GT(light(dx, y), 200) << "a stroke of the tick at " << dx;
  EXPECT_EQ(light(-1, 483), 0) << "and it is thin";
  const auto face = [](const std::function<void()>& drawn) {
    clear();
    move(0, 0);
    drawn();
    const std::vector<unsigned char> all = read_picture();
    return std::vector(all.begin() + 340 * window_dx * 4, all.begin() + 360 * window_dx * 4);
  };
  const auto main_button = face([] { BTN_main_action(500, 350, 250, "Start"); });
  EXPECT_TRUE(face(draw) == main_button);
  EXPECT_FALSE(face([] { BTN_action(500, 350, 250, 0, 1, "Start", ""); }) == main_button);
}

TEST(WizardText, FormatsAreFilledByHand) {
  EXPECT_EQ(str_fill("%d of %d, %s", {"1", "2", "three"}), "1 of 2, three");
  EXPECT_EQ(str_fill("%s", {"%s"}), "%s");
  EXPECT_EQ(str_fill("100 % of %s and %s", {"x"}), "100 % of x and %s");
  EXPECT_EQ(str_fill("%", {"x"}), "%");
}

TEST(WizardText, ProgressOfATransfer) {
  next = transfer_record();
  stg = stg_record();
  stg.todo_zip_kb = 1000;
  xtim.now_sec = 0.5f;  // less than a second counts as one
  next.done_zip_kb = 200;
  next.in_flight_kb = 50;
  next.stream_active[0] = next.stream_active[2] = 1;
  patch_figures figures = patch_progress();
  EXPECT_DOUBLE_EQ(figures.done_kb, 250);
  EXPECT_FLOAT_EQ(figures.kb_per_second, 250);
  EXPECT_FLOAT_EQ(figures.seconds_left, 3);
  EXPECT_EQ(figures.streams, 2);
  xtim.now_sec = 10;
  next.done_zip_kb = 2000;  // files that were fetched twice
  figures = patch_progress();
  EXPECT_FLOAT_EQ(figures.seconds_left, 0);
  next.done_zip_kb = 0;
  next.in_flight_kb = 0;
  EXPECT_FLOAT_EQ(patch_progress().seconds_left, 0);
}

// A job without weight, whose fraction would be 0 / 0, ends and shows no nonsense on its way.
TEST(WizardText, TransferOfNothing) {
  sim_info.clear();
  stg = stg_record();
  next = transfer_record();
  dest_dir_path = testing::TempDir() + "nothing_to_do/";
  float ratio = 0;
  int running = 0;
  const patch_flow flow = {page_a, page_b, &running, &ratio};
  wizard_screen screen;
  for (int frames = 0; run_patch(flow, 1, screen) == 0; ++frames)
    ASSERT_LT(frames, 10);
  EXPECT_EQ(screen.next, page_b);
  EXPECT_GE(ratio, 0);
  EXPECT_LE(ratio, 1);
  EXPECT_EQ(running, 0);
}

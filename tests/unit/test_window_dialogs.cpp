// Windows and dialogs: sizes, close boxes, tooltip and pointer, the start, popups.

#include "corekit/base/hl_app.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/colr.h"
#include "corekit/draw/tman.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/hl_mnw_menu.h"
#include "corekit/widgets/keys_codes.h"
#include "corekit/window/hl_init_window.h"
#include "tests/unit/test_files_scratch.h"
#include "tests/unit/window_fixture.h"

namespace {

class WindowDialogs : public window_fixture {};

TEST_F(WindowDialogs, PicturesSuitTheWindow) {
  constexpr int ink = 43, plain = 512, sharper = 1024;
  const struct {
    int dx, dy, interface_dx;
  } rows[] = {{1600, 1200, sharper}, {1000, 2000, sharper}, {2000, 600, plain},
              {640, 480, plain},     {820, 615, sharper},   {800, 600, plain}};
  const float red = colr[ink].r;
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.dx) + " by " + std::to_string(row.dy));
    colr.assign(ink, 0, 0, 0);
    const float before = tman.record(t_interface).dx;
    SDL_SetWindowSize(SDL_GL_GetCurrentWindow(), row.dx, row.dy);
    for (int frame = 0; frame < 3; ++frame)
      MACIBM_event_proc();
    const float now = tman.record(t_interface).dx;
    EXPECT_EQ(now, row.interface_dx);
    EXPECT_EQ(tman.record(t_background).dx, row.interface_dx * 2);
    // The palette comes with the pictures, whichever they are, and they come only when they change.
    EXPECT_EQ(colr[ink].r, now == before ? 0 : red);
  }
}

TEST_F(WindowDialogs, EveryDialogIsCentredInItsSize) {
  const struct {
    const char* label;
    int id, pix_dx, pix_dy;
    float dx, dy, x_off, y_off;
    int modal;
  } rows[] = {
      {"main", 0, 800, 600, 800, 600, 0, 0, 0},
      {"settings", 2, 800, 600, 600, 380, 100, 110, 1},
      {"question", 995, 800, 600, 300, 166, 250, 217, 1},
      {"open", 998, 800, 600, 561, 474, 120, 63, 1},
      {"twice as wide as high is one monitor", 2, 1200, 600, 600, 380, 300, 110, 1},
      {"wider spans two, and it keeps to one", 2, 1700, 600, 600, 380, 125, 110, 1},
      {"smaller than the dialog", 2, 500, 300, 600, 380, 0, 0, 1},
      {"an odd rest rounds away from zero", 2, 801, 601, 600, 380, 101, 111, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    mnw.pix_dx = row.pix_dx;
    mnw.pix_dy = row.pix_dy;
    mnw.mouse_held = mnw.mouse_clicked = mnw.wheel = 1;
    mnw.popup_code = 3;
    focus_id = 7;
    MACIBM_startwind(row.id, 0);
    EXPECT_EQ(mnw.win_id, row.id);
    EXPECT_EQ(mnw.modal_up, row.modal);
    EXPECT_FLOAT_EQ(mnw.win_dx, row.dx);
    EXPECT_FLOAT_EQ(mnw.win_dy, row.dy);
    EXPECT_FLOAT_EQ(mnw.x_off, row.x_off);
    EXPECT_FLOAT_EQ(mnw.y_off, row.y_off);
    EXPECT_EQ(mnw.mouse_held + mnw.mouse_clicked + mnw.wheel, 0);
    EXPECT_EQ(mnw.popup_code, -1);
    EXPECT_EQ(focus_id, 0);
    EXPECT_EQ(stls.window_title.empty(), row.id == 0);
  }
}

TEST_F(WindowDialogs, APressInATopCornerClosesWhatMayBeClosed) {
  const struct {
    const char* label;
    int window;
    float x, y;  // of the dialog
    int force;
    bool closes;
  } rows[] = {
      {"right box", win_prefs, 590, 370, 0, true},
      {"its inner corner", win_prefs, 25, 360, 0, true},
      {"below it", win_prefs, 12, 359, 0, false},
      {"between the boxes", win_prefs, 300, 370, 0, false},
      {"about box", win_about, 5, 295, 0, true},
      {"alert by force", win_alert, 5, 245, 1, false},
      {"open", win_file_open, 5, 470, 1, false},
  };
  // The whole way: a press on the picture of the box.
  MACIBM_startwind(win_prefs, 0);
  push_button(100 + 16, 600 - (110 + 370), true);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.win_id, win_main);
  EXPECT_EQ(mnw.mouse_clicked, 0) << "the wizard below must not take the click";
  for (const auto& row : rows) {
    MACIBM_startwind(row.window, 0);
    mnw.mouse_x = row.x;
    mnw.mouse_y = row.y;
    return_hit = 1;
    MACIBM_handleclick(row.force);
    EXPECT_EQ(mnw.win_id, row.closes ? win_main : row.window) << row.label;
    EXPECT_EQ(return_hit, row.closes ? 0 : 1) << row.label;
  }
}

TEST_F(WindowDialogs, ATooltipShowsWhenTheMouseHasRested) {
  const auto differs = [this](float rested) {
    const auto shown = [&](const char* help) {
      return next_shown([&] {
        OGL_plot_back_col();
        mnw.mouse_x += 1;
        xtim.now_sec = 50;
        mouse_help_per_wind(win_main);
        xtim.now_sec += rested;
        stls.hover_help = help;
        mouse_help_per_wind(win_main);
        EXPECT_EQ(stls.hover_help, "") << "shown or not, it is for one frame";
        OGL_sbuff();
      });
    };
    mnw.mouse_x = 300;
    mnw.mouse_y = 300;
    const auto without = shown("");
    mnw.mouse_x = 300;
    return shown("What this does.") != without;
  };
  EXPECT_FALSE(differs(0.0f));
  EXPECT_FALSE(differs(1.0f));
  EXPECT_TRUE(differs(1.1f));
}

TEST_F(WindowDialogs, ThePointerHidesWhenNothingHappens) {
  const struct {
    const char* label;
    int window;
    float idle;
    int mode, shown;
  } rows[] = {
      {"just before", win_main, 10, cursor_arrow, 1},
      {"after ten seconds", win_main, 10.5f, cursor_arrow, 0},
      {"hidden by a page", win_main, 0, cursor_hidden, 0},
      {"never in an alert", win_alert, 0, cursor_hidden, 1},
      {"a digit to raise", win_main, 20, cursor_up, 1},
  };
  for (const auto& row : rows) {
    xtim.now_sec = 100;
    mnw.last_action = 100 - row.idle;
    mnw.cursor_mode = row.mode;
    mouse_help_per_wind(row.window);
    EXPECT_EQ(SDL_ShowCursor(SDL_QUERY), row.shown) << row.label;
  }
}

TEST_F(WindowDialogs, TheSplashShowsUntilTheFirstPage) {
  MACIBM_startwind(win_none, 0);
  EXPECT_EQ(mnw.win_id, win_none);
  const auto splash = next_shown([] { MACIBM_show_init("Starting application."); });
  ASSERT_FALSE(splash.empty());
  const auto other = next_shown([] { MACIBM_show_init("Something else."); });
  EXPECT_NE(other, splash);
  EXPECT_EQ(next_shown([] { tman_announce("Something else."); }), other) << "loading is told there";
  EXPECT_NE(next_shown([] { MACIBM_show_init("Starting application.", 0.5f); }), splash);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.win_id, win_main);
  EXPECT_TRUE(next_shown([] { MACIBM_show_init("Loading bitmap x."); }).empty());
}

// --- menus --------------------------------------------------------------------------------------

class WindowMenus : public window_fixture {
 protected:
  // Opens a popup of four entries, the second a separator, below (100, 300) to (200, 320).
  static void open_popup() {
    MACIBM_create_menu(popup_slot, "");
    int number = 0;
    for (const char* text : {"one", "-", "three", "four"})
      MACIBM_append_menu(popup_slot, number++, text);
    MACIBM_open_popup(77, -1, 100, 300, 200, 320);
    select_popup_code = 0;
    popup_menu_select = -1;
  }
  // A press at a place of the main window.
  static void press(int x, int y) {
    push_button(x, 600 - y, true);
    MACIBM_event_proc();
  }
};

TEST_F(WindowMenus, AnOpenPopupTakesTheKeys) {
  const struct {
    const char* label;
    std::vector<int> vkeys;
    int flags;   // of the last
    int letter;  // typed before it; 0 none
    int picked;  // -1 none
    bool stays;
  } rows[] = {
      {"nothing is lit yet", {vk_return}, key_down, 0, -1, true},
      {"over the separator", {vk_down, vk_down, vk_return}, key_down, 0, 2, false},
      {"and back over it", {vk_end, vk_up, vk_up, vk_space}, key_down, 0, 0, false},
      {"no farther than the ends", {vk_end, vk_down, vk_next, vk_return}, key_down, 0, 3, false},
      {"a held Return picks nothing", {vk_down, vk_return}, 0, 0, -1, true},
      {"Escape closes", {vk_down, vk_escape}, key_down, 0, -1, false},
      {"Home", {vk_home, vk_return}, key_down, 0, 0, false},
      {"a page down", {vk_next, vk_return}, key_down, 0, 2, false},
      {"a page up", {vk_end, vk_prior, vk_return}, key_down, 0, 0, false},
      {"a letter lights", {vk_home, vk_return}, key_down, 'T', 2, false},
      {"another leaves it", {vk_end, vk_return}, key_down, 'x', 3, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    open_popup();
    for (size_t i = 0; i + 1 < row.vkeys.size(); ++i)
      EXPECT_EQ(menu_take_key(0, row.vkeys[i], key_down), 1);
    EXPECT_EQ(menu_take_key('x', 88, key_up), 0) << "a key that goes up is for its binding";
    if (row.letter) menu_take_key(row.letter, 84, key_down);
    EXPECT_EQ(menu_take_key(0, row.vkeys.back(), row.flags), 1);
    EXPECT_EQ(popup_menu_select, row.picked);
    EXPECT_EQ(mnw.popup_code == popup_slot, row.stays);
    mnw.popup_code = -1;
    EXPECT_EQ(menu_take_key(0, vk_down, key_down), 0) << "no menu is open";
  }
}

TEST_F(WindowMenus, APopupReportsWhatWasPicked) {
  const struct {
    const char* label;
    int x, y;
    int picked;  // -1 none
    bool stays;
  } rows[] = {
      {"its lower edge", 150, 287, 0, false}, {"a separator", 150, 280, -1, true},
      {"the last row", 110, 245, 3, false},   {"below the list", 150, 243, -1, false},
      {"left of it", 99, 290, -1, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    int clicks = 0;
    page_body = [&] { clicks += mnw.mouse_clicked; };
    open_popup();
    EXPECT_EQ(mnw.popup_code, popup_slot);
    press(row.x, row.y);
    EXPECT_EQ(select_popup_code, row.picked < 0 ? 0 : 77);
    EXPECT_EQ(popup_menu_select, row.picked);
    EXPECT_EQ(mnw.popup_code, row.stays ? popup_slot : -1);
    EXPECT_EQ(clicks, 0) << "the page below must not see the press";
  }
}

// 21 of its 60 rows have room; a press on the highest tells which is there.
TEST_F(WindowMenus, ALongPopupScrolls) {
  const struct {
    const char* label;
    std::vector<int> vkeys;
    int wheel, picked;
  } rows[] = {
      {"at its start", {}, 0, 0},
      {"to its end", {vk_end}, 0, 39},
      {"a page, and one more", {vk_home, vk_next, vk_down}, 0, 1},
      {"and back", {vk_end, vk_home}, 0, 0},
      {"the wheel", {}, -2, 2},
      {"no farther", {}, 5, 0},
      {"back from the end", {vk_end}, 3, 36},
      {"nor farther here", {vk_end}, -90, 39},
  };
  for (const auto& row : rows) {
    open_popup();
    for (int i = 4; i < 60; ++i)
      MACIBM_append_menu(popup_slot, i, "more");
    menu[popup_slot].items[1].text = "two";
    for (const int vkey : row.vkeys)
      menu_take_key(0, vkey, key_down);
    SDL_Event wheel = {};
    wheel.type = SDL_MOUSEWHEEL;
    wheel.wheel.y = row.wheel;
    SDL_PushEvent(&wheel);
    MACIBM_event_proc();
    press(150, 299);
    EXPECT_EQ(popup_menu_select, row.picked) << row.label;
  }
}

TEST_F(WindowMenus, AFileOfMenusWithAKeywordOrWithout) {
  const scratch_folder folder;
  const char groups[] = "2 File\n10 Open it\n11 -\n\n4\tView\r\n20  Far\n\n";
  for (const char* keyword : {"", "MENUS\n", "MENUS\n\n"}) {
    MACIBM_clear_menus(*keyword != 0);  // or a slot is made when it is named
    folder.file("menus/english/m.txt", std::string("I\n900 version\n") + keyword + groups);
    MACIBM_read_menus(folder.path(), "m.txt");
    std::string read;
    for (const menu_record& m : menu) {
      if (m.title.empty()) continue;
      read += '[' + m.title + ']';
      for (const menu_item& item : m.items)
        read += std::to_string(item.number) + item.text + ',';
    }
    EXPECT_EQ(read, "[File]10Open it,11-,[View]20Far,") << keyword;
    EXPECT_EQ(menu[2].title, "File");
  }
}

TEST_F(WindowMenus, EscapeClosesAPopupAlone) {
  int escapes = 0;
  page_body = [&] { escapes += escape_hit; };
  open_popup();
  for (const int behind : {0, 1}) {
    push_key(SDLK_ESCAPE);
    MACIBM_event_proc();
    EXPECT_EQ(mnw.popup_code, -1);
    EXPECT_EQ(select_popup_code, 0);
    EXPECT_EQ(escapes, behind) << "the second is for what lies behind it";
  }
}

TEST_F(WindowMenus, ABarOpensItsMenus) {
  static std::string handled;
  handled.clear();
  const auto handle = std::exchange(APP.handle_menu, [](int slot, int item) {
    handled += std::to_string(slot) + ':' + std::to_string(item);
  });
  MACIBM_clear_menus(1);
  MACIBM_create_menu(2, "File");
  MACIBM_create_menu(4, "View");
  MACIBM_append_menu(2, 10, "Open it");
  MACIBM_append_menu(2, 11, "-");
  MACIBM_append_menu(4, 20, "Far");
  const auto shown = [] {
    return next_shown([] {
      push_motion(400, 300);  // an input is answered at once
      MACIBM_event_proc();
    });
  };
  const auto plain = shown();
  const auto middle = [](int slot) {
    return static_cast<int>(menu[slot].left + menu[slot].right) / 2;
  };
  const int title = 598;
  ASSERT_LT(menu[2].right, menu[4].left);
  EXPECT_EQ(menu[2].right - menu[2].left - menu[4].right + menu[4].left,
            OGL_string_width("File") - OGL_string_width("View"));
  const auto row = [](int slot) { return static_cast<int>(menu[slot].bottom) - 9; };
  press(middle(2), title);
  EXPECT_EQ(mnw.popup_code, 2);
  const auto open = shown();
  EXPECT_TRUE(open.size() == plain.size() && open != plain);
  press(middle(2), title);
  EXPECT_EQ(mnw.popup_code, -1) << "a second press closes";
  press((static_cast<int>(menu[2].right + menu[4].left)) / 2, title);
  EXPECT_EQ(mnw.popup_code, -1) << "between the titles";
  press(middle(4), title);
  push_motion(middle(2), 600 - title);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, 2) << "the mouse leads from one to the other";
  push_motion(middle(2), 600 - row(2));
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, 2);
  press(middle(2), row(2));
  EXPECT_EQ(handled, "2:10");
  EXPECT_EQ(mnw.popup_code, -1);
  press(middle(4), title);
  push_key(SDLK_ESCAPE);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, -1);
  press(middle(4), title);
  press(middle(4), row(4));
  EXPECT_EQ(handled, "2:104:20");
  APP.handle_menu = handle;
  MACIBM_clear_menus(1);
}

TEST_F(WindowMenus, APopupWithoutRoomBelowOpensAbove) {
  open_popup();
  MACIBM_open_popup(77, -1, 100, 20, 200, 40);
  press(150, 90);  // the top row of a list that ends at its widget's top
  EXPECT_EQ(popup_menu_select, 0);
}

}  // namespace

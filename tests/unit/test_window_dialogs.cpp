// Windows and dialogs: sizes and offsets, close boxes, tooltip and pointer, contexts, the start.

#include <cmath>
#include <thread>

#include "corekit/GenC/hl_init.h"
#include "corekit/GenC/hl_mnw.h"
#include "corekit/GenC/hl_mnw_context.h"
#include "corekit/GenC/hl_mnw_menu.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/colr.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/OOPS_cpp/tman.h"
#include "corekit/OOPS_cpp/xtim.h"
#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "tests/unit/window_fixture.h"

namespace {

class WindowDialogs : public window_fixture {};

TEST_F(WindowDialogs, EveryDialogIsCentredInItsSize) {
  const struct {
    int id;
    float dx, dy, x_off, y_off;
    int modal;
  } rows[] = {
      {0, 800, 600, 0, 0, 0},       {1, 500, 300, 150, 150, 1},   {2, 600, 380, 100, 110, 1},
      {992, 561, 474, 120, 63, 1},  {993, 600, 300, 100, 150, 1}, {994, 420, 250, 190, 175, 1},
      {995, 300, 166, 250, 217, 1}, {996, 700, 146, 50, 227, 1},  {997, 700, 206, 50, 197, 1},
      {998, 561, 474, 120, 63, 1},  {999, 330, 474, 235, 63, 1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.id);
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

TEST_F(WindowDialogs, OtherWindowSizesAreAllowedFor) {
  const struct {
    const char* label;
    int pix_dx, pix_dy;
    float x_off, y_off;
  } rows[] = {
      {"twice as wide as high is one monitor", 1200, 600, 300, 110},
      {"wider spans two, and the dialog keeps to one", 1700, 600, 125, 110},
      {"smaller than the dialog", 500, 300, 0, 0},
      {"an odd rest rounds away from zero", 801, 601, 101, 111},
  };
  for (const auto& row : rows) {
    mnw.pix_dx = row.pix_dx;
    mnw.pix_dy = row.pix_dy;
    MACIBM_startwind(win_prefs, 0);
    EXPECT_FLOAT_EQ(mnw.x_off, row.x_off) << row.label;
    EXPECT_FLOAT_EQ(mnw.y_off, row.y_off) << row.label;
  }
  mnw.pix_dx = 800;
  mnw.pix_dy = 600;
}

TEST_F(WindowDialogs, APressInATopCornerClosesWhatMayBeClosed) {
  const struct {
    const char* label;
    int window;
    float x, y;  // of the dialog
    int force;
    bool closes;
  } rows[] = {
      {"left box", win_prefs, 12, 370, 0, true},
      {"right box", win_prefs, 590, 370, 0, true},
      {"its inner corner", win_prefs, 25, 360, 0, true},
      {"beside it", win_prefs, 26, 370, 0, false},
      {"below it", win_prefs, 12, 359, 0, false},
      {"between the boxes", win_prefs, 300, 370, 0, false},
      {"right of the dialog", win_prefs, 601, 370, 0, false},
      {"by force", win_prefs, 300, 200, 1, true},
      {"about box", win_about, 5, 295, 0, true},
      {"question", win_abort_alert, 5, 200, 0, true},
      {"alert", win_alert, 5, 245, 0, false},
      {"alert by force", win_alert, 5, 245, 1, false},
      {"nuke question", win_nuke_alert, 5, 160, 1, false},
      {"changed file", win_select_alert, 5, 140, 1, false},
      {"open", win_file_open, 5, 470, 1, false},
      {"save", win_file_save, 5, 470, 1, false},
  };
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

// The whole way: a press on the picture of the box.
TEST_F(WindowDialogs, AClickOnTheCloseBoxClosesTheSettings) {
  MACIBM_startwind(win_prefs, 0);
  push_button(100 + 16, 600 - (110 + 370), true);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.win_id, win_main);
  EXPECT_EQ(mnw.mouse_clicked, 0) << "the wizard below must not take the click";
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
    int mode;
    int shown;
  } rows[] = {
      {"at once", win_main, 0, cursor_arrow, 1},
      {"just before", win_main, 10, cursor_arrow, 1},
      {"after ten seconds", win_main, 10.5f, cursor_arrow, 0},
      {"not in the settings", win_prefs, 20, cursor_arrow, 1},
      {"not in an alert", win_alert, 20, cursor_arrow, 1},
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

TEST_F(WindowDialogs, TheWindowIsFixedAndItsContextCompatible) {
  SDL_Window* window = SDL_GL_GetCurrentWindow();
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(SDL_GetWindowFlags(window) & SDL_WINDOW_RESIZABLE, 0u);
  EXPECT_STREQ(SDL_GetWindowTitle(window), "Skyvane Unit Tests");
  EXPECT_EQ(mnw.pix_dx, 800);
  EXPECT_EQ(mnw.pix_dy, 600);
  int value = 0;
  SDL_GL_GetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, &value);
  EXPECT_EQ(value, SDL_GL_CONTEXT_PROFILE_COMPATIBILITY);
  EXPECT_EQ(MACIBM_make_context(0), 0) << "it is open already";
  EXPECT_EQ(MACIBM_make_context(1), 0) << "there is one window only";
}

TEST_F(WindowDialogs, AnotherThreadSharesTheWindowsTextures) {
  SDL_GLContext main_context = SDL_GL_GetCurrentContext();
  void* loader = MACIBM_make_context_loader();
  ASSERT_NE(loader, nullptr);
  EXPECT_EQ(SDL_GL_GetCurrentContext(), main_context) << "this thread draws on as before";

  GLuint made = 0;
  int bound = 0;
  std::thread other([&] {
    bound = MACIBM_set_context_loader(loader);
    if (!bound) return;
    glGenTextures(1, &made);
    glBindTexture(GL_TEXTURE_2D, made);
    const unsigned char pixel[4] = {10, 20, 30, 40};
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    glFinish();
    SDL_GL_MakeCurrent(nullptr, nullptr);
  });
  other.join();
  ASSERT_EQ(bound, 1);
  EXPECT_TRUE(glIsTexture(made));
  unsigned char back[4] = {};
  glBindTexture(GL_TEXTURE_2D, made);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back);
  EXPECT_EQ(back[2], 30);
  TEX_reset_bind();
}

// --- what the start has loaded ------------------------------------------------------------------

TEST_F(WindowDialogs, TheStartLoadsThePicturesAtTheirPlaces) {
  const struct {
    int ref;
    float dx, dy;
    int format, flags;
  } rows[] = {
      {392, 512, 512, GL_RGBA, 1282},
      {393, 1024, 128, GL_RGBA, 1282},
      {394, 512, 512, GL_RGBA, 1282},
      {395, 1024, 1024, GL_RGB, 1281},
  };
  for (const auto& row : rows) {
    const ref_dat_struct& dat = tman.record(row.ref);
    EXPECT_FLOAT_EQ(dat.dx, row.dx) << row.ref;
    EXPECT_FLOAT_EQ(dat.dy, row.dy) << row.ref;
    EXPECT_EQ(dat.format, row.format) << row.ref;
    EXPECT_EQ(dat.flags, row.flags) << row.ref;
    EXPECT_NE(dat.gl_id, 0u) << row.ref;
  }
}

TEST_F(WindowDialogs, ThePaletteIsInTheInterfaceImage) {
  const struct {
    int colour;
    int r, g, b;
  } rows[] = {
      {34, 51, 67, 86},    {35, 78, 78, 73},    {36, 13, 27, 44}, {37, 125, 126, 121},
      {38, 255, 255, 255}, {40, 238, 238, 238}, {41, 13, 27, 44}, {42, 93, 99, 110},
      {43, 34, 41, 53},    {44, 220, 220, 220}, {45, 39, 44, 52}, {46, 36, 43, 53},
      {47, 127, 220, 175},
  };
  for (const auto& row : rows) {
    const colr_rgb& rgb = colr[row.colour];
    EXPECT_EQ(std::lround(rgb.r * 255), row.r) << row.colour;
    EXPECT_EQ(std::lround(rgb.g * 255), row.g) << row.colour;
    EXPECT_EQ(std::lround(rgb.b * 255), row.b) << row.colour;
  }
  EXPECT_FLOAT_EQ(colr[39].r, (78.0f + 255.0f) / 2 / 255);
  EXPECT_FLOAT_EQ(colr[39].b, (73.0f + 255.0f) / 2 / 255);
}

TEST_F(WindowDialogs, TheSplashShowsUntilTheFirstPage) {
  MACIBM_startwind(win_none, 0);
  EXPECT_EQ(mnw.win_id, win_none);
  const auto splash = next_shown([] { MACIBM_show_init("Starting application."); });
  ASSERT_FALSE(splash.empty());
  EXPECT_NE(next_shown([] { MACIBM_show_init("Something else."); }), splash);
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
    MACIBM_open_popup(77, 100, 300, 200, 320);
    select_popup_code = 0;
    popup_menu_select = -1;
  }
  // A press at a place of the main window.
  static void press(int x, int y) {
    push_button(x, 600 - y, true);
    MACIBM_event_proc();
  }
};

TEST_F(WindowMenus, APopupReportsWhatWasPicked) {
  const struct {
    const char* label;
    int x, y;
    int picked;  // -1 none
    bool stays;
  } rows[] = {
      {"the first row", 150, 299, 0, false}, {"its lower edge", 150, 287, 0, false},
      {"a separator", 150, 280, -1, true},   {"the third row", 150, 265, 2, false},
      {"the last row", 110, 245, 3, false},  {"below the list", 150, 243, -1, false},
      {"left of it", 99, 290, -1, false},    {"far away", 600, 500, -1, false},
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

TEST_F(WindowMenus, EscapeClosesAPopup) {
  open_popup();
  push_key(SDLK_ESCAPE);
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, -1);
  EXPECT_EQ(select_popup_code, 0);
}

TEST_F(WindowMenus, APopupWithoutRoomBelowOpensAbove) {
  open_popup();
  MACIBM_open_popup(77, 100, 20, 200, 40);
  press(150, 90);  // the top row of a list that ends at its widget's top
  EXPECT_EQ(popup_menu_select, 0);
}

TEST_F(WindowMenus, ALongPopupScrolls) {
  MACIBM_create_menu(popup_slot, "");
  for (int i = 0; i < 200; ++i)
    MACIBM_append_menu(popup_slot, i, std::to_string(i));
  MACIBM_open_popup(77, 100, 300, 200, 320);
  SDL_Event event = {};
  event.type = SDL_MOUSEWHEEL;
  event.wheel.y = -500;
  SDL_PushEvent(&event);
  MACIBM_event_proc();
  press(150, 300 - 21 * 14 + 1);  // the last row that has room
  EXPECT_EQ(popup_menu_select, 199);
}

TEST_F(WindowMenus, TheBarOpensAndFollowsTheMouse) {
  MACIBM_create_menu(3, "File");
  MACIBM_append_menu(3, 31, "Quit");
  MACIBM_create_menu(5, "Edit");
  MACIBM_append_menu(5, 51, "Copy");
  const auto over_edit = [] { push_motion(15 + OGL_string_width("File") + 20, 8); };
  press(12, 592);
  EXPECT_EQ(mnw.popup_code, 3);
  over_edit();
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, 5);
  press(12, 592);
  EXPECT_EQ(mnw.popup_code, 3) << "a press on another title opens that";
  press(12, 592);
  EXPECT_EQ(mnw.popup_code, -1) << "and on the same one closes it";
  over_edit();
  MACIBM_event_proc();
  EXPECT_EQ(mnw.popup_code, -1) << "a closed menu follows nothing";
}

}  // namespace

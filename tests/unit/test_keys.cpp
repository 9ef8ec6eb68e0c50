// The way of a key: from the event to widgets, hit flags and bindings; text at the border.

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include "corekit/Platform/PLT_keys.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/cmnd.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys.h"
#include "corekit/window/hl_mnw.h"

namespace {

// Places of keys, by the USB keyboard page.
constexpr int p_a = 4, p_e = 8, p_q = 20, p_1 = 30, p_0 = 39, p_return = 40, p_escape = 41,
              p_back = 42, p_tab = 43, p_delete = 76, p_right = 79, p_pad_enter = 88, p_pad_1 = 89,
              p_pad_7 = 95;

// A US layout, as the window library gives it.
int us_layout(int hardware) {
  if (hardware >= p_a && hardware <= 29) return 'a' + hardware - p_a;
  if (hardware >= p_1 && hardware < p_0) return '1' + hardware - p_1;
  const std::map<int, int> others = {
      {p_0, '0'}, {p_return, 13}, {p_tab, 9}, {p_delete, 127}, {p_back, 8}};
  return others.contains(hardware) ? others.at(hardware) : 0;
}

class Keys : public testing::Test {
 protected:
  void SetUp() override {
    mnw = mnw_record();
    mnw.win_id = win_main;
    return_hit = escape_hit = delete_hit = 0;
    focus_ring.clear();
    focus_id = 0;
    keys = keys_class();
    keys.start();
    cmnd = cmnd_class();
    PLT_layout_source = us_layout;
  }
  void TearDown() override { mnw_keys = key_handlers(); }
  // One frame's ring: a widget that takes everything, focused.
  void focus_widget(int accept = 1023) {
    focus_ring.clear();
    BTN_register_queue(77, queue, accept, 1);
  }
  // What the widget has got: "ch,vkey,flags " for each key.
  std::string taken() {
    std::string all;
    for (int i = 0; i < queue.count; ++i) {
      all += std::to_string(queue.chars[i]) + "," + std::to_string(queue.vkeys[i]) + "," +
             std::to_string(queue.flags[i]) + " ";
    }
    queue = BTN_key_queue();
    return all;
  }

  BTN_key_queue queue;
};

PLT_key_event event_of(int scancode, const char* text, unsigned modifiers, int symbol = 0,
                       int down = 1, int repeat = 0) {
  PLT_key_event event;
  event.down = down;
  event.repeat = repeat;
  event.scancode = scancode;
  event.symbol = symbol;
  event.modifiers = modifiers;
  std::strncpy(event.text, text, sizeof event.text - 1);
  return event;
}

}  // namespace

TEST_F(Keys, RawKeysBecomeCharacterKeyAndFlags) {
  const std::tuple<const char*, long, long, long, const char*> rows[] = {
      {"a repeat", 5, p_a << 8 | 'a', 0, "97,65,0 "},
      {"Control with Shift", 3, p_a << 8 | 'A', 0x1200, "0,65,13 "},
      {"Command", 3, p_a << 8 | 'a', 0x100, "0,65,8 "},
      {"Enter of the pad", 3, p_pad_enter << 8 | 3, 0, "3,187,8 "},
      {"a place beyond the table", 3, 300 << 8, 0, "0,0,8 "},
      {"nothing at all", 5, 0, 0, ""},
  };
  for (const auto& [label, kind, message, modifiers, expected] : rows) {
    focus_widget();
    keys.handle_key_raw(kind, message, modifiers);
    EXPECT_EQ(taken(), expected) << label;
  }
}

TEST_F(Keys, EventsTypeWhatTheUserSees) {
  const char* euro = "\xE2\x82\xAC";
  const std::tuple<const char*, PLT_key_event, const char*> rows[] = {
      {"an accent", event_of(p_e, "\xC3\xA9", 0, 'e'), "233,69,8 "},
      {"no byte for it", event_of(p_e, euro, 0, 'e'), "0,69,8 "},
      {"Alt is Option", event_of(p_a, "a", plt_alt, 'a'), "0,65,10 "},
      {"a third level by Alt", event_of(p_q, "@", plt_alt, 'q'), "64,81,8 "},
      {"its euro is not typed", event_of(p_e, euro, plt_alt, 'e'), "0,69,10 "},
      {"the desktop's key", event_of(p_a, "a", plt_logo, 'a'), "0,65,8 "},
      {"an arrow", event_of(p_right, "", plt_shift, 0), "29,39,9 "},
      {"pad with Num Lock", event_of(p_pad_7, "7", plt_num_lock, 0), "55,103,8 "},
      {"pad with Num Lock, Shift", event_of(p_pad_1, "", plt_num_lock | plt_shift, 0), "4,35,9 "},
      {"its release", event_of(p_pad_7, "", plt_num_lock, 0, 0), "0,103,16 "},
      {"an input method", event_of(0, "h\xC3\xA9!", 0), "104,0,8 233,0,8 33,0,8 "},
  };
  for (const auto& [label, event, expected] : rows) {
    focus_widget();
    keys.handle_event(event);
    EXPECT_EQ(taken(), expected) << label;
  }
}

TEST_F(Keys, WhatNoWidgetTakesSetsTheFramesFlags) {
  // With what comes of it: Return, Escape, Delete, and the character.
  const std::tuple<const char*, long, long, std::vector<int>> rows[] = {
      {"Return", 3, p_return << 8 | 13, {1, 0, 0, 13}},
      {"Escape", 3, p_escape << 8 | 27, {0, 1, 0, 27}},
      {"Delete", 3, p_delete << 8 | 127, {0, 0, 1, 127}},
      {"a letter", 3, p_a << 8 | 'a', {0, 0, 0, 'a'}},
      {"held, it leaves one page only", 5, p_return << 8 | 13, {0, 0, 0, 13}},
      {"release does not", 4, p_return << 8 | 13, {0, 0, 0, 0}},
  };
  for (const auto& [label, kind, message, flags] : rows) {
    return_hit = escape_hit = delete_hit = keys.last_char = 0;
    keys.handle_key_raw(kind, message, 0);
    EXPECT_EQ((std::vector{return_hit, escape_hit, delete_hit, keys.last_char}), flags) << label;
  }
  focus_widget();
  return_hit = 0;
  keys.handle_key_raw(3, p_return << 8 | 13, 0);
  EXPECT_EQ(return_hit, 0) << "a widget has taken it";
  mnw.win_id = win_alert;
  keys.handle_key_raw(3, p_return << 8 | 13, 0);
  EXPECT_EQ(return_hit, 1) << "in an alert no widget gets a key";
}

TEST_F(Keys, ReturnPressesADialogsDefault) {
  mnw_keys.leave_dialog = [] { MACIBM_handleclick(1); };
  const int command = cmnd.add_cmd("test/return", "");
  keys.bindings.push_back({vk_return, 0, command, 0});
  const std::tuple<int, int, int> rows[] = {{win_prefs, win_main, 0},
                                            {win_about, win_main, 0},
                                            {win_file_open, win_file_open, 0},
                                            {win_main, win_main, 1}};
  for (const auto& [window, after, presses] : rows) {
    return_hit = 0;
    mnw.win_id = window;
    keys.handle_key_raw(3, p_return << 8 | 13, 0);
    EXPECT_EQ(mnw.win_id, after);
    EXPECT_EQ(cmnd.presses[static_cast<size_t>(command)], presses) << window;
  }
}

TEST_F(Keys, BindingsPressAndRelease) {
  const int zoom = cmnd.add_cmd("view/zoom", "Zooms.");
  keys.bindings.push_back({65, key_control, zoom, 0});
  const int& presses = cmnd.presses[static_cast<size_t>(zoom)];
  const long a = p_a << 8 | 'a';
  keys.handle_key_raw(3, a, 0);
  EXPECT_EQ(presses, 0) << "without its modifier";
  keys.handle_key_raw(3, a, 0x1200);
  EXPECT_EQ(presses, 0) << "with one too many";
  keys.handle_key_raw(3, a, 0x1000);
  EXPECT_EQ(presses, 1);
  keys.handle_key_raw(5, a, 0x1000);
  EXPECT_EQ(presses, 1) << "a repeat is no press";
  keys.run_repeat_keys();
  keys.handle_key_raw(4, a, 0);
  EXPECT_EQ(presses, 0) << "the modifier was let go first";
  keys.handle_key_raw(4, a, 0);
  EXPECT_EQ(presses, 0);
}

// By the USB keyboard page, from the place of A on; "." is a key without a name.
TEST(KeyTables, PlacesNamesAndCharacters) {
  std::istringstream names(
      "A B C D E F G H I J K L M N O P Q R S T U V W X Y Z 1 2 3 4 5 6 7 8 9 0 RETURN ESCAPE BACK "
      "TAB SPACE MINUS EQUAL LBRACE RBRACE BACKSLASH BACKSLASH SEMICOLON QUOTE BACKQUOTE COMMA "
      "PERIOD SLASH . F1 F2 F3 F4 F5 F6 F7 F8 F9 F10 F11 F12 SNAPSHOT . . INSERT HOME PRIOR DELETE "
      "END NEXT RIGHT LEFT DOWN UP CLEAR DIVIDE MULTIPLY SUBTRACT ADD ENTER NUMPAD1 NUMPAD2 "
      "NUMPAD3 NUMPAD4 NUMPAD5 NUMPAD6 NUMPAD7 NUMPAD8 NUMPAD9 NUMPAD0 DECIMAL BACKSLASH . . "
      "NUMPAD_EQ F13 F14 F15 F16 F17 F18 F19 F20 F21 F22 F23 F24 EXECUTE HELP . SELECT");
  int place = p_a;
  for (std::string name; names >> name; ++place) {
    const int vkey = PLT_vkey_of_hardware(place);
    EXPECT_EQ(keys_class::vkey_to_str(vkey), name == "." ? "<none>" : "KVLM_VK_" + name) << place;
    EXPECT_EQ(keys_class::str_to_vkey("kvlm_vk_" + name), vkey);
  }
  std::string controls;
  int code = 0;
  for (int i = 0; i < 256; ++i) {
    if (keys_class::vkey_to_code(i) >= 0) {
      EXPECT_EQ(keys_class::vkey_to_code(i), code++) << i;
    }
    if (const int ch = PLT_control_character(i))
      controls += std::to_string(i) + ":" + std::to_string(ch) + " ";
  }
  EXPECT_EQ(code, 110) << "8 9, 12 13, 27, 32-57, 65-90, 96-107, 109-135, 176-189";
  EXPECT_EQ(controls,
            "40:13 41:27 42:8 43:9 74:1 75:11 76:127 77:4 78:12 79:29 80:28 81:31 82:30 88:3 ");
  EXPECT_EQ(keys_class::flag_to_code(key_shift), code);
  for (const int flag : {key_shift, key_option, key_control})
    EXPECT_EQ(keys_class::str_to_flag(keys_class::flag_to_str(flag)), flag);
  EXPECT_EQ(keys_class::str_to_flag("KVLM_VK_A"), 0);
  EXPECT_EQ(PLT_vkey_of_hardware(-1), 0);

  const std::tuple<std::string, std::string, int> rows[] = {
      {"abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ", p_a},
      {"1234567890\r\x1B\b\t ", "!@#$%^&*()", p_1},
      {"-=[]\\", "_+{}|", 45},
      {";'`,./", ":\"~<>?", 51},
      {"\x7F", "", p_delete},
      {"\x03", "", p_pad_enter}};
  for (const auto& [plain, shifted, first] : rows) {
    for (size_t i = 0; i < plain.size() + shifted.size(); ++i) {
      const bool shift = i >= plain.size();
      const size_t at = shift ? i - plain.size() : i;
      int vkey = -1, flags = -1;
      keys_class::ascii_to_vkey(shift ? shifted[at] : plain[at], vkey, flags);
      EXPECT_EQ(vkey, PLT_vkey_of_hardware(first + static_cast<int>(at))) << plain[at];
      EXPECT_EQ(flags, shift ? key_shift : 0) << plain[at];
    }
  }
}

TEST_F(Keys, TheKeyOfACommand) {
  keys.bindings.push_back({0, 0, 5, 0});
  keys.bindings.push_back({65, key_control | key_shift, 5, 0});
  keys.bindings.push_back({vk_delete, 0, 6, 0});
  EXPECT_EQ(keys.get_key_for_cmnd(5), "kvlm_ShiftFlag kvlm_ControlFlag KVLM_VK_A");
  EXPECT_EQ(keys.get_key_for_cmnd(6), "KVLM_VK_DELETE");
  EXPECT_EQ(keys.get_key_for_cmnd(7), "<none>");
}

TEST_F(Keys, CommandsLieInFolders) {
  for (const char* name : {"view/zoom/in", "view/zoom/out", "view/far", "view/", "viewer/x", "top"})
    cmnd.add_cmd(name, "");
  using list = std::vector<std::string>;
  const std::pair<const char*, list> rows[] = {{"view", {"zoom", "far"}},
                                               {"view/zoom/", {"in", "out"}},
                                               {"", {"sim", "view", "viewer", "top"}},
                                               {"none", {}}};
  for (const auto& [path, parts] : rows) {
    list found = {"old"};
    cmnd.get_cmds_in_path(path, found);
    EXPECT_EQ(found, parts) << path;
  }
  testing::internal::CaptureStdout();
  cmnd.print("view");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "zoom\nfar\n");
  for (const int command : {-1, 7, 0}) {  // those that are not there press nothing
    cmnd.press_one(command);
    cmnd.single_press(command);
  }
  EXPECT_EQ(cmnd.presses, (std::vector<int>{1, 0, 0, 0, 0, 0, 0}));
}

TEST(BorderText, BothWays) {
  const std::tuple<std::string, std::string, std::string, std::string, bool> rows[] = {
      {"first and last of two bytes", "\xC2\x80\xC3\xBF", "\x80\xFF", "\x80\xFF", true},
      {"no byte for it", "a\xC4\x80z", "a?z", "az", true},
      {"four bytes", "\xF0\x9F\x98\x80", "?", "", true},
      {"a stray tail", "\x80z", "?z", "z", false},
      {"cut short", "a\xC3", "a?", "a", false},
      {"overlong", "\xC1\xA1", "??", "", false},
      {"overlong of three", "\xE0\x80\xA9", "???", "", false},
      {"a surrogate", "\xED\xA0\x80", "???", "", false},
      {"beyond the last", "\xF4\x90\x80\x80", "????", "", false},
  };
  for (const auto& [label, utf8, with_mark, without, valid] : rows) {
    EXPECT_EQ(PLT_latin1_from_utf8(utf8, '?'), with_mark) << label;
    EXPECT_EQ(PLT_latin1_from_utf8(utf8, 0), without) << label;
    EXPECT_EQ(PLT_is_utf8(utf8), valid) << label;
  }
  std::string all;
  for (int i = 1; i < 256; ++i)
    all += static_cast<char>(i);
  EXPECT_EQ(PLT_latin1_from_utf8(PLT_utf8_from_latin1(all), '?'), all) << "nothing is lost";
}

TEST(BorderText, OfBothKindsForTheFont) {
  const std::pair<const char*, const char*> rows[] = {
      {"plain", "plain"},
      {"Instalaci\xF3n en /home/Jos\xC3\xA9/", "Instalaci\xF3n en /home/Jos\xE9/"},
      {"\xC3\xA9\xE9\xC3\xA9", "\xE9\xE9\xE9"},
      {"/home/\xD0\x99", "/home/?"},
      {"cut short \xC3", "cut short \xC3"},
  };
  for (const auto& [text, shown] : rows) {
    EXPECT_EQ(PLT_font_text(text), shown);
    EXPECT_EQ(PLT_needs_font_text(text), std::string(text) != shown) << text;
  }
}

// What would steer a terminal, in Latin-1 or in UTF-8, also where a piece of text ends between.
TEST(BorderText, SteersNoTerminal) {
  std::string text = "a\x1B[1m\n\t\x1F\x7F \xC2\x9B\xC2\xA0\xC3\x9B~\xC2";
  EXPECT_EQ(PLT_hide_controls(text.data(), text.size(), 0), 0xC2);
  EXPECT_EQ(text, "a?[1m\n\t?? \xC2?\xC2\xA0\xC3\x9B~\xC2");
  char last[] = "\x80";
  EXPECT_EQ(PLT_hide_controls(last, 1, 0xC2), 0x80);
  EXPECT_STREQ(last, "?");
}

TEST(BorderText, InShortLines) {
  const std::string word(40, 'x'), longer(100, 'y');
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {word + " " + word, word + "\n" + word},
      {word + " a b\n" + word + " c", word + " a b\n" + word + " c"},
      {"/" + word + "/" + word + "/z", "/" + word + "/\n" + word + "/z"},
      {longer + " " + longer, longer + "\n" + longer},
  };
  for (const auto& [text, lines] : rows)
    EXPECT_EQ(PLT_short_lines(text), lines);
}

// The way of a key: from the platform's event to widgets, hit flags and bindings; names, commands,
// text at the border.

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "corekit/GenC/hl_mnw.h"
#include "corekit/OOPS_cpp/butn.h"
#include "corekit/OOPS_cpp/cmnd.h"
#include "corekit/OOPS_cpp/keys.h"
#include "corekit/Platform/PLT_keys.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"

namespace {

// Places of keys, by the USB keyboard page.
enum place : int {
  p_a = 4,
  p_c = 6,
  p_e = 8,
  p_q = 20,
  p_1 = 30,
  p_0 = 39,
  p_return = 40,
  p_escape = 41,
  p_back = 42,
  p_tab = 43,
  p_space = 44,
  p_period = 55,
  p_f1 = 58,
  p_f12 = 69,
  p_home = 74,
  p_delete = 76,
  p_right = 79,
  p_up = 82,
  p_pad_enter = 88,
  p_pad_1 = 89,
  p_pad_7 = 95,
  p_f13 = 104,
  p_f24 = 115,
};

// A US layout, as the window library gives it.
int us_layout(int hardware) {
  if (hardware >= p_a && hardware <= 29) return 'a' + hardware - p_a;
  if (hardware >= p_1 && hardware < p_0) return '1' + hardware - p_1;
  return hardware == p_0        ? '0'
         : hardware == p_return ? 13
         : hardware == p_tab    ? 9
         : hardware == p_delete ? 127
         : hardware == p_back   ? 8
                                : 0;
}
// A French one: q stands where a does, and the digits' row types "&" and accents.
int french_layout(int hardware) {
  return hardware == p_a   ? 'q'
         : hardware == p_q ? 'a'
         : hardware == p_1 ? '&'
         : hardware == p_0 ? 0xE0
                           : us_layout(hardware);
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
  const struct {
    const char* label;
    long kind, message, modifiers;
    const char* taken;
  } rows[] = {
      {"a letter", 3, p_a << 8 | 'a', 0, "97,65,8 "},
      {"its repeat", 5, p_a << 8 | 'a', 0, "97,65,0 "},
      {"its release", 4, p_a << 8 | 'a', 0, "97,65,16 "},
      {"a capital", 3, p_a << 8 | 'A', 0x200, "65,65,9 "},
      {"Control", 3, p_a << 8 | 'a', 0x1000, "0,65,12 "},
      {"Control with Shift", 3, p_a << 8 | 'A', 0x1200, "0,65,13 "},
      {"Option", 3, p_a << 8 | 'a', 0x800, "0,65,10 "},
      {"Option with Shift", 3, p_a << 8 | 'A', 0xA00, "0,65,11 "},
      {"Command", 3, p_a << 8 | 'a', 0x100, "0,65,8 "},
      {"Return", 3, p_return << 8 | 13, 0, "13,13,8 "},
      {"Enter of the pad", 3, p_pad_enter << 8 | 3, 0, "3,187,8 "},
      {"a place beyond the table", 3, 300 << 8, 0, "0,0,8 "},
      {"nothing at all", 5, 0, 0, ""},
  };
  for (const auto& row : rows) {
    focus_widget();
    keys.handle_key_raw(row.kind, row.message, row.modifiers);
    EXPECT_EQ(taken(), row.taken) << row.label;
  }
}

TEST_F(Keys, EventsTypeWhatTheUserSees) {
  const char* euro = "\xE2\x82\xAC";
  const struct {
    const char* label;
    PLT_key_event event;
    const char* taken;
  } rows[] = {
      {"a letter", event_of(p_a, "a", 0, 'a'), "97,65,8 "},
      {"an accent", event_of(p_e, "\xC3\xA9", 0, 'e'), "233,69,8 "},
      {"no byte for it", event_of(p_e, euro, 0, 'e'), "0,69,8 "},
      {"Alt is Option", event_of(p_a, "a", plt_alt, 'a'), "0,65,10 "},
      {"Alt and a capital", event_of(p_a, "A", plt_alt | plt_shift, 'a'), "0,65,11 "},
      {"a third level by Alt", event_of(p_q, "@", plt_alt, 'q'), "64,81,8 "},
      {"its euro is not typed", event_of(p_e, euro, plt_alt, 'e'), "0,69,10 "},
      {"Control", event_of(p_c, "", plt_control, 'c'), "0,67,12 "},
      {"the desktop's key", event_of(p_a, "a", plt_logo, 'a'), "0,65,8 "},
      {"Backspace", event_of(p_back, "", 0, 8), "8,8,8 "},
      {"Delete", event_of(p_delete, "", 0, 127), "127,46,8 "},
      {"an arrow", event_of(p_right, "", plt_shift, 0), "29,39,9 "},
      {"repeat", event_of(p_up, "", 0, 0, 1, 1), "30,38,0 "},
      {"release", event_of(p_up, "", 0, 0, 0), "30,38,16 "},
      {"pad with Num Lock", event_of(p_pad_7, "7", plt_num_lock, 0), "55,103,8 "},
      {"pad without", event_of(p_pad_7, "", 0, 0), "1,36,8 "},
      {"pad with Num Lock and Shift", event_of(p_pad_1, "", plt_num_lock | plt_shift, 0),
       "4,35,9 "},
      {"its release", event_of(p_pad_7, "", plt_num_lock, 0, 0), "0,103,16 "},
      {"an input method", event_of(0, "h\xC3\xA9!", 0), "104,0,8 233,0,8 33,0,8 "},
      {"Caps Lock is no modifier", event_of(p_a, "A", plt_caps_lock, 'a'), "65,65,8 "},
  };
  for (const auto& row : rows) {
    focus_widget();
    keys.handle_event(row.event);
    EXPECT_EQ(taken(), row.taken) << row.label;
  }
}

TEST_F(Keys, LettersFollowTheLayoutAndTheRestItsPlace) {
  const struct {
    int hardware, us, french;
  } rows[] = {{p_a, 65, 81},        {p_q, 81, 65},      {p_1, 49, 49},    {p_0, 48, 48},
              {p_period, 185, 185}, {p_return, 13, 13}, {p_home, 36, 36}, {p_delete, 46, 46}};
  for (const auto& row : rows) {
    for (const bool french : {false, true}) {
      PLT_layout_source = french ? french_layout : us_layout;
      focus_widget();
      keys.handle_key_raw(3, row.hardware << 8, 0);
      EXPECT_EQ(taken(), "0," + std::to_string(french ? row.french : row.us) + ",8 ")
          << row.hardware;
    }
  }
}

TEST_F(Keys, WhatNoWidgetTakesSetsTheFramesFlags) {
  const struct {
    const char* label;
    long kind, message;
    int ret, esc, del, last_char;
  } rows[] = {
      {"Return", 3, p_return << 8 | 13, 1, 0, 0, 13},
      {"Enter", 3, p_pad_enter << 8 | 3, 1, 0, 0, 3},
      {"Escape", 3, p_escape << 8 | 27, 0, 1, 0, 27},
      {"Backspace", 3, p_back << 8 | 8, 0, 0, 1, 8},
      {"Delete", 3, p_delete << 8 | 127, 0, 0, 1, 127},
      {"a letter", 3, p_a << 8 | 'a', 0, 0, 0, 'a'},
      {"a full stop", 3, p_period << 8 | '.', 0, 0, 0, '.'},
      {"repeat counts", 5, p_return << 8 | 13, 1, 0, 0, 13},
      {"release does not", 4, p_return << 8 | 13, 0, 0, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    return_hit = escape_hit = delete_hit = keys.last_char = 0;
    keys.handle_key_raw(row.kind, row.message, 0);
    EXPECT_EQ(return_hit, row.ret);
    EXPECT_EQ(escape_hit, row.esc);
    EXPECT_EQ(delete_hit, row.del);
    EXPECT_EQ(keys.last_char, row.last_char);
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
  const int command = cmnd.add_cmd("test/return", "");
  keys.bindings.push_back({vk_return, 0, command, 0});
  const struct {
    int window, after, presses;
  } rows[] = {{win_prefs, win_main, 0},
              {win_about, win_main, 0},
              {win_file_open, win_file_open, 0},
              {win_main, win_main, 1}};
  for (const auto& row : rows) {
    return_hit = 0;
    mnw.win_id = row.window;
    keys.handle_key_raw(3, p_return << 8 | 13, 0);
    EXPECT_EQ(mnw.win_id, row.after);
    EXPECT_EQ(cmnd.presses[static_cast<size_t>(command)], row.presses) << row.window;
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

  keys.commands_off = 1;
  keys.handle_key_raw(3, a, 0x1000);
  EXPECT_EQ(presses, 0);
  keys.bindings.push_back({vk_enter, 0, zoom, 0});
  keys.handle_key(0, vk_enter, key_down);
  EXPECT_EQ(presses, 1) << "Enter is run all the same";
  keys.commands_off = 0;
  mnw.win_id = win_file_save;
  keys.handle_key_raw(3, a, 0x1000);
  EXPECT_EQ(presses, 1) << "not in the save window";
  EXPECT_EQ(keys.last_vkey, 65);
  EXPECT_EQ(keys.last_flags, key_control);

  EXPECT_EQ(keys.key_bound_to(65, key_control), zoom);
  EXPECT_EQ(keys.key_bound_to(65, 0), -1);
  EXPECT_EQ(keys.get_key_for_cmnd(zoom), "kvlm_ControlFlag KVLM_VK_A");
  EXPECT_EQ(keys.get_key_for_cmnd(99), "<none>");
  keys.keys_io(0);
  ASSERT_EQ(keys.bindings.size(), 1u);
  EXPECT_EQ(keys.get_key_for_cmnd(0), "<none>");
  EXPECT_EQ(keys.bindings[0].cmnd, cmnd.get_cmnd_by_name("sim/-none-/-none-"));
}

TEST_F(Keys, ReleaseOfTabDoesNothing) {
  const int command = cmnd.add_cmd("test/tab", "");
  keys.bindings.push_back({vk_tab, 0, command, 0});
  BTN_key_queue other;
  focus_widget(accept_letters);
  BTN_register_queue(78, other, accept_letters, 0);
  keys.handle_key_raw(3, p_tab << 8 | 9, 0);
  EXPECT_EQ(focus_id, 78);
  keys.handle_key_raw(4, p_tab << 8 | 9, 0);
  EXPECT_EQ(focus_id, 78);
  EXPECT_EQ(cmnd.presses[static_cast<size_t>(command)], 0);
}

TEST_F(Keys, WindowLayerHandsItsKeysOver) {
  ASSERT_TRUE(mnw_keys.event && mnw_keys.frame);
  mnw_keys.event(event_of(p_escape, "", 0, 27));
  mnw_keys.frame();
  EXPECT_EQ(escape_hit, 1);
}

TEST(KeyNames, KeepTheirNumbers) {
  const struct {
    const char* name;
    int code;
  } rows[] = {
      {"KVLM_VK_BACK", 8},
      {"KVLM_VK_RETURN", 13},
      {"KVLM_VK_PRIOR", 33},
      {"KVLM_VK_DOWN", 40},
      {"KVLM_VK_DELETE", 46},
      {"KVLM_VK_0", 48},
      {"KVLM_VK_9", 57},
      {"KVLM_VK_A", 65},
      {"KVLM_VK_Z", 90},
      {"KVLM_VK_NUMPAD0", 96},
      {"KVLM_VK_NUMPAD9", 105},
      {"KVLM_VK_F1", 112},
      {"KVLM_VK_F24", 135},
      {"KVLM_VK_EQUAL", 176},
      {"KVLM_VK_BACKQUOTE", 186},
      {"KVLM_VK_ENTER", 187},
      {"KVLM_VK_NUMPAD_EQ", 189},
      {"kvlm_vk_escape", 27},
      {"KVLM_VK_", 0},
      {"", 0},
      {"kvlm_ShiftFlag", 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(keys_class::str_to_vkey(row.name), row.code) << row.name;

  // Every name comes back from its number, and no two share one.
  std::set<std::string> names;
  for (int vkey = 1; vkey < 256; ++vkey) {
    const std::string name = keys_class::vkey_to_str(vkey);
    if (name == "<none>") {
      EXPECT_EQ(keys_class::vkey_to_code(vkey), -1) << vkey;
      continue;
    }
    EXPECT_EQ(keys_class::str_to_vkey(name), vkey);
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_EQ(names.size(), 110u);
  EXPECT_EQ(keys_class::flag_to_code(key_control), 112) << "the last of 113";
  EXPECT_EQ(keys_class::str_to_flag("kvlm_optionaltflag"), key_option);
  EXPECT_EQ(keys_class::str_to_flag("KVLM_VK_A"), 0);
  EXPECT_EQ(keys_class::flag_to_str(key_shift), "kvlm_ShiftFlag");
  EXPECT_EQ(keys_class::flag_to_str(8), "<none>");
  EXPECT_EQ(keys_class::vkey_to_str(0), "<none>");
}

TEST(KeyNames, EveryPlaceHasANamedKey) {
  for (int place = 0; place < 256; ++place) {
    const int vkey = PLT_vkey_of_hardware(place);
    if (vkey == 0) continue;
    EXPECT_NE(keys_class::vkey_to_str(vkey), "<none>") << place;
  }
  const struct {
    int place, vkey;
  } rows[] = {{p_a, 65},   {29, 90},     {p_1, 49},    {38, 57},     {p_0, 48},
              {p_f1, 112}, {p_f12, 123}, {p_f13, 124}, {p_f24, 135}, {97, 105},
              {98, 96},    {99, 110},    {45, 177},    {56, 184},    {53, 186},
              {0, 0},      {225, 0},     {-1, 0},      {256, 0},     {p_space, 32}};
  for (const auto& row : rows)
    EXPECT_EQ(PLT_vkey_of_hardware(row.place), row.vkey) << row.place;
}

TEST(KeyNames, CharactersOfAUSKeyboard) {
  const struct {
    int ch, vkey, flags;
  } rows[] = {{'a', 65, 0},  {'Z', 90, 1},  {'0', 48, 0},  {')', 48, 1}, {'+', 176, 1},
              {'-', 177, 0}, {'"', 180, 1}, {'~', 186, 1}, {' ', 32, 0}, {13, 13, 0},
              {3, 187, 0},   {127, 46, 0},  {0, 0, 0},     {0xE9, 0, 0}, {1, 0, 0}};
  for (const auto& row : rows) {
    int vkey = -1, flags = -1;
    keys_class::ascii_to_vkey(row.ch, vkey, flags);
    EXPECT_EQ(vkey, row.vkey) << row.ch;
    EXPECT_EQ(flags, row.flags) << row.ch;
  }
}

TEST(Commands, TableAndPaths) {
  cmnd_class table;
  EXPECT_EQ(table.get_cmnd_by_name("sim/-none-/-none-"), 0);
  EXPECT_EQ(table.description[0], "Do nothing at all!");
  const int in = table.add_cmd("sim/view/zoom_in", "Zooms in.");
  const int out = table.add_cmd("sim/view/zoom_out", "Zooms out.");
  table.add_cmd("simple", "");
  EXPECT_EQ(table.kind[static_cast<size_t>(in)], "DYNAMIC");
  EXPECT_EQ(table.get_cmnd_by_name("sim/view/zoom_out"), out);
  EXPECT_EQ(table.get_cmnd_by_name("sim/view/zoom_o"), -1) << "a beginning is no name";
  EXPECT_EQ(table.get_cmnd_by_name("sim/view/Zoom_out"), -1);
  EXPECT_EQ(table.add_cmd("sim/view/zoom_in", "again"), in);

  const struct {
    const char* path;
    std::vector<std::string> parts;
  } rows[] = {
      {"", {"sim", "simple"}},
      {"sim", {"-none-", "view"}},
      {"sim/", {"-none-", "view"}},
      {"sim/view/", {"zoom_in", "zoom_out"}},
      {"sim/view/zoom_in", {}},
      {"si", {}},
      {"nothing/", {}},
  };
  for (const auto& row : rows) {
    std::vector<std::string> parts = {"stale"};
    table.get_cmds_in_path(row.path, parts);
    EXPECT_EQ(parts, row.parts) << row.path;
  }
  table.press_one(in);
  table.press_one(in);
  table.release_one(in);
  EXPECT_EQ(table.presses[static_cast<size_t>(in)], 1);
  table.single_press(in);
  EXPECT_EQ(table.presses[static_cast<size_t>(in)], 1);
  table.release_one(in);
  table.release_one(in);
  EXPECT_EQ(table.presses[static_cast<size_t>(in)], 0) << "never below none";
  table.press_one(-1);
  table.press_one(99);

  testing::internal::CaptureStdout();
  table.print("sim/view");
  table.print("all");
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed.substr(0, 18), "zoom_in\nzoom_out\ns");
  EXPECT_NE(printed.find("sim/view/zoom_in" + std::string(34, ' ') + " Zooms in.\n"),
            std::string::npos);
}

TEST(BorderText, BothWays) {
  const struct {
    const char* label;
    std::string utf8, with_mark, without;
    bool valid;
  } rows[] = {
      {"plain", "abc", "abc", "abc", true},
      {"accents", "\xC3\xA9\xC3\xBF", "\xE9\xFF", "\xE9\xFF", true},
      {"first and last of two bytes", "\xC2\x80\xC3\xBF", "\x80\xFF", "\x80\xFF", true},
      {"no byte for it", "a\xC4\x80z", "a?z", "az", true},
      {"three bytes", "\xE2\x82\xAC", "?", "", true},
      {"four bytes", "\xF0\x9F\x98\x80", "?", "", true},
      {"a stray tail",
       "\x80"
       "a",
       "?a", "a", false},
      {"cut short", "a\xC3", "a?", "a", false},
      {"overlong", "\xC1\xA1", "??", "", false},
      {"overlong of three", "\xE0\x80\xA9", "???", "", false},
      {"a surrogate", "\xED\xA0\x80", "???", "", false},
      {"beyond the last", "\xF4\x90\x80\x80", "????", "", false},
      {"empty", "", "", "", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(PLT_latin1_from_utf8(row.utf8, '?'), row.with_mark) << row.label;
    EXPECT_EQ(PLT_latin1_from_utf8(row.utf8, 0), row.without) << row.label;
    EXPECT_EQ(PLT_is_utf8(row.utf8), row.valid) << row.label;
  }
  std::string all;
  for (int i = 1; i < 256; ++i)
    all += static_cast<char>(i);
  EXPECT_EQ(PLT_latin1_from_utf8(PLT_utf8_from_latin1(all), '?'), all) << "nothing is lost";
}

TEST(BorderText, OfBothKindsForTheFont) {
  const struct {
    const char *text, *shown;
  } rows[] = {
      {"plain", "plain"},
      {"Instalaci\xF3n en /home/Jos\xC3\xA9/", "Instalaci\xF3n en /home/Jos\xE9/"},
      {"\xC3\xA9\xE9\xC3\xA9", "\xE9\xE9\xE9"},
      {"/home/\xD0\x99", "/home/?"},
      {"cut short \xC3", "cut short \xC3"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(PLT_font_text(row.text), row.shown);
    EXPECT_EQ(PLT_needs_font_text(row.text), std::string(row.text) != row.shown) << row.text;
  }
}

TEST(BorderText, InShortLines) {
  const std::string word(40, 'x'), longer(100, 'y');
  const struct {
    std::string text, lines;
  } rows[] = {
      {"", ""},
      {word + " " + word, word + "\n" + word},
      {word + " a b\n" + word + " c", word + " a b\n" + word + " c"},
      {"/" + word + "/" + word + "/z", "/" + word + "/\n" + word + "/z"},
      {longer + " " + longer, longer + "\n" + longer},
  };
  for (const auto& row : rows)
    EXPECT_EQ(PLT_short_lines(row.text), row.lines);
}

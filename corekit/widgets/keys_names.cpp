// Names of keys and modifiers, and the keys that type the characters of a US keyboard.
//
// Main thread.

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <iterator>

#include "corekit/widgets/butn.h"
#include "corekit/widgets/keys.h"

namespace {

struct key_name {
  const char* name;
  int code;
};

constexpr key_name kKeyNameTable[] = {
    {"KVLM_VK_BACK", 8},
    {"KVLM_VK_TAB", 9},
    {"KVLM_VK_CLEAR", 12},
    {"KVLM_VK_RETURN", 13},
    {"KVLM_VK_ESCAPE", 27},
    {"KVLM_VK_SPACE", 32},
    {"KVLM_VK_PRIOR", 33},
    {"KVLM_VK_NEXT", 34},
    {"KVLM_VK_END", 35},
    {"KVLM_VK_HOME", 36},
    {"KVLM_VK_LEFT", 37},
    {"KVLM_VK_UP", 38},
    {"KVLM_VK_RIGHT", 39},
    {"KVLM_VK_DOWN", 40},
    {"KVLM_VK_SELECT", 41},
    {"KVLM_VK_PRINT", 42},
    {"KVLM_VK_EXECUTE", 43},
    {"KVLM_VK_SNAPSHOT", 44},
    {"KVLM_VK_INSERT", 45},
    {"KVLM_VK_DELETE", 46},
    {"KVLM_VK_HELP", 47},
    {"KVLM_VK_0", 48},
    {"KVLM_VK_1", 49},
    {"KVLM_VK_2", 50},
    {"KVLM_VK_3", 51},
    {"KVLM_VK_4", 52},
    {"KVLM_VK_5", 53},
    {"KVLM_VK_6", 54},
    {"KVLM_VK_7", 55},
    {"KVLM_VK_8", 56},
    {"KVLM_VK_9", 57},
    {"KVLM_VK_A", 65},
    {"KVLM_VK_B", 66},
    {"KVLM_VK_C", 67},
    {"KVLM_VK_D", 68},
    {"KVLM_VK_E", 69},
    {"KVLM_VK_F", 70},
    {"KVLM_VK_G", 71},
    {"KVLM_VK_H", 72},
    {"KVLM_VK_I", 73},
    {"KVLM_VK_J", 74},
    {"KVLM_VK_K", 75},
    {"KVLM_VK_L", 76},
    {"KVLM_VK_M", 77},
    {"KVLM_VK_N", 78},
    {"KVLM_VK_O", 79},
    {"KVLM_VK_P", 80},
    {"KVLM_VK_Q", 81},
    {"KVLM_VK_R", 82},
    {"KVLM_VK_S", 83},
    {"KVLM_VK_T", 84},
    {"KVLM_VK_U", 85},
    {"KVLM_VK_V", 86},
    {"KVLM_VK_W", 87},
    {"KVLM_VK_X", 88},
    {"KVLM_VK_Y", 89},
    {"KVLM_VK_Z", 90},
    {"KVLM_VK_NUMPAD0", 96},
    {"KVLM_VK_NUMPAD1", 97},
    {"KVLM_VK_NUMPAD2", 98},
    {"KVLM_VK_NUMPAD3", 99},
    {"KVLM_VK_NUMPAD4", 100},
    {"KVLM_VK_NUMPAD5", 101},
    {"KVLM_VK_NUMPAD6", 102},
    {"KVLM_VK_NUMPAD7", 103},
    {"KVLM_VK_NUMPAD8", 104},
    {"KVLM_VK_NUMPAD9", 105},
    {"KVLM_VK_MULTIPLY", 106},
    {"KVLM_VK_ADD", 107},
    {"KVLM_VK_SUBTRACT", 109},
    {"KVLM_VK_DECIMAL", 110},
    {"KVLM_VK_DIVIDE", 111},
    {"KVLM_VK_F1", 112},
    {"KVLM_VK_F2", 113},
    {"KVLM_VK_F3", 114},
    {"KVLM_VK_F4", 115},
    {"KVLM_VK_F5", 116},
    {"KVLM_VK_F6", 117},
    {"KVLM_VK_F7", 118},
    {"KVLM_VK_F8", 119},
    {"KVLM_VK_F9", 120},
    {"KVLM_VK_F10", 121},
    {"KVLM_VK_F11", 122},
    {"KVLM_VK_F12", 123},
    {"KVLM_VK_F13", 124},
    {"KVLM_VK_F14", 125},
    {"KVLM_VK_F15", 126},
    {"KVLM_VK_F16", 127},
    {"KVLM_VK_F17", 128},
    {"KVLM_VK_F18", 129},
    {"KVLM_VK_F19", 130},
    {"KVLM_VK_F20", 131},
    {"KVLM_VK_F21", 132},
    {"KVLM_VK_F22", 133},
    {"KVLM_VK_F23", 134},
    {"KVLM_VK_F24", 135},
    {"KVLM_VK_EQUAL", 176},
    {"KVLM_VK_MINUS", 177},
    {"KVLM_VK_RBRACE", 178},
    {"KVLM_VK_LBRACE", 179},
    {"KVLM_VK_QUOTE", 180},
    {"KVLM_VK_SEMICOLON", 181},
    {"KVLM_VK_BACKSLASH", 182},
    {"KVLM_VK_COMMA", 183},
    {"KVLM_VK_SLASH", 184},
    {"KVLM_VK_PERIOD", 185},
    {"KVLM_VK_BACKQUOTE", 186},
    {"KVLM_VK_ENTER", 187},
    {"KVLM_VK_NUMPAD_ENT", 188},
    {"KVLM_VK_NUMPAD_EQ", 189},
    // The modifiers, behind all keys.
    {"kvlm_ShiftFlag", key_shift},
    {"kvlm_OptionAltFlag", key_option},
    {"kvlm_ControlFlag", key_control},
};
constexpr const key_name* names_begin = std::begin(kKeyNameTable);
constexpr const key_name* names_end = std::end(kKeyNameTable);
constexpr const key_name* flags_begin = names_end - 3;

const key_name* by_name(const key_name* begin, const key_name* end, const std::string& name) {
  const auto row = std::find_if(
      begin, end, [&name](const key_name& k) { return strcasecmp(k.name, name.c_str()) == 0; });
  return row == end ? nullptr : row;
}

const key_name* by_code(const key_name* begin, const key_name* end, int code) {
  const auto row = std::find_if(begin, end, [code](const key_name& k) { return k.code == code; });
  return row == end ? nullptr : row;
}

int row_of(const key_name* row) {
  return row ? static_cast<int>(row - names_begin) : -1;
}

std::string name_of(const key_name* row) {
  return row ? row->name : "<none>";
}

// The characters of the keys that are no letters, without and with Shift.
struct typed_key {
  char plain, shifted;
  int vkey;
};
constexpr typed_key typed_keys[] = {
    {'0', ')', 48},  {'1', '!', 49},   {'2', '@', 50},  {'3', '#', 51},  {'4', '$', 52},
    {'5', '%', 53},  {'6', '^', 54},   {'7', '&', 55},  {'8', '*', 56},  {'9', '(', 57},
    {'=', '+', 176}, {'-', '_', 177},  {']', '}', 178}, {'[', '{', 179}, {'\'', '"', 180},
    {';', ':', 181}, {'\\', '|', 182}, {',', '<', 183}, {'/', '?', 184}, {'.', '>', 185},
    {'`', '~', 186},
};

}  // namespace

int keys_class::str_to_vkey(const std::string& name) {
  const key_name* row = by_name(names_begin, flags_begin, name);
  return row ? row->code : 0;
}

std::string keys_class::vkey_to_str(int vkey) {
  return name_of(by_code(names_begin, flags_begin, vkey));
}

int keys_class::vkey_to_code(int vkey) {
  return row_of(by_code(names_begin, flags_begin, vkey));
}

int keys_class::str_to_flag(const std::string& name) {
  const key_name* row = by_name(flags_begin, names_end, name);
  return row ? row->code : 0;
}

std::string keys_class::flag_to_str(int flag) {
  return name_of(by_code(flags_begin, names_end, flag));
}

int keys_class::flag_to_code(int flag) {
  return row_of(by_code(flags_begin, names_end, flag));
}

void keys_class::ascii_to_vkey(int ch, int& vkey, int& flags) {
  vkey = flags = 0;
  if ((ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z')) {
    vkey = std::toupper(ch);
    flags = ch == vkey ? key_shift : 0;
    return;
  }
  switch (ch) {
    case ch_back:
    case ch_tab:
    case ch_return:
    case ch_escape:
    case ' ':
      vkey = ch;
      return;
    case ch_enter:
      vkey = vk_enter;
      return;
    case ch_delete:
      vkey = vk_delete;
      return;
    default:
      break;
  }
  for (const typed_key& key : typed_keys) {
    if (key.plain != ch && key.shifted != ch) continue;
    vkey = key.vkey;
    flags = key.shifted == ch ? key_shift : 0;
  }
}

std::string keys_class::get_key_for_cmnd(int command) const {
  for (const key_binding& binding : bindings) {
    if (binding.cmnd != command || binding.vkey == 0) continue;
    std::string name;
    for (const int flag : {key_shift, key_option, key_control}) {
      if (binding.flags & flag) name += flag_to_str(flag) + ' ';
    }
    return name + vkey_to_str(binding.vkey);
  }
  return "<none>";
}

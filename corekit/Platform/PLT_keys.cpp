// The platform's keys by their place: tables over the window library's scancodes, which number the
// places as the USB keyboard page does.
//
// Main thread.

#include "corekit/Platform/PLT_keys.h"

#include <array>

#include "corekit/Platform/PLT_window.h"
#include "corekit/Platform/PLT_window_sdl.h"

namespace {

struct key_pair {
  int hardware, vkey;
};

// All keys that have a virtual key but letters, digits and function keys, which follow in rows.
constexpr key_pair other_keys[] = {
    {SDL_SCANCODE_RETURN, 13},
    {SDL_SCANCODE_ESCAPE, 27},
    {SDL_SCANCODE_BACKSPACE, 8},
    {SDL_SCANCODE_TAB, 9},
    {SDL_SCANCODE_SPACE, 32},
    {SDL_SCANCODE_MINUS, 177},
    {SDL_SCANCODE_EQUALS, 176},
    {SDL_SCANCODE_LEFTBRACKET, 179},
    {SDL_SCANCODE_RIGHTBRACKET, 178},
    {SDL_SCANCODE_BACKSLASH, 182},
    {SDL_SCANCODE_NONUSHASH, 182},
    {SDL_SCANCODE_NONUSBACKSLASH, 182},
    {SDL_SCANCODE_SEMICOLON, 181},
    {SDL_SCANCODE_APOSTROPHE, 180},
    {SDL_SCANCODE_GRAVE, 186},
    {SDL_SCANCODE_COMMA, 183},
    {SDL_SCANCODE_PERIOD, 185},
    {SDL_SCANCODE_SLASH, 184},
    {SDL_SCANCODE_PRINTSCREEN, 44},
    {SDL_SCANCODE_INSERT, 45},
    {SDL_SCANCODE_HOME, 36},
    {SDL_SCANCODE_PAGEUP, 33},
    {SDL_SCANCODE_DELETE, 46},
    {SDL_SCANCODE_END, 35},
    {SDL_SCANCODE_PAGEDOWN, 34},
    {SDL_SCANCODE_RIGHT, 39},
    {SDL_SCANCODE_LEFT, 37},
    {SDL_SCANCODE_DOWN, 40},
    {SDL_SCANCODE_UP, 38},
    {SDL_SCANCODE_NUMLOCKCLEAR, 12},
    {SDL_SCANCODE_CLEAR, 12},
    {SDL_SCANCODE_KP_DIVIDE, 111},
    {SDL_SCANCODE_KP_MULTIPLY, 106},
    {SDL_SCANCODE_KP_MINUS, 109},
    {SDL_SCANCODE_KP_PLUS, 107},
    {SDL_SCANCODE_KP_ENTER, 187},
    {SDL_SCANCODE_KP_PERIOD, 110},
    {SDL_SCANCODE_KP_EQUALS, 189},
    {SDL_SCANCODE_EXECUTE, 43},
    {SDL_SCANCODE_HELP, 47},
    {SDL_SCANCODE_SELECT, 41},
    {SDL_SCANCODE_0, 48},
    {SDL_SCANCODE_KP_0, 96},
};

// Rows of keys whose places and virtual keys both count up.
struct key_row {
  int first, last, vkey;
};
constexpr key_row key_rows[] = {
    {SDL_SCANCODE_A, SDL_SCANCODE_Z, 65},       {SDL_SCANCODE_1, SDL_SCANCODE_9, 49},
    {SDL_SCANCODE_F1, SDL_SCANCODE_F12, 112},   {SDL_SCANCODE_F13, SDL_SCANCODE_F24, 124},
    {SDL_SCANCODE_KP_1, SDL_SCANCODE_KP_9, 97},
};

constexpr size_t key_map_size = 256;

constexpr std::array<unsigned char, key_map_size> make_key_map() {
  std::array<unsigned char, key_map_size> map = {};
  for (const key_pair& key : other_keys)
    map[key.hardware] = static_cast<unsigned char>(key.vkey);
  for (const key_row& row : key_rows) {
    for (int hardware = row.first; hardware <= row.last; ++hardware)
      map[hardware] = static_cast<unsigned char>(row.vkey + hardware - row.first);
  }
  return map;
}

// Hardware key to virtual key; 0 for keys that have none.
constexpr std::array<unsigned char, key_map_size> kvlm_Key_Map = make_key_map();

int library_layout(int hardware) {
  if (!plt_sdl_runs()) return 0;
  const SDL_Keycode key = sdl.GetKeyFromScancode(static_cast<SDL_Scancode>(hardware));
  return key & SDLK_SCANCODE_MASK ? 0 : key;
}

// What the keys of the numeric pad are without Num Lock, from KP_1 to KP_PERIOD.
constexpr int pad_moves[] = {
    SDL_SCANCODE_END,    SDL_SCANCODE_DOWN,   SDL_SCANCODE_PAGEDOWN, SDL_SCANCODE_LEFT,
    SDL_SCANCODE_CLEAR,  SDL_SCANCODE_RIGHT,  SDL_SCANCODE_HOME,     SDL_SCANCODE_UP,
    SDL_SCANCODE_PAGEUP, SDL_SCANCODE_INSERT, SDL_SCANCODE_DELETE,
};

}  // namespace

int (*PLT_layout_source)(int hardware) = library_layout;

int PLT_vkey_of_hardware(int hardware) {
  return hardware >= 0 && hardware < static_cast<int>(key_map_size) ? kvlm_Key_Map[hardware] : 0;
}

int PLT_layout_character(int hardware) {
  return hardware > 0 && hardware < SDL_NUM_SCANCODES ? PLT_layout_source(hardware) : 0;
}

int PLT_hardware_of_event(const PLT_key_event& event) {
  const int key = event.scancode;
  if (key < SDL_SCANCODE_KP_1 || key > SDL_SCANCODE_KP_PERIOD) return key;
  // Shift turns Num Lock round. Asked of the locks and not of the text, since a key that goes up
  // has none.
  const bool num_lock = event.modifiers & plt_num_lock, shift = event.modifiers & plt_shift;
  return num_lock != shift || event.text[0] ? key : pad_moves[key - SDL_SCANCODE_KP_1];
}

int PLT_control_character(int hardware) {
  switch (hardware) {
    case SDL_SCANCODE_HOME:
      return 1;
    case SDL_SCANCODE_KP_ENTER:
      return 3;
    case SDL_SCANCODE_END:
      return 4;
    case SDL_SCANCODE_BACKSPACE:
      return 8;
    case SDL_SCANCODE_TAB:
      return 9;
    case SDL_SCANCODE_PAGEUP:
      return 11;
    case SDL_SCANCODE_PAGEDOWN:
      return 12;
    case SDL_SCANCODE_RETURN:
      return 13;
    case SDL_SCANCODE_ESCAPE:
      return 27;
    case SDL_SCANCODE_LEFT:
      return 28;
    case SDL_SCANCODE_RIGHT:
      return 29;
    case SDL_SCANCODE_UP:
      return 30;
    case SDL_SCANCODE_DOWN:
      return 31;
    case SDL_SCANCODE_DELETE:
      return 127;
    default:
      return 0;
  }
}

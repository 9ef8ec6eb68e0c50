// The way of a key. Platform event -> hardware key, character, modifiers -> virtual key by the
// user's layout -> an open menu -> the focused widget -> the text field's shortcuts -> the frame's
// hit flags, and Return for a dialog -> the bindings. Each takes the key or passes it on.
//
// Main thread. Writes keys, return_hit, escape_hit, delete_hit and mnw_keys.

#include "corekit/widgets/keys.h"

#include <cctype>

#include "corekit/Platform/PLT_keys.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/cmnd.h"
#include "corekit/base/mnw.h"
#include "corekit/widgets/butn.h"
#include "corekit/widgets/butn_value.h"
#include "corekit/widgets/hl_mnw_menu.h"

keys_class keys;

namespace {

// The keys that follow the layout: on a keyboard of another land they are where they are printed.
struct layout_key {
  int character, vkey;
};
constexpr layout_key kMacMappings[] = {
    {ch_return, vk_return},
    {ch_tab, vk_tab},
    {ch_delete, vk_delete},
    {'a', 65},
    {'b', 66},
    {'c', 67},
    {'d', 68},
    {'e', 69},
    {'f', 70},
    {'g', 71},
    {'h', 72},
    {'i', 73},
    {'j', 74},
    {'k', 75},
    {'l', 76},
    {'m', 77},
    {'n', 78},
    {'o', 79},
    {'p', 80},
    {'q', 81},
    {'r', 82},
    {'s', 83},
    {'t', 84},
    {'u', 85},
    {'v', 86},
    {'w', 87},
    {'x', 88},
    {'y', 89},
    {'z', 90},
    {'0', 48},
    {'1', 49},
    {'2', 50},
    {'3', 51},
    {'4', 52},
    {'5', 53},
    {'6', 54},
    {'7', 55},
    {'8', 56},
    {'9', 57},
};

int vkey_of(int hardware) {
  if (const int character = PLT_layout_character(hardware)) {
    for (const layout_key& key : kMacMappings) {
      if (key.character == character) return key.vkey;
    }
  }
  return PLT_vkey_of_hardware(hardware);
}

int flags_of(long kind, long modifiers) {
  int flags = 0;
  if (modifiers & key_mod_option) flags |= key_option;
  if (modifiers & key_mod_control) flags |= key_control;
  if (modifiers & key_mod_shift) flags |= key_shift;
  if (kind == key_kind_down) flags |= key_down;
  if (kind == key_kind_up) flags |= key_up;
  return flags;
}

bool is_return(int vkey) {
  return vkey == vk_return || vkey == vk_enter;
}

// On many layouts Alt, or the right one of them, types further characters, such as "@". A key that
// has typed what is not printed on it is no Option key. Without Shift, that is any other character;
// with it, any but a letter's capital.
bool alt_has_typed(const PLT_key_event& event, unsigned char typed) {
  if (!(event.modifiers & plt_alt) || (event.modifiers & (plt_control | plt_logo))) return false;
  return typed != 0 && std::tolower(typed) != std::tolower(event.symbol & 0xFF);
}

long modifiers_of(const PLT_key_event& event, unsigned char typed) {
  long modifiers = 0;
  if (event.modifiers & plt_shift) modifiers |= key_mod_shift;
  if (event.modifiers & plt_control) modifiers |= key_mod_control;
  if (event.modifiers & plt_logo) modifiers |= key_mod_command;
  if ((event.modifiers & plt_alt) && !alt_has_typed(event, typed)) modifiers |= key_mod_option;
  return modifiers;
}

}  // namespace

// --- keys in -------------------------------------------------------------------------------------

void keys_class::start() {
  keys_io(0);
  mnw_keys.event = [](const PLT_key_event& event) { keys.handle_event(event); };
  mnw_keys.frame = [] { keys.run_repeat_keys(); };
}

void keys_class::handle_event(const PLT_key_event& event) {
  const int hardware = PLT_hardware_of_event(event);
  const long kind = !event.down ? key_kind_up : event.repeat ? key_kind_repeat : key_kind_down;
  const std::string text = PLT_latin1_from_utf8(event.text, 0);
  unsigned char typed = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
  const long modifiers = modifiers_of(event, typed);
  if (!event.text[0]) typed = static_cast<unsigned char>(PLT_control_character(hardware));
  handle_key_raw(kind, static_cast<long>(hardware) << 8 | typed, modifiers);
  // An input method hands over a whole word at once.
  for (size_t i = 1; i < text.size(); ++i) {
    handle_key_raw(kind, static_cast<unsigned char>(text[i]), 0);
  }
}

void keys_class::handle_key_raw(long kind, long message, long modifiers) {
  constexpr long no_character = key_mod_command | key_mod_option | key_mod_control;
  const int hardware = static_cast<int>(message >> 8);
  const int flags = flags_of(kind, modifiers);
  const int ch = modifiers & no_character ? 0 : static_cast<int>(message & 0xFF);
  const int vkey = vkey_of(hardware);
  if (flags == 0 && ch == 0 && vkey == 0) return;

  if (menu_take_key(ch, vkey, flags)) return;
  if (BTN_dispatch_to_focus(ch, vkey, flags)) return;
  if (BTN_text_shortcut(vkey, flags)) return;

  if (!(flags & key_up)) {
    // Held, neither must run through one page or question after another.
    if (is_return(vkey) && (flags & key_down)) return_hit = 1;
    if (vkey == vk_escape && (flags & key_down)) escape_hit = 1;
    if (vkey == vk_delete || vkey == vk_back) delete_hit = 1;
    if (mnw.win_id != win_main && return_hit) {
      // Return presses a dialog's default button.
      if (mnw_keys.leave_dialog) mnw_keys.leave_dialog();
      return;
    }
    if (ch) last_char = ch;
  }

  last_vkey = vkey;
  last_flags = flags & ~(key_down | key_up);
  if (mnw.win_id == win_file_save) return;
  handle_key(ch, vkey, flags);
}

void keys_class::handle_key(int /*ch*/, int vkey, int flags) {
  if (!is_return(vkey) && (commands_off || vkey == 0)) return;
  execute_key_cmnd(vkey, flags);
}

void keys_class::run_repeat_keys() {
  for (const key_binding& binding : bindings) {
    if (binding.pressed) cmnd.press_always(binding.cmnd);
  }
}

// --- bindings ------------------------------------------------------------------------------------

void keys_class::execute_key_cmnd(int vkey, int flags) {
  for (key_binding& binding : bindings) {
    if (binding.vkey != vkey) continue;
    if (binding.flags == (flags & (key_shift | key_option | key_control)) && (flags & key_down) &&
        !binding.pressed) {
      cmnd.press_one(binding.cmnd);
      binding.pressed = 1;
    }
    // Whatever the modifiers: a key whose modifier was let go first must not stick.
    if (binding.pressed && (flags & key_up)) {
      cmnd.release_one(binding.cmnd);
      binding.pressed = 0;
    }
  }
}

int keys_class::key_bound_to(int vkey, int flags) const {
  for (const key_binding& binding : bindings) {
    if (binding.vkey == vkey && binding.flags == flags) return binding.cmnd;
  }
  return -1;
}

void keys_class::keys_io(int write) {
  if (write) return;
  const int nothing = cmnd.get_cmnd_by_name("sim/-none-/-none-");
  bindings.assign(1, {0, 0, nothing, 0});
}

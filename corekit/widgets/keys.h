// Keys: from the platform's key event to a virtual key and flags, on to the focused widget, the
// frame's hit flags, and last the key bindings.
//
// Flags are those of key_flag (butn.h); a key that repeats has neither key_down nor key_up.
//
// Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "corekit/widgets/keys_codes.h"

struct PLT_key_event;

// What handle_key_raw is told.
enum key_event_kind : long { key_kind_down = 3, key_kind_up = 4, key_kind_repeat = 5 };
enum key_event_modifier : long {
  key_mod_command = 0x100,
  key_mod_shift = 0x200,
  key_mod_option = 0x800,
  key_mod_control = 0x1000,
};

struct key_binding {
  int32_t vkey;
  int32_t flags;    // modifiers: key_shift, key_option, key_control
  int32_t cmnd;     // command, as cmnd_class counts
  int32_t pressed;  // 1 between press and release
};

class keys_class {
 public:
  // Starts with the one default binding, and takes the window layer's keys (mnw_keys).
  void start();

  // --- keys in -----------------------------------------------------------------------------------
  // One event of the platform, with all that it types. Text is cut to ISO Latin-1: a character that
  // has no byte there is not typed.
  void handle_event(const PLT_key_event& event);
  // `message` holds the character in its low byte and the hardware key above it.
  void handle_key_raw(long kind, long message, long modifiers);
  // A key from elsewhere: to the bindings only.
  void handle_key(int ch, int vkey, int flags);
  void run_repeat_keys();  // once a frame: press_always for each binding that is down

  // --- bindings ----------------------------------------------------------------------------------
  void execute_key_cmnd(int vkey, int flags);
  int key_bound_to(int vkey, int flags) const;      // the command of a key, -1 none
  std::string get_key_for_cmnd(int command) const;  // its names, such as "kvlm_ShiftFlag KVLM_VK_A"
  // 0: back to the one default binding. 1: there is nothing to write, as no window of this program
  // changes a binding.
  void keys_io(int write);

  // --- names -------------------------------------------------------------------------------------
  // The key and flags that type `ch` on a keyboard as it is printed in the US; 0, 0 if none does.
  static void ascii_to_vkey(int ch, int& vkey, int& flags);
  static int str_to_vkey(const std::string& name);  // in any case; 0 for a name that there is not
  static std::string vkey_to_str(int vkey);         // "<none>" for one that has no name
  static int vkey_to_code(int vkey);                // its row in the table of names, -1 none
  static int str_to_flag(const std::string& name);
  static std::string flag_to_str(int flag);
  static int flag_to_code(int flag);

  std::vector<key_binding> bindings;
  int commands_off = 0;  // 1: no binding runs but those of Return and Enter
  int last_vkey = 0;     // the last key that no widget took,
  int last_flags = 0;    //   its modifiers
  int last_char = 0;     //   and the last character typed so
};

extern keys_class keys;

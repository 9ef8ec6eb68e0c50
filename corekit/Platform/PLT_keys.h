// Keys of the platform: which virtual key a hardware key is, what it types without modifiers in the
// user's layout, and which character the keys without a picture come with. A hardware key is the
// window library's scancode, the key's place on the keyboard. Main thread only.
#pragma once

struct PLT_key_event;

// Virtual key by the place on the keyboard, as a US keyboard is printed; 0 for one that has none.
int PLT_vkey_of_hardware(int hardware);

// The character of a key without modifiers in the current layout; 0 for none, or without a window.
int PLT_layout_character(int hardware);
extern int (*PLT_layout_source)(int hardware);  // where it comes from

// The hardware key that an event means: a key of the numeric pad that types nothing, as Num Lock is
// off, is the arrow or page key printed on it.
int PLT_hardware_of_event(const PLT_key_event& event);

// The character of a key that types no text, such as 8 for Backspace; 0 for most.
int PLT_control_character(int hardware);

// The numbers of keys, and the characters that keys without a picture come with.
//
// Virtual keys are numbered as the family's files have them: 8 back, 9 tab, 13 return, 27 escape,
// 33 to 40 page up, page down, end, home, left, up, right, down, 46 delete, 48 to 57 the digits,
// 65 to 90 the letters, 96 to 105 the numeric pad, 112 to 135 F1 to F24, 176 to 189 punctuation.
#pragma once

enum virtual_key : int {
  vk_back = 8,
  vk_tab = 9,
  vk_return = 13,
  vk_escape = 27,
  vk_space = 32,
  vk_prior = 33,
  vk_next = 34,
  vk_end = 35,
  vk_home = 36,
  vk_left = 37,
  vk_up = 38,
  vk_right = 39,
  vk_down = 40,
  vk_insert = 45,
  vk_delete = 46,
  vk_0 = 48,
  vk_a = 65,
  vk_c = 67,
  vk_v = 86,
  vk_x = 88,
  vk_numpad0 = 96,
  vk_f1 = 112,
  vk_enter = 187,
};

// Characters that keys without a picture come with.
enum key_character : int {
  ch_home = 1,
  ch_enter = 3,
  ch_end = 4,
  ch_back = 8,
  ch_tab = 9,
  ch_page_up = 11,
  ch_page_down = 12,
  ch_return = 13,
  ch_escape = 27,
  ch_left = 28,
  ch_right = 29,
  ch_up = 30,
  ch_down = 31,
  ch_delete = 127,
};

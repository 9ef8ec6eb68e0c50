// Translated texts on their way to a terminal, with names and paths between them.

#include <gtest/gtest.h>

#include "Installer-f/main_unattended_say.h"
#include "corekit/Platform/PLT_text.h"

TEST(UnattendedSay, WhatIsNoUtf8IsTakenForLatin1) {
  const struct {
    const char* label;
    const char* text;
    const char* shown;
  } rows[] = {
      {"plain", "Welcome", "Welcome"},
      {"empty", "", ""},
      {"a translated text", "instalaci\xF3n: \xBFqu\xE9?", "instalación: ¿qué?"},
      {"a path between", "en \xE1rbol: /home/jos\xC3\xA9/\xE2\x82\xAC/\xF0\x9F\x9B\xA9/ s\xED",
       "en árbol: /home/josé/€/\xF0\x9F\x9B\xA9/ sí"},
      {"at the end", "camb\xED", "cambí"},
      {"a sequence cut short", "\xE2\x82", "\xC3\xA2?"},
      {"an overlong one", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
      {"half of a pair", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0?"},
      {"what steers the terminal", "a\x1B[31m\x7F\xC2\x9B\rb\n\tc", "a?[31m???b\n\tc"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(PLT_terminal_text(row.text), row.shown) << row.label;
}

TEST(UnattendedSay, BlankLinesGo) {
  EXPECT_EQ(on_one_page("\n\na\n\n\nb\nc\n\n"), "a\nb\nc");
  EXPECT_EQ(on_one_page("\n\n"), "");
}

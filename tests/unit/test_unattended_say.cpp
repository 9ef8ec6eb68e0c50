// Translated texts on their way to a terminal, with names and paths between them.

#include <gtest/gtest.h>

#include "Installer-f/main_unattended_say.h"

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
      {"a sequence cut short", "\xE2\x82", "\xC3\xA2\xC2\x82"},
      {"an overlong one", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
      {"half of a pair", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(terminal_text(row.text), row.shown) << row.label;
}

TEST(UnattendedSay, BlankLinesGo) {
  EXPECT_EQ(on_one_page("\n\na\n\n\nb\nc\n\n"), "a\nb\nc");
  EXPECT_EQ(on_one_page("\n\n"), "");
}

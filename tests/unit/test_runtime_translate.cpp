// The translation table and its file.

#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/files/UTL_translate_load.h"
#include "tests/unit/test_runtime_util.h"

namespace {

constexpr char header[] = "I\n900 version\nTRANSLATION\n\n";

class RuntimeTranslate : public testing::Test {
 protected:
  void TearDown() override {
    UTL_translate_clear();
    cmdline = UTL_cmdline();
  }
  void load(const std::string& content) {
    log.folder.file("Installer2.txt", content);
    UTL_translate_load(log.folder / "Installer2.txt");
  }
  log_capture log;
};

}  // namespace

TEST_F(RuntimeTranslate, LooksUpByTheEnglish) {
  load(std::string(header) +
       "STRING Cancel====Abbrechen\n"
       "string Stop====Halt\n"
       "STRINGS Go====Los\n"
       "# a comment with ==== in it\n"
       "STRING\tPlease wait.\\nThis may take a while.====Bitte warten.\\r\\nDas dauert etwas.\n"
       "\n   STRING  Blank ==== Leer \n"
       "STRING  minutes==== Minuten\n"
       "STRING   hours====  Stunden\n"
       "STRING hours====Uhr\n"
       "STRING ====Nichts\n"
       "STRING a====b====c\n"
       "STRING Path\\\\name====Pf\\ad\n"
       "STRING Last====Ende, ohne Zeilenende");
  const std::pair<const char*, const char*> rows[] = {
      {"Cancel", "Abbrechen"},
      {"cancel", "cancel"},
      {"Stop", "Stop"},
      {"Go", "Go"},
      {"Please wait.\nThis may take a while.", "Bitte warten.\r\nDas dauert etwas."},
      {"Blank ", " Leer "},
      {" minutes", " Minuten"},  // one blank parts, further ones belong to the text
      {"minutes", " Minuten"},   // and yet may only line up the file
      {"  hours", "  Stunden"},
      {" hours", " hours"},
      {"hours", "Uhr"},
      {"", "Nichts"},
      {"a", "b====c"},
      {"Path\\\name", "Pf\\ad"},
      {"Last", "Ende, ohne Zeilenende"},
  };
  for (const auto& [text, shown] : rows)
    EXPECT_EQ(UTL_translate_string(text), shown) << text;
  EXPECT_EQ(log.text(), "");
}

TEST_F(RuntimeTranslate, ReportsFaultyLinesAndGoesOn) {
  load(std::string(header) +
       "STRING no splitter=== here\n"
       "STRING nothing====\n"
       "STRING one====x\n"
       "STRING two====xy\n"
       "STRING two====yz\n"
       "STRING three====drei\n");
  EXPECT_EQ(log.text(),
            "ERROR: language file line no splitter=== here missing ==== splitter.\n"
            "ERROR: language file line nothing==== missing right side translation.\n"
            "ERROR: language file line one====x missing right side translation.\n"
            "ERROR: language line two====yz is a second translation of two====xy\n");
  EXPECT_EQ(UTL_translate_string("one"), "one");
  EXPECT_EQ(UTL_translate_string("two"), "xy");
  EXPECT_EQ(UTL_translate_string("three"), "drei");
}

TEST_F(RuntimeTranslate, TakesOnlyASuitableFile) {
  const std::string body = "STRING Cancel====Abbrechen\n";
  const std::pair<std::string, bool> rows[] = {
      {"A\r\n900 version\r\nTRANSLATION\r\nSTRING Cancel====Abbrechen\r\n", true},
      {"I\n901 version\nTRANSLATION\n" + body, false},
      {"I\n900 version\nTRANSLATIONS\n" + body, false},
      {body, false},
      {"", false},
      {std::string("i\0\0\3\204", 5) + body, false},
  };
  for (const auto& [content, accepted] : rows) {
    load(content);
    EXPECT_EQ(UTL_translate_string("Cancel"), accepted ? "Abbrechen" : "Cancel") << content;
  }
  // Each load starts anew, and a missing file leaves no old table.
  load(std::string(header) + body);
  load(std::string(header) + "STRING Stop====Halt\n");
  EXPECT_EQ(UTL_translate_string("Cancel"), "Cancel");
  EXPECT_EQ(UTL_translate_string("Stop"), "Halt");
  UTL_translate_load(log.folder / "missing.txt");
  EXPECT_EQ(UTL_translate_string("Stop"), "Stop");
}

TEST_F(RuntimeTranslate, TextsThatAWholeFileLacksAreNotedOnce) {
  for (const bool wanted : {false, true}) {
    cmdline = UTL_cmdline();
    if (wanted) cmdline.init_win("--missing_strings");
    load(std::string(header) + "STRING Stop====Halt\n");
    UTL_translate_use(true);
    for (const char* text : {"Stop", "a\r\nb", "a\r\nb"})
      UTL_translate_string(text);
    EXPECT_EQ(log.text(), wanted ? "     '--missing_strings'\nSTRING a\\r\\nb====a\\r\\nb\n" : "");
    UTL_translate_use(false);
    UTL_translate_string("of a part");
  }
  EXPECT_EQ(log.text().find("of a part"), std::string::npos);
}

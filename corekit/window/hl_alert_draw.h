// The drawn forms: the alert, as the sink of failures shows it, and the question with three
// answers.
#pragma once

#include <string>

#include "corekit/base/exce.h"

// Shows the four lines of a failure, and for a fatal one `where` they came from, in a window of its
// own until the user has left it; then goes back to the failure's window. Severity 0 is the
// language chooser, which writes mnw.language. Of a text that is too long for its place the
// beginning is shown. REQUIRES: a window.
void draw_alert(const exce_class& failure, const std::string& where);

// Texts of the alerts that an application may replace; each is translated when it is shown.
struct alert_texts_record {
  UTL_text ok = "OK";          // the button of an alert
  UTL_text accept = "Accept";  // the button of the language chooser
  // The question of MACIBM_nuke_alert is "prefix text suffix", and its answers 1, 2, 3.
  UTL_text nuke_prefix = "Do you want to save the changes to";
  UTL_text nuke_suffix = "before it closes?";
  UTL_text nuke_answers[3] = {"Save", "Do not save", "Cancel"};
};
extern alert_texts_record alert_texts;

// A question with up to three answers; returns 1, 2 or 3. 3 also when it cannot be put or is closed
// without an answer.
int MACIBM_nuke_alert(const std::string& text, int offer_third);

// The wizard engine: one page function a frame, which fills a blank record; the engine has the
// record drawn and acts on its buttons.
#pragma once

#include <string>
#include <vector>

#include "Installer-f/wizard/main_page.h"
#include "corekit/base/UTL_translate.h"

// One frame of the wizard: calls the current page, draws its record, acts on its buttons.
void APP_update();

// A request to quit that comes from outside the pages.
void wizard_quit_request();

// Who stands in for the user in a run without a display.
struct wizard_stand_in {
  // Looks at what `page` made of this frame, with its result, and decides what to press.
  wizard_press (*press)(page_function page, int first_time, const wizard_screen& screen,
                        int result);
  int (*modified)(const std::string& location, int gone);  // the answer to select_alert
  int (*abort)(const std::string& question);               // the answer to abort_alert
};
extern const wizard_stand_in* stand_in;  // null while there is a user

// Replaces the step list; each label goes through the translation table.
struct wizard_step {
  UTL_text label;
  page_function page;
};
void wizard_set_steps(const std::vector<wizard_step>& steps);
void wizard_name_steps();  // anew, when the language has changed

// Text that a page draws beside its record, in colour 45. Kept for the frame, so that a run without
// a display can print it.
void wizard_note(float x, float y, const std::string& text, float wrap_dx);
extern std::vector<std::string> wizard_notes;  // of the present frame
// The same as the label of the box or radio at its left, on one line or two; of what needs more,
// such as a long path, the middle is left out. 1 when it was clicked.
int wizard_label(float x, float y, const std::string& text, float wrap_dx);

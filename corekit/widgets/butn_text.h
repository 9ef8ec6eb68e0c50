// What the text field hands its editor: one editor serves all fields, and works on the one that has
// the focus. Main thread only.
#pragma once

#include <string>

#include "corekit/widgets/ogle.h"

extern float OGLE_x, OGLE_y;     // lower left of the field's text
extern float OGLE_entry_dx;      // its width
extern float OGLE_dx, OGLE_dy;   // how far it is scrolled
extern std::string* OGLE_input;  // its text; null while no field has the focus
extern int OGLE_edit;            // 1 in a frame with an edit
extern const OGLE_Callbacks OGLE_cbs;

extern OGLE_Rec* BTN_enterstring_ogle;        // made on first use, kept for the process's life
extern int BTN_enterstring_focused_field_id;  // identity of the field that it serves; 0 none

// The field itself. `text` is what it shows and edits, `owner` the variable that the text is a part
// or a copy of: it tells apart two fields that pages draw at one place.
int BTN_enter_text(float x, float y, std::string* text, const void* owner, int max_length,
                   const std::string& label, float dx, int auto_focus);

// A look at the layout while the program runs, for translators and tests: with the option
// --check_layout, the log has a line for each text that lies over another text or a picture,
// crosses the edge of a frame, or is cut off. With --list_texts=FILE, the file has the texts of the
// picture that the window shows, for whoever measures them in a picture of the window. Without the
// options every call here is one test of a flag.
//
// What is drawn is noted in window units and judged when the frame is shown. Main thread only.
#pragma once

#include <string>
#include <string_view>

#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_picture.h"

extern bool layout_watched;  // an option is given; set once at start-up

// Lists the texts of each picture that is shown in `path`, in place of those of the one before: a
// line each, its rectangle "LEFT LOW RIGHT HIGH" in window units, its colour as RRGGBB, the text.
void watch_list(const std::string& path);

void watch_text(int col, float x, float base, std::string_view text,
                int charset = charset_text);  // a line; `base` of its letters
void watch_frame(const OGL_rect& frame);      // a frame, face or picture, on which texts may stand
void watch_clip(const OGL_rect* clip);        // what is drawn from now on shows in here; null all
void watch_cover();  // what was noted of this frame is hidden by what is drawn from now on
void watch_shown(bool is_new);  // the end of a frame; whether its picture is another one

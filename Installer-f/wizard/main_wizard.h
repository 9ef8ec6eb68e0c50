// The wizard engine: one page function a frame, which fills a blank record; the engine draws the
// record and acts on its buttons.
//
// A page is a function, and beside it what a run without a display has to know of it. A flow's
// header names its pages; its source ends with one record a page. What has no record can be no
// target of a button: it does not compile.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "corekit/base/UTL_translate.h"

struct wizard_page;
struct wizard_screen;

// A page as a target and as the present one; null for none. Call it like the function that it is:
// `first_time` is 1 on the first frame of every visit; returns 0 to stay, or non-zero to go to
// screen.next at the end of the frame as if Next had been clicked (with `next` null it stays).
class page_function {
 public:
  constexpr page_function(std::nullptr_t = nullptr) {}
  constexpr page_function(const wizard_page& page) : page_(&page) {}
  page_function(const wizard_page&&) = delete;

  int operator()(int first_time, wizard_screen& screen) const;
  constexpr const wizard_page* operator->() const { return page_; }
  constexpr explicit operator bool() const { return page_ != nullptr; }
  friend constexpr bool operator==(page_function, page_function) = default;

 private:
  const wizard_page* page_ = nullptr;
};

// What a page does, as far as it matters to who presses its buttons.
enum page_kind {
  page_choice,       // waits for the user
  page_disc,         // waits for a disc, and is then a choice
  page_job,          // works, or leads on by itself
  page_install,      // works on the job's installed size
  page_transfer,     // works on the job's compressed size
  page_last,         // tells how it ended
  page_last_update,  // the same, with figures
};

// How a choice is made where there is no user.
struct page_answer {
  const char* wants = "";            // the options that it is made by
  std::string (*give)() = nullptr;   // puts them into the page's choice; what is wrong, or empty
  page_function (*way)() = nullptr;  // to which of several pages it leads; null: to its Next
  bool (*disc_is_in)() = nullptr;    // page_disc: whether the disc that it waits for is there
};

struct wizard_page {
  constexpr wizard_page(page_kind kind_, int (*show_)(int first_time, wizard_screen& screen),
                        page_answer answer_ = {}, bool (*may_enter_)() = nullptr)
      : kind(kind_), show(show_), answer(answer_), may_enter(may_enter_) {}
  wizard_page(const wizard_page&) = delete;

  page_kind kind;
  int (*show)(int first_time, wizard_screen& screen);
  page_answer answer;
  bool (*may_enter)();  // asked before the page is turned to; false, after saying why: the present
                        // one stays. Null: always
};

inline int page_function::operator()(int first_time, wizard_screen& screen) const {
  return page_->show(first_time, screen);
}

// What a page says of itself for one frame; nothing carries over to the next.
struct wizard_screen {
  std::string title;
  std::string text;                         // may hold "\n"
  page_function back = nullptr;             // null greys the Back button
  page_function next = nullptr;             // null greys the Next button
  float progress = -1.0f;                   // 0 to 1; negative for no bar
  std::string progress_text;                // the line under the bar
  int show_servers = 0;                     // draw the server chooser
  int prefs_enabled = 0;                    // enable the Options button
  std::vector<std::string> button_names;    // the page's extra buttons
  std::vector<page_function> button_pages;  // their targets, parallel to the names
  void (*kill_proc)() = nullptr;            // called on Quit, before the program ends
  void (*leave_proc)() = nullptr;           // called when the next frame is another page's
  bool copy_is_busy = false;                // another program is at work on it; `text` says so
};

extern page_function g_wizard;                 // the current page; an edition names the first one
extern std::vector<std::string> step_names;    // step list at the left, already translated
extern std::vector<page_function> step_funcs;  // the page of each step

// One frame of the wizard: calls the current page, draws its record, acts on its buttons.
void APP_update();

// A request to quit that comes from outside the pages.
void wizard_quit_request();

// Ends the program. The flows set `next` to it on their last page.
extern const wizard_page wizard_quit;

// What was pressed in a frame.
struct wizard_press {
  bool quit = false, options = false, back = false, next = false;
  int extra = -1;  // index of an extra button
};

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
// The same as the label of the box or radio at its left; 1 when its one line was clicked.
int wizard_label(float x, float y, const std::string& text, float wrap_dx);

// Draws a button face from the elements image; 1 on a click. `state` 2 draws it greyed.
int interface_rect(float x, float y, float tex_x, float tex_y, float dx, float dy, int hot,
                   int state);

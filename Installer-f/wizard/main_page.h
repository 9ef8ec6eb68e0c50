// The wizard's pages: what a page is, and the record that it fills in each frame.
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
  page_choice,        // waits for the user
  page_disc,          // waits for a disc, and is then a choice
  page_job,           // works, or leads on by itself
  page_install,       // works on the job's installed size
  page_transfer,      // works on the job's compressed size
  page_removal,       // takes a copy away
  page_last,          // tells how it ended
  page_last_update,   // the same, with figures
  page_last_removal,  // the same, of what has been taken away, with no program to start
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

// How a job went, as the last page of a flow tells it.
enum page_outcome { outcome_none, outcome_good, outcome_bad };

// What a page says of itself for one frame; nothing carries over to the next.
struct wizard_screen {
  std::string title;
  std::string text;                         // may hold "\n"
  page_function back = nullptr;             // null greys the Back button
  page_function next = nullptr;             // null greys the Next button
  float progress = -1.0f;                   // 0 to 1; negative for no bar
  bool is_busy = false;                     // at work for nobody knows how long: a bar that says so
  std::string progress_text;                // the line under the bar
  int show_servers = 0;                     // draw the server chooser
  int prefs_enabled = 0;                    // enable the Options button
  std::vector<std::string> button_names;    // the page's extra buttons
  std::vector<page_function> button_pages;  // their targets, parallel to the names
  void (*kill_proc)() = nullptr;            // called on Quit, before the program ends
  void (*leave_proc)() = nullptr;           // called when the next frame is another page's
  bool text_is_framed = false;              // `text` is a document: it has a frame, and scrolls
  page_outcome outcome = outcome_none;      // the sign beside the title
  bool copy_is_busy = false;                // another program is at work on it; `text` says so
};

extern page_function g_wizard;                 // the current page; an edition names the first one
extern std::vector<std::string> step_names;    // step list at the left, already translated
extern std::vector<page_function> step_funcs;  // the page of each step

// Ends the program. The flows set `next` to it on their last page.
extern const wizard_page wizard_quit;

// What was pressed in a frame.
struct wizard_press {
  bool quit = false, options = false, back = false, next = false;
  int extra = -1;  // index of an extra button
};

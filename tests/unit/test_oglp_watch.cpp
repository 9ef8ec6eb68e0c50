// The look at the layout: what it says of texts and frames as a page or dialog draws them.

#include <functional>

#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_watch.h"
#include "corekit/window/hl_mnw.h"
#include "tests/unit/test_runtime_util.h"

namespace {

constexpr OGL_rect window = {0, 0, 800, 600}, button = {100, 100, 200, 120};

// What was said once is not said again: each row that is out of place has words of its own.
TEST(LayoutWatch, SaysWhatIsOutOfPlaceAndNothingElse) {
  const std::string word = "Continue";
  const float width = static_cast<float>(OGL_string_width(word));
  const auto frame_then = [](float x, float y, const std::string& text) {
    watch_frame(button);
    watch_text(col_black, x, y, text);
  };
  // What is said: nothing where it is empty.
  const std::tuple<const char*, std::function<void()>, const char*> rows[] = {
      {"inside a button", [&] { frame_then(103, 106, word); }, ""},
      {"a blank at its end sticks out", [&] { frame_then(198 - width, 106, word + " \n"); }, ""},
      {"on its rim", [&] { frame_then(199 - width, 106, word); }, "over an edge"},
      {"across its left edge", [&] { frame_then(95, 106, "Cancel"); }, "over an edge"},
      {"a button over it",
       [&] {
         watch_text(col_black, 120, 106, word);
         watch_frame(button);
       },
       "under a picture"},
      {"a button drawn again, with its label",
       [&] {
         frame_then(120, 106, word);
         frame_then(120, 106, word);
       },
       ""},
      {"two lines too near",
       [&] {
         watch_text(col_black, 10, 50, word);
         watch_text(col_black, 10, 43, word);
       },
       "over a text"},
      {"beyond it", [&] { watch_text(col_black, 801 - width, 0, word); }, "beyond the window"},
      {"a name in a field that shows part of it",
       [&] {
         watch_frame({100, 100, 130, 120});
         const OGL_rect field = {103, 103, 127, 117};
         watch_clip(&field);
         watch_text(col_black, 103, 106, word);
         watch_clip(nullptr);
       },
       ""},
      {"a line below what is shown",
       [&] {
         const OGL_rect panel = {0, 50, 800, 100};
         watch_clip(&panel);
         watch_text(col_black, 10, 45, word);
         watch_clip(nullptr);
       },
       "cut off"},
      {"covered by the next background",
       [&] {
         frame_then(95, 106, word);
         watch_frame(window);
       },
       ""},
  };
  mnw.x_off = mnw.y_off = 0;
  mnw.win_dx = 800;
  mnw.win_dy = 600;
  for (const auto& [label, draw, words] : rows) {
    for (const bool watched : {false, true}) {
      layout_watched = watched;
      log_capture log;
      watch_frame(window);
      draw();
      watch_shown(true);
      const std::string said = log.text();
      if (!watched || *words == '\0') {
        EXPECT_EQ(said, "") << label;
      } else {
        EXPECT_TRUE(str_holds(said, words)) << label << ": " << said;
      }
    }
  }
  layout_watched = false;
}

TEST(Layout, TheTextsOfTheShownPictureAreListed) {
  const scratch_folder folder;
  const std::string path = folder / "texts";
  watch_list(path);
  const auto show = [](const char* text, bool is_new) {
    watch_text(col_red, 10, 50, text);
    watch_shown(is_new);
  };
  const std::string width = std::to_string(10 + OGL_string_width("One fine day"));
  show("One fine day ", true);
  EXPECT_EQ(content_of(path), "10 50 " + width + " 58 ff3333 One fine day\n");
  show("Never seen", false);
  EXPECT_EQ(content_of(path), "10 50 " + width + " 58 ff3333 One fine day\n");
  watch_list("");
  show("Nor listed", true);
  EXPECT_EQ(content_of(path), "10 50 " + width + " 58 ff3333 One fine day\n");
  layout_watched = false;
}

}  // namespace

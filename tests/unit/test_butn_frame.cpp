// Frames: every pixel of a box comes from the right pixel of its picture, once.

#include "tests/unit/frame_pieces.h"
#include "tests/unit/gl_fixture.h"

class ButnFrame : public gl_fixture {};

TEST_F(ButnFrame, StripsAtManyWidths) {
  mnw.x_off = 7;  // as in a dialog, which lies in the window
  mnw.y_off = 11;
  for (const strip_piece& row : strip_pieces) {
    for (const int width : {61, 100, 257}) {
      SCOPED_TRACE(testing::Message() << "type " << row.type << ", width " << width);
      const picture_map map([&] { BTN_frame1(row.type, 400, 300, static_cast<float>(width), 0); });
      const int drawn = width + width % 2 + row.extra;  // an odd width grows by one
      const int left = 407 - drawn / 2, bottom = 311 - row.lower - row.h / 2;
      ASSERT_TRUE(map.covers_exactly(left, bottom, drawn, row.h));
      const int right = left + drawn - 1, top = bottom + row.h - 1;
      const int last_cap = row.src - row.tile;
      // Types 0 and 1 reach a row beyond the image, which is its first again.
      const int top_v = (row.v + row.h - 1) % 512;
      EXPECT_TRUE(map.shows(left, bottom, row.u, row.v));
      EXPECT_TRUE(map.shows(left, top, row.u, top_v));
      EXPECT_TRUE(map.shows(right, bottom, row.u + row.src - 1, row.v));
      EXPECT_TRUE(map.shows(right - last_cap + 1, top, row.u + row.tile, top_v));
      // Whole tiles repeat pixel by pixel.
      const int strip = row.tile - row.cap;
      for (int x = left + row.cap; x + strip <= right - last_cap; x += strip) {
        EXPECT_TRUE(map.shows(x, bottom, row.u + row.cap, row.v));
        EXPECT_TRUE(map.shows(x + strip - 1, bottom, row.u + row.tile - 1, row.v));
      }
    }
  }
}

TEST_F(ButnFrame, BoxesAtManySizes) {
  for (const box_piece& row : box_pieces) {
    for (const auto& [dx, dy] : {std::pair{61, 67}, {190, 453}, {301, 100}}) {
      SCOPED_TRACE(testing::Message() << "type " << row.type << ", " << dx << " by " << dy);
      const int x = 200, y = 100;
      const picture_map map([&, dx = dx, dy = dy] {
        BTN_frame2(row.type, x, y, static_cast<float>(dx), static_cast<float>(dy), "");
      });
      const int width = dx + 2 * row.m, height = dy + row.b + row.t;
      const int left = x - row.m, bottom = y - row.b;
      ASSERT_TRUE(map.covers_exactly(left, bottom, width, height));
      const int right = left + width - 1, top = bottom + height - 1;
      const int last_u = row.u + row.side - 1, last_v = row.v + row.side - 1;
      EXPECT_TRUE(map.shows(left, bottom, row.u, row.v));
      EXPECT_TRUE(map.shows(right, bottom, last_u, row.v));
      EXPECT_TRUE(map.shows(left, top, row.u, last_v));
      EXPECT_TRUE(map.shows(right, top, last_u, last_v));
      // The inner end of each corner.
      const int side_dx = int(row.left), low = int(row.low), high = int(row.high);
      EXPECT_TRUE(
          map.shows(left + side_dx - 1, bottom + low - 1, row.u + side_dx - 1, row.v + low - 1));
      EXPECT_TRUE(
          map.shows(right - side_dx + 1, top - high + 1, last_u - side_dx + 1, last_v - high + 1));
    }
  }
}

TEST_F(ButnFrame, CloseBoxesOfADialog) {
  mnw.win_dx = 600;
  mnw.win_dy = 380;
  const struct {
    const char* label;
    int win_id, type;
    float x, y;
    int popup_code, frame_hit, shown;
  } rows[] = {
      {"under a menu", win_prefs, 11, 8, 370, 3, 0, 1},
      {"no boxes in the main window", win_main, 11, 8, 370, -1, 0, 0},
      {"other frames have none", win_prefs, 12, 8, 370, -1, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    mnw.win_id = row.win_id;
    mnw.popup_code = row.popup_code;
    click(row.x, row.y);
    int hit = 0;
    const picture_map map([&] { hit = BTN_frame2(row.type, 0, 0, 600, 380, ""); });
    EXPECT_EQ(hit, row.frame_hit);
    if (row.shown) {
      EXPECT_TRUE(map.shows(7, 361, 120, 178));
      EXPECT_TRUE(map.shows(592, 378, 137, 195));
    } else {
      EXPECT_FALSE(map.shows(7, 361, 120, 178));
    }
  }
  mnw.popup_code = -1;
  for (const auto& [x, hit] : {std::pair{8.0f, 1}, {580.0f, 1}, {300.0f, 0}}) {
    click(x, 370);
    EXPECT_EQ(BTN_zap_boxes(1), hit);
  }
}

TEST_F(ButnFrame, WindowsHaveTheirBar) {
  stls.window_title = "AB";
  const picture_map bar([] { BTN_fillwin(1, 1); });
  EXPECT_EQ(bar.text_at(392, 587), "AB");
  EXPECT_TRUE(bar.shows(0, 550 - 3 - 13, 102, 487));  // the bar over the panel
}

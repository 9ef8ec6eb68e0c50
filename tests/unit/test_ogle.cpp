// The text editor against a simple model of it, and case by case.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "tests/unit/ogle_page.h"

namespace {

constexpr float view_left = 100, view_bottom = 200;

// A page with a text of its own, wrapped at `wrap`, that records what is drawn.
class page : public measured_page {
 public:
  explicit page(float wrap_dx) : wrap(wrap_dx) {}

  std::string text;
  float wrap, scroll_x = 0, scroll_y = 0, height = 0;
  std::string drawn;

  OGLE_Rec& record() { return *rec; }
  void put(const std::string& s) {
    text = s;
    Repaginate();
  }

 protected:
  void GetVisibleBounds(OGLE_Bounds* b) override {
    *b = {view_left, view_bottom, view_left + view_dx, view_bottom + view_dy};
  }
  void GetLogicalBounds(OGLE_Bounds* b) override {
    // The text's top is at the view's top while nothing is scrolled.
    const float top = view_bottom + view_dy - scroll_y, dy = std::max(height, view_dy);
    *b = {view_left - scroll_x, top - dy, view_left - scroll_x + wrap, top};
    bottom_at_rest = view_bottom + view_dy - dy;
  }
  void SetLogicalHeight(float dy) override { height = dy; }
  void ScrollTo(float x, float y) override {
    scroll_x = x;
    // The editor counts from the text's bottom, the page from its top.
    scroll_y = y - (view_bottom - bottom_at_rest);
  }
  void GetText(const char** begin, const char** end) override {
    *begin = text.data();
    *end = text.data() + text.size();
  }
  void ReplaceText(int start, int end, const char* b, const char* e) override {
    ASSERT_LE(0, start);
    ASSERT_LE(start, end);
    ASSERT_LE(end, static_cast<int>(text.size()));
    text.replace(static_cast<size_t>(start), static_cast<size_t>(end - start), std::string(b, e));
  }
  float MeasureString(const char* b, const char* e) override {
    EXPECT_LE(text.data(), b);
    EXPECT_LE(b, e);
    EXPECT_LE(e, text.data() + text.size());
    return measured_page::MeasureString(b, e);
  }
  void DrawString(const char* b, const char* e, float x, float y) override {
    drawn += "'" + std::string(b, e) + "'" + at(x, y) + " ";
  }
  void DrawSelection(const OGLE_Bounds& b) override {
    drawn +=
        (b.left == b.right ? "caret" : "box") + at(b.left, b.bottom) + at(b.right, b.top) + " ";
  }

 private:
  float bottom_at_rest = 0;
  static std::string at(float x, float y) {
    return "(" + std::to_string(std::lround(x - view_left)) + "," +
           std::to_string(std::lround(y - view_bottom)) + ")";
  }
};

// --- the model -----------------------------------------------------------------------------------

struct model {
  std::string text;
  int start = 0, end = 0;
  bool end_active = true;
  float column = -1, wrap;

  int size() const { return static_cast<int>(text.size()); }
  float width(int from, int to) const {
    float dx = 0;
    for (int i = from; i < to; ++i)
      dx += width_of(text[static_cast<size_t>(i)]);
    return dx;
  }
  int skip(int at, bool spaces, bool breaks) const {
    const auto go = [&](char c) {
      const bool is_break = c == '\n' || c == '\r';
      return spaces ? is_space(c) && (breaks || !is_break) : !is_space(c);
    };
    while (at < size() && go(text[static_cast<size_t>(at)]))
      ++at;
    return at;
  }
  int end_of_line(int from) const {
    for (int at = from;;) {
      const int gap = skip(at, true, false);
      if (gap == size()) return gap;
      if (is_space(text[static_cast<size_t>(gap)])) return gap + 1;
      const int word = skip(gap, false, false);
      if (width(from, word) > wrap) return std::max(gap, from + 1);
      if (word == size()) return word;
      at = word;
    }
  }
  std::vector<int> lines() const {
    std::vector<int> starts = {0};
    for (int at = 0; at < size();) {
      at = end_of_line(at);
      if (at < size()) starts.push_back(at);
    }
    return starts;
  }
  int line_of(int position) const {
    const std::vector<int> starts = lines();
    const auto next = std::upper_bound(starts.begin(), starts.end(), position);
    return static_cast<int>(next - starts.begin()) - 1;
  }
  int fit(int line, float dx) const {
    const std::vector<int> starts = lines();
    const bool last = line + 1 == static_cast<int>(starts.size());
    const int from = starts[static_cast<size_t>(line)];
    const int to = last ? size() : starts[static_cast<size_t>(line) + 1] - 1;
    int at = from;
    while (at < to && dx > 0)
      dx -= width_of(text[static_cast<size_t>(at++)]);
    return at;
  }
  int point(float x, float y) const {  // from the text's upper left corner, y downward
    const int line = static_cast<int>(std::floor(y / line_height));
    if (line < 0) return 0;
    if (line >= static_cast<int>(lines().size())) return size();
    return fit(line, std::clamp(x, 0.0f, wrap));
  }
  int vertical(int position, int dir) {
    const int line = line_of(position);
    if (column == -1) column = width(lines()[static_cast<size_t>(line)], position);
    if (line + dir < 0) return 0;
    if (line + dir >= static_cast<int>(lines().size())) return size();
    return fit(line + dir, column);
  }
  void settle() {
    if (end < start) {
      std::swap(start, end);
      end_active = !end_active;
    }
    start = std::clamp(start, 0, size());
    end = std::clamp(end, 0, size());
  }
  void replace(const std::string& with) {
    text.replace(static_cast<size_t>(start), static_cast<size_t>(end - start), with);
    start = end = start + static_cast<int>(with.size());
    end_active = true;
  }
  void key(int ch, bool shift) {
    if (ch != 30 && ch != 31) column = -1;
    int& active = end_active ? end : start;
    int& passive = end_active ? start : end;
    const int dir = ch == 28 || ch == 30 ? -1 : 1;
    if (ch == 8) {
      if (start == end && start > 0) --start;
      replace("");
      return;
    }
    if (ch < 28 || ch > 31) return replace(std::string(1, static_cast<char>(ch)));
    const bool up_down = ch >= 30;
    if (shift) {
      if (up_down) {
        passive = vertical(passive, dir);
      } else {
        active += dir;
      }
    } else if (start != end) {
      start = end = dir < 0 ? start : end;
    } else {
      start = end = up_down ? vertical(start, dir) : start + dir;
    }
    settle();
  }
  void edit_outside(int from, int to, const std::string& with) {
    text.replace(static_cast<size_t>(from), static_cast<size_t>(to - from), with);
    const int delta = static_cast<int>(with.size()) - (to - from);
    if (to <= start && from <= start) {
      start += delta;
      end += delta;
    } else if (from <= start) {
      end += delta;
      if (end < start) start = end = std::max(start + delta, from);
    }
    settle();
  }
};

void expect_same(page& p, const model& m) {
  int start, end;
  p.GetSelection(&start, &end);
  ASSERT_EQ(p.text, m.text);
  ASSERT_EQ(start, m.start);
  ASSERT_EQ(end, m.end);
  ASSERT_EQ(p.record().end_is_active != 0, m.end_active);
  const std::vector<int> starts = m.lines();
  ASSERT_EQ(std::vector<int>(p.record().line_starts.begin(), p.record().line_starts.end()), starts);
  ASSERT_EQ(p.height, static_cast<float>(starts.size()) * line_height);
}

// The active end is in view, by the edge of its line that it moves towards.
void expect_revealed(page& p, const model& m) {
  const int at = m.end_active ? m.end : m.start, line = m.line_of(at);
  const float x = m.width(m.lines()[static_cast<size_t>(line)], at) - p.scroll_x;
  const float y =
      view_dy - p.scroll_y - static_cast<float>(line + (m.end_active ? 0 : 1)) * line_height;
  ASSERT_GE(x, 0);
  ASSERT_LE(x, view_dx);
  ASSERT_GE(y, 0);
  ASSERT_LE(y, view_dy);
}

std::string random_text(std::mt19937& random) {
  static const char letters[] = "abcdefgo  \n\n\r\tMW";
  std::string s(random() % 12, ' ');
  for (char& c : s)
    c = letters[random() % (sizeof letters - 1)];
  return s;
}

// One operation on both; whether it ends by bringing the active end into view.
bool operate(page& p, model& m, std::mt19937& random) {
  static const int keys[] = {8,  8,   28,  29,  30,  31,  28,   29,  30,
                             31, 'a', 'b', 'o', 'W', ' ', '\n', 0xE9};
  const bool flag = random() % 3 == 0;
  switch (random() % 10) {
    case 0:
    case 1: {
      const float x = static_cast<float>(random() % 120) - 20,
                  y = static_cast<float>(random() % 80) - 20;
      const float screen_x = view_left - p.scroll_x + x;
      const float screen_y = view_bottom + view_dy - p.scroll_y - y;
      const int at = m.point(x, y);
      m.column = -1;
      if (random() % 2) {
        (m.end_active ? m.end : m.start) = at;
        p.Drag(screen_x, screen_y);
      } else {
        if (!flag) m.start = at;
        const bool before = at < m.start;
        (before ? m.start : m.end) = at;
        m.end_active = !before;
        p.Click(screen_x, screen_y, flag);
      }
      m.settle();
      return true;
    }
    case 2: {
      // What lies outside is cut to what there is.
      const int a = static_cast<int>(random() % (m.text.size() + 5)) - 2;
      const int b = static_cast<int>(random() % (m.text.size() + 5)) - 2;
      const std::string with = m.size() > 150 ? "" : random_text(random);
      m.edit_outside(std::clamp(std::min(a, b), 0, m.size()),
                     std::clamp(std::max(a, b), 0, m.size()), with);
      p.DoReplaceText(std::min(a, b), std::max(a, b), with.data(), with.data() + with.size());
      return false;
    }
    case 3:
      m.start = static_cast<int>(random() % 60) - 10;
      m.end = static_cast<int>(random() % 60) - 10;
      p.SetSelection(m.start, m.end);
      m.settle();
      return false;
    default: {
      const int key = keys[random() % std::size(keys)];
      const bool at_start = key == 8 && m.start == 0 && m.end == 0;
      m.key(key, flag);
      p.Key(key, flag);
      return !at_start;
    }
  }
}

void run(unsigned seed, float wrap, int steps) {
  SCOPED_TRACE("seed " + std::to_string(seed) + " wrap " + std::to_string(wrap));
  std::mt19937 random(seed);
  page p(wrap);
  model m;
  m.wrap = wrap;
  p.Repaginate();
  for (int step = 0; step < steps; ++step) {
    SCOPED_TRACE("step " + std::to_string(step));
    const bool reveals = operate(p, m, random);
    ASSERT_NO_FATAL_FAILURE(expect_same(p, m));
    if (reveals) {
      ASSERT_NO_FATAL_FAILURE(expect_revealed(p, m));
    }
    if (step % 16 == 0) p.Draw(1);
    p.drawn.clear();
  }
}

}  // namespace

TEST(Ogle, AgreesWithAModelOverManyOperations) {
  // 120,000 operations; pages narrower and wider than their view, and one that never wraps.
  constexpr float wraps[] = {1024, 12, 45, 90};
  for (unsigned seed = 1; seed <= 40 && !HasFatalFailure(); ++seed)
    run(seed, wraps[seed % 4], 3000);
}

TEST(Ogle, AWordThatDoesNotMoveOnIsAByte) {
  class stuck_page : public page {
    using page::page;
    const char* WordBreak(const char* b, const char*) override { return b; }
  };
  stuck_page p(1000);
  p.put("ab c");
  p.Draw(0);
  EXPECT_EQ(p.drawn, "'ab c'(0,25) ");
}

TEST(Ogle, DrawsLinesSelectionAndCaret) {
  page p(1000);
  p.put("aaa\nbbb\nccc\nddd\neee");  // rows of 35 units: three whole and a half
  p.SetSelection(1, 9);
  p.Draw(1);
  // From the byte on, across the view, and up to the byte; the text over it, no caret.
  EXPECT_EQ(p.drawn,
            "box(3,25)(60,35) box(0,15)(60,25) box(0,5)(5,15) "
            "'aaa\n'(0,25) 'bbb\n'(0,15) 'ccc\n'(0,5) 'ddd\n'(0,-5) ");
  const std::tuple<const char*, int, int, const char*> rows[] = {
      {"on a boundary, the later line", 4, 1, "caret(0,15)(0,25) "},
      {"not active", 2, 0, ""},
      {"out of view", 17, 1, ""},
  };
  for (const auto& [label, at, active, caret] : rows) {
    p.drawn.clear();
    p.SetSelection(at, at);
    p.Draw(active);
    const size_t found = p.drawn.find("caret");
    EXPECT_EQ(found == std::string::npos ? "" : p.drawn.substr(found), caret) << label;
  }
}

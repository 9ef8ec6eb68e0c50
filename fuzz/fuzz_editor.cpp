// Fuzz target of the text editor: the input is a list of what a user does, two bytes each. After
// every one the selection lies in the text, and the lines begin in it, in order.

#include <algorithm>
#include <vector>

#include "fuzz/fuzz_util.h"
#include "tests/unit/ogle_page.h"

namespace {

constexpr size_t most_text = 300;

// A page that wraps and scrolls, with its text in a block of exactly its size, so that one byte
// too far is seen.
class page : public measured_page {
 public:
  page() { Repaginate(); }
  void check() const {
    int start = -1, end = -1;
    GetSelection(&start, &end);
    const int size = static_cast<int>(text.size());
    fuzz_check(0 <= start && start <= end && end <= size);
    fuzz_check(!rec->line_starts.empty() && rec->line_starts.front() == 0);
    fuzz_check(std::is_sorted(rec->line_starts.begin(), rec->line_starts.end()));
    fuzz_check(rec->line_starts.back() <= size);
  }
  std::vector<char> text;
  float wrap = 50;

 protected:
  void GetVisibleBounds(OGLE_Bounds* b) override { *b = {0, 0, view_dx, view_dy}; }
  void GetLogicalBounds(OGLE_Bounds* b) override {
    *b = {-x, view_dy + y - std::max(height, view_dy), wrap - x, view_dy + y};
  }
  void SetLogicalHeight(float dy) override { height = dy; }
  void ScrollTo(float to_x, float to_y) override {
    x = to_x;
    y = to_y;
  }
  void GetText(const char** begin, const char** end) override {
    *begin = text.data();
    *end = text.data() + text.size();
  }
  void ReplaceText(int start, int end, const char* b, const char* e) override {
    fuzz_check(0 <= start && start <= end && end <= static_cast<int>(text.size()));
    std::vector<char> made(text.begin(), text.begin() + start);
    made.insert(made.end(), b, e);
    made.insert(made.end(), text.begin() + end, text.end());
    made.shrink_to_fit();
    text.swap(made);
  }
  void DrawString(const char* b, const char* e, float, float) override {
    for (; b < e; ++b)
      drawn = drawn + static_cast<unsigned char>(*b);
  }
  void DrawSelection(const OGLE_Bounds&) override {}

 private:
  float x = 0, y = 0, height = 0;
  volatile unsigned drawn = 0;
};

void operate(page& one, int what, int value) {
  static constexpr int keys[] = {8, 28, 29, 30, 31};
  const float x = static_cast<float>(value % 16 * 6 - 12);
  const float y = static_cast<float>(value / 16 * 5 - 20);
  const int extend = what & 1;
  const int size = static_cast<int>(one.text.size());
  switch (what >> 1 & 7) {
    case 0:
      return one.Click(x, y, extend);
    case 1:
      return one.Drag(x, y);
    case 2:
      return one.SetSelection(value - 20, what - value);
    case 3:
      return one.Draw(extend);
    case 4: {
      const int start = value % (size + 1), end = start + what % (size - start + 1);
      const char with[] = "ab cd\ne\r\n ";
      return one.DoReplaceText(start, end, with, with + (size < 300 ? value % 10 : 0));
    }
    case 5:
      one.wrap = static_cast<float>(value % 64);
      return one.Repaginate();
    case 6:
      return one.Key(keys[static_cast<size_t>(value) % std::size(keys)], extend);
    default:
      if (one.text.size() < most_text) one.Key(value, extend);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  page one;
  for (size_t at = 0; at + 1 < size && at < 1000; at += 2) {
    operate(one, data[at], data[at + 1]);
    one.check();
  }
  return 0;
}

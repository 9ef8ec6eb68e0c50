// Main thread where it draws. Writes nothing.

#include "corekit/widgets/butn_lines.h"

#include "corekit/Platform/PLT_text.h"
#include "corekit/draw/oglp.h"

namespace {

constexpr float line_dy = 10;
constexpr char cut_mark[] = "...";

float width_of(std::string_view text) {
  return static_cast<float>(OGL_string_width(text));
}

}  // namespace

std::vector<std::string> BTN_lines(const std::string& given, float wrap) {
  const std::string text = PLT_needs_font_text(given) ? PLT_font_text(given) : given;
  std::vector<std::string> lines;
  size_t start = 0, good = 0;  // of the line being filled; behind its last break character
  float width = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n') {
      lines.push_back(text.substr(start, i - start));
      start = good = i + 1;
      width = 0;
      continue;
    }
    const float dx = static_cast<float>(OGL_char_width(static_cast<unsigned char>(text[i])));
    // A blank that no longer fits hangs over the edge unseen.
    while (width + dx > wrap && text[i] != ' ' && i > start) {
      const size_t end = good > start ? good : i;
      lines.push_back(text.substr(start, end - start));
      start = good = end;
      width = width_of(std::string_view(text).substr(start, i - start));
    }
    width += dx;
    if (text[i] == ' ' || text[i] == '/' || text[i] == '-') good = i + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

void BTN_cut_middle(std::vector<std::string>& lines, size_t most, float wrap) {
  if (lines.size() <= most) return;
  const auto keep_from = lines.begin() + static_cast<long>(most / 2);
  lines.erase(keep_from, keep_from + static_cast<long>(lines.size() - most));
  std::string& cut = lines[most / 2];
  while (!cut.empty() && width_of(cut_mark + cut) > wrap)
    cut.erase(0, 1);
  cut.insert(0, cut_mark);
}

void BTN_cut_end(std::vector<std::string>& lines, size_t most, float wrap) {
  if (lines.size() <= most) return;
  lines.resize(most);
  while (!lines.back().empty() && width_of(lines.back() + cut_mark) > wrap)
    lines.back().pop_back();
  lines.back() += cut_mark;
}

float BTN_plot_lines(int col, float x, float y, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    OGL_string(col, x, y, line, 0);
    y -= line_dy;
  }
  return y;
}

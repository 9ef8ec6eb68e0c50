// Where a link would lead, and whether two paths may be one.
//
// A link's text is judged twice: by itself, so that no later change to the folders that it names
// can turn it outward, and by what is on disk now. The first is why ".." may stand only at its
// start: "a/.." leads elsewhere once a link takes the place of the folder a. Any thread; no state.

#include <unistd.h>

#include <cerrno>
#include <climits>

#include "corekit/files/io_gate.h"

namespace {
constexpr int most_links = 40;  // as many as the kernel follows

// The parts of a path, without those that lead nowhere.
std::vector<std::string> parts_of(std::string_view path) {
  std::vector<std::string> parts;
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    if (!part.empty() && part != ".") parts.emplace_back(part);
    path.remove_prefix(std::min(path.size(), part.size() + 1));
  }
  return parts;
}

std::string joined(const std::vector<std::string>& parts) {
  std::string path;
  for (const std::string& part : parts) {
    if (!path.empty()) path += '/';
    path += part;
  }
  return path;
}

bool climbs_after_a_name(const std::vector<std::string>& parts) {
  bool named = false;
  for (const std::string& part : parts) {
    if (part != "..")
      named = true;
    else if (named)
      return true;
  }
  return false;
}

bool is_relative(std::string_view text) {
  return !text.empty() && text.front() != '/' && text.find('\0') == std::string_view::npos;
}

// Puts the parts of a link's text ahead of what is still to be walked.
void walk_first(std::vector<std::string>& reversed, std::string_view text) {
  const std::vector<std::string> parts = parts_of(text);
  reversed.insert(reversed.end(), parts.rbegin(), parts.rend());
}
}  // namespace

bool gate_class::stays_inside(const place& from, std::string_view target) {
  if (!is_relative(target) || climbs_after_a_name(parts_of(target))) return false;
  const int base = from.base ? from.base.get() : root_.get();
  std::vector<std::string> at = parts_of(from.below);
  std::vector<std::string> ahead;  // the next part last
  walk_first(ahead, target);
  bool exists = true;
  for (int links = 0; !ahead.empty();) {
    const std::string part = std::move(ahead.back());
    ahead.pop_back();
    if (part == "..") {
      if (at.empty() || !exists) return false;
      at.pop_back();
      continue;
    }
    at.push_back(part);
    if (!exists) continue;
    char text[PATH_MAX];
    const ssize_t length = readlinkat(base, joined(at).c_str(), text, sizeof text);
    if (length < 0) {
      if (errno == ENOENT || errno == ENOTDIR)
        exists = false;
      else if (errno != EINVAL)
        return false;  // EINVAL: no link
      continue;
    }
    const std::string_view further(text, static_cast<size_t>(length));
    if (!is_relative(further) || ++links > most_links) return false;
    at.pop_back();
    walk_first(ahead, further);
  }
  return true;
}

// --- names ---------------------------------------------------------------------------------------

namespace {
// The next letter of a UTF-8 text without its case, all beyond ASCII as 128; 0 at the end. The
// Kelvin sign and the long s, which fold to ASCII letters, are the two that must not be missed.
unsigned char next_folded(std::string_view& text) {
  if (text.empty()) return 0;
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 128) {
    text.remove_prefix(1);
    return first >= 'A' && first <= 'Z' ? static_cast<unsigned char>(first - 'A' + 'a') : first;
  }
  if (text.starts_with("\xE2\x84\xAA")) {
    text.remove_prefix(3);
    return 'k';
  }
  if (text.starts_with("\xC5\xBF")) {
    text.remove_prefix(2);
    return 's';
  }
  do {
    text.remove_prefix(1);
  } while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0) == 0x80);
  return 128;
}
}  // namespace

bool gate_same_path(std::string_view a, std::string_view b) {
  while (!a.empty() || !b.empty()) {
    if (next_folded(a) != next_folded(b)) return false;
  }
  return true;
}

// How the builder speaks: progress, notices, and alerts.
//
// Progress goes to standard error: on a terminal one line that is rewritten, elsewhere a line now
// and then. Main thread.

#include "Installer-f/builder/make_installer_say.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "corekit/Platform/PLT_text.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"

namespace {

constexpr int plain_step = 500;  // files between two lines where lines pile up

constexpr int most_warnings = 50;  // on standard error

bool line_is_open = false;  // the terminal's line holds progress and has not been ended
int last_plain = 0;         // the count of the last line where lines pile up
int warnings = 0;

size_t terminal_columns() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

// Cuts a UTF-8 text to so many bytes, and not within a character.
void cut(std::string& text, size_t bytes) {
  if (text.size() <= bytes) return;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
    --bytes;
  text.resize(bytes);
}

std::string time_text(double seconds) {
  const int whole = static_cast<int>(std::min(seconds + 0.999, 359999.0));
  if (whole < 60) return str_format("%d s", whole);
  if (whole < 3600) return str_format("%d min %d s", whole / 60, whole % 60);
  return str_format("%d h %d min", whole / 3600, whole / 60 % 60);
}

}  // namespace

void builder_progress(int done, const std::string& line, const std::string& path) {
  static const bool on_terminal = isatty(STDERR_FILENO) != 0;
  if (done < last_plain) last_plain = 0;  // another job
  if (!on_terminal && done < last_plain + plain_step) return;
  std::string text = PLT_terminal_text(line + " " + path);
  if (on_terminal) {
    cut(text, terminal_columns() - 1);
    std::fprintf(stderr, "\r%s\x1b[K", text.c_str());
    line_is_open = true;
  } else {
    last_plain = done;
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

void builder_progress_end() {
  if (line_is_open) std::fputc('\n', stderr);
  line_is_open = false;
}

std::string builder_rate(int64_t done_bytes, int64_t all_bytes, double seconds) {
  constexpr int64_t mb = 1000 * 1000;
  std::string text = str_format("%lld of %lld MB", static_cast<long long>(done_bytes / mb),
                                static_cast<long long>(all_bytes / mb));
  // The first second tells of opened files and cold caches, not of the pace.
  if (seconds < 1 || done_bytes <= 0) return text;
  const double left = static_cast<double>(all_bytes - done_bytes);
  return text + ", " + time_text(left * seconds / static_cast<double>(done_bytes)) + " left";
}

std::string builder_text(const std::string& text) {
  return UTL_translate_string(text);
}

void builder_log(const std::string& line) {
  xer << PLT_terminal_text(line) << '\n';
  xer.flush();
}

void builder_notice(const std::string& line) {
  builder_progress_end();
  std::fprintf(stderr, "%s\n", PLT_terminal_text(line).c_str());
  builder_log(line);
}

void builder_warning(const std::string& line) {
  (++warnings <= most_warnings ? builder_notice : builder_log)("WARNING: " + line);
  if (warnings == most_warnings) builder_notice("Further warnings go to the log only.");
}

int builder_warnings() {
  return warnings;
}

void builder_clear_warnings() {
  warnings = 0;
}

void builder_alert(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, alert_source source) {
  builder_progress_end();
  __MACIBM_alert(mnw.win_id, line_1, line_2, line_3, line_4, t_alert, source);
}

void builder_fatal(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, alert_source source) {
  builder_progress_end();
  __MACIBM_alert(mnw.win_id, line_1, line_2, line_3, line_4, t_exit, source);
  std::abort();  // not reached: the alert ends the process
}

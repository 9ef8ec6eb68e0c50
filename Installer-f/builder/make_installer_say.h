// How the builder speaks: progress, notices, and alerts. All of it goes to standard error, and all
// but the progress to the log as well. The makers' texts are English and stay so. Main thread.
#pragma once

#include <cstdint>
#include <string>

#include "corekit/base/hl_alert_source.h"

// The progress of a long job, `line` and the `path` in hand. On a terminal one line that is
// rewritten; elsewhere a line is written where `done`, the count that the line tells of, has gone
// on by 500.
void builder_progress(int done, const std::string& line, const std::string& path);
void builder_progress_end();

// "812 of 2093 MB, 11 s left", for a job that began `seconds` ago; no time before there is a guess.
std::string builder_rate(int64_t done_bytes, int64_t all_bytes, double seconds);

// A line for the log and for standard error: a notice, or with "WARNING: " before it.
void builder_notice(const std::string& line);
void builder_warning(const std::string& line);
int builder_warnings();         // how many there have been
void builder_clear_warnings();  // a new tree

// A text as the English language file has it. Texts that come in pieces are given piece by piece.
std::string builder_text(const std::string& text);

// A line for the log alone.
void builder_log(const std::string& line);

// An alert, and the fatal one, in the makers' English.
void builder_alert(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, alert_source source);
[[noreturn]] void builder_fatal(const std::string& line_1, const std::string& line_2,
                                const std::string& line_3, const std::string& line_4,
                                alert_source source);

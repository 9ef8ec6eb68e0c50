// How the builder speaks: progress, notices, and alerts. All of it goes to standard error, and all
// but the progress to the log as well. The makers' texts are English and stay so. Main thread.
#pragma once

#include <string>

// The progress of a long job: a line on standard error, rewritten in place on a terminal. `done` is
// the count that the line tells of.
void builder_progress(int done, const std::string& line, const std::string& path);
void builder_progress_end();

// A line for the log and for standard error: a notice, or with "WARNING: " before it.
void builder_notice(const std::string& line);
void builder_warning(const std::string& line);

// An alert, and the fatal one, in the makers' English. `source_line` is a fixed number that
// identifies the complaint.
void builder_alert(const std::string& line_1, const std::string& line_2, const std::string& line_3,
                   const std::string& line_4, int source_line);
[[noreturn]] void builder_fatal(const std::string& line_1, const std::string& line_2,
                                const std::string& line_3, const std::string& line_4,
                                int source_line);

// The wizard's modal questions. Each runs its own loop of frames and returns the answer.
#pragma once

#include <string>

// Two buttons, each beside its line. 1 for the first, 0 for the second, 3 when the question could
// not be put. Callers put "Cancel" or "Stop" first, so 0 always means go on. The second has the
// focus: whatever closes the question, Return, Escape, its box or the window's, answers 0.
int abort_alert(const std::string& question, const std::string& label_1, const std::string& line_1,
                const std::string& label_2, const std::string& line_2);

// Puts the install engine's pending error between `header` and `advice` and asks as abort_alert.
int UTIL_cancel_install(const std::string& header, const std::string& advice,
                        const std::string& label_1, const std::string& line_1,
                        const std::string& label_2, const std::string& line_2);

// What to do with a file that the user seems to have changed: a modified_answer of the engine.
// `location` is the file's full path; `gone` non-zero words the question for a deletion.
int select_alert(const std::string& location, int gone);

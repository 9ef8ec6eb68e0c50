// Answers about modified files, for a job that the user leaves and comes back to. Main thread.
//
// Selection asks anew each time that it decides, and so it should: who verifies again may want to
// answer differently. Within one job the user is asked once about a file, or a folder.
#pragma once

#include <string>

// choose_files, with the answers given since forget_answers, or since the user cancelled, taken for
// granted. Its result.
bool choose_files_again();
void forget_answers();

// The folder picker of a program that has no window to put one in front of.
//
// Main thread.

#include "corekit/OOPS_cpp/butn.h"

int GetFilePathFromUser(int, const std::string&, const std::string&, int, const std::string&,
                        std::string&) {
  return 0;
}

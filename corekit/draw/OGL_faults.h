// Known faults of drivers: which feature is not to be used with which renderer.
#pragma once

#include "corekit/draw/OGL_extensions.h"

struct OGL_fault {
  int OGL_extensions::*flag;  // cleared
  bool only_if_set;           // applies only while the flag is set
  int os_below;               // applies below this version of the system; 0 to all
  const char* renderers[2];   // the second may be null
  bool whole_name;            // the renderer's name is one of these; otherwise it holds one
  const char* kept_by;        // option that keeps the feature; null for none
  const char* log_line;
};

extern const OGL_fault OGL_faults[];  // in the order in which they apply
extern const int OGL_fault_count;

// Whether a fault applies, the option aside.
bool OGL_fault_applies(const OGL_fault& fault, const OGL_extensions& ext,
                       const std::string& renderer, int os_version);

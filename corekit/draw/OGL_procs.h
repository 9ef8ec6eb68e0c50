// The entry points beyond OpenGL 1.1, by the feature that brings them.
#pragma once

#include <span>

#include "corekit/draw/OGL_extensions.h"

struct OGL_proc_group {
  int OGL_extensions::*flag;  // cleared for good if one is missing
  std::span<const char* const> names;
};
std::span<const OGL_proc_group> OGL_proc_groups();

// What the two files of the texture manager share.
#pragma once

#include <string>

#include "corekit/UTL/UTL_thread.h"

// One load on its way: what is asked, and what the first half (pixels) hands to the second
// (OpenGL).
struct tex_load_vars {
  int fail_mode;
  int ref;
  int flags;
  const std::string& name;
  // from the first half
  int format = 0;  // of the pixels in scratch_array
  int pixel_bytes = 0;
  int dx = 0, dy = 0;  // texture size
  float scale_s = 1, scale_t = 1;
};

// Holds the manager's lock for a block.
class tman_lock {
 public:
  explicit tman_lock(UTL_critical_section& section) : section_(section) {
    UTL_critical_section_lock(&section_);
  }
  ~tman_lock() { UTL_critical_section_unlock(&section_); }
  tman_lock(const tman_lock&) = delete;
  tman_lock& operator=(const tman_lock&) = delete;

 private:
  UTL_critical_section& section_;
};

// Binds to unit 0 the texture that is being made, whatever gKillTex says. REQUIRES: a context.
void TEX_bind_for_load(unsigned gl_id);

// The manager's fatal alert; its third line gives the bad number.
void tman_alert(const char* text, const std::string& line_2, double value, int source_line);

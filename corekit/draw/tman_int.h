// What the files of the texture manager share.
#pragma once

#include <string>

#include "corekit/base/UTL_thread.h"
#include "corekit/base/hl_alert_source.h"

// One load on its way: what is asked, and what the first half (pixels) hands to the second
// (OpenGL).
struct tex_load_vars {
  int fail_mode;
  int ref;
  int flags;
  std::string name;
  // from the first half
  int format = 0;       // of the pixels in scratch_array
  int pixel_bytes = 0;  // 0 for a compressed picture
  int has_mipmaps = 0;  // of a compressed picture: its smaller levels follow
  int dx = 0, dy = 0;   // texture size
  float scale_s = 1, scale_t = 1;
};

// Whether load flags are valid; if not, a fatal alert, and 0.
int tman_check_flags(int flags, const std::string& name);

// Whether a name means the picture that lies in scratch_array.
bool tman_is_scratch(const std::string& name);

// Finds the file of a texture and makes it ready in scratch_array: in load.format, reduced as the
// setting and the flags ask, rows at the texture's width, margins cleared. A DDS that OpenGL can
// take as it is stays compressed. Fills load's results and returns 1; 0 if there is no such file,
// or none that makes a texture. Any thread, no OpenGL.
int load_any_into_scratch(const std::string& path, int flags, tex_load_vars& load);

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

// Binds to unit 0 whatever gKillTex says: a texture that is being made. REQUIRES: a context.
void TEX_bind_for_load(unsigned gl_id);

// The alert of a picture that is not there.
void tman_missing(const std::string& name, int type);
// The manager's fatal alert; its third line gives the bad number.
void tman_alert(const char* text, const std::string& line_2, double value, alert_source source);

// The table of driver faults. All of them are of old drivers of one system; the first two rows
// sleep where its version has no meaning.

#include "corekit/draw/OGL_faults.h"

#include <iterator>

#include "corekit/base/hl_string.h"

const OGL_fault OGL_faults[] = {
    {&OGL_extensions::occlude_avail,
     false,
     0x1040,
     {"NVIDIA NV34MAP OpenGL Engine", nullptr},
     false,
     "--use_pixel_counters",
     "Disabling occlusion queries on OS X 10.3 for nVidia.\n"},
    {&OGL_extensions::occlude_avail,
     true,
     0x1049,
     {"NVIDIA GeForce 7300 GT OpenGL Engine", nullptr},
     false,
     nullptr,
     "Disabling occlusion queries on OS X 10.4 for nVidia 7300 GT on 10.4.8.\n"},
    {&OGL_extensions::glsl_avail,
     true,
     0,
     {"Intel GMA 950 OpenGL Engine", nullptr},
     false,
     "--use_glsl",
     "Disabling GLSL for GMA 950.\n"},
    {&OGL_extensions::sprites_avail,
     true,
     0,
     {"ATI Radeon HD 2600 PRO OpenGL Engine", "ATI Radeon HD 2400 XT OpenGL Engine"},
     true,
     "--use_sprites",
     "Disabling point sprites for Radeon HD on OS X.\n"},
};
const int OGL_fault_count = static_cast<int>(std::size(OGL_faults));

bool OGL_fault_applies(const OGL_fault& fault, const OGL_extensions& ext,
                       const std::string& renderer, int os_version) {
  if (fault.only_if_set && !(ext.*fault.flag)) return false;
  if (fault.os_below && os_version >= fault.os_below) return false;
  for (const char* name : fault.renderers) {
    if (name && (fault.whole_name ? renderer == name : str_holds(renderer, name))) return true;
  }
  return false;
}

// What the graphics driver can do. Main thread; writes glExt.

#include "corekit/OGL/OGL_extensions.h"

#include "corekit/GenC/hl_alert.h"

OGL_extensions glExt;

void OGL_extensions::threaded_ogl_failed() {
  if (!threaded_avail) return;
  threaded_avail = 0;
  __MACIBM_alert(
      0, "There was a problem setting up OpenGL.",
      "You can still fly, but you may experience pauses during flight while scenery loads.",
      "Please send the log file to Tessaron Labs, so that we can look into it.", "", t_alert,
      "OGL/OGL_extensions", 19);
}

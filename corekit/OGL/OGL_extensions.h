// What the graphics driver can do, as plain flags that the toolkit reads.
#pragma once

class OGL_extensions {
 public:
  // A second thread failed to get a context. Withdraws the capability for the rest of the run and
  // tells the user, once. Main thread.
  void threaded_ogl_failed();

  int threaded_avail = 0;  // OpenGL on several threads; never set in this program
};

extern OGL_extensions glExt;

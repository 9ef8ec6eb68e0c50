// The desktop's folder window. Another program shows it: the desktop's own service for this where
// there is one, else zenity or kdialog, whichever is installed. So it is started and then asked
// once a frame: it must not be able to hang this program. One at a time. Main thread only.
#pragma once

#include <string>

enum PLT_picker_state : int {
  plt_picker_none,       // none is installed, or what was started has failed
  plt_picker_running,    // ask again
  plt_picker_chosen,     // the user has chosen: the path is filled in
  plt_picker_cancelled,  // the user closed it without choosing
};

// Starts the first that can be had. `title` is UTF-8, `start_in` a folder that ends in "/" or
// nothing. Returns plt_picker_running or plt_picker_none.
int PLT_picker_start(const std::string& title, const std::string& start_in);
// Where it stands. `path` is filled in on plt_picker_chosen: absolute, without a trailing "/"
// unless it is "/" itself. After any answer but plt_picker_running it is over. One that fails is
// followed by the next kind.
int PLT_picker_poll(std::string* path);
void PLT_picker_cancel();  // ends it, with all that it has started

// What the shared runtime asks of the application that is built on it. The runtime never includes
// an application's header: the application fills this record before MACIBM_init, and the runtime
// calls through it. An entry that is not filled does nothing. Main thread only.
#pragma once

#include <string>

class scan_class;

struct APP_record {
  // The title that the log and the window bear; static text.
  const char* title = "";
  // Host name of the maker's web server, which serves "serverlist9.txt" on port 80; static text.
  const char* web_host = "";
  // What the console is told when no window can be opened; static text, empty for nothing.
  const char* no_window = "";

  // One frame of the application's own interface. Called by MACIBM_event_proc unless a dialog is
  // up.
  void (*update)() = [] {};
  // The user picked an item of a menu. The wizard has no menus of its own.
  void (*handle_menu)(int menu, int item) = [](int, int) {};
  // A failure ends the program: takes away what is half made. Other threads may still be at work.
  void (*given_up)() = [] {};
  // Answers a request to quit that comes from outside the pages (the window's close button, a
  // signal).
  void (*quit_request)() = [] {};

  // The application's own command-line options, as paragraphs for the usage text.
  std::string (*usage)() = [] { return std::string(); };
  // Whether this run was asked to do without a window. Called once, when the command line is known.
  bool (*without_window)() = [] { return false; };
  // Carries each variable of the application's preference file through `scan`, in file order, to or
  // from the file as the scan's direction says.
  void (*prefs_io)(scan_class& scan) = [](scan_class&) {};
  // Starts another program in this one's place, with "-path" and `path` unless that is empty. Saves
  // the preferences first. Returns only on failure, with its errno.
  int (*launch)(const std::string& app,
                const std::string& path) = [](const std::string&, const std::string&) { return 0; };
};
extern APP_record APP;

// What the shared runtime asks of the application that is built on it. The runtime never includes
// an application's header; it calls these by name, and the application defines them.
#pragma once

#include <string>

class scan_class;

// One frame of the application's own interface. Called by MACIBM_event_proc unless a dialog is up.
void APP_update();

// The user picked an item of a menu. The wizard has no menus of its own.
void APP_handlemenu(int menu, int item);

// The title that the log names; an edition supplies it.
const char* APP_title();

// The application's own command-line options, as paragraphs for the usage text.
std::string APP_usage();

// Carries each variable of the application's preference file through `scan`, in file order, to or
// from the file as the scan's direction says.
void APP_prefs_io(scan_class& scan);

// Whether this run was asked to do without a window. Called once, when the command line is known.
bool APP_without_window();

// Answers a request to quit that comes from outside the pages (the window's close button, a
// signal).
void APP_quit_request();

// Host name of the maker's web server, which serves "serverlist9.txt" on port 80.
const char* APP_web_host();

// Starts another program in this one's place, with "-path" and `path` unless that is empty. Saves
// the preferences first. Returns only on failure, with its errno.
int APP_launch(const std::string& app, const std::string& path);

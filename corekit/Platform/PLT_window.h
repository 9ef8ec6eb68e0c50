// The window library, as far as the program needs it. Where no display can be had every call
// answers so, and the program runs without drawing.
#pragma once

#include <string>

// Whether a window could be opened here at all.
bool PLT_has_display();

// The platform's plain alert, for when nothing can be drawn: a message box where there is a
// display, standard error always. Returns when the user has seen it.
void PLT_plain_alert(const std::string& message, const std::string& explanation);

// Opens `url` in the user's browser. Returns false if nothing could be started.
bool PLT_open_url(const std::string& url);

// Waits up to `milliseconds` for an event, or until PLT_wake is called from any thread.
void PLT_wait_event(int milliseconds);
void PLT_wake();

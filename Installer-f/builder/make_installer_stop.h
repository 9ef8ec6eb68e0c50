// How a maker ends a build: Ctrl-C, SIGTERM or SIGHUP from anywhere, the key "q" on the terminal.
// Main thread.
#pragma once

// While one lives, those signals are only noted, and the terminal hands over each key at once.
class builder_stop_watch {
 public:
  builder_stop_watch();
  ~builder_stop_watch();
  builder_stop_watch(const builder_stop_watch&) = delete;
  builder_stop_watch& operator=(const builder_stop_watch&) = delete;
};

// Whether the build is to end. Cheap enough to be asked for every file.
bool builder_stopped();

// By what: the signal's number, or 0 for the key; -1 while nothing has.
int builder_stop_signal();

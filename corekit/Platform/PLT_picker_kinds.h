// The kinds of folder window that PLT_picker.cpp chooses among. Only files of this folder may
// include it. Main thread.
#pragma once

#include <string>
#include <string_view>

struct PLT_picker_question {
  std::string title, start_in;  // as in PLT_picker_start
};

struct PLT_picker_kind {
  bool (*start)(const PLT_picker_question&);  // false if it cannot be had; then nothing is held
  int (*poll)(std::string* path);             // a PLT_picker_state; none means that it has failed
  void (*stop)();                             // after each good start, whatever poll has said
};

// The desktop's service, by the message bus.
bool plt_portal_start(const PLT_picker_question& question);
int plt_portal_poll(std::string* path);
void plt_portal_stop();
// The path that a "file:" URI of this machine means; empty for any other.
std::string plt_path_of_uri(std::string_view uri);

// A program that writes the path.
bool plt_zenity_start(const PLT_picker_question& question);
bool plt_kdialog_start(const PLT_picker_question& question);
int plt_program_poll(std::string* path);
void plt_program_stop();

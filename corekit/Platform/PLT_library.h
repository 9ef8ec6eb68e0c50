// A library of the desktop, taken in when it is first wanted: a run without a window needs none,
// and starts on a machine that has none.
//
// Whoever uses one lists the calls that it makes, once. From the list come a struct with a pointer
// for each call, of the type that the library's own header gives it, and the loop that fills it.
// Only files of this folder may include this one.
#pragma once

#include <initializer_list>
#include <string>

// Takes in the first of `names` that is there, for the rest of the process. Any thread. False, with
// the loader's words in `error` (null: not wanted), without one.
bool plt_open_library(std::initializer_list<const char*> names, std::string* error);

// The address of a call of a library that has been taken in; null, with `error`, if it has none of
// that name. What has been preloaded into the program comes first.
void* plt_find_call(const char* name, std::string* error);

// Fills one pointer; false as above.
template <class call_type>
bool plt_take_call(call_type*& call, const char* name, std::string* error) {
  call = reinterpret_cast<call_type*>(plt_find_call(name, error));
  return call != nullptr;
}

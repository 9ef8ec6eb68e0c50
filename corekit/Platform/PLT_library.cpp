// Libraries that are taken in at run time. They join the program's own scope, so that what is
// preloaded stands before them. Keeps nothing; any thread.

#include "corekit/Platform/PLT_library.h"

#include <dlfcn.h>

namespace {

void note(std::string* error) {
  const char* said = dlerror();
  if (error) *error = said ? said : "";
}

}  // namespace

bool plt_open_library(std::initializer_list<const char*> names, std::string* error) {
  for (const char* name : names) {
    if (dlopen(name, RTLD_NOW | RTLD_GLOBAL)) return true;
    note(error);
  }
  return false;
}

void* plt_find_call(const char* name, std::string* error) {
  void* const found = dlsym(RTLD_DEFAULT, name);
  if (!found) note(error);
  return found;
}

// The message bus's library. Written once, by the first thread that wants a bus.

#include "corekit/Platform/PLT_dbus_calls.h"

#include "corekit/Platform/PLT_library.h"

plt_dbus_calls dbus;

bool plt_load_dbus() {
  static const bool loaded = [] {
    bool whole = plt_open_library({"libdbus-1.so.3"}, nullptr);
#define TAKE(name) whole = whole && plt_take_call(dbus.name, "dbus_" #name, nullptr);
    PLT_DBUS_CALLS(TAKE)
#undef TAKE
    return whole;
  }();
  return loaded;
}

// The desktop's message bus, as far as the program needs it: a connection of its own, calls with a
// limit of time, signals as they come. Only files of this folder may include it.
//
// A connection belongs to one thread. Nothing here waits unless it says so, and a bus that is not
// there, or says nothing, is no failure: callers have another way.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "corekit/Platform/PLT_dbus_calls.h"

struct PLT_dbus_free {
  void operator()(DBusConnection* link) const;  // closes it
  void operator()(DBusMessage* message) const;
};
using PLT_dbus_link = std::unique_ptr<DBusConnection, PLT_dbus_free>;
using PLT_dbus_message = std::unique_ptr<DBusMessage, PLT_dbus_free>;

enum PLT_dbus_bus { plt_session_bus, plt_system_bus };

// --- a connection --------------------------------------------------------------------------------

// A new connection, whose greeting is under way; null without a bus.
PLT_dbus_link PLT_dbus_open(PLT_dbus_bus bus);
bool PLT_dbus_is_open(
    DBusConnection* link);  // false once the bus has gone, or refused the greeting
// The name by which others know it, such as ":1.42"; empty until the greeting is answered.
std::string PLT_dbus_name(DBusConnection* link);

// --- messages ------------------------------------------------------------------------------------

// A call without arguments yet. Null when memory is short.
PLT_dbus_message PLT_dbus_new_call(const char* service, const char* object, const char* interface,
                                   const char* method);

// A signal of ours, without arguments yet, for PLT_dbus_send. Null when memory is short.
PLT_dbus_message PLT_dbus_new_signal(const char* object, const char* interface, const char* name);

// One entry of a call's options.
struct PLT_dbus_option {
  const char* name;
  char type;          // 's' a text, 'b' yes, 'n' no, 'y' bytes with a zero at their end, '%' a
                      //   fraction, given in whole hundredths
  std::string value;  // not of 'b' and 'n'
};
// Appends them as a dictionary (a{sv}). False when memory is short, or a text is not UTF-8.
bool PLT_dbus_add_options(DBusMessage* message, std::initializer_list<PLT_dbus_option> options);

// Sends it: the number that its answer bears, or 0.
uint32_t PLT_dbus_send(DBusConnection* link, const PLT_dbus_message& message);
// Asks the bus for the signals that fit `rule`. From then on: what is sent later is answered later.
void PLT_dbus_listen(DBusConnection* link, const std::string& rule);

// Takes the next message that has come, waiting for it until the clock of PLT_microseconds says
// `deadline` (0: not at all). Null if there is none.
PLT_dbus_message PLT_dbus_next(DBusConnection* link, uint64_t deadline);
// Whether it answers, by result or by error, what PLT_dbus_send gave that number.
bool PLT_dbus_answers(DBusMessage* message, uint32_t number);

// Sends it and waits for the result until `deadline`. Null without one: an error, or no answer.
// What else comes meanwhile is dropped.
PLT_dbus_message PLT_dbus_call(DBusConnection* link, const PLT_dbus_message& message,
                               uint64_t deadline);

// The calls that are made of the message bus's library, as `dbus.message_unref(...)`. Only files of
// this folder may include it.
#pragma once

#include <dbus/dbus.h>

// One that is missing here does not compile.
// clang-format off
#define PLT_DBUS_CALLS(CALL) \
  CALL(address_escape_value) CALL(bus_get_unique_name) CALL(bus_set_unique_name) \
  CALL(connection_close) CALL(connection_get_is_connected) CALL(connection_open_private) \
  CALL(connection_pop_message) CALL(connection_read_write) CALL(connection_send) \
  CALL(connection_unref) CALL(free) CALL(message_append_args) CALL(message_get_args) \
  CALL(message_get_reply_serial) CALL(message_get_sender) CALL(message_get_type) \
  CALL(message_has_path) CALL(message_has_sender) CALL(message_has_signature) \
  CALL(message_is_signal) CALL(message_iter_append_basic) CALL(message_iter_append_fixed_array) \
  CALL(message_iter_close_container) CALL(message_iter_get_arg_type) \
  CALL(message_iter_get_basic) CALL(message_iter_get_element_type) CALL(message_iter_init) \
  CALL(message_iter_init_append) CALL(message_iter_next) CALL(message_iter_open_container) \
  CALL(message_iter_recurse) CALL(message_new_method_call) CALL(message_new_signal) CALL(message_set_no_reply) \
  CALL(message_unref) CALL(validate_utf8)
// clang-format on

#define PLT_DBUS_POINTER(name) decltype(&::dbus_##name) name = nullptr;
struct plt_dbus_calls {
  PLT_DBUS_CALLS(PLT_DBUS_POINTER)
};
#undef PLT_DBUS_POINTER

extern plt_dbus_calls dbus;  // null, all of them, before the library is loaded

// Loads the library, once. False if it is not there: then there is no bus. Any thread.
bool plt_load_dbus();

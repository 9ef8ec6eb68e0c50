// The message bus. Messages are taken from the connection one by one and told apart by the number
// that they answer: there are no callbacks, and so no turn of the library's own loop that could
// call one.

#include "corekit/Platform/PLT_dbus.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "corekit/Platform/PLT_system.h"

namespace {

constexpr uint32_t greeting_number = 1;  // it is the first message of its connection

// Where the bus listens; empty without one. Only sockets of this machine are taken: "autolaunch:"
// would start a bus, and a bus elsewhere knows neither this machine's folders nor its drives.
std::string address_of(PLT_dbus_bus bus) {
  const bool system = bus == plt_system_bus;
  std::string address;
  if (const char* set = getenv(system ? "DBUS_SYSTEM_BUS_ADDRESS" : "DBUS_SESSION_BUS_ADDRESS")) {
    address = set;
  } else if (system) {
    address = "unix:path=/run/dbus/system_bus_socket";
  } else if (const char* run = getenv("XDG_RUNTIME_DIR")) {
    if (char* const path = dbus.address_escape_value((std::string(run) + "/bus").c_str())) {
      address = std::string("unix:path=") + path;
      dbus.free(path);
    }
  }
  return address.starts_with("unix:") ? address : "";
}

bool add_bytes(DBusMessageIter* variant, const std::string& value) {
  DBusMessageIter bytes;
  const char* const text = value.c_str();
  return dbus.message_iter_open_container(variant, DBUS_TYPE_ARRAY, "y", &bytes) &&
         dbus.message_iter_append_fixed_array(&bytes, DBUS_TYPE_BYTE, &text,
                                              static_cast<int>(value.size()) + 1) &&
         dbus.message_iter_close_container(variant, &bytes);
}

bool add_option(DBusMessageIter* list, const PLT_dbus_option& option) {
  DBusMessageIter entry, variant;
  const char* const text = option.value.c_str();
  const dbus_bool_t yes = option.type == 'b';
  const double fraction = std::strtod(text, nullptr) / 100;
  // A type of the bus, its name, and where its value is.
  const struct {
    char option;
    int type;
    const char* name;
    const void* value;
  } rows[] = {{'s', DBUS_TYPE_STRING, "s", &text},
              {'b', DBUS_TYPE_BOOLEAN, "b", &yes},
              {'n', DBUS_TYPE_BOOLEAN, "b", &yes},
              {'%', DBUS_TYPE_DOUBLE, "d", &fraction},
              {'y', DBUS_TYPE_ARRAY, "ay", nullptr}};
  const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                       [&](const auto& r) { return r.option == option.type; });
  if (row == std::end(rows)) return false;
  if (option.type == 's' && !dbus.validate_utf8(text, nullptr)) return false;
  return dbus.message_iter_open_container(list, DBUS_TYPE_DICT_ENTRY, nullptr, &entry) &&
         dbus.message_iter_append_basic(&entry, DBUS_TYPE_STRING, &option.name) &&
         dbus.message_iter_open_container(&entry, DBUS_TYPE_VARIANT, row->name, &variant) &&
         (row->value ? dbus.message_iter_append_basic(&variant, row->type, row->value)
                     : add_bytes(&variant, option.value)) &&
         dbus.message_iter_close_container(&entry, &variant) &&
         dbus.message_iter_close_container(list, &entry);
}

// Takes the bus's answer to the greeting out of the stream.
bool is_greeting(DBusConnection* link, DBusMessage* message) {
  if (!PLT_dbus_answers(message, greeting_number)) return false;
  const char* name = nullptr;
  if (dbus.message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_RETURN &&
      dbus.message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID)) {
    dbus.bus_set_unique_name(link, name);
  } else {
    dbus.connection_close(link);
  }
  return true;
}

}  // namespace

void PLT_dbus_free::operator()(DBusConnection* link) const {
  dbus.connection_close(link);
  dbus.connection_unref(link);
}

void PLT_dbus_free::operator()(DBusMessage* message) const {
  dbus.message_unref(message);
}

PLT_dbus_link PLT_dbus_open(PLT_dbus_bus bus) {
  if (!plt_load_dbus()) return nullptr;
  const std::string address = address_of(bus);
  if (address.empty()) return nullptr;
  // Not dbus_bus_get_private, which waits for the bus's answer, for half a minute if need be.
  PLT_dbus_link link(dbus.connection_open_private(address.c_str(), nullptr));
  if (!link) return nullptr;
  const PLT_dbus_message greeting =
      PLT_dbus_new_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello");
  if (PLT_dbus_send(link.get(), greeting) != greeting_number) return nullptr;
  return link;
}

bool PLT_dbus_is_open(DBusConnection* link) {
  return dbus.connection_get_is_connected(link);
}

std::string PLT_dbus_name(DBusConnection* link) {
  const char* const name = dbus.bus_get_unique_name(link);
  return name ? name : "";
}

PLT_dbus_message PLT_dbus_new_call(const char* service, const char* object, const char* interface,
                                   const char* method) {
  return PLT_dbus_message(dbus.message_new_method_call(service, object, interface, method));
}

PLT_dbus_message PLT_dbus_new_signal(const char* object, const char* interface, const char* name) {
  return PLT_dbus_message(dbus.message_new_signal(object, interface, name));
}

bool PLT_dbus_add_options(DBusMessage* message, std::initializer_list<PLT_dbus_option> options) {
  DBusMessageIter end, list;
  dbus.message_iter_init_append(message, &end);
  if (!dbus.message_iter_open_container(&end, DBUS_TYPE_ARRAY, "{sv}", &list)) return false;
  const auto add = [&](const PLT_dbus_option& option) { return add_option(&list, option); };
  return std::all_of(options.begin(), options.end(), add) &&
         dbus.message_iter_close_container(&end, &list);
}

uint32_t PLT_dbus_send(DBusConnection* link, const PLT_dbus_message& message) {
  uint32_t number = 0;
  if (!message || !dbus.connection_send(link, message.get(), &number)) return 0;
  return number;
}

void PLT_dbus_listen(DBusConnection* link, const std::string& rule) {
  const PLT_dbus_message call =
      PLT_dbus_new_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "AddMatch");
  const char* const text = rule.c_str();
  if (!call || !dbus.message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID)) {
    return;
  }
  dbus.message_set_no_reply(call.get(), TRUE);
  PLT_dbus_send(link, call);
}

PLT_dbus_message PLT_dbus_next(DBusConnection* link, uint64_t deadline) {
  for (bool has_read = false;;) {
    PLT_dbus_message message(dbus.connection_pop_message(link));
    if (message && is_greeting(link, message.get())) continue;
    if (message || !PLT_dbus_is_open(link)) return message;
    const uint64_t now = PLT_microseconds();
    if (has_read && now >= deadline) return nullptr;
    const int left_ms = now >= deadline ? 0 : static_cast<int>((deadline - now) / 1000 + 1);
    dbus.connection_read_write(link, left_ms);
    has_read = true;
  }
}

bool PLT_dbus_answers(DBusMessage* message, uint32_t number) {
  return number != 0 && dbus.message_get_reply_serial(message) == number;
}

PLT_dbus_message PLT_dbus_call(DBusConnection* link, const PLT_dbus_message& message,
                               uint64_t deadline) {
  const uint32_t number = PLT_dbus_send(link, message);
  if (number == 0) return nullptr;
  PLT_dbus_message answer;
  do {
    answer = PLT_dbus_next(link, deadline);
    if (!answer || PLT_microseconds() > deadline) return nullptr;
  } while (!PLT_dbus_answers(answer.get(), number));
  const bool good = dbus.message_get_type(answer.get()) == DBUS_MESSAGE_TYPE_METHOD_RETURN;
  return good ? std::move(answer) : nullptr;
}

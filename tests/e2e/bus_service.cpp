// Plays services of a desktop on the session's bus: the portal with its folder window, the disk
// service, notifications and the launcher.
//
//   bus-service PORTAL [DISK DEVICE POINT]
//
// PORTAL is how the portal behaves: a URI that the user chooses, or one of the words below; DISK
// the same for the disk service, whose second disc has that device number and is mounted there.
// Says "ready" once it can be called, and then a line for each call.

#include <dbus/dbus.h>
#include <sys/mount.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

DBusConnection* bus;
std::string portal = "none", disk = "none", point;
uint64_t device = 0;

// Sends a message with these arguments: a letter of the bus's types and the value, or "[", "{" or
// "<" for the start of a list, an entry or a variant, with the type of what is in it, up to "]".
void send(DBusMessage* message, const std::vector<std::string>& arguments) {
  DBusMessageIter at[8], *in = at;
  dbus_message_iter_init_append(message, in);
  for (const std::string& argument : arguments) {
    const char kind = argument[0], *const rest = argument.c_str() + 1;
    const uint64_t number = std::strtoull(rest, nullptr, 10);
    if (kind == ']') {
      --in;
      dbus_message_iter_close_container(in, in + 1);
    } else if (kind == '[' || kind == '{' || kind == '<') {
      const int type = kind == '[' ? DBUS_TYPE_ARRAY : kind == '{' ? DBUS_TYPE_DICT_ENTRY : 'v';
      dbus_message_iter_open_container(in, type, *rest ? rest : nullptr, in + 1);
      ++in;
    } else if (kind == 'u') {
      const auto half = static_cast<uint32_t>(number);
      dbus_message_iter_append_basic(in, kind, &half);
    } else {
      dbus_message_iter_append_basic(in, kind, kind == 't' ? &number : (const void*)&rest);
    }
  }
  dbus_connection_send(bus, message, nullptr);
  dbus_message_unref(message);
}

void answer(DBusMessage* call, const std::vector<std::string>& arguments) {
  send(dbus_message_new_method_return(call), arguments);
}

void refuse(DBusMessage* call, const char* error) {
  send(dbus_message_new_error(call, error, "not here"), {});
}

// Arguments, however they are nested.
void say(DBusMessageIter* at) {
  for (; const int type = dbus_message_iter_get_arg_type(at); dbus_message_iter_next(at)) {
    DBusBasicValue value;
    DBusMessageIter inner;
    if (!dbus_type_is_basic(type)) {
      dbus_message_iter_recurse(at, &inner);
      say(&inner);
      continue;
    }
    dbus_message_iter_get_basic(at, &value);
    if (type == DBUS_TYPE_STRING) std::printf(" %s", value.str);
    if (type == DBUS_TYPE_BOOLEAN) std::printf(" %s", value.bool_val ? "yes" : "no");
    if (type == DBUS_TYPE_DOUBLE) std::printf(" %.2f", value.dbl);
    if (type == DBUS_TYPE_BYTE) std::printf("%c", value.byt);
  }
}

// --- the portal ----------------------------------------------------------------------------------

void respond(const std::string& handle, const char* response, const std::string& uri) {
  std::vector<std::string> arguments = {response, "[{sv}", "{", "suris", "<as", "[s"};
  if (!uri.empty()) arguments.push_back("s" + uri);
  arguments.insert(arguments.end(), {"]", "]", "]", "]"});
  send(dbus_message_new_signal(handle.c_str(), "org.freedesktop.portal.Request", "Response"),
       arguments);
}

void open_file(DBusMessage* call) {
  if (portal == "silent") return;
  if (portal == "fails") return refuse(call, DBUS_ERROR_FAILED);
  std::string sender = dbus_message_get_sender(call) + 1;
  sender[sender.find('.')] = '_';
  const std::string handle = "/org/freedesktop/portal/desktop/request/" + sender + "/" +
                             (portal == "elsewhere" ? "other" : "skyvane_folder");
  if (portal == "early") respond(handle, "u0", "file:///early");
  answer(call, {"o" + handle});
  if (portal == "dies") {
    dbus_connection_flush(bus);
    std::exit(0);
  }
  if (portal.find(':') != std::string::npos) respond(handle, "u0", portal);
  if (portal == "nothing") respond(handle, "u0", "");
  if (portal == "cancelled") respond(handle, "u1", "");
  if (portal == "ended") respond(handle, "u2", "");
  if (portal == "busy") respond(handle + "x", "u0", "file:///for/another");
}

void tell_version(DBusMessage* call) {
  if (portal == "mute") return;
  if (portal == "none") return refuse(call, DBUS_ERROR_UNKNOWN_INTERFACE);
  answer(call, {"<u", portal == "old" ? "u2" : "u3", "]"});
}

// --- the disk service ----------------------------------------------------------------------------

void list_discs(DBusMessage* call) {
  const uint64_t numbers[] = {device + 1, disk == "strange" ? 0 : device, device + 2};
  std::vector<std::string> list = {"[{oa{sa{sv}}}"};
  for (int i = 0; i < 3; ++i) {
    const std::string name = std::to_string(i + 1), number = std::to_string(numbers[i]);
    list.insert(list.end(), {"{", "o/block/" + name, "[{sa{sv}}", "{",
                             "sorg.freedesktop.UDisks2.Block", "[{sv}"});
    list.insert(list.end(), {"{", "sDeviceNumber", "<t", "t" + number, "]", "]"});
    list.insert(list.end(), {"{", "sDrive", "<o", "o/drives/" + name, "]", "]"});
    list.insert(list.end(), {"]", "]", "]", "]"});
  }
  list.push_back("]");
  answer(call, list);
}

void unmount(DBusMessage* call) {
  if (disk == "refuses") return refuse(call, "org.freedesktop.UDisks2.Error.NotAuthorized");
  umount(point.c_str());
  if (disk != "forgets") answer(call, {});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) portal = argv[1];
  if (argc > 4) {
    disk = argv[2];
    device = std::strtoull(argv[3], nullptr, 10);
    point = argv[4];
  }
  bus = dbus_bus_get(DBUS_BUS_SESSION, nullptr);
  if (!bus) return 1;
  for (const char* const name : {"org.freedesktop.portal.Desktop", "org.freedesktop.UDisks2",
                                 "org.freedesktop.Notifications"})
    dbus_bus_request_name(bus, name, 0, nullptr);
  dbus_bus_add_match(bus, "type='signal',interface='com.canonical.Unity.LauncherEntry'", nullptr);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::puts("ready");
  while (dbus_connection_read_write(bus, -1)) {
    while (DBusMessage* const call = dbus_connection_pop_message(bus)) {
      const bool is_signal =
          dbus_message_is_signal(call, "com.canonical.Unity.LauncherEntry", "Update");
      if (is_signal || dbus_message_get_type(call) == DBUS_MESSAGE_TYPE_METHOD_CALL) {
        const std::string method = dbus_message_get_member(call);
        DBusMessageIter arguments;
        std::printf("%s %s", method.c_str(), dbus_message_get_path(call));
        if (dbus_message_iter_init(call, &arguments)) say(&arguments);
        std::puts("");
        if (method == "Get") tell_version(call);
        if (method == "OpenFile") open_file(call);
        if (method == "GetManagedObjects") list_discs(call);
        if (method == "Unmount") unmount(call);
        if (method == "Notify") answer(call, {"u1"});
        if (method == "Eject") answer(call, {});
      }
      dbus_message_unref(call);
    }
  }
}

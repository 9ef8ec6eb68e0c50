// The desktop's own folder window, which its portal service shows at a program's request:
//
//   what version is there   at least 3, the first that lets choose a folder
//   OpenFile                answered at once, by the object that stands for the request
//   Response                that object's signal, when the user has chosen; he may take his time
//
// The service must answer to each call within some seconds, and must stay on the bus until the end.
// What does not is stopped, and another kind of window is tried.
//
// Main thread.

#include <strings.h>

#include <algorithm>
#include <cstring>

#include "corekit/Platform/PLT_dbus.h"
#include "corekit/Platform/PLT_picker.h"
#include "corekit/Platform/PLT_picker_kinds.h"
#include "corekit/Platform/PLT_system.h"
#include "corekit/Platform/PLT_window.h"

namespace {

constexpr char service[] = "org.freedesktop.portal.Desktop";
constexpr char object[] = "/org/freedesktop/portal/desktop";
constexpr char chooser[] = "org.freedesktop.portal.FileChooser";
constexpr char request[] = "org.freedesktop.portal.Request";
constexpr char properties[] = "org.freedesktop.DBus.Properties";
constexpr char token[] = "skyvane_folder";

constexpr uint64_t answer_us = 4'000'000;  // for each call; the first may have to start the service
constexpr uint32_t first_with_folders = 3;
constexpr uint32_t response_chosen = 0, response_cancelled = 1;
constexpr int messages_a_poll = 64;

struct portal_state {
  PLT_dbus_link link;
  PLT_picker_question question;
  uint32_t call = 0;      // the one whose answer is waited for; 0: it is the user who is waited for
  uint64_t deadline = 0;  // of that answer
  std::string owner;      // the connection of the service; empty until the version is known
  std::string handle;     // the object of the request; empty until it is made
};
portal_state portal;

bool wait_for_answer(uint32_t call) {
  portal.call = call;
  portal.deadline = PLT_microseconds() + answer_us;
  return call != 0;
}

bool ask_version() {
  const char *of = chooser, *property = "version";
  const PLT_dbus_message call = PLT_dbus_new_call(service, object, properties, "Get");
  return call &&
         dbus.message_append_args(call.get(), DBUS_TYPE_STRING, &of, DBUS_TYPE_STRING, &property,
                                  DBUS_TYPE_INVALID) &&
         wait_for_answer(PLT_dbus_send(portal.link.get(), call));
}

// The version in the answer; 0 without one.
uint32_t version_in(DBusMessage* answer) {
  DBusMessageIter at, value;
  uint32_t version = 0;
  if (!dbus.message_has_signature(answer, "v")) return 0;
  dbus.message_iter_init(answer, &at);
  dbus.message_iter_recurse(&at, &value);
  if (dbus.message_iter_get_arg_type(&value) != DBUS_TYPE_UINT32) return 0;
  dbus.message_iter_get_basic(&value, &version);
  return version;
}

// The object that the request will be, which is known beforehand so that its signal is not missed.
std::string handle_to_be() {
  std::string sender = PLT_dbus_name(portal.link.get());
  sender.erase(0, 1);  // ":"
  std::replace(sender.begin(), sender.end(), '.', '_');
  return std::string(object) + "/request/" + sender + "/" + token;
}

bool ask_for_folder() {
  portal.handle = handle_to_be();
  PLT_dbus_listen(portal.link.get(), std::string("type='signal',sender='") + service +
                                         "',interface='" + request + "',member='Response',path='" +
                                         portal.handle + "'");
  const std::string parent = PLT_window_handle();
  const char* const parent_text = parent.c_str();
  const char* const title = portal.question.title.c_str();
  const PLT_dbus_message call = PLT_dbus_new_call(service, object, chooser, "OpenFile");
  if (!call || !dbus.validate_utf8(title, nullptr) ||
      !dbus.message_append_args(call.get(), DBUS_TYPE_STRING, &parent_text, DBUS_TYPE_STRING,
                                &title, DBUS_TYPE_INVALID)) {
    return false;
  }
  const PLT_dbus_option name = {"handle_token", 's', token}, folder = {"directory", 'b', ""},
                        start_in = {"current_folder", 'y', portal.question.start_in};
  const bool good = portal.question.start_in.empty()
                        ? PLT_dbus_add_options(call.get(), {name, folder})
                        : PLT_dbus_add_options(call.get(), {name, folder, start_in});
  return good && wait_for_answer(PLT_dbus_send(portal.link.get(), call));
}

// The first path of a Response's result, a dictionary (a{sv}) with a list of URIs.
std::string chosen_path(DBusMessageIter* results) {
  DBusMessageIter list, entry, value, uris;
  dbus.message_iter_recurse(results, &list);
  for (; dbus.message_iter_get_arg_type(&list) == DBUS_TYPE_DICT_ENTRY;
       dbus.message_iter_next(&list)) {
    const char *name = "", *uri = "";
    dbus.message_iter_recurse(&list, &entry);
    dbus.message_iter_get_basic(&entry, &name);
    if (std::strcmp(name, "uris") != 0) continue;
    dbus.message_iter_next(&entry);
    dbus.message_iter_recurse(&entry, &value);
    if (dbus.message_iter_get_arg_type(&value) != DBUS_TYPE_ARRAY ||
        dbus.message_iter_get_element_type(&value) != DBUS_TYPE_STRING) {
      continue;
    }
    dbus.message_iter_recurse(&value, &uris);
    if (dbus.message_iter_get_arg_type(&uris) != DBUS_TYPE_STRING) continue;
    dbus.message_iter_get_basic(&uris, &uri);
    return plt_path_of_uri(uri);
  }
  return "";
}

int take_response(DBusMessage* signal, std::string* path) {
  DBusMessageIter at;
  uint32_t response = 0;
  portal.handle.clear();  // the object is gone
  if (!dbus.message_has_signature(signal, "ua{sv}")) return plt_picker_none;
  dbus.message_iter_init(signal, &at);
  dbus.message_iter_get_basic(&at, &response);
  if (response == response_cancelled) return plt_picker_cancelled;
  if (response != response_chosen) return plt_picker_none;
  dbus.message_iter_next(&at);
  *path = chosen_path(&at);
  return path->empty() ? plt_picker_none : plt_picker_chosen;
}

// The answer to the present call leads to the next step.
int take_answer(DBusMessage* answer) {
  if (dbus.message_get_type(answer) != DBUS_MESSAGE_TYPE_METHOD_RETURN) return plt_picker_none;
  portal.call = 0;
  if (portal.owner.empty()) {
    const char* const sender = dbus.message_get_sender(answer);
    if (!sender || version_in(answer) < first_with_folders) return plt_picker_none;
    portal.owner = sender;
    return ask_for_folder() ? plt_picker_running : plt_picker_none;
  }
  const char* handle = nullptr;
  dbus.message_get_args(answer, nullptr, DBUS_TYPE_OBJECT_PATH, &handle, DBUS_TYPE_INVALID);
  if (!handle) return plt_picker_none;
  const bool as_expected = handle == portal.handle;
  portal.handle = handle;
  return as_expected ? plt_picker_running : plt_picker_none;
}

int take_signal(DBusMessage* signal, std::string* path) {
  if (portal.owner.empty()) return plt_picker_running;  // the service may only just be starting
  if (dbus.message_is_signal(signal, DBUS_INTERFACE_DBUS, "NameOwnerChanged")) {
    return plt_picker_none;
  }
  const bool is_response = dbus.message_is_signal(signal, request, "Response") &&
                           dbus.message_has_sender(signal, portal.owner.c_str()) &&
                           dbus.message_has_path(signal, portal.handle.c_str());
  return is_response ? take_response(signal, path) : plt_picker_running;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = static_cast<char>(c | 0x20);
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

}  // namespace

std::string plt_path_of_uri(std::string_view uri) {
  const auto drop = [&](std::string_view start) {
    const bool has =
        uri.size() >= start.size() && strncasecmp(uri.data(), start.data(), start.size()) == 0;
    if (has) uri.remove_prefix(start.size());
    return has;
  };
  if (!drop("file:")) return "";
  if (drop("//")) drop("localhost");
  if (!uri.starts_with('/')) return "";  // another machine's
  std::string path;
  for (size_t at = 0; at < uri.size(); ++at) {
    char c = uri[at];
    if (c == '?' || c == '#') return "";  // it means more than a file
    if (c == '%') {
      const int high = at + 2 < uri.size() ? hex_digit(uri[at + 1]) : -1;
      const int low = high >= 0 ? hex_digit(uri[at + 2]) : -1;
      if (low < 0) return "";
      c = static_cast<char>(high * 16 + low);
      at += 2;
    }
    if (c == '\0') return "";
    path += c;
  }
  return path;
}

bool plt_portal_start(const PLT_picker_question& question) {
  portal = {};
  portal.link = PLT_dbus_open(plt_session_bus);
  if (!portal.link) return false;
  portal.question = question;
  PLT_dbus_listen(portal.link.get(), std::string("type='signal',sender='" DBUS_SERVICE_DBUS
                                                 "',interface='" DBUS_INTERFACE_DBUS
                                                 "',member='NameOwnerChanged',arg0='") +
                                         service + "'");
  if (ask_version()) return true;
  portal = {};
  return false;
}

int plt_portal_poll(std::string* path) {
  for (int i = 0; i < messages_a_poll; ++i) {
    const PLT_dbus_message message = PLT_dbus_next(portal.link.get(), 0);
    if (!message) break;
    const int state = PLT_dbus_answers(message.get(), portal.call)
                          ? take_answer(message.get())
                          : take_signal(message.get(), path);
    if (state != plt_picker_running) return state;
  }
  const bool late = portal.call != 0 && PLT_microseconds() > portal.deadline;
  return late || !PLT_dbus_is_open(portal.link.get()) ? plt_picker_none : plt_picker_running;
}

void plt_portal_stop() {
  // Also when the service has not answered: it must not open a window later.
  if (!portal.handle.empty()) {
    PLT_dbus_send(portal.link.get(),
                  PLT_dbus_new_call(portal.owner.c_str(), portal.handle.c_str(), request, "Close"));
  }
  portal = {};
}

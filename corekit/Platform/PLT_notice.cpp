// Progress is a signal of com.canonical.Unity.LauncherEntry, which docks of several desktops hear;
// a notification is a call of org.freedesktop.Notifications (Desktop Notifications Specification
// 1.2). One connection serves both, is opened when there is first something to show, and stays: the
// entry is cleared by the listeners when its sender goes.
//
// Main thread. Writes plt_identity.

#include "corekit/Platform/PLT_notice.h"

#include <algorithm>
#include <cmath>

#include "corekit/Platform/PLT_dbus.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window_sdl.h"

PLT_identity plt_identity;

namespace {

constexpr char launcher[] = "com.canonical.Unity.LauncherEntry";
constexpr char notices[] = "org.freedesktop.Notifications";
constexpr char notices_object[] = "/org/freedesktop/Notifications";
constexpr int messages_a_frame = 16;

PLT_dbus_link bus_link;
int shown_percent = -1;  // on the launcher; -1 nothing

// The connection; null without a bus.
DBusConnection* connection() {
  if (!bus_link) bus_link = PLT_dbus_open(plt_session_bus);
  return bus_link.get();
}

// Any path below this one will do that is the entry's alone.
std::string launcher_object(const std::string& uri) {
  uint32_t hash = 5381;
  for (const char c : uri)
    hash = hash * 33 + static_cast<unsigned char>(c);
  return "/com/canonical/unity/launcherentry/" + std::to_string(hash);
}

// A notification's text is marked up.
std::string without_marks(const std::string& text) {
  std::string plain;
  for (const char c : text)
    plain += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return plain;
}

bool add_text(DBusMessage* message, const char* text) {
  return dbus.message_append_args(message, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
}

}  // namespace

void PLT_introduce(const PLT_identity& identity) {
  plt_identity = identity;
}

void PLT_show_progress(float fraction) {
  const int percent =
      fraction < 0 ? -1 : static_cast<int>(std::lround(std::clamp(fraction, 0.0f, 1.0f) * 100));
  if (percent == shown_percent) return;
  shown_percent = percent;
  if (!*plt_identity.id || !connection()) return;
  const std::string uri = std::string("application://") + plt_identity.id + ".desktop";
  const PLT_dbus_message signal =
      PLT_dbus_new_signal(launcher_object(uri).c_str(), launcher, "Update");
  const std::string progress = std::to_string(percent < 0 ? 0 : percent);
  if (signal && add_text(signal.get(), uri.c_str()) &&
      PLT_dbus_add_options(signal.get(), {{"progress", '%', progress},
                                          {"progress-visible", percent < 0 ? 'n' : 'b', ""}})) {
    PLT_dbus_send(bus_link.get(), signal);
  }
}

void PLT_notify(const std::string& title, const std::string& text) {
  if (!connection()) return;
  const std::string shown[] = {PLT_terminal_text(title), without_marks(PLT_terminal_text(text))};
  const PLT_dbus_message call = PLT_dbus_new_call(notices, notices_object, notices, "Notify");
  const uint32_t replaces = 0;
  const int32_t as_long_as_usual = -1;
  const char* none[] = {""};
  const char** const actions = none;
  if (!call || !add_text(call.get(), plt_identity.name) ||
      !dbus.message_append_args(call.get(), DBUS_TYPE_UINT32, &replaces, DBUS_TYPE_INVALID) ||
      !add_text(call.get(), plt_identity.icon_name) || !add_text(call.get(), shown[0].c_str()) ||
      !add_text(call.get(), shown[1].c_str()) ||
      !dbus.message_append_args(call.get(), DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &actions, 0,
                                DBUS_TYPE_INVALID) ||
      !PLT_dbus_add_options(call.get(), {{"desktop-entry", 's', plt_identity.id}}) ||
      !dbus.message_append_args(call.get(), DBUS_TYPE_INT32, &as_long_as_usual,
                                DBUS_TYPE_INVALID)) {
    return;
  }
  PLT_dbus_send(bus_link.get(), call);
}

void PLT_notice_frame() {
  if (!bus_link) return;
  for (int i = 0; i < messages_a_frame && PLT_dbus_next(bus_link.get(), 0); ++i) {
  }
  if (!PLT_dbus_is_open(bus_link.get())) bus_link.reset();
}

// To be rid of a disc: the desktop's disk service is asked first, since it may do for its user what
// a program of that user may not, and then the programs that are there for it. The mount table has
// the last word: failure may be reported for a drive whose tray cannot move, or nothing at all by a
// service that waits for something else, though the disc is unmounted.
//
// Any thread; it takes seconds.

#include <cerrno>
#include <cstring>
#include <initializer_list>

#include "corekit/Platform/PLT_dbus.h"
#include "corekit/Platform/PLT_system.h"

namespace {

constexpr uint64_t unmount_us = 5'000'000;  // for the service to know the disc, and to unmount it
constexpr uint64_t eject_us = 4'000'000;    // and for the drive to give it out
constexpr int program_seconds = 6;          // for each program

constexpr char service[] = "org.freedesktop.UDisks2";
constexpr char manager_object[] = "/org/freedesktop/UDisks2";
constexpr char block_interface[] = "org.freedesktop.UDisks2.Block";
constexpr char filesystem_interface[] = "org.freedesktop.UDisks2.Filesystem";
constexpr char drive_interface[] = "org.freedesktop.UDisks2.Drive";

// Calls `visit` with the key of each entry of a dictionary, and the iterator at its value.
template <typename visitor>
void for_each_entry(DBusMessageIter* dictionary, visitor visit) {
  DBusMessageIter list, entry;
  dbus.message_iter_recurse(dictionary, &list);
  for (; dbus.message_iter_get_arg_type(&list) == DBUS_TYPE_DICT_ENTRY;
       dbus.message_iter_next(&list)) {
    const char* key = "";
    dbus.message_iter_recurse(&list, &entry);
    dbus.message_iter_get_basic(&entry, &key);
    dbus.message_iter_next(&entry);
    visit(key, &entry);
  }
}

// The value of a variant, if it is of that type.
template <typename value_type>
void take_value(DBusMessageIter* variant, int type, value_type* value) {
  DBusMessageIter at;
  dbus.message_iter_recurse(variant, &at);
  if (dbus.message_iter_get_arg_type(&at) == type) dbus.message_iter_get_basic(&at, value);
}

// What the service calls a device, and the drive that it is in; both empty if it does not know it.
struct known_device {
  std::string block, drive;
};

known_device find_device(DBusMessage* objects, uint64_t device) {
  known_device found;
  DBusMessageIter at;
  if (!dbus.message_has_signature(objects, "a{oa{sa{sv}}}")) return found;
  dbus.message_iter_init(objects, &at);
  for_each_entry(&at, [&](const char* object, DBusMessageIter* interfaces) {
    for_each_entry(interfaces, [&](const char* interface, DBusMessageIter* properties) {
      if (std::strcmp(interface, block_interface) != 0) return;
      uint64_t number = 0;
      const char* drive = "";
      for_each_entry(properties, [&](const char* property, DBusMessageIter* value) {
        if (std::strcmp(property, "DeviceNumber") == 0)
          take_value(value, DBUS_TYPE_UINT64, &number);
        if (std::strcmp(property, "Drive") == 0) take_value(value, DBUS_TYPE_OBJECT_PATH, &drive);
      });
      if (number != 0 && number == device) found = {object, drive};
    });
  });
  return found;
}

// It asks the user nothing: no permission is a no.
void ask_service(DBusConnection* link, const std::string& object, const char* interface,
                 const char* method, uint64_t deadline) {
  const PLT_dbus_message call = PLT_dbus_new_call(service, object.c_str(), interface, method);
  if (call && PLT_dbus_add_options(call.get(), {{"auth.no_user_interaction", 'b', ""}})) {
    PLT_dbus_call(link, call, deadline);
  }
}

bool is_mounted(const std::string& point) {
  return !PLT_mount_at(point).fstype.empty();
}

void eject_by_service(const PLT_mount& mount) {
  const uint64_t deadline = PLT_microseconds() + unmount_us;
  const PLT_dbus_link link = PLT_dbus_open(plt_system_bus);
  if (!link) return;
  const PLT_dbus_message objects =
      PLT_dbus_call(link.get(),
                    PLT_dbus_new_call(service, manager_object, "org.freedesktop.DBus.ObjectManager",
                                      "GetManagedObjects"),
                    deadline);
  if (!objects) return;
  const known_device found = find_device(objects.get(), mount.device);
  if (found.block.empty()) return;
  ask_service(link.get(), found.block, filesystem_interface, "Unmount", deadline);
  // An image that is mounted by a loop device is in no drive: "/".
  if (is_mounted(mount.point) || found.drive.size() <= 1) return;
  ask_service(link.get(), found.drive, drive_interface, "Eject", PLT_microseconds() + eject_us);
}

}  // namespace

int PLT_eject(const std::string& path) {
  std::string point = path;
  while (point.size() > 1 && point.back() == '/')
    point.pop_back();
  const PLT_mount mount = PLT_mount_at(point);
  if (mount.fstype.empty() || point == "/") return EINVAL;

  const char* const at = point.c_str();
  const char* const eject[] = {"eject", at, nullptr};
  const char* const release[] = {"fusermount", "-u", at, nullptr};
  const char* const release_3[] = {"fusermount3", "-u", at, nullptr};
  const char* const unmount[] = {"umount", at, nullptr};
  // The service and eject look for a device behind the mount, and an image that a program serves
  // has none.
  const bool is_fuse = mount.fstype.starts_with("fuse.");
  if (!is_fuse) {
    eject_by_service(mount);
    if (!is_mounted(point)) return 0;
  }
  const std::initializer_list<const char* const*> for_fuse = {release, release_3, unmount};
  const std::initializer_list<const char* const*> for_drive = {eject, unmount};
  for (const char* const* const argv : is_fuse ? for_fuse : for_drive) {
    PLT_run_program(argv, program_seconds);
    if (!is_mounted(point)) return 0;
  }
  return EBUSY;
}

// The test program's own edition: what an edition supplies to the system (its start page and its
// title), and the start of the runner. A test begins in an empty working folder of its own.

#include <gtest/gtest.h>

#include <cstdlib>

#include "Installer-f/wizard/main_app.h"

int main(int argc, char** argv) {
  // No test meets the desktop that it runs on.
  for (const char* const bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
    setenv(bus, "unix:path=/nonexistent", 1);
  for (const char* const proxy : {"http_proxy", "no_proxy"})
    unsetenv(proxy);
  wizard_serve(nullptr, "Skyvane Unit Tests", "unit-tests");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

// How large the desktop wants things: its own setting first, then the screen's resolution.
//
// Main thread. Keeps nothing.

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "corekit/Platform/PLT_window_sdl.h"

namespace {

constexpr float usual_dpi = 96;

float number_of(const char* text) {
  const float number = text ? std::strtof(text, nullptr) : 0;
  return std::isfinite(number) ? std::max(number, 0.0f) : 0;
}

// The resource "Xft.dpi", which desktops on X set; 0 without. The window library has loaded the
// functions for it, or there is no such display.
float xft_dpi() {
  void* const library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
  if (!library) return 0;
  using open_call = void* (*)(const char*);
  using default_call = char* (*)(void*, const char*, const char*);
  using close_call = int (*)(void*);
  const auto open = reinterpret_cast<open_call>(dlsym(library, "XOpenDisplay"));
  const auto get = reinterpret_cast<default_call>(dlsym(library, "XGetDefault"));
  const auto close = reinterpret_cast<close_call>(dlsym(library, "XCloseDisplay"));
  float dpi = 0;
  if (open && get && close) {
    if (void* const display = open(nullptr)) {
      dpi = number_of(get(display, "Xft", "dpi"));
      close(display);
    }
  }
  dlclose(library);
  return dpi;
}

}  // namespace

float plt_desktop_scale() {
  const char* const driver = sdl.GetCurrentVideoDriver();
  // Elsewhere the desktop scales the window itself, or nobody sees it.
  if (!driver || std::strcmp(driver, "x11") != 0) return 1;
  float scale = number_of(std::getenv("GDK_SCALE"));
  if (scale < 1) {
    float dpi = xft_dpi();
    if (dpi <= 0 && sdl.GetDisplayDPI(0, &dpi, nullptr, nullptr) != 0) dpi = usual_dpi;
    scale = dpi / usual_dpi;
  }
  return std::clamp(std::round(scale * 2) / 2, 1.0f, 4.0f);
}

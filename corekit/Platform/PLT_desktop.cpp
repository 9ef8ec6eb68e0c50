// What the desktop does for the program: a message box, the user's browser, and the window's name
// for those who show something above it.
//
// Main thread. Neither is tried unless a display is open that somebody sees: a box that nobody can
// answer would hold the program up for ever.

#include <SDL_syswm.h>

#include <cstdio>

#include "corekit/Platform/PLT_library.h"
#include "corekit/Platform/PLT_text.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/Platform/PLT_window_sdl.h"

void PLT_plain_alert(const std::string& message, const std::string& explanation) {
  const std::string shown[] = {PLT_terminal_text(message), PLT_terminal_text(explanation)};
  std::fprintf(stderr, "%s\n%s\n", shown[0].c_str(), shown[1].c_str());
  std::fflush(stderr);
  if (!PLT_has_display() || !plt_display_is_seen()) return;
  // Shown beside the window and not in it: what is wrong may be the window.
  const std::string text = PLT_short_lines(shown[0] + "\n\n" + shown[1]);
  sdl.ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, "Skyvane", text.c_str(), nullptr);
}

bool PLT_open_url(const std::string& url) {
  return plt_display_is_seen() && sdl.OpenURL(url.c_str()) == 0;
}

std::string PLT_window_handle() {
  // Not in the table: its header brings those of the window system, for this file alone.
  decltype(&::SDL_GetWindowWMInfo) ask = nullptr;
  if (!plt_window || !plt_take_call(ask, "SDL_GetWindowWMInfo", nullptr)) return "";
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (!ask(plt_window, &info)) return "";
  if (info.subsystem != SDL_SYSWM_X11) return "";
  char name[32];
  std::snprintf(name, sizeof name, "x11:%lx", info.info.x11.window);
  return name;
}

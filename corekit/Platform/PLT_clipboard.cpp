// The clipboard, as the window library has it. It is not asked before a window stands, since it
// would have none.
//
// Main thread.

#include "corekit/Platform/PLT_clipboard.h"

#include "corekit/Platform/PLT_window_sdl.h"

bool PLT_clipboard_put(const std::string& utf8) {
  return plt_sdl_runs() && sdl.SetClipboardText(utf8.c_str()) == 0;
}

std::string PLT_clipboard_text() {
  if (!plt_sdl_runs()) return "";
  char* held = sdl.GetClipboardText();
  if (!held) return "";
  std::string text = held;
  sdl.free(held);
  return text;
}

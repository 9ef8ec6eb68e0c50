// The clipboard, as the window library has it. It is not asked before a window stands, since it
// would have none.
//
// Main thread.

#include "corekit/Platform/PLT_clipboard.h"

#include <SDL.h>

bool PLT_clipboard_put(const std::string& utf8) {
  return SDL_WasInit(SDL_INIT_VIDEO) && SDL_SetClipboardText(utf8.c_str()) == 0;
}

std::string PLT_clipboard_text() {
  if (!SDL_WasInit(SDL_INIT_VIDEO)) return "";
  char* held = SDL_GetClipboardText();
  if (!held) return "";
  std::string text = held;
  SDL_free(held);
  return text;
}

// What the files of the window library share: its calls, and the window. Only files of this folder
// may include it.
#pragma once

#include <SDL.h>

#include <string>

// Every call that is made of the library; one that is missing here does not compile.
// clang-format off
#define PLT_SDL_CALLS(CALL) \
  CALL(CreateRGBSurfaceWithFormatFrom) CALL(CreateSystemCursor) CALL(CreateWindow) CALL(DestroyWindow) CALL(FreeCursor) CALL(FreeSurface) \
  CALL(GL_CreateContext) CALL(GL_DeleteContext) CALL(GL_GetDrawableSize) CALL(GL_GetProcAddress) \
  CALL(GL_MakeCurrent) CALL(GL_ResetAttributes) CALL(GL_SetAttribute) CALL(GL_SetSwapInterval) \
  CALL(GL_SwapWindow) CALL(GetClipboardText) CALL(GetCurrentVideoDriver) \
  CALL(GetDesktopDisplayMode) CALL(GetDisplayDPI) CALL(GetDisplayUsableBounds) CALL(GetError) CALL(GetKeyFromScancode) CALL(GetWindowFlags) CALL(GetWindowSize) CALL(InitSubSystem) \
  CALL(OpenURL) CALL(PeepEvents) CALL(PollEvent) CALL(PushEvent) CALL(QuitSubSystem) \
  CALL(RegisterEvents) CALL(SetClipboardText) CALL(SetCursor) CALL(SetHint) CALL(SetWindowIcon) CALL(SetWindowMinimumSize) CALL(ShowCursor) \
  CALL(ShowSimpleMessageBox) CALL(WaitEventTimeout) CALL(WasInit) CALL(free)
// clang-format on

#define PLT_SDL_POINTER(name) decltype(&::SDL_##name) name = nullptr;
struct plt_sdl_calls {
  PLT_SDL_CALLS(PLT_SDL_POINTER)
};
#undef PLT_SDL_POINTER

extern plt_sdl_calls sdl;  // null, all of them, before the library is loaded

// Loads the library, once. False, with the reason, if it is not there. Main thread.
bool plt_load_sdl(std::string* error);
// Whether the library is loaded and has its display open.
bool plt_sdl_runs();

extern SDL_Window* plt_window;  // the one window; null while none is open

struct PLT_identity;
extern PLT_identity plt_identity;  // of PLT_introduce

// From a place in the window, as an event tells it, to the picture's units from its upper left; of
// one beside the picture both are -1, or, while the button is `held`, the nearest place in it: what
// is dragged stops at the edge.
void plt_to_picture(int* x, int* y, bool held);

// Pixels that a unit of the picture should have by what the desktop says, in halves from 1 to 4.
float plt_desktop_scale();

// Whether the display is open and somebody sees it.
bool plt_display_is_seen();

// From now on wake-ups go through the library's event queue, or no longer do.
void plt_wake_through_events(bool on);

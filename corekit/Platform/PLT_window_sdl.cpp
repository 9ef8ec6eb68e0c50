// The window library's calls. Main thread; writes sdl.

#include "corekit/Platform/PLT_window_sdl.h"

#include "corekit/Platform/PLT_library.h"

plt_sdl_calls sdl;

namespace {

bool load(std::string* error) {
  if (!plt_open_library({"libSDL2-2.0.so.0"}, error)) return false;
  plt_sdl_calls found;
  bool whole = true;
#define TAKE(name) whole = whole && plt_take_call(found.name, "SDL_" #name, error);
  PLT_SDL_CALLS(TAKE)
#undef TAKE
  if (whole) sdl = found;
  return whole;
}

}  // namespace

bool plt_load_sdl(std::string* error) {
  return sdl.WasInit || load(error);
}

bool plt_sdl_runs() {
  return sdl.WasInit && sdl.WasInit(SDL_INIT_VIDEO);
}

// Preloaded into a program with a window, writes down when it shows a picture: one line for each
// call of SDL_GL_SwapWindow, in seconds of the system's clock, to the file named by SWAP_CLOCK.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

struct SDL_Window;

extern "C" void SDL_GL_SwapWindow(SDL_Window* window) {
  // The program takes the library in at run time, and calls this in its stead.
  static const auto real = reinterpret_cast<void (*)(SDL_Window*)>(
      dlsym(dlopen("libSDL2-2.0.so.0", RTLD_LAZY), "SDL_GL_SwapWindow"));
  static const char* name = std::getenv("SWAP_CLOCK");
  static FILE* file = name ? std::fopen(name, "w") : nullptr;
  real(window);
  timespec now;
  if (!file || clock_gettime(CLOCK_REALTIME, &now) != 0) return;
  std::fprintf(file, "%lld.%09ld\n", static_cast<long long>(now.tv_sec), now.tv_nsec);
  std::fflush(file);
}

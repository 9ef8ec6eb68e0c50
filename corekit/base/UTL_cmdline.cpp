// The command line: parsing, the flags that end the run, and the usage text.
//
// Main thread, once, before any other thread exists. Writes cmdline and the log.

#include "corekit/base/UTL_cmdline.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "corekit/base/cmnd.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/xer.h"

UTL_cmdline cmdline;

namespace {

constexpr char usage_head[] =
    R"(Usage: Skyvane [options...]

Skyvane can take a number of command-line flags, in the form of --flag or
--flag=value.

--help or -h
  This prints this message, which lists all of the command-line options, and
  then quits.

--version
  This prints the name of the program and its version, and then quits.
)";

// The flags of the whole family; a program reads those that concern it.
constexpr char usage_family[] =
    R"(
FLAGS OF THE SIMULATOR

The flags below are those of all programs of the Skyvane family. For a program
that installs, few of them make a difference.

--no_sound
  This runs Skyvane without initializing the sound hardware. Use it if your
  sound drivers keep Skyvane from starting.


OPTIONS TO DISABLE HARDWARE ACCELERATION

Skyvane finds out by itself what your graphics card can do. If a driver claims
a feature that does not work, you may see wrong colors or a crash at start-up.
The options below turn off one feature each. Use them one at a time to find the
one that fails, and let us know about it: please send us the log file.

--no_vbos
  This disables vertex buffer objects, which keep the shape of the scenery in
  the memory of the graphics card. It also disables pixelbuffer objects, which
  cannot do without them.

--no_fbos
  This disables framebuffer objects, which draw into textures, for example for
  reflections in water.

--no_pbos
  This disables pixelbuffer objects, which move textures to the card in the
  background.

--no_sprites
  This disables point sprites, which draw lights and smoke quickly.

--no_pixel_counters
  This disables occlusion queries, which count the pixels that can be seen, for
  example of the sun, to tell how much it dazzles.

--no_aniso_filtering
  This disables anisotropic filtering, which sharpens textures that are seen at
  a flat angle, such as the runway ahead.

--no_hw_mipmap
  This disables hardware mipmap creation. The main processor then makes the
  smaller copies of each texture, and loading takes longer.

--no_fshaders
  This disables fragment shaders, small programs that color each pixel.

--no_vshaders
  This disables vertex shaders, small programs that place each corner of a
  shape.

--no_glsl
  This disables GLSL, the language of the newer kind of shaders.

--no_threaded_ogl
  This disables OpenGL on several threads. Scenery is then loaded by the thread
  that draws, and you may see pauses in flight.


OPTIONS TO ENABLE INCOMPATIBLE HARDWARE ACCELERATION

With some graphics drivers Skyvane turns a feature off because it is known to
fail there. The options below force it on, perhaps because a newer driver has
put the fault right. They may well crash Skyvane or your whole computer: save
your work first.

--use_vbos
  This forces vertex buffer objects on, with drivers where they were unstable.

--use_sprites
  This forces point sprites on.

--use_fshaders
  This forces fragment shaders on.

--use_vshaders
  This forces vertex shaders on.

--use_glsl
  This forces GLSL on.

--force_run
  This runs Skyvane even if your hardware is below the minimum that it needs.
  It may crash, or be too slow to be of any use.


FRAMERATE TEST

--fps_test=n
  This runs the frame-rate test for 90 seconds, writes the result to the log
  file and quits. n is a number of three digits. The first one sets the angle
  of the camera, the second one the complexity of the scenery and the third one
  the weather. For example, --fps_test=231 takes camera angle 2, scenery
  complexity 3 and weather 1. No message waits for a click in this mode, and
  your preferences stay as they were.

--require_fps=n
  Put this behind --fps_test to get a pass-fail test of 30 seconds. Skyvane
  quits with 0 if it ran at n or more frames per second, and with 1 if not, so
  a script can tell. For example, --fps_test=231 --require_fps=20 fails if the
  frame rate is below 20.
)";

bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

}  // namespace

void UTL_cmdline::enter(const std::string& argument) {
  const size_t equals = argument.find('=');
  const std::string flag = argument.substr(0, equals);
  const std::string value =
      equals == std::string::npos ? std::string() : argument.substr(equals + 1);

  if (const auto found = options.find(flag); found != options.end()) {
    // Without a blank before "included": the text is kept as it always was.
    xer << "WARNING: command line option " << flag << '=' << found->second << "included twice.\n";
  }
  options[flag] = value;
  xer << "     '" << flag;
  if (!value.empty()) xer << "'='" << value;
  xer << "'\n";
}

void UTL_cmdline::init_unix(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i)
    enter(argv[i]);
  init_common();
}

void UTL_cmdline::init_win(const char* line) {
  const std::string_view text = line;
  for (size_t at = 0; at < text.size();) {
    size_t end = at;
    while (end < text.size() && !is_blank(text[end]))
      ++end;
    if (end > at) enter(std::string(text.substr(at, end - at)));
    at = end + 1;
  }
  init_common();
}

void UTL_cmdline::init_common() {
  if (has_option("--cmnds")) {
    cmnd.print(get_option("--cmnds"));
    std::exit(0);
  }
  if (has_option("-h") || has_option("--help")) {
    std::puts(UTL_cmdline_usage().c_str());
    std::exit(0);
  }
  if (has_option("--version")) {
    std::puts(APP.title);
    std::exit(0);
  }
}

bool UTL_cmdline::has_option(const char* flag) const {
  return options.find(std::string_view(flag)) != options.end();
}

std::string UTL_cmdline::get_option(const char* flag) const {
  const auto found = options.find(std::string_view(flag));
  return found == options.end() ? std::string() : found->second;
}

std::vector<std::string> UTL_cmdline::all_options() const {
  std::vector<std::string> flags;
  for (const auto& [flag, value] : options)
    flags.push_back(flag);
  return flags;
}

std::string UTL_cmdline_usage() {
  return usage_head + APP.usage() + usage_family;
}

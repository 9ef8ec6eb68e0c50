// How a scene is played: real events, a word a frame, by a hook on the showing of each picture. So
// a page and a dialog, which is a loop of its own, go alike.
//
//   X,Y       the pointer goes there: units of the window, from its lower left
//   press     the button goes down there; release, and click for both
//   wheel=N   N steps of the wheel, upward
//   type=TEXT the keys of a text, in which "_" stands for a blank
//   tab ...   a key by its name, with "shift+" before it
//   rest      the pointer rests there, for as long as a help text waits
//
// Main thread.

#include "gallery/gallery_scenes.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <utility>

#include "Installer-f/settings/main_stg.h"
#include "Installer-f/wizard/main_wizard.h"
#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/hl_app.h"
#include "corekit/base/mnw.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/tman.h"
#include "corekit/files/io_utils.h"
#include "corekit/widgets/butn.h"
#include "corekit/window/hl_mnw.h"
#include "gallery/gallery.h"

void (*scene_frame)() = APP_update;

namespace {

struct {
  const gallery_scene* scene = nullptr;  // null between scenes
  std::string path;                      // of its picture
  std::istringstream words;
  int frames = 0;  // shown so far
  int still = 0;   // of those, since the last word
  bool is_taken = false, is_written = false;
  double now = 100;  // by the frame clock
} play;

// --- what the user does -------------------------------------------------------------------------

int pointer_x = 0, pointer_y = 0;  // pixels, from the upper left

void send_button(bool down) {
  SDL_Event event = {};
  event.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
  event.button.button = SDL_BUTTON_LEFT;
  event.button.x = pointer_x;
  event.button.y = pointer_y;
  SDL_PushEvent(&event);
}

void send_pointer(const std::string& place) {
  PLT_place picture;
  float x = 0, y = 0;
  if (std::sscanf(place.c_str(), "%f,%f", &x, &y) != 2 || !PLT_picture_place(&picture)) return;
  const float scale = static_cast<float>(picture.dx) / static_cast<float>(mnw.pix_dx);
  pointer_x = static_cast<int>(x * scale);
  pointer_y = static_cast<int>((static_cast<float>(mnw.pix_dy) - y) * scale);
  SDL_Event event = {};
  event.type = SDL_MOUSEMOTION;
  event.motion.x = pointer_x;
  event.motion.y = pointer_y;
  SDL_PushEvent(&event);
}

void send_window(Uint8 what) {
  SDL_Event event = {};
  event.type = SDL_WINDOWEVENT;
  event.window.event = what;
  SDL_PushEvent(&event);
}

void send_key(int symbol, int modifiers, char text) {
  for (const Uint32 type : {SDL_KEYDOWN, SDL_KEYUP}) {
    SDL_Event event = {};
    event.type = type;
    event.key.keysym.sym = symbol;
    event.key.keysym.scancode = SDL_GetScancodeFromKey(symbol);
    event.key.keysym.mod = static_cast<Uint16>(modifiers);
    SDL_PushEvent(&event);
    if (type == SDL_KEYUP || !text) continue;
    event = {};
    event.type = SDL_TEXTINPUT;
    event.text.text[0] = text;
    SDL_PushEvent(&event);
  }
}

void send_named_key(std::string name) {
  constexpr std::string_view with_shift = "shift+";
  const bool shift = name.starts_with(with_shift);
  if (shift) name.erase(0, with_shift.size());
  send_key(SDL_GetKeyFromName(name.c_str()), shift ? KMOD_SHIFT : KMOD_NONE,
           name == "space" ? ' ' : 0);
}

void send_wheel(int steps) {
  SDL_Event event = {};
  event.type = SDL_MOUSEWHEEL;
  event.wheel.y = steps;
  SDL_PushEvent(&event);
}

void act(const std::string& word) {
  const std::string value = word.substr(word.find('=') + 1);
  if (word.find(',') != word.npos) return send_pointer(word);
  if (word == "press" || word == "release") return send_button(word == "press");
  if (word == "rest") {
    play.now += 5;
    return;
  }
  if (word.starts_with("wheel=")) return send_wheel(std::atoi(value.c_str()));
  if (word == "click") {
    send_button(true);
    return send_button(false);
  }
  if (!word.starts_with("type=")) return send_named_key(word);
  for (const char letter : value)
    send_key(letter == '_' ? ' ' : letter, KMOD_NONE, letter == '_' ? ' ' : letter);
}

// --- the frames ---------------------------------------------------------------------------------

// The next frame is shown, whatever it is like, and does not wait. A key that comes up is an input
// that fits into any frame.
void want_picture() {
  SDL_Event event = {};
  event.type = SDL_KEYUP;
  event.key.keysym.sym = SDLK_F15;
  SDL_PushEvent(&event);
  OGL_show_next();
  frame_soon = frame_at_once;
}

void take_picture() {
  play.is_taken = true;
  play.is_written = write_window(play.path, true);
  if (mnw.win_id != win_main) MACIBM_startwind(win_main, 0);
}

// A dialog shows what an event did to it a frame later.
void on_shown() {
  constexpr int enough = 2;
  if (!play.scene || play.is_taken) return;
  if (play.frames++ == 0 && play.scene->then) play.scene->then();
  std::string word;
  if (play.words >> word) {
    act(word);
  } else if (++play.still > enough) {
    return take_picture();
  }
  want_picture();
}

// The clock stands, and what moves by it.
void update() {
  constexpr float period = 0.2f;
  xtim.now_sec = play.now;
  xtim.period = period;
  scene_frame();
}

// An empty page, no menu, the pointer outside, no button down: nothing is left of the scene before.
void clear_stage() {
  static constexpr wizard_page empty = {page_choice, [](int, wizard_screen&) { return 0; }};
  scene_frame = APP_update;
  g_wizard = empty;
  mnw.popup_code = -1;
  send_button(false);
  send_window(SDL_WINDOWEVENT_LEAVE);
  pass_frame();
  pass_frame();
  BTN_unfocus_any();
}

bool is_wanted(const std::string& only, const std::string& name) {
  return only.empty() || ("," + only + ",").find("," + name + ",") != only.npos;
}

// A ground of one colour in the background's place.
void load_plain_background() {
  constexpr int side = 16, bytes = side * side * 3;
  constexpr unsigned char grey = 0xC0;
  std::fill(scratch_array, scratch_array + bytes, grey);
  scratch_dx = scratch_dy = side;
  tman.load_texture(tex_fail_fatal, t_background, tex_interface | tex_full_size | tex_rgb,
                    tex_load_now, "scratch_array:plain");
}

bool play_scene(const gallery_scene& scene, const std::string& folder) {
  constexpr int too_many = 200;
  clear_stage();
  play.path = folder + "/" + scene.name + ".png";
  play.words = std::istringstream(scene.does);
  play.frames = play.still = 0;
  play.is_taken = play.is_written = false;
  play.scene = &scene;
  want_picture();
  scene.open();
  for (int i = 0; !play.is_taken && i < too_many; ++i)
    MACIBM_event_proc();
  play.scene = nullptr;
  return play.is_written;
}

}  // namespace

void pass_frame() {
  const gallery_scene* const scene = std::exchange(play.scene, nullptr);
  frame_soon = frame_at_once;
  MACIBM_event_proc();
  play.scene = scene;
  want_picture();
}

bool write_scenes(const std::vector<gallery_scene>& scenes, const std::string& only,
                  const std::string& folder) {
  // The picture behind the wizard is large: one scene shows it.
  constexpr std::string_view with_background = "welcome";
  APP.update = update;
  if (get_OS_abs_path(os_dir_temp, temp_path) != 0) return false;
  enter_shelf();
  PLT_swap_hook = on_shown;
  bool is_plain = false;
  for (const gallery_scene& scene : scenes) {
    if (!is_wanted(only, scene.name)) continue;
    if (!is_plain && scene.name != with_background) {
      load_plain_background();
      is_plain = true;
    }
    if (!play_scene(scene, folder)) return false;
  }
  return true;
}

// The texture manager: owns every OpenGL texture behind a small integer, the reference.
//
// A reference is manual (0 to 1134, a fixed number known to the code) or automatic (from 1135 up,
// given out for a name and shared by all who ask for that name). One lock guards the table; OpenGL
// is called on the main thread only, and not at all without a context: then a record is filled but
// holds no texture. All alerts are fatal, from "OOPS_cpp/tman".
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "corekit/base/UTL_thread.h"

enum texture_ref : int {
  t_interface = 392,  // font, frames, colours
  t_elements = 393,   // the wizard's buttons and titles
  t_map = 394,
  t_background = 395,
  t_glyphs_2 = 396,    // second glyph set; not loaded here
  t_back_tile = 427,   // to 442, the tiles of the large background
  t_blank_gray = 930,  // stands in for whatever failed to load; never deleted
};

enum tex_fail_mode : int {
  tex_fail_silent = 0,
  tex_fail_scene = 1,      // these three set a flag
  tex_fail_plane = 2,      //   and log a warning
  tex_fail_installed = 3,  //   the first time
  tex_fail_fatal = 4,
};

enum tex_load_time : int {
  tex_load_now = 100,
  tex_load_scenery = 101,  // later; the blank is drawn until then
  tex_load_none = 102,     // not loaded
};

// Load flags. Bits 0 to 2 are a colour, the rest is joined to it.
enum tex_flag : int {
  tex_rgb = 1,
  tex_rgba = 2,
  tex_alpha = 3,
  tex_rgb_keyed = 4,   // of a file: what has the key colour, magenta, becomes transparent;
  tex_rgba_keyed = 5,  //   pixels in scratch_array are taken as they are
  tex_depth = 6,
  tex_color_mask = 7,
  tex_mipmaps = 8,
  tex_clamp = 16,         // in s and t
  tex_clamp_s = 32,       // in s only
  tex_double_scale = 64,  // twice the size that the resolution setting gives, up to 1
  tex_halve_scale = 128,
  tex_full_size = 256,    // whatever the setting
  tex_keep_pixels = 512,  // after a load, the caller's pixel pointer means scratch_array
  tex_interface = 1024,   // set on all interface images; nothing tests it
  tex_sixteen_bit = 2048,
  tex_eight_bit = 4096,
  tex_exact_size = 8192,  // no rounding up to a power of two, and no mipmaps
  tex_flags_end = 16384,
};

struct ref_dat_struct {
  std::string name = "un-inited";  // file path, or a name beginning "scratch_array"
  unsigned gl_id = 0;              // OpenGL texture name; 0 for none
  float scale_s = 0, scale_t = 0;  // picture size / texture size
  float dx = 0, dy = 0;            // texture size, pixels
  int bytes = 0;                   // estimate of its video memory
  int format = 0;                  // OpenGL format of the picture; 0 while not loaded
  int load_time = tex_load_none;
  int flags = 0;
  int fail_mode = tex_fail_fatal;
  int ref_count = -1;  // users of an automatic reference; -1 for a manual one
};

struct tex_load_vars;

// Who drives the background load, told when it has to end early.
class tman_force_finish_obj {
 public:
  virtual ~tman_force_finish_obj() = default;
  // Waits until the worker has returned from load_scenery_async_work, then calls
  // load_scenery_async_finalize. Main thread.
  virtual void force_finish() = 0;
};

class tman_class {
 public:
  tman_class();
  ~tman_class();
  tman_class(const tman_class&) = delete;
  tman_class& operator=(const tman_class&) = delete;

  // Gets a reference for `name` and returns it: `manual_ref`, or with manual_ref 0 the automatic
  // reference of that name, with one more user. With tex_load_now the texture is made in the call,
  // otherwise flags and fail mode are kept for later. A name that begins "scratch_array" takes the
  // picture in scratch_array, of scratch_dx by scratch_dy pixels: its row stride must be a power of
  // two unless tex_exact_size is set, and rows above it are cleared up to the texture's height. Any
  // other name is a file's: its extension is replaced by ".dds", ".png" and ".bmp" in this order,
  // and the first such file that can be read is taken. An empty name returns 0 and does nothing.
  int load_texture(tex_fail_mode mode, int manual_ref, int flags, tex_load_time when,
                   const std::string& name);
  void release_texture(int ref);  // one user less of an automatic reference; frees nothing yet
  void purge_unused_texes();      // frees automatic references without users
  void unload_texture(int ref);   // frees a manual reference

  void force_load_tex(int ref);   // loads now what was to be loaded later
  void load_all_scenery_texes();  // all of tex_load_scenery, announced on the splash screen

  // Background load, one texture at a time; scratch_array and its twin are the worker's from
  // register to finalize. The main thread registers, a worker works, the main thread finalizes.
  // Register returns 1 if there is now a job to work on, 0 if nothing waits or a job is pending.
  int load_scenery_async_register(tman_force_finish_obj* finisher);
  void load_scenery_async_work();
  void load_scenery_async_finalize();
  int num_remaining_async_texes() const;  // records of tex_load_scenery

  // Binds to texture unit `unit`. `mode` is the texture environment: 0 GL_MODULATE, 25 leave alone.
  void bind_ref(int ref, int unit, int mode);
  // OpenGL's name of what bind_ref would bind; 0 for nothing.
  unsigned gl_name(int ref);
  void reset_bind();
  void set_blend_level(int unit, float level);

  int total_texes() const;   // records of the table in use
  int loaded_texes() const;  // of these, loaded
  int tot_vram() const;      // bytes, estimated
  float scale_rat() const;   // the fraction of full size of the resolution setting
  const ref_dat_struct& record(int ref) const { return ref_dat_[ref]; }  // REQUIRES: ref exists

  // Whether a texture of that kind was missing. Reset forgets, mute also stays quiet from now on.
  int has_scene_load_fail() const { return fail_flags_[tex_fail_scene] == 1; }
  int has_plane_load_fail() const { return fail_flags_[tex_fail_plane] == 1; }
  int has_instl_load_fail() const { return fail_flags_[tex_fail_installed] == 1; }
  void reset_scene_load_fail() { fail_flags_[tex_fail_scene] = 0; }
  void reset_plane_load_fail() { fail_flags_[tex_fail_plane] = 0; }
  void reset_instl_load_fail() { fail_flags_[tex_fail_installed] = 0; }
  void mute_scene_load_fail() { fail_flags_[tex_fail_scene] = 2; }
  void mute_plane_load_fail() { fail_flags_[tex_fail_plane] = 2; }
  void mute_instl_load_fail() { fail_flags_[tex_fail_installed] = 2; }

 private:
  int automatic_ref(const std::string& name, bool* found);
  void announce_load(int manual_ref, tex_load_time when, const std::string& name);
  void load_texture_int(tex_fail_mode mode, int ref, int flags, const std::string& name);
  void finish_async_job();
  int load_texture_io(tex_load_vars& load);
  void load_texture_ogl(const tex_load_vars& load, int ok);
  void take_missing(const tex_load_vars& load);
  void make_blank_gray();
  void unload_texture_internal(int ref);
  void drop_gl_id(int ref);

  std::vector<ref_dat_struct> ref_dat_;            // by reference
  std::unordered_map<std::string, int> tex_hash_;  // automatic references by name
  int fail_flags_[4] = {};                         // by tex_fail_mode: 0 none, 1 missing, 2 muted
  std::unique_ptr<tex_load_vars> async_job_;       // the background load; null when there is none
  int async_ok_ = 0;                               // what the first half of it came to
  tman_force_finish_obj* async_finisher_ = nullptr;
  double announced_ = -1;  // when the splash screen was last told of a load, seconds
  mutable UTL_critical_section lock_;
};

extern tman_class tman;

// Told of each load that a user may have to wait for, in words for him. The window layer shows them
// on its splash.
extern void (*tman_announce)(const std::string& text);

// --- binding by OpenGL name --------------------------------------------------------------------
extern int gKillTex;  // non-zero: every texture but the interface image binds as the blank

// Binds `gl_id` to a unit of 0 to 5, through a cache. `mode` as for bind_ref.
void TEX_bind_ref(unsigned gl_id, int unit, int mode);
void TEX_reset_bind();            // something else has bound textures: forget the cache
void TEX_forget(unsigned gl_id);  // this texture is about to be deleted
void TEX_set_blend_level(int unit, float level);  // the environment colour of the unit

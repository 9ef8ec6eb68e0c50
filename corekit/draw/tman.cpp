// The table of references: giving them out, binding, releasing. How a texture is made is in
// tman_load.cpp.
//
// Main thread for everything that calls OpenGL. Writes nothing but the manager and the bind cache.

#include "corekit/draw/tman.h"

#include <algorithm>

#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/base/xtim.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/tman_int.h"

tman_class tman;
void (*tman_announce)(const std::string& text) = [](const std::string&) {};
int gKillTex = 0;

namespace {

constexpr int first_automatic = 1135;
constexpr int bind_slots = 6;
constexpr int env_alone = 25;  // mode of a bind that leaves the texture environment as it is

// What each unit has bound, and its texture environment; -1 unknown.
long long o_tex[bind_slots] = {-1, -1, -1, -1, -1, -1};
int o_mod[bind_slots] = {-1, -1, -1, -1, -1, -1};

}  // namespace

void tman_alert(const char* text, const std::string& line_2, double value, alert_source source) {
  MACIBM_fault(source, text, line_2, str_format("value: %.0f", value));
}

// --- binding by OpenGL name ---------------------------------------------------------------------

void TEX_bind_ref(unsigned gl_id, int unit, int mode) {
  if (!OGL_can_call() || unit < 0 || unit >= bind_slots) return;
  // With textures killed the interface image still binds, so that text stays readable.
  if (gKillTex && gl_id != tman.record(t_interface).gl_id) gl_id = tman.record(t_blank_gray).gl_id;
  const int env = mode == 0 ? GL_MODULATE : mode;
  const bool new_tex = o_tex[unit] != gl_id;
  const bool new_mod = mode != env_alone && o_mod[unit] != env;
  if (!new_tex && !new_mod) return;

  if (unit > 0 && !OGL_active_unit(unit)) return;
  if (new_tex) {
    gl.BindTexture(GL_TEXTURE_2D, gl_id);
    o_tex[unit] = gl_id;
  }
  if (new_mod) {
    gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, env);
    o_mod[unit] = env;
  }
  if (unit > 0) OGL_active_unit(0);
  OGL_check("TEX_bind_ref");
}

void TEX_bind_for_load(unsigned gl_id) {
  gl.BindTexture(GL_TEXTURE_2D, gl_id);
  o_tex[0] = gl_id;
}

void TEX_reset_bind() {
  std::fill_n(o_tex, bind_slots, -1);
  std::fill_n(o_mod, bind_slots, -1);
}

void TEX_forget(unsigned gl_id) {
  // OpenGL gives a deleted name out again, and would find the slot claiming to have it bound.
  std::replace(o_tex, o_tex + bind_slots, static_cast<long long>(gl_id), -1LL);
}

void TEX_set_blend_level(int unit, float level) {
  if (!OGL_can_call()) return;
  const float color[4] = {level, level, level, level};
  if (!OGL_active_unit(unit)) return;
  gl.TexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, color);
  if (unit > 0) OGL_active_unit(0);
}

// --- the table ----------------------------------------------------------------------------------

tman_class::tman_class() : ref_dat_(first_automatic + 1) {
  UTL_critical_section_create(&lock_);
}

tman_class::~tman_class() {
  // The textures went with their context, before the globals did.
  UTL_critical_section_destroy(&lock_);
}

int tman_class::load_texture(tex_fail_mode mode, int manual_ref, int flags, tex_load_time when,
                             const std::string& name) {
  if (name.empty()) return 0;
  announce_load(manual_ref, when, name);
  const tman_lock hold(lock_);
  if (when < tex_load_now || when > tex_load_none) {
    tman_alert("Trying to create an invalid texture load_time!", name, when, at_texture_load_time);
    return 0;
  }
  if (manual_ref < 0 || manual_ref > first_automatic) {
    tman_alert("Trying to bind too low or high a manual_ref!", name, manual_ref,
               at_texture_manual_ref);
    return 0;
  }

  bool found = false;
  const int ref = manual_ref ? manual_ref : automatic_ref(name, &found);
  if (found) {
    if (ref_dat_[ref].load_time != tex_load_now) load_texture_int(mode, ref, flags, name);
  } else if (when == tex_load_now) {
    load_texture_int(mode, ref, flags, name);
  } else {
    ref_dat_struct& dat = ref_dat_[ref];
    dat.name = name;
    dat.flags = flags;
    dat.fail_mode = mode;
    dat.load_time = when;
  }
  return ref;
}

void tman_class::announce_load(int manual_ref, tex_load_time when, const std::string& name) {
  constexpr float pause = 1.0f;  // seconds, or drawing the splash would take longer than loading
  if (when != tex_load_now || tman_is_scratch(name)) return;
  if (manual_ref >= t_back_tile && manual_ref < t_back_tile + 16) return;
  for (const int quiet : {0, 312, int{t_interface}, int{t_glyphs_2}, int{t_blank_gray}}) {
    if (manual_ref == quiet) return;
  }
  const double now = xtim.now_sec;
  if (announced_ >= 0 && now < announced_ + pause) return;
  announced_ = now;
  tman_announce("Loading bitmap " + name + ".");
}

int tman_class::automatic_ref(const std::string& name, bool* found) {
  const auto [entry, is_new] = tex_hash_.try_emplace(name, 0);
  *found = !is_new;
  if (!is_new) {
    ++ref_dat_[entry->second].ref_count;
    return entry->second;
  }
  // The last free record wins; a record that waits for its load has users, and is not free.
  int ref = 0;
  for (int i = first_automatic; i < static_cast<int>(ref_dat_.size()); ++i) {
    if (ref_dat_[i].format == 0 && ref_dat_[i].ref_count < 0) ref = i;
  }
  if (ref == 0) {
    ref = static_cast<int>(ref_dat_.size());
    ref_dat_.emplace_back();
  }
  entry->second = ref;
  ref_dat_[ref].name = name;
  ref_dat_[ref].ref_count = 1;
  return ref;
}

void tman_class::release_texture(int ref) {
  const tman_lock hold(lock_);
  if (ref < first_automatic) {
    tman_alert("Trying to release a manual texture - use unload_texture.", "", ref,
               at_texture_release_manual);
    return;
  }
  if (ref >= static_cast<int>(ref_dat_.size()) || ref_dat_[ref].ref_count < 0) {
    tman_alert("Ref count is negative - was never reffed.", "", ref, at_texture_never_reffed);
    return;
  }
  if (--ref_dat_[ref].ref_count < 0) {
    tman_alert("Ref count went negative", ref_dat_[ref].name, ref, at_texture_ref_negative);
  }
}

void tman_class::purge_unused_texes() {
  const tman_lock hold(lock_);
  for (int ref = first_automatic; ref < static_cast<int>(ref_dat_.size()); ++ref) {
    if (ref_dat_[ref].ref_count == 0) unload_texture_internal(ref);
  }
}

void tman_class::unload_texture(int ref) {
  const tman_lock hold(lock_);
  if (ref < 0 || ref >= first_automatic) {
    tman_alert("Error: dynamic textures should be released, not unloaded.", "", ref,
               at_texture_unload_dynamic);
    return;
  }
  unload_texture_internal(ref);
}

void tman_class::unload_texture_internal(int ref) {
  ref_dat_struct& dat = ref_dat_[ref];
  drop_gl_id(ref);
  if (ref >= first_automatic) tex_hash_.erase(dat.name);
  dat = ref_dat_struct();
}

void tman_class::drop_gl_id(int ref) {
  // A record that shows the blank only borrows it, and the blank's own is never deleted.
  const unsigned gl_id = ref_dat_[ref].gl_id;
  if (gl_id == 0 || gl_id == ref_dat_[t_blank_gray].gl_id) return;
  OGL_texture_changes();
  TEX_forget(gl_id);
  if (OGL_can_call()) gl.DeleteTextures(1, &gl_id);
  ref_dat_[ref].gl_id = 0;
}

unsigned tman_class::gl_name(int ref) {
  const tman_lock hold(lock_);
  if (ref == 0) return 0;
  const int load_time = ref > 0 && ref < static_cast<int>(ref_dat_.size()) ? ref_dat_[ref].load_time
                                                                           : int{tex_load_none};
  if (load_time == tex_load_now) return ref_dat_[ref].gl_id;
  if (load_time == tex_load_scenery) {
    make_blank_gray();
    return ref_dat_[t_blank_gray].gl_id;
  }
  tman_alert("missing non-scenery texture - how?", str_format("ref=%6.0f", double(ref)), ref,
             at_texture_missing_ref);
  return 0;
}

void tman_class::bind_ref(int ref, int unit, int mode) {
  TEX_bind_ref(gl_name(ref), unit, mode);
}

void tman_class::reset_bind() {
  TEX_reset_bind();
}

void tman_class::set_blend_level(int unit, float level) {
  TEX_set_blend_level(unit, level);
}

int tman_class::total_texes() const {
  const tman_lock hold(lock_);
  return static_cast<int>(std::count_if(ref_dat_.begin(), ref_dat_.end(), [](const auto& dat) {
    return dat.load_time != tex_load_none || dat.ref_count >= 0;
  }));
}

int tman_class::loaded_texes() const {
  const tman_lock hold(lock_);
  return static_cast<int>(std::count_if(ref_dat_.begin(), ref_dat_.end(), [](const auto& dat) {
    return dat.load_time == tex_load_now;
  }));
}

int tman_class::tot_vram() const {
  const tman_lock hold(lock_);
  int bytes = 0;
  for (const ref_dat_struct& dat : ref_dat_)
    bytes += dat.bytes;
  return bytes;
}

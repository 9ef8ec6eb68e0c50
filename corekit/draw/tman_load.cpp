// Making a texture, in two halves: find the pixels and their size, then hand them to OpenGL. And
// the blank gray that stands in for what is missing.
//
// Main thread, but for load_texture_io, which the background load runs on its worker. Writes the
// manager's records, and scratch_array above the picture's rows.

#include <algorithm>
#include <bit>
#include <cstring>

#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_types.h"
#include "corekit/base/mnw.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/TEX_load.h"
#include "corekit/draw/TEX_utils.h"
#include "corekit/draw/oglp.h"
#include "corekit/draw/oglp_draw.h"
#include "corekit/draw/tman.h"
#include "corekit/draw/tman_int.h"

namespace {

constexpr std::string_view scratch_prefix = "scratch_array";

// By colour of the flags: what the pixels are.
struct color_row {
  int format;
  int pixel_bytes;
};
constexpr color_row colors[] = {{0, 0},      {GL_RGB, 3},  {GL_RGBA, 4},           {GL_ALPHA, 1},
                                {GL_RGB, 3}, {GL_RGBA, 4}, {GL_DEPTH_COMPONENT, 4}};

// How OpenGL is asked to keep pixels of a format.
int internal_format(const tex_load_vars& load) {
  static constexpr struct {
    int format, eight_bit, sixteen_bit;
  } rows[] = {{GL_RGB, GL_RGB8, GL_RGB16F_ARB},
              {GL_RGBA, GL_RGBA8, GL_RGBA16F_ARB},
              {GL_ALPHA, GL_ALPHA8, GL_ALPHA16F_ARB}};
  for (const auto& row : rows) {
    if (row.format != load.format) continue;
    if (load.flags & tex_sixteen_bit) return row.sixteen_bit;
    if (load.flags & tex_eight_bit) return row.eight_bit;
  }
  return load.format;
}

bool is_compressed(const tex_load_vars& load) {
  return load.pixel_bytes == 0;
}

bool wants_mipmaps(const tex_load_vars& load) {
  if (!(load.flags & tex_mipmaps) || (load.flags & tex_exact_size)) return false;
  return is_compressed(load) ? load.has_mipmaps != 0 : load.format != GL_DEPTH_COMPONENT;
}

// Sends one level, in place of the one that is there if `replace`.
void send_level(const tex_load_vars& load, int level, int dx, int dy, const unsigned char* pixels,
                bool replace) {
  const GLenum format = static_cast<GLenum>(load.format);
  const GLenum type = load.format == GL_DEPTH_COMPONENT ? GL_UNSIGNED_INT : GL_UNSIGNED_BYTE;
  if (replace) {
    gl.TexSubImage2D(GL_TEXTURE_2D, level, 0, 0, dx, dy, format, type, pixels);
  } else {
    gl.TexImage2D(GL_TEXTURE_2D, level, internal_format(load), dx, dy, 0, format, type, pixels);
  }
}

void send_blocks(const tex_load_vars& load) {
  TEX_image_desc level{load.format, load.dx, load.dy, 0, 0};
  const unsigned char* blocks = scratch_array;
  int number = 0;
  do {
    const int bytes = static_cast<int>(TEX_level_bytes(level));
    OGL_compressed_image(number++, load.format, level.width, level.height, bytes, blocks);
    blocks += bytes;
  } while (wants_mipmaps(load) && TEX_next_level(level));
}

void send_pixels(const tex_load_vars& load, bool replace) {
  const bool by_driver = wants_mipmaps(load) && glExt.automini_avail;
  if (by_driver) gl.TexParameteri(GL_TEXTURE_2D, GL_GENERATE_MIPMAP, 1);
  gl.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
  send_level(load, 0, load.dx, load.dy, scratch_array, replace);
  if (!wants_mipmaps(load) || by_driver) return;
  // scratch_array keeps the picture, since its loader may still read from it.
  TEX_image_desc picture{load.format, load.dx, load.dy, 0, 0};
  std::memcpy(scratch_array_temp, scratch_array, TEX_level_bytes(picture));
  for (int level = 1; picture.width > 1 || picture.height > 1; ++level) {
    TEX_halve(picture, scratch_array_temp);
    send_level(load, level, picture.width, picture.height, scratch_array_temp, replace);
  }
}

void set_parameters(const tex_load_vars& load) {
  const auto set = [](GLenum name, int value) { gl.TexParameteri(GL_TEXTURE_2D, name, value); };
  const int clamped = glExt.tex_clamp_avail ? GL_CLAMP_TO_EDGE : GL_CLAMP;
  set(GL_TEXTURE_WRAP_S, load.flags & (tex_clamp | tex_clamp_s) ? clamped : GL_REPEAT);
  set(GL_TEXTURE_WRAP_T, load.flags & tex_clamp ? clamped : GL_REPEAT);
  if (load.format == GL_DEPTH_COMPONENT) {
    set(GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    set(GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    set(GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
  } else {
    set(GL_TEXTURE_MIN_FILTER, wants_mipmaps(load) ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    set(GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  }
}

}  // namespace

void tman_missing(const std::string& name, int type) {
  __MACIBM_alert(mnw.win_id, "Trying to load a texture that you do not have!",
                 "This smacks of a mis-installed copy of Skyvane!",
                 "Please download Skyvane again, and install that copy.", name, type,
                 at_texture_missing);
}

bool tman_is_scratch(const std::string& name) {
  return name.starts_with(scratch_prefix);
}

int tman_check_flags(int flags, const std::string& name) {
  if (flags < 0 || flags >= tex_flags_end) {
    tman_alert("Trying to bind an invalid filter type!", name, flags, at_texture_filter);
    return 0;
  }
  const int color = flags & tex_color_mask;
  if (color == 0 || color > tex_depth) {
    tman_alert("BAD color enum for tman - see tman.h for valid colors!  We cannot pass 0.", name,
               color, at_texture_colour);
    return 0;
  }
  return 1;
}

void tman_class::load_texture_int(tex_fail_mode mode, int ref, int flags, const std::string& name) {
  if (!tman_check_flags(flags, name)) return;
  tex_load_vars load{mode, ref, flags, name};
  if (async_job_ && !tman_is_scratch(name)) {
    // Both need the scratch buffers. The job may be this very texture.
    const bool is_job = async_job_->ref == ref && async_job_->name == name;
    finish_async_job();
    if (is_job && ref_dat_[ref].load_time == tex_load_now) return;
  }
  const int ok = load_texture_io(load);
  load_texture_ogl(load, ok);
}

int tman_class::load_texture_io(tex_load_vars& load) {
  const color_row& color = colors[load.flags & tex_color_mask];
  load.format = color.format;
  load.pixel_bytes = color.pixel_bytes;
  if (!tman_is_scratch(load.name)) return load_any_into_scratch(load.name, load.flags, load);

  if (!check_dxy(load.name, scratch_dx, scratch_dy)) return 0;
  TEX_get_scale(load.flags, scratch_dx, scratch_dy, &load.dx, &load.dy, 1);
  // The pixels are handed over as they lie, so the row stride is the texture's width.
  if (load.dx != scratch_dx || load.dy < scratch_dy) {
    tman_alert("load_tex: Trying to read a texture that is not a power of 2!", load.name,
               scratch_dx, at_texture_manual_size);
    return 0;
  }
  if (!check_dxy(load.name, load.dx, load.dy)) return 0;
  load.scale_s = 1.0f;
  load.scale_t = static_cast<float>(scratch_dy) / static_cast<float>(load.dy);
  const size_t row = static_cast<size_t>(load.dx) * load.pixel_bytes;
  std::memset(scratch_array + row * scratch_dy, 0, row * (load.dy - scratch_dy));
  return 1;
}

void tman_class::load_texture_ogl(const tex_load_vars& load, int ok) {
  if (load.ref >= static_cast<int>(ref_dat_.size())) {
    tman_alert("(manual_ref>=ref_dat.size()!",
               "maybe we tried to load some texture thatis not avail, and we have not loaded the "
               "t_blank_gray yet?",
               load.ref, at_texture_manual_range);
    return;
  }
  if (!ok) {
    take_missing(load);
    return;
  }
  const auto power_of_2 = [](int side) { return std::has_single_bit(static_cast<unsigned>(side)); };
  if (!(load.flags & tex_exact_size) && !(power_of_2(load.dx) && power_of_2(load.dy))) {
    tman_alert("load_tex: Trying to read a texture that is not a power of 2!", load.name, load.dx,
               at_texture_size);
    return;
  }

  ref_dat_struct& dat = ref_dat_[load.ref];
  const float dx = static_cast<float>(load.dx), dy = static_cast<float>(load.dy);
  const bool own =
      dat.gl_id != 0 && (load.ref == t_blank_gray || dat.gl_id != ref_dat_[t_blank_gray].gl_id);
  // The flags decide on levels and internal format, so a picture with others is a new texture.
  const bool replace = own && !is_compressed(load) && dat.format == load.format && dat.dx == dx &&
                       dat.dy == dy && dat.flags == load.flags;
  if (OGL_can_call()) {
    OGL_texture_changes();
    if (!replace) {
      drop_gl_id(load.ref);
      gl.GenTextures(1, &dat.gl_id);
    }
    TEX_bind_for_load(dat.gl_id);
    if (is_compressed(load)) {
      send_blocks(load);
    } else {
      send_pixels(load, replace);
    }
    set_parameters(load);
    OGL_check("load_texture_ogl");
  }

  dat.name = load.name;
  dat.scale_s = load.scale_s;
  dat.scale_t = load.scale_t;
  dat.dx = dx;
  dat.dy = dy;
  const TEX_image_desc image{load.format, load.dx, load.dy, 0, 0};
  const double bytes = static_cast<double>(TEX_level_bytes(image));
  dat.bytes = static_cast<int>(wants_mipmaps(load) ? bytes * 1.33 : bytes);
  dat.format = load.format;
  dat.load_time = tex_load_now;
  dat.flags = load.flags;
  dat.fail_mode = load.fail_mode;
}

void tman_class::take_missing(const tex_load_vars& load) {
  make_blank_gray();
  const ref_dat_struct& blank = ref_dat_[t_blank_gray];
  ref_dat_struct& dat = ref_dat_[load.ref];
  drop_gl_id(load.ref);
  dat.name = load.name;
  dat.gl_id = blank.gl_id;
  dat.scale_s = blank.scale_s;
  dat.scale_t = blank.scale_t;
  dat.dx = blank.dx;
  dat.dy = blank.dy;
  dat.bytes = 0;
  dat.format = blank.format;
  dat.load_time = tex_load_now;
  dat.flags = load.flags;
  dat.fail_mode = load.fail_mode;

  if (load.fail_mode == tex_fail_fatal) {
    tman_missing(load.name, t_exit);
  } else if (load.fail_mode != tex_fail_silent && fail_flags_[load.fail_mode] == 0) {
    fail_flags_[load.fail_mode] = 1;
    xer << "WARNING: we are missing the texture: " << load.name << ".\n";
  }
}

void tman_class::make_blank_gray() {
  ref_dat_struct& dat = ref_dat_[t_blank_gray];
  if (dat.load_time == tex_load_now && (dat.gl_id != 0 || !OGL_can_call())) return;
  // Not by way of scratch_array, which may hold a picture just now.
  constexpr int side = 4, gray = 128;
  unsigned char pixels[side * side * 3];
  std::fill_n(pixels, sizeof pixels, static_cast<unsigned char>(gray));
  const std::string name = "scratch_array:blank gray";
  tex_load_vars load{tex_fail_fatal, t_blank_gray, tex_rgb, name, GL_RGB, 3, 0, side, side};
  if (OGL_can_call()) {
    gl.GenTextures(1, &dat.gl_id);
    TEX_bind_for_load(dat.gl_id);
    gl.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    send_level(load, 0, side, side, pixels, false);
    set_parameters(load);
    OGL_check("make_blank_gray");
  }
  dat.name = name;
  dat.scale_s = dat.scale_t = 1.0f;
  dat.dx = dat.dy = side;
  dat.bytes = sizeof pixels;
  dat.format = GL_RGB;
  dat.load_time = tex_load_now;
  dat.flags = tex_rgb;
}

float tman_class::scale_rat() const {
  return TEX_scale_of_setting(ren.tex_res);
}

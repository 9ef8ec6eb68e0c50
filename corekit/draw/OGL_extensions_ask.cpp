// What the graphics driver can do: its strings, the flags, the driver faults, the entry points, the
// limits, the command line's say, the log, the verdict.
//
// Main thread, once, right after the context exists. Writes glExt and ren.

#include "corekit/draw/OGL_extensions.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "corekit/Platform/PLT_gl.h"
#include "corekit/Platform/PLT_window.h"
#include "corekit/base/UTL_cmdline.h"
#include "corekit/base/UTL_translate.h"
#include "corekit/base/exce.h"
#include "corekit/base/hl_alert.h"
#include "corekit/base/hl_string.h"
#include "corekit/draw/OGL_faults.h"
#include "corekit/draw/OGL_procs.h"
#include "corekit/draw/oglp.h"

OGL_extensions glExt;

const OGL_source OGL_driver_source = {
    [](unsigned name) { return reinterpret_cast<const char*>(gl.GetString(name)); },
    [](unsigned name, int* values) { gl.GetIntegerv(name, values); },
    [](unsigned name, float* values) { gl.GetFloatv(name, values); },
    PLT_gl_lookup,
    std::numeric_limits<int>::max(),
};

namespace {

// A feature is there from a version on, or below it by one of the extensions. Version 0: by the
// extensions alone. The names are searched for, so that a longer name counts too.
struct feature_row {
  int OGL_extensions::*flag;
  int version;
  const char* names[2];
};
constexpr feature_row features[] = {
    {&OGL_extensions::multitexture_avail, 130, {"GL_ARB_multitexture", nullptr}},
    {&OGL_extensions::tex_clamp_avail,
     120,
     {"GL_EXT_texture_edge_clamp", "GL_SGIS_texture_edge_clamp"}},
    {&OGL_extensions::add_env_avail, 130, {"GL_ARB_texture_env_add", "GL_EXT_texture_env_add"}},
    {&OGL_extensions::combine_avail,
     130,
     {"GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine"}},
    {&OGL_extensions::dis_fog_avail, 0, {"GL_NV_fog_distance", nullptr}},
    {&OGL_extensions::tex_comp_avail, 130, {"GL_ARB_texture_compression", nullptr}},
    {&OGL_extensions::vbo_avail, 150, {"GL_ARB_vertex_buffer_object", nullptr}},
    {&OGL_extensions::pbo_avail, 210, {"GL_ARB_pixel_buffer_object", nullptr}},
    {&OGL_extensions::vprog_avail, 0, {"GL_ARB_vertex_program", nullptr}},
    {&OGL_extensions::fprog_avail, 0, {"GL_ARB_fragment_program", nullptr}},
    {&OGL_extensions::automini_avail, 140, {"GL_SGIS_generate_mipmap", nullptr}},
    {&OGL_extensions::aniso_avail, 0, {"GL_EXT_texture_filter_anisotropic", nullptr}},
    {&OGL_extensions::fsaa_avail, 130, {"GL_ARB_multisample", nullptr}},
    {&OGL_extensions::sprites_avail, 200, {"GL_ARB_point_sprite", nullptr}},
    {&OGL_extensions::depth_tex_avail, 140, {"GL_ARB_depth_texture", nullptr}},
    {&OGL_extensions::occlude_avail, 150, {"GL_ARB_occlusion_query", nullptr}},
    {&OGL_extensions::shad_objs_avail, 200, {"GL_ARB_shader_objects", nullptr}},
    {&OGL_extensions::vshader_avail, 200, {"GL_ARB_vertex_shader", nullptr}},
    {&OGL_extensions::fshader_avail, 200, {"GL_ARB_fragment_shader", nullptr}},
    {&OGL_extensions::gshader_avail, 0, {"GL_EXT_geometry_shader4", nullptr}},
    {&OGL_extensions::glsl_avail, 200, {"GL_ARB_shading_language_100", nullptr}},
    {&OGL_extensions::framebuf_avail, 0, {"GL_EXT_framebuffer_object", nullptr}},
};

// What the command line takes away, whatever the driver says.
struct option_row {
  const char* option;
  int OGL_extensions::*flags[2];
};
constexpr option_row options[] = {
    {"--no_vbos", {&OGL_extensions::vbo_avail, &OGL_extensions::pbo_avail}},
    {"--no_pbos", {&OGL_extensions::pbo_avail, nullptr}},
    {"--no_sprites", {&OGL_extensions::sprites_avail, nullptr}},
    {"--no_pixel_counters", {&OGL_extensions::occlude_avail, nullptr}},
    {"--no_aniso_filtering", {&OGL_extensions::aniso_avail, nullptr}},
    {"--no_hw_mipmap", {&OGL_extensions::automini_avail, nullptr}},
    {"--no_vshaders", {&OGL_extensions::vprog_avail, nullptr}},
    {"--no_fshaders", {&OGL_extensions::fprog_avail, nullptr}},
    {"--no_glsl", {&OGL_extensions::glsl_avail, nullptr}},
    {"--no_fbos", {&OGL_extensions::framebuf_avail, nullptr}},
    {"--no_threaded_ogl", {&OGL_extensions::threaded_avail, nullptr}},
    {"--no_sblend", {&OGL_extensions::sblend_avail, nullptr}},
};

// The version as a number. A string that does not begin "digits.digits" is compared with the
// versions there were, and anything else counts as the first one.
int version_number(const std::string& text) {
  int major = 0, minor = 0;
  if (std::sscanf(text.c_str(), "%d.%d", &major, &minor) == 2) {
    constexpr int limit = 1000;  // a driver's nonsense must not overflow
    return std::clamp(major, 0, limit) * 100 + std::clamp(minor, 0, limit) * 10;
  }
  constexpr struct {
    const char* begin;
    int number;
  } known[] = {{"1.1", 110}, {"1.2", 120}, {"1.3", 130}, {"1.4", 140},
               {"1.5", 150}, {"2.0", 200}, {"2.1", 210}};
  for (const auto& row : known) {
    if (text.starts_with(row.begin)) return row.number;
  }
  return 100;
}

bool is_software(const std::string& renderer) {
  return renderer.starts_with("GENERIC") || renderer.starts_with("Generic") ||
         renderer.starts_with("generic") || renderer == "Mesa GLX Indirect";
}

int integer_of(const OGL_source& source, unsigned name, int otherwise) {
  int value = otherwise;
  source.get_integers(name, &value);
  return value;
}

}  // namespace

void OGL_extensions::init_extensions(const OGL_source& source) {
  *this = OGL_extensions();
  read_strings(source);
  set_flags();
  apply_faults(source.os_version);
  if (glsl_avail && str_holds(ren.vendor, "NVIDIA") &&
      !str_holds(ren.extensions, "GL_NV_fragment_program2")) {
    first_gen_shaders = 1;
  }
  init_entry_points(source);
  s3tc_avail = tex_comp_avail && str_holds(ren.extensions, "GL_EXT_texture_compression_s3tc");
  if (!vbo_avail && pbo_avail) {
    pbo_avail = 0;
    xer << "Disabling PBOs because VBOs are not available.  This probably means that VBOs are "
           "disabled for compatibility reasons.\n";
  }
  read_program_limits(source);
  read_numbers(source);
  apply_command_line();
  // One context serves the whole program, whatever the option above says of it.
  threaded_avail = 0;
  log_all();
  check_minimum();
  check_software();
}

void OGL_extensions::read_strings(const OGL_source& source) {
  const auto read = [&source](unsigned name) {
    const char* text = source.get_string(name);
    return std::string(text ? text : "");
  };
  ren.vendor = read(GL_VENDOR);
  ren.renderer = read(GL_RENDERER);
  ren.version = read(GL_VERSION);
  ren.extensions = read(GL_EXTENSIONS);
  version = version_number(ren.version);
}

void OGL_extensions::set_flags() {
  for (const feature_row& row : features) {
    bool there = row.version != 0 && version >= row.version;
    for (const char* name : row.names)
      there = there || (name && str_holds(ren.extensions, name));
    this->*row.flag = there;
  }
  sblend_avail = str_holds(ren.extensions, "GL_EXT_blend_func_separate") &&
                 str_holds(ren.extensions, "GL_EXT_blend_equation_separate");
}

void OGL_extensions::apply_faults(int os_version) {
  for (int i = 0; i < OGL_fault_count; ++i) {
    const OGL_fault& fault = OGL_faults[i];
    if (!OGL_fault_applies(fault, *this, ren.renderer, os_version)) continue;
    if (fault.kept_by && cmdline.has_option(fault.kept_by)) continue;
    this->*fault.flag = 0;
    xer << fault.log_line;
  }
}

// Looks up only what the driver says it has: the library answers for names that it never heard of.
void OGL_extensions::init_entry_points(const OGL_source& source) {
  for (const OGL_proc_group& group : OGL_proc_groups()) {
    if (!(this->*group.flag)) continue;
    for (const char* name : group.names) {
      void* proc = source.get_proc(name);
      if (proc) {
        entries_[name] = proc;
      } else {
        xer << "WARNING: extension missing proc " << name << '\n';
        this->*group.flag = 0;
      }
    }
  }
}

void* OGL_extensions::entry(const std::string& name) const {
  const auto found = entries_.find(name);
  if (found == entries_.end()) return nullptr;
  for (const OGL_proc_group& group : OGL_proc_groups()) {
    if (std::find(group.names.begin(), group.names.end(), name) != group.names.end()) {
      return this->*group.flag ? found->second : nullptr;
    }
  }
  return nullptr;
}

void OGL_extensions::read_program_limits(const OGL_source& source) {
  const auto get_program =
      reinterpret_cast<PFNGLGETPROGRAMIVARBPROC>(source.get_proc("glGetProgramivARB"));
  const auto limit = [get_program](unsigned target, unsigned name) {
    int value = 0;
    if (get_program) get_program(target, name, &value);
    return value;
  };
  constexpr int short_of_instructions = 99;
  if (fprog_avail) {
    constexpr unsigned target = GL_FRAGMENT_PROGRAM_ARB;
    fprog_limits = {limit(target, GL_MAX_PROGRAM_NATIVE_INSTRUCTIONS_ARB),
                    limit(target, GL_MAX_PROGRAM_NATIVE_ALU_INSTRUCTIONS_ARB),
                    limit(target, GL_MAX_PROGRAM_NATIVE_TEX_INSTRUCTIONS_ARB),
                    limit(target, GL_MAX_PROGRAM_NATIVE_TEX_INDIRECTIONS_ARB)};
    if (fprog_limits.instructions <= short_of_instructions) first_gen_shaders = 1;
    if (fprog_limits.instructions == 0 && !cmdline.has_option("--use_fprogs")) fprog_avail = 0;
  }
  if (vprog_avail) {
    // Vertex programs have the first of these only; to ask for the others is an OpenGL error.
    vprog_limits = {limit(GL_VERTEX_PROGRAM_ARB, GL_MAX_PROGRAM_NATIVE_INSTRUCTIONS_ARB), 0, 0, 0};
    if (vprog_limits.instructions == 0 && !cmdline.has_option("--use_vprogs")) vprog_avail = 0;
  }
  if (vshader_avail) {
    vshader_uniforms = integer_of(source, GL_MAX_VERTEX_UNIFORM_COMPONENTS_ARB, 0);
    vshader_varyings = integer_of(source, GL_MAX_VARYING_FLOATS_ARB, 0);
    vshader_textures = integer_of(source, GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS_ARB, 0);
  }
  if (fshader_avail) {
    fshader_uniforms = integer_of(source, GL_MAX_FRAGMENT_UNIFORM_COMPONENTS_ARB, 0);
  }
  if (glsl_avail) {
    const char* text = source.get_string(GL_SHADING_LANGUAGE_VERSION_ARB);
    glsl_version = text ? text : "<null string>";
  }
}

void OGL_extensions::read_numbers(const OGL_source& source) {
  ren.max_units =
      multitexture_avail ? std::max(1, integer_of(source, GL_MAX_TEXTURE_UNITS_ARB, 1)) : 1;
  ren.max_image_units = fprog_avail
                            ? integer_of(source, GL_MAX_TEXTURE_IMAGE_UNITS_ARB, ren.max_units)
                            : ren.max_units;
  ren.max_attrib_units =
      vprog_avail ? integer_of(source, GL_MAX_TEXTURE_COORDS_ARB, ren.max_units) : ren.max_units;
  ren.max_anisotropy = 1.0f;
  if (aniso_avail) source.get_floats(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &ren.max_anisotropy);
  const int side = integer_of(source, GL_MAX_TEXTURE_SIZE, 0);
  if (side > 0) ren.max_texture_size = side;
  float points[2] = {1.0f, 1.0f};
  source.get_floats(GL_POINT_SIZE_RANGE, points);
  max_point_size = points[1];
}

void OGL_extensions::apply_command_line() {
  for (const option_row& row : options) {
    if (!cmdline.has_option(row.option)) continue;
    for (const auto flag : row.flags) {
      if (flag) this->*flag = 0;
    }
  }
  if (!aniso_avail) ren.max_anisotropy = 1.0f;
}

void OGL_extensions::log_all() const {
  const auto limits = [](const program_limits& l) {
    if (l.instructions < 0) return std::string();
    return str_format(" (%d instructions, %d alu, %d tex, %d indirections)", l.instructions, l.alu,
                      l.tex, l.indirections);
  };
  const auto shader = [](int there, const std::string& what) {
    return there < 0 ? std::string() : " (" + what + ")";
  };
  xer << "OpenGL Vendor    : " << ren.vendor << '\n'
      << "OpenGL Render    : " << ren.renderer << '\n'
      << "OpenGL Version   : " << ren.version << " (" << version << ")\n"
      << "OpenGL Extensions: " << ren.extensions << '\n'
      << "tex_clamp_avail  : " << tex_clamp_avail << '\n'
      << "add_env_avail    : " << add_env_avail << '\n'
      << "combine_avail    : " << combine_avail << '\n'
      << "dis_fog_avail    : " << dis_fog_avail << '\n'
      << "tex_comp_avail   : " << tex_comp_avail << '\n'
      << "vbo_avail        : " << vbo_avail << '\n'
      << "pbo_avail        : " << pbo_avail << '\n'
      << "vprog_avail      : " << vprog_avail << limits(vprog_limits) << '\n'
      << "fprog_avail      : " << fprog_avail << limits(fprog_limits) << '\n'
      << "automini_avail   : " << automini_avail << '\n'
      << "aniso_avail      : " << aniso_avail << '\n'
      << "fsaa_avail       : " << fsaa_avail << '\n'
      << "sprites_avail    : " << sprites_avail << '\n'
      << "depth_tex_avail  : " << depth_tex_avail << '\n'
      << "occlude_avail    : " << occlude_avail << '\n'
      << "shad_objs_avail  : " << shad_objs_avail << '\n'
      << "vshader_avail    : " << vshader_avail
      << shader(vshader_uniforms, str_format("%d uniforms, %d varyings, %d textures",
                                             vshader_uniforms, vshader_varyings, vshader_textures))
      << '\n'
      << "fshader_avail    : " << fshader_avail
      << shader(fshader_uniforms, str_format("%d uniforms", fshader_uniforms)) << '\n'
      << "gshader_avail    : " << gshader_avail << '\n'
      << "glsl_avail       : " << glsl_avail
      << (glsl_version.empty() ? std::string() : " (" + glsl_version + ")") << '\n'
      << "framebuf_avail   : " << framebuf_avail << '\n'
      << "sblend_avail     : " << sblend_avail << '\n'
      << "threaded_avail   : " << threaded_avail << '\n'
      << "first-gen shaders: " << first_gen_shaders << '\n'
      << "max tex units    : " << ren.max_units << ' ' << ren.max_image_units << ' '
      << ren.max_attrib_units << '\n'
      << "max iso filtering: " << ren.max_anisotropy << '\n'
      << "max texture size : " << ren.max_texture_size << '\n'
      << "max point size   : " << max_point_size << '\n';
  xer.flush();
}

void OGL_extensions::check_minimum() const {
  if (multitexture_avail || version >= 110) return;
  constexpr UTL_text main_line =
      "Your graphics hardware cannot support Skyvane. Skyvane requires a graphics card with 16 MB "
      "of VRAM and multitexturing.";
  if (cmdline.has_option("--force_run")) {
    __MACIBM_alert(0, main_line,
                   "You have used the force-run command inline option to run "
                   "Skyvane anyway, but it may crash.",
                   "", "", t_alert, at_gl_forced);
    return;
  }
  __MACIBM_alert(0, main_line, "Your system does not meet Skyvane's hardware requirements.",
                 "First, try updating your graphics drivers.",
                 "If this does not help, check your graphics card specifications.", t_exit,
                 at_gl_too_old);
}

void OGL_extensions::check_software() const {
  if (!is_software(ren.renderer)) return;
  __MACIBM_alert(0,
                 "I can not find a 3-D accelerator card that can handle OpenGL that has "
                 "correctly installed drivers.",
                 "I will still let you run the simulator, but the frame rate will NOT "
                 "allow for a good simulation.",
                 "Please install the newest drivers from the maker of your graphics "
                 "card, and then start this program again.",
                 "", t_alert, at_gl_software);
}

void OGL_extensions::threaded_ogl_failed() {
  if (!threaded_avail) return;
  threaded_avail = 0;
  __MACIBM_alert(
      0, "There was a problem setting up OpenGL.",
      "You can still fly, but you may experience pauses during flight while scenery loads.",
      "Please send the log file to Tessaron Labs, so that we can look into it.", "", t_alert,
      at_gl_procs);
}

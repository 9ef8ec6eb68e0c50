// What the graphics driver can do, as plain flags that the toolkit reads, and the entry points
// beyond OpenGL 1.1.
//
// Main thread. Filled once, right after the context exists.
#pragma once

#include <string>
#include <unordered_map>

// Where the answers come from: the driver of the current context, or a test's own.
struct OGL_source {
  const char* (*get_string)(unsigned name);          // may return null
  void (*get_integers)(unsigned name, int* values);  // leaves `values` alone if it fails
  void (*get_floats)(unsigned name, float* values);
  void* (*get_proc)(const char* name);  // null for an entry point not there
  int os_version;  // of the system that the old drivers' faults are tied to, such as 0x1049 for
                   // 10.4.9; a higher one than any where it has no meaning
};
extern const OGL_source OGL_driver_source;

class OGL_extensions {
 public:
  // Asks `source`, applies the driver faults and the command line, fills ren, logs all of it, and
  // ends the program by a fatal alert if the hardware is below the minimum.
  void init_extensions(const OGL_source& source = OGL_driver_source);

  // A second thread failed to get a context. Withdraws the capability for the rest of the run and
  // tells the user, once.
  void threaded_ogl_failed();

  // The entry point of that name, if its feature is there and it was found; otherwise null.
  void* entry(const std::string& name) const;

  int version = 0;  // major * 100 + minor * 10

  // Features that the program may use: 1 or 0.
  int multitexture_avail = 0;
  int tex_clamp_avail = 0;
  int add_env_avail = 0;
  int combine_avail = 0;
  int dis_fog_avail = 0;
  int tex_comp_avail = 0;
  int vbo_avail = 0;
  int pbo_avail = 0;
  int vprog_avail = 0;
  int fprog_avail = 0;
  int automini_avail = 0;
  int aniso_avail = 0;
  int fsaa_avail = 0;
  int sprites_avail = 0;
  int depth_tex_avail = 0;
  int occlude_avail = 0;
  int shad_objs_avail = 0;
  int vshader_avail = 0;
  int fshader_avail = 0;
  int gshader_avail = 0;
  int glsl_avail = 0;
  int first_gen_shaders = 0;  // shaders are there, but short of instructions
  int framebuf_avail = 0;
  int sblend_avail = 0;
  int s3tc_avail = 0;      // S3TC pictures are taken as they are; not in the log
  int threaded_avail = 0;  // OpenGL on several threads; never set in this program

  // Limits of the shaders that are there; -1 where not asked.
  struct program_limits {
    int instructions = -1, alu = -1, tex = -1, indirections = -1;
  };
  program_limits fprog_limits, vprog_limits;
  int vshader_uniforms = -1, vshader_varyings = -1, vshader_textures = -1;
  int fshader_uniforms = -1;
  std::string glsl_version;
  float max_point_size = 1;

 private:
  void read_strings(const OGL_source& source);
  void set_flags();
  void apply_faults(int os_version);
  void init_entry_points(const OGL_source& source);
  void read_program_limits(const OGL_source& source);
  void read_numbers(const OGL_source& source);
  void apply_command_line();
  void log_all() const;
  void check_minimum() const;
  void check_software() const;

  std::unordered_map<std::string, void*> entries_;
};

extern OGL_extensions glExt;

// What a driver is taken to be able to do, against drivers made up for the purpose.

#include <GL/gl.h>
#include <GL/glext.h>

#include <climits>
#include <cstring>
#include <map>
#include <set>

#include "corekit/base/UTL_cmdline.h"
#include "corekit/draw/OGL_extensions.h"
#include "corekit/draw/OGL_procs.h"
#include "tests/unit/window_fixture.h"

namespace {

using ext = OGL_extensions;

// The driver that answers. Everything it is asked for by name is noted.
struct made_up_driver {
  std::string vendor = "Acme", renderer = "Acme Fast", version = "2.1 build 7", extensions;
  std::map<unsigned, int> integers;
  std::set<std::string> missing;
  std::set<std::string> asked;
  int fragment_instructions = 1000, vertex_instructions = 1000;
  bool strings_are_null = false;
  int os_version = INT_MAX;
};
made_up_driver driver;

void get_program(GLenum target, GLenum name, GLint* value) {
  if (name != GL_MAX_PROGRAM_NATIVE_INSTRUCTIONS_ARB) return;
  *value =
      target == GL_FRAGMENT_PROGRAM_ARB ? driver.fragment_instructions : driver.vertex_instructions;
}

const char* get_string(unsigned name) {
  const std::map<unsigned, const std::string*> strings = {{GL_VENDOR, &driver.vendor},
                                                          {GL_RENDERER, &driver.renderer},
                                                          {GL_VERSION, &driver.version},
                                                          {GL_EXTENSIONS, &driver.extensions}};
  if (driver.strings_are_null || !strings.contains(name)) return nullptr;
  return strings.at(name)->c_str();
}

void get_integers(unsigned name, int* values) {
  if (driver.integers.contains(name)) *values = driver.integers[name];
}
// The caller's defaults stay.
void get_floats(unsigned, float*) {}

void* get_proc(const char* name) {
  driver.asked.insert(name);
  if (driver.missing.contains(name)) return nullptr;
  if (std::string(name) == "glGetProgramivARB") return reinterpret_cast<void*>(get_program);
  return const_cast<char*>(name);  // never called; tells in entry() whose it is
}

class OglExtensions : public testing::Test {
 protected:
  void SetUp() override {
    driver = made_up_driver();
    cmdline = UTL_cmdline();
    kept_ren = ren;
    kept_ext = glExt;
  }
  void TearDown() override {
    cmdline = UTL_cmdline();
    ren = kept_ren;
    glExt = kept_ext;
  }
  static void options(const std::string& line) {
    cmdline = UTL_cmdline();
    if (!line.empty()) cmdline.init_win(line.c_str());
  }
  static std::string init() {
    return log_of([] {
      glExt.init_extensions({get_string, get_integers, get_floats, get_proc, driver.os_version});
    });
  }
  ren_record kept_ren;
  OGL_extensions kept_ext;
};

TEST_F(OglExtensions, VersionsAreRead) {
  const std::pair<const char*, int> rows[] = {
      {"2.1 build 7", 210}, {"1.4.20", 140},        {"4.5 (Compat) Mesa", 450},
      {"3.10", 400},        {"OpenGL ES 2.0", 100}, {"", 100},
      {"1.x", 100},         {"99999999.7", 100070},
  };
  for (const auto& [text, number] : rows) {
    driver.version = text;
    options("--force_run");
    init();
    EXPECT_EQ(glExt.version, number) << '"' << text << '"';
  }
  driver.strings_are_null = true;
  init();
  EXPECT_EQ(glExt.version, 100);
}

// A flag is on from its version, and below it by one of its extensions.
TEST_F(OglExtensions, FeaturesComeByVersionOrByExtension) {
  const std::tuple<int ext::*, const char*, std::vector<std::string>> rows[] = {
      {&ext::multitexture_avail, "1.3", {"GL_ARB_multitexture"}},
      {&ext::tex_clamp_avail, "1.2", {"GL_EXT_texture_edge_clamp", "GL_SGIS_texture_edge_clamp"}},
      {&ext::add_env_avail, "1.3", {"GL_ARB_texture_env_add", "GL_EXT_texture_env_add"}},
      {&ext::combine_avail, "1.3", {"GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine"}},
      {&ext::dis_fog_avail, nullptr, {"GL_NV_fog_distance"}},
      {&ext::tex_comp_avail, "1.3", {"GL_ARB_texture_compression"}},
      {&ext::vbo_avail, "1.5", {"GL_ARB_vertex_buffer_object"}},
      {&ext::vprog_avail, nullptr, {"GL_ARB_vertex_program"}},
      {&ext::fprog_avail, nullptr, {"GL_ARB_fragment_program"}},
      {&ext::automini_avail, "1.4", {"GL_SGIS_generate_mipmap"}},
      {&ext::aniso_avail, nullptr, {"GL_EXT_texture_filter_anisotropic"}},
      {&ext::fsaa_avail, "1.3", {"GL_ARB_multisample"}},
      {&ext::sprites_avail, "2.0", {"GL_ARB_point_sprite"}},
      {&ext::depth_tex_avail, "1.4", {"GL_ARB_depth_texture"}},
      {&ext::occlude_avail, "1.5", {"GL_ARB_occlusion_query"}},
      {&ext::shad_objs_avail, "2.0", {"GL_ARB_shader_objects"}},
      {&ext::vshader_avail, "2.0", {"GL_ARB_vertex_shader"}},
      {&ext::fshader_avail, "2.0", {"GL_ARB_fragment_shader"}},
      {&ext::gshader_avail, nullptr, {"GL_EXT_geometry_shader4"}},
      {&ext::glsl_avail, "2.0", {"GL_ARB_shading_language_100"}},
      {&ext::framebuf_avail, nullptr, {"GL_EXT_framebuffer_object"}},
  };
  options("--force_run");
  const char* const versions[] = {"1.1", "1.2", "1.3", "1.4", "1.5", "2.0", "4.6"};
  for (const auto& [flag, from, names] : rows) {
    SCOPED_TRACE(names[0]);
    driver.extensions = "";
    for (const char* version : versions) {
      driver.version = version;
      init();
      EXPECT_EQ(glExt.*flag, from && std::strcmp(version, from) >= 0) << version;
    }
    driver.version = from ? "1.1" : "4.6";
    for (const std::string& name : names) {
      // A longer name that holds it counts; a shorter one does not.
      for (const auto& [text, there] :
           std::map<std::string, int>{{"GL_A " + name + " GL_Z", 1},
                                      {name + "2", 1},
                                      {name.substr(0, name.size() - 1), 0}}) {
        driver.extensions = text;
        init();
        EXPECT_EQ(glExt.*flag, there) << text;
      }
    }
  }
}

TEST_F(OglExtensions, SomeFeaturesNeedTwoThings) {
  for (const auto& [text, there] : std::map<std::string, int>{
           {"GL_EXT_blend_func_separate", 0},
           {"GL_EXT_blend_equation_separate", 0},
           {"GL_EXT_blend_func_separate GL_EXT_blend_equation_separate", 1}}) {
    driver.extensions = text;
    init();
    EXPECT_EQ(glExt.sblend_avail, there) << text;
  }
  EXPECT_EQ(glExt.pbo_avail, 1);
  driver.missing = {"glMapBufferARB"};
  const std::string log = init();
  EXPECT_EQ(glExt.pbo_avail, 0);
  EXPECT_TRUE(str_holds(log, "Disabling PBOs because VBOs are not available."));
}

// The numbers of names as the registry of OpenGL extensions counts them.
TEST_F(OglExtensions, AGroupWithAMissingEntryPointIsOff) {
  const std::tuple<int ext::*, size_t, const char*, const char*> rows[] = {
      {&ext::multitexture_avail, 1, "glActiveTextureARB", "glActiveTextureARB"},
      {&ext::vbo_avail, 11, "glBindBufferARB", "glGetBufferPointervARB"},
      {&ext::vprog_avail, 62, "glVertexAttrib1dARB", "glIsProgramARB"},
      {&ext::occlude_avail, 8, "glGenQueriesARB", "glGetQueryObjectuivARB"},
      {&ext::shad_objs_avail, 39, "glDeleteObjectARB", "glUniform4fvARB"},
      {&ext::gshader_avail, 1, "glProgramParameteriEXT", "glProgramParameteriEXT"},
      {&ext::vshader_avail, 3, "glBindAttribLocationARB", "glGetAttribLocationARB"},
      {&ext::framebuf_avail, 17, "glIsRenderbufferEXT", "glGetFramebufferAttachmentParameterivEXT"},
      {&ext::tex_comp_avail, 7, "glCompressedTexImage3DARB", "glGetCompressedTexImageARB"},
      {&ext::sblend_avail, 2, "glBlendFuncSeparateEXT", "glBlendEquationSeparateEXT"},
  };
  driver.extensions =
      "GL_ARB_vertex_program GL_EXT_geometry_shader4 GL_EXT_framebuffer_object "
      "GL_EXT_blend_func_separate GL_EXT_blend_equation_separate";
  for (const auto& [flag, count, first, last] : rows) {
    SCOPED_TRACE(first);
    driver.missing.clear();
    init();
    EXPECT_STREQ(static_cast<char*>(glExt.entry(first)), first);
    EXPECT_NE(glExt.entry(last), nullptr);
    for (const auto& group : OGL_proc_groups())
      EXPECT_TRUE(group.flag != flag || group.names.size() == count);
    // The others are looked up all the same, and none is given out.
    driver.missing = {first};
    driver.asked.clear();
    const std::string log = init();
    EXPECT_EQ(glExt.*flag, 0);
    EXPECT_TRUE(str_holds(log, "WARNING: extension missing proc " + std::string(first) + "\n"));
    EXPECT_TRUE(driver.asked.contains(last));
    EXPECT_EQ(glExt.entry(last), nullptr);
  }
  driver = made_up_driver();
  driver.version = "1.1";
  driver.extensions = "GL_ARB_multitexture";
  init();
  EXPECT_EQ(driver.asked, (std::set<std::string>{"glActiveTextureARB", "glGetProgramivARB"}))
      << "nothing unclaimed";
}

TEST_F(OglExtensions, DriverFaultsClearTheirFeature) {
  constexpr char nv34[] = "NVIDIA NV34MAP OpenGL Engine";
  constexpr char geforce[] = "NVIDIA GeForce 7300 GT OpenGL Engine";
  constexpr char hd_2600[] = "ATI Radeon HD 2600 PRO OpenGL Engine";
  const auto occlude = &ext::occlude_avail, glsl = &ext::glsl_avail, sprites = &ext::sprites_avail;
  const struct {
    const char *label, *renderer;
    int os_version;
    const char* option;
    int ext::*flag;
    int there;
    const char* log;  // null: nothing is said
  } rows[] = {
      {"old system", nv34, 0x1039, "", occlude, 0, "occlusion queries on OS X 10.3 for nVidia.\n"},
      {"within a longer name", "The NVIDIA NV34MAP OpenGL Engine 2", 0x1039, "", occlude, 0,
       "Disabling occlusion queries on OS X 10.3"},
      {"kept by option", nv34, 0x1039, "--use_pixel_counters", occlude, 1, nullptr},
      {"10.4.0", nv34, 0x1040, "", occlude, 1, nullptr},
      {"10.4.8", geforce, 0x1048, "", occlude, 0,
       "Disabling occlusion queries on OS X 10.4 for nVidia 7300 GT on 10.4.8.\n"},
      {"no option keeps it", geforce, 0x1048, "--use_pixel_counters", occlude, 0, "Disabling"},
      {"10.4.9", geforce, 0x1049, "", occlude, 1, nullptr},
      {"no such system", nv34, INT_MAX, "", occlude, 1, nullptr},
      {"GMA 950", "Intel GMA 950 OpenGL Engine/SSE2", INT_MAX, "", glsl, 0, "GLSL for GMA 950.\n"},
      {"GMA 950 kept", "Intel GMA 950 OpenGL Engine", INT_MAX, "--use_glsl", glsl, 1, nullptr},
      {"GMA X3100", "Intel GMA X3100 OpenGL Engine", INT_MAX, "", glsl, 1, nullptr},
      {"HD 2600", hd_2600, INT_MAX, "", sprites, 0, "point sprites for Radeon HD on OS X.\n"},
      {"HD 2400", "ATI Radeon HD 2400 XT OpenGL Engine", INT_MAX, "", sprites, 0,
       "point sprites for Radeon HD on OS X.\n"},
      {"HD 2600 kept", hd_2600, INT_MAX, "--use_sprites", sprites, 1, nullptr},
      {"with a tail", "ATI Radeon HD 2600 PRO OpenGL Engine 2", INT_MAX, "", sprites, 1, nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    driver.renderer = row.renderer;
    driver.os_version = row.os_version;
    options(row.option);
    const std::string log = init();
    EXPECT_EQ(glExt.*row.flag, row.there);
    if (row.log) {
      EXPECT_TRUE(str_holds(log, row.log));
    } else {
      EXPECT_FALSE(str_holds(log, "Disabling")) << log;
    }
  }
}

TEST_F(OglExtensions, ProgramLimitsDecideOnPrograms) {
  const std::tuple<const char*, int, int, const char*, int, int, int> rows[] = {
      {"plenty", 1000, 1000, "", 1, 1, 0},   {"99", 99, 1000, "", 1, 1, 1},
      {"no fragment", 0, 1000, "", 0, 1, 1}, {"kept", 0, 1000, "--use_fprogs", 1, 1, 1},
      {"no vertex", 1000, 0, "", 1, 0, 0},   {"the other's option", 0, 0, "--use_vprogs", 0, 1, 1},
  };
  driver.extensions = "GL_ARB_vertex_program GL_ARB_fragment_program";
  for (const auto& [label, fragment, vertex, option, fprog, vprog, first_gen] : rows) {
    SCOPED_TRACE(label);
    driver.fragment_instructions = fragment;
    driver.vertex_instructions = vertex;
    options(option);
    init();
    EXPECT_EQ(glExt.fprog_avail, fprog);
    EXPECT_EQ(glExt.vprog_avail, vprog);
    EXPECT_EQ(glExt.first_gen_shaders, first_gen);
  }
}

TEST_F(OglExtensions, NumbersFallBackOnEachOther) {
  driver.integers = {{GL_MAX_TEXTURE_UNITS_ARB, 4},
                     {GL_MAX_TEXTURE_IMAGE_UNITS_ARB, 16},
                     {GL_MAX_TEXTURE_COORDS_ARB, 8},
                     {GL_MAX_TEXTURE_SIZE, 4096}};
  init();
  EXPECT_EQ(ren.max_image_units, 4);
  EXPECT_EQ(ren.max_attrib_units, 4);
  EXPECT_EQ(ren.max_texture_size, 4096);
  driver.vendor = "NVIDIA Corporation";
  driver.extensions = "GL_ARB_vertex_program GL_ARB_fragment_program";
  EXPECT_TRUE(str_holds(init(), "max tex units    : 4 16 8\n"));
  EXPECT_EQ(glExt.first_gen_shaders, 1) << "of this vendor, without its second extension";
  driver.integers[GL_MAX_TEXTURE_UNITS_ARB] = 0;
  driver.extensions += " GL_NV_fragment_program2";
  init();
  EXPECT_EQ(ren.max_units, 1) << "there is one unit at least";
  EXPECT_EQ(glExt.first_gen_shaders, 0);
}

TEST_F(OglExtensions, TheCommandLineTakesFeaturesAway) {
  const std::map<std::string, int ext::*> rows = {
      {"--no_vbos", &ext::vbo_avail},           {"--no_pbos", &ext::pbo_avail},
      {"--no_sprites", &ext::sprites_avail},    {"--no_pixel_counters", &ext::occlude_avail},
      {"--no_hw_mipmap", &ext::automini_avail}, {"--no_aniso_filtering", &ext::aniso_avail},
      {"--no_vshaders", &ext::vprog_avail},     {"--no_fshaders", &ext::fprog_avail},
      {"--no_glsl", &ext::glsl_avail},          {"--no_fbos", &ext::framebuf_avail},
      {"--no_sblend", &ext::sblend_avail},
  };
  driver.version = "4.6";
  driver.extensions =
      "GL_ARB_vertex_program GL_ARB_fragment_program GL_EXT_texture_filter_anisotropic "
      "GL_EXT_framebuffer_object GL_EXT_blend_func_separate GL_EXT_blend_equation_separate";
  for (const auto& [option, cleared] : rows) {
    SCOPED_TRACE(option);
    options(option);
    init();
    for (const auto& [other, flag] : rows) {
      const bool pbo_too = option == "--no_vbos" && other == "--no_pbos";
      EXPECT_EQ(glExt.*flag, flag == cleared || pbo_too ? 0 : 1) << other;
    }
  }
}

TEST_F(OglExtensions, TooOldHardwareIsFatalUnlessForced) {
  driver.version = "1.0 ancient";
  EXPECT_EXIT(init(), testing::ExitedWithCode(1),
              "Your graphics hardware cannot support Skyvane. Skyvane requires a graphics card "
              "with 16 MB of VRAM and multitexturing.");
  options("--force_run");
  EXPECT_TRUE(str_holds(init(),
                        "You have used the force-run command inline option to run Skyvane anyway, "
                        "but it may crash."));
  options("");
  driver.version = "1.1";
  EXPECT_FALSE(str_holds(init(), "cannot support")) << "version 1.1 is enough";
  driver.version = "1.0";
  driver.extensions = "GL_ARB_multitexture";
  EXPECT_FALSE(str_holds(init(), "cannot support")) << "and so is multitexture";
}

TEST_F(OglExtensions, ThreadsThatFailAreToldOfOnce) {
  OGL_extensions asked;
  testing::internal::CaptureStderr();
  for (const int avail : {0, 1}) {
    asked.threaded_avail = avail;
    for (int i = 0; i < 2; ++i)
      asked.threaded_ogl_failed();
  }
  const std::string said = testing::internal::GetCapturedStderr(), text = "a problem setting up";
  EXPECT_NE(said.find(text), said.npos);
  EXPECT_EQ(said.find(text), said.rfind(text)) << said;
}

TEST_F(OglExtensions, SoftwareRenderersAreToldOf) {
  const std::map<std::string, bool> rows = {
      {"GENERIC", true},           {"generic 1.1", true},
      {"Mesa GLX Indirect", true}, {"Mesa GLX Indirect 2", false},
      {"gENERIC", false},          {"llvmpipe (LLVM 15.0.6, 256 bits)", false},
  };
  for (const auto& [renderer, told] : rows) {
    driver.renderer = renderer;
    EXPECT_EQ(str_holds(init(), "I can not find a 3-D accelerator card"), told) << renderer;
  }
}

}  // namespace

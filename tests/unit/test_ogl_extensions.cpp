// What a driver is taken to be able to do, against drivers made up for the purpose.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glext.h>

#include <climits>
#include <map>
#include <set>

#include "corekit/OGL/OGL_extensions.h"
#include "corekit/OGL/OGL_procs.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/UTL/UTL_cmdline.h"
#include "tests/unit/window_fixture.h"

namespace {

// The driver that answers. Everything it is asked for by name is noted.
struct made_up_driver {
  std::string vendor = "Acme", renderer = "Acme Fast", version = "2.1 build 7", extensions;
  std::map<unsigned, int> integers;
  std::map<unsigned, float> floats;
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
  if (driver.strings_are_null) return nullptr;
  switch (name) {
    case GL_VENDOR:
      return driver.vendor.c_str();
    case GL_RENDERER:
      return driver.renderer.c_str();
    case GL_VERSION:
      return driver.version.c_str();
    case GL_EXTENSIONS:
      return driver.extensions.c_str();
    default:
      return nullptr;
  }
}

void get_integers(unsigned name, int* values) {
  if (driver.integers.contains(name)) *values = driver.integers[name];
}

void get_floats(unsigned name, float* values) {
  if (!driver.floats.contains(name)) return;
  values[name == GL_POINT_SIZE_RANGE ? 1 : 0] = driver.floats[name];
}

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
  const struct {
    const char* text;
    int number;
  } rows[] = {
      {"2.1 build 7", 210},
      {"1.4.20", 140},
      {"1.5", 150},
      {"4.5 (Compat) Mesa", 450},
      {"3.10", 400},
      {"OpenGL ES 2.0", 100},
      {"", 100},
      {"garbage", 100},
      {"1", 100},
      {"1.x", 100},
      {"99999999.7", 100070},
  };
  for (const auto& row : rows) {
    driver.version = row.text;
    options("--force_run");
    init();
    EXPECT_EQ(glExt.version, row.number) << '"' << row.text << '"';
  }
  driver.strings_are_null = true;
  init();
  EXPECT_EQ(glExt.version, 100);
}

// A flag is on from its version, and below it by one of its extensions.
TEST_F(OglExtensions, FeaturesComeByVersionOrByExtension) {
  const struct {
    const char* label;
    int OGL_extensions::*flag;
    const char* below;  // the version just below; null when no version brings it
    const char* from;
    const char* names[2];
  } rows[] = {
      {"multitexture",
       &OGL_extensions::multitexture_avail,
       "1.2",
       "1.3",
       {"GL_ARB_multitexture", nullptr}},
      {"tex_clamp",
       &OGL_extensions::tex_clamp_avail,
       "1.1",
       "1.2",
       {"GL_EXT_texture_edge_clamp", "GL_SGIS_texture_edge_clamp"}},
      {"add_env",
       &OGL_extensions::add_env_avail,
       "1.2",
       "1.3",
       {"GL_ARB_texture_env_add", "GL_EXT_texture_env_add"}},
      {"combine",
       &OGL_extensions::combine_avail,
       "1.2",
       "1.3",
       {"GL_ARB_texture_env_combine", "GL_EXT_texture_env_combine"}},
      {"dis_fog", &OGL_extensions::dis_fog_avail, nullptr, "4.6", {"GL_NV_fog_distance", nullptr}},
      {"tex_comp",
       &OGL_extensions::tex_comp_avail,
       "1.2",
       "1.3",
       {"GL_ARB_texture_compression", nullptr}},
      {"vbo", &OGL_extensions::vbo_avail, "1.4", "1.5", {"GL_ARB_vertex_buffer_object", nullptr}},
      {"vprog", &OGL_extensions::vprog_avail, nullptr, "4.6", {"GL_ARB_vertex_program", nullptr}},
      {"fprog", &OGL_extensions::fprog_avail, nullptr, "4.6", {"GL_ARB_fragment_program", nullptr}},
      {"automini",
       &OGL_extensions::automini_avail,
       "1.3",
       "1.4",
       {"GL_SGIS_generate_mipmap", nullptr}},
      {"aniso",
       &OGL_extensions::aniso_avail,
       nullptr,
       "4.6",
       {"GL_EXT_texture_filter_anisotropic", nullptr}},
      {"fsaa", &OGL_extensions::fsaa_avail, "1.2", "1.3", {"GL_ARB_multisample", nullptr}},
      {"sprites", &OGL_extensions::sprites_avail, "1.5", "2.0", {"GL_ARB_point_sprite", nullptr}},
      {"depth_tex",
       &OGL_extensions::depth_tex_avail,
       "1.3",
       "1.4",
       {"GL_ARB_depth_texture", nullptr}},
      {"occlude",
       &OGL_extensions::occlude_avail,
       "1.4",
       "1.5",
       {"GL_ARB_occlusion_query", nullptr}},
      {"shad_objs",
       &OGL_extensions::shad_objs_avail,
       "1.5",
       "2.0",
       {"GL_ARB_shader_objects", nullptr}},
      {"vshader", &OGL_extensions::vshader_avail, "1.5", "2.0", {"GL_ARB_vertex_shader", nullptr}},
      {"fshader",
       &OGL_extensions::fshader_avail,
       "1.5",
       "2.0",
       {"GL_ARB_fragment_shader", nullptr}},
      {"gshader",
       &OGL_extensions::gshader_avail,
       nullptr,
       "4.6",
       {"GL_EXT_geometry_shader4", nullptr}},
      {"glsl", &OGL_extensions::glsl_avail, "1.5", "2.0", {"GL_ARB_shading_language_100", nullptr}},
      {"framebuf",
       &OGL_extensions::framebuf_avail,
       nullptr,
       "4.6",
       {"GL_EXT_framebuffer_object", nullptr}},
  };
  options("--force_run");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    driver.extensions = "";
    driver.version = row.from;
    init();
    EXPECT_EQ(glExt.*row.flag, row.below ? 1 : 0) << "by version";
    driver.version = row.below ? row.below : "4.6";
    init();
    EXPECT_EQ(glExt.*row.flag, 0) << "below it";
    for (const char* name : row.names) {
      if (!name) continue;
      driver.extensions = "GL_A " + std::string(name) + " GL_Z";
      init();
      EXPECT_EQ(glExt.*row.flag, 1) << name;
      // A longer name that holds it counts; a shorter one does not.
      driver.extensions = std::string(name) + "2";
      init();
      EXPECT_EQ(glExt.*row.flag, 1) << driver.extensions;
      driver.extensions = std::string(name).substr(0, std::string(name).size() - 1);
      init();
      EXPECT_EQ(glExt.*row.flag, 0) << driver.extensions;
    }
  }
}

TEST_F(OglExtensions, SeparateBlendingNeedsBothItsExtensions) {
  driver.version = "4.6";
  for (const auto& [text, there] : std::map<std::string, int>{
           {"GL_EXT_blend_func_separate", 0},
           {"GL_EXT_blend_equation_separate", 0},
           {"GL_EXT_blend_func_separate GL_EXT_blend_equation_separate", 1}}) {
    driver.extensions = text;
    init();
    EXPECT_EQ(glExt.sblend_avail, there) << text;
  }
}

TEST_F(OglExtensions, PixelBuffersComeWithVersion21AndNotWithoutVertexBuffers) {
  init();
  EXPECT_EQ(glExt.pbo_avail, 1);
  driver.missing = {"glMapBufferARB"};
  const std::string log = init();
  EXPECT_EQ(glExt.vbo_avail, 0);
  EXPECT_EQ(glExt.pbo_avail, 0);
  EXPECT_NE(log.find("Disabling PBOs because VBOs are not available.  This probably means that "
                     "VBOs are disabled for compatibility reasons.\n"),
            std::string::npos);
}

TEST_F(OglExtensions, DriverFaultsClearTheirFeature) {
  const struct {
    const char* label;
    const char* renderer;
    int os_version;
    const char* option;
    int OGL_extensions::*flag;
    int there;
    const char* log;  // null: nothing is said
  } rows[] = {
      {"old system", "NVIDIA NV34MAP OpenGL Engine", 0x1039, "", &OGL_extensions::occlude_avail, 0,
       "Disabling occlusion queries on OS X 10.3 for nVidia.\n"},
      {"within a longer name", "The NVIDIA NV34MAP OpenGL Engine 2", 0x1039, "",
       &OGL_extensions::occlude_avail, 0, "Disabling occlusion queries on OS X 10.3"},
      {"kept by option", "NVIDIA NV34MAP OpenGL Engine", 0x1039, "--use_pixel_counters",
       &OGL_extensions::occlude_avail, 1, nullptr},
      {"10.4.0", "NVIDIA NV34MAP OpenGL Engine", 0x1040, "", &OGL_extensions::occlude_avail, 1,
       nullptr},
      {"10.4.8", "NVIDIA GeForce 7300 GT OpenGL Engine", 0x1048, "", &OGL_extensions::occlude_avail,
       0, "Disabling occlusion queries on OS X 10.4 for nVidia 7300 GT on 10.4.8.\n"},
      {"no option keeps it", "NVIDIA GeForce 7300 GT OpenGL Engine", 0x1048, "--use_pixel_counters",
       &OGL_extensions::occlude_avail, 0, "Disabling occlusion"},
      {"10.4.9", "NVIDIA GeForce 7300 GT OpenGL Engine", 0x1049, "", &OGL_extensions::occlude_avail,
       1, nullptr},
      {"no such system", "NVIDIA NV34MAP OpenGL Engine", INT_MAX, "",
       &OGL_extensions::occlude_avail, 1, nullptr},
      {"GMA 950", "Intel GMA 950 OpenGL Engine", INT_MAX, "", &OGL_extensions::glsl_avail, 0,
       "Disabling GLSL for GMA 950.\n"},
      {"GMA 950 with a tail", "Intel GMA 950 OpenGL Engine/SSE2", INT_MAX, "",
       &OGL_extensions::glsl_avail, 0, "Disabling GLSL for GMA 950.\n"},
      {"GMA 950 kept", "Intel GMA 950 OpenGL Engine", INT_MAX, "--use_glsl",
       &OGL_extensions::glsl_avail, 1, nullptr},
      {"GMA X3100", "Intel GMA X3100 OpenGL Engine", INT_MAX, "", &OGL_extensions::glsl_avail, 1,
       nullptr},
      {"HD 2600", "ATI Radeon HD 2600 PRO OpenGL Engine", INT_MAX, "",
       &OGL_extensions::sprites_avail, 0, "Disabling point sprites for Radeon HD on OS X.\n"},
      {"HD 2400", "ATI Radeon HD 2400 XT OpenGL Engine", INT_MAX, "",
       &OGL_extensions::sprites_avail, 0, "Disabling point sprites for Radeon HD on OS X.\n"},
      {"HD 2600 kept", "ATI Radeon HD 2600 PRO OpenGL Engine", INT_MAX, "--use_sprites",
       &OGL_extensions::sprites_avail, 1, nullptr},
      {"HD 2600 with a tail", "ATI Radeon HD 2600 PRO OpenGL Engine 2", INT_MAX, "",
       &OGL_extensions::sprites_avail, 1, nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    driver.renderer = row.renderer;
    driver.os_version = row.os_version;
    options(row.option);
    const std::string log = init();
    EXPECT_EQ(glExt.*row.flag, row.there);
    if (row.log) {
      EXPECT_NE(log.find(row.log), std::string::npos);
    } else {
      EXPECT_EQ(log.find("Disabling"), std::string::npos) << log;
    }
  }
}

// The names of each group as the registry of OpenGL extensions counts them.
TEST_F(OglExtensions, EachGroupHasAllItsEntryPoints) {
  const struct {
    const char* label;
    int OGL_extensions::*flag;
    size_t count;
    const char* first;
    const char* last;
  } rows[] = {
      {"vbo", &OGL_extensions::vbo_avail, 11, "glBindBufferARB", "glGetBufferPointervARB"},
      {"vprog", &OGL_extensions::vprog_avail, 62, "glVertexAttrib1dARB", "glIsProgramARB"},
      {"occlude", &OGL_extensions::occlude_avail, 8, "glGenQueriesARB", "glGetQueryObjectuivARB"},
      {"shad_objs", &OGL_extensions::shad_objs_avail, 39, "glDeleteObjectARB", "glUniform4fvARB"},
      {"gshader", &OGL_extensions::gshader_avail, 1, "glProgramParameteriEXT",
       "glProgramParameteriEXT"},
      {"vshader", &OGL_extensions::vshader_avail, 3, "glBindAttribLocationARB",
       "glGetAttribLocationARB"},
      {"framebuf", &OGL_extensions::framebuf_avail, 17, "glIsRenderbufferEXT",
       "glGetFramebufferAttachmentParameterivEXT"},
      {"tex_comp", &OGL_extensions::tex_comp_avail, 7, "glCompressedTexImage3DARB",
       "glGetCompressedTexImageARB"},
      {"sblend", &OGL_extensions::sblend_avail, 2, "glBlendFuncSeparateEXT",
       "glBlendEquationSeparateEXT"},
  };
  std::set<std::string> all;
  size_t total = 0;
  driver.extensions =
      "GL_ARB_vertex_program GL_EXT_geometry_shader4 GL_EXT_framebuffer_object "
      "GL_EXT_blend_func_separate GL_EXT_blend_equation_separate";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    driver.missing.clear();
    init();
    EXPECT_STREQ(static_cast<char*>(glExt.entry(row.first)), row.first);
    EXPECT_NE(glExt.entry(row.last), nullptr);
    const auto groups = OGL_proc_groups();
    const auto group = std::find_if(groups.begin(), groups.end(),
                                    [&](const auto& g) { return g.flag == row.flag; });
    ASSERT_NE(group, groups.end());
    EXPECT_EQ(group->names.size(), row.count);
    total += group->names.size();
    all.insert(group->names.begin(), group->names.end());

    // One missing: the feature is off, the others are looked up all the same, none is given out.
    driver.missing = {row.first};
    driver.asked.clear();
    const std::string log = init();
    EXPECT_EQ(glExt.*row.flag, 0);
    EXPECT_NE(log.find("WARNING: extension missing proc " + std::string(row.first) + "\n"),
              std::string::npos);
    EXPECT_TRUE(driver.asked.contains(row.last));
    EXPECT_EQ(glExt.entry(row.last), nullptr);
  }
  EXPECT_EQ(all.size(), total) << "a name stands twice";
  EXPECT_EQ(glExt.entry("glNoSuchCall"), nullptr);
}

TEST_F(OglExtensions, NothingIsLookedUpThatTheDriverDoesNotClaim) {
  driver.version = "1.1";
  driver.extensions = "GL_ARB_multitexture";
  init();
  driver.asked.erase("glGetProgramivARB");
  EXPECT_TRUE(driver.asked.empty()) << *driver.asked.begin();
}

TEST_F(OglExtensions, ProgramLimitsDecideOnPrograms) {
  const struct {
    const char* label;
    int fragment, vertex;
    const char* option;
    int fprog, vprog, first_gen;
  } rows[] = {
      {"plenty", 1000, 1000, "", 1, 1, 0},
      {"a hundred", 100, 1, "", 1, 1, 0},
      {"99", 99, 1000, "", 1, 1, 1},
      {"one", 1, 1000, "", 1, 1, 1},
      {"no fragment", 0, 1000, "", 0, 1, 1},
      {"kept", 0, 1000, "--use_fprogs", 1, 1, 1},
      {"no vertex", 1000, 0, "", 1, 0, 0},
      {"kept too", 1000, 0, "--use_vprogs", 1, 1, 0},
      {"the other's option", 0, 0, "--use_vprogs", 0, 1, 1},
  };
  driver.extensions = "GL_ARB_vertex_program GL_ARB_fragment_program";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    driver.fragment_instructions = row.fragment;
    driver.vertex_instructions = row.vertex;
    options(row.option);
    init();
    EXPECT_EQ(glExt.fprog_avail, row.fprog);
    EXPECT_EQ(glExt.vprog_avail, row.vprog);
    EXPECT_EQ(glExt.first_gen_shaders, row.first_gen);
  }
}

TEST_F(OglExtensions, FirstGenerationShadersByVendor) {
  driver.vendor = "NVIDIA Corporation";
  init();
  EXPECT_EQ(glExt.first_gen_shaders, 1);
  driver.extensions = "GL_NV_fragment_program2";
  init();
  EXPECT_EQ(glExt.first_gen_shaders, 0);
  driver.extensions = "";
  driver.vendor = "ATI";
  init();
  EXPECT_EQ(glExt.first_gen_shaders, 0);
}

TEST_F(OglExtensions, NumbersFallBackOnEachOther) {
  driver.integers = {{GL_MAX_TEXTURE_UNITS_ARB, 4},
                     {GL_MAX_TEXTURE_IMAGE_UNITS_ARB, 16},
                     {GL_MAX_TEXTURE_COORDS_ARB, 8},
                     {GL_MAX_TEXTURE_SIZE, 4096}};
  driver.floats = {{GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, 16.0f}, {GL_POINT_SIZE_RANGE, 63.0f}};
  init();
  EXPECT_EQ(ren.max_units, 4);
  EXPECT_EQ(ren.max_image_units, 4);
  EXPECT_EQ(ren.max_attrib_units, 4);
  EXPECT_FLOAT_EQ(ren.max_anisotropy, 1.0f);
  EXPECT_EQ(ren.max_texture_size, 4096);
  driver.extensions =
      "GL_ARB_vertex_program GL_ARB_fragment_program GL_EXT_texture_filter_anisotropic";
  const std::string log = init();
  EXPECT_EQ(ren.max_image_units, 16);
  EXPECT_EQ(ren.max_attrib_units, 8);
  EXPECT_FLOAT_EQ(ren.max_anisotropy, 16.0f);
  EXPECT_NE(log.find("max tex units    : 4 16 8\n"), std::string::npos);
  EXPECT_NE(log.find("max point size   : 63"), std::string::npos);
  driver.integers[GL_MAX_TEXTURE_UNITS_ARB] = 0;
  init();
  EXPECT_EQ(ren.max_units, 1) << "there is one unit at least";
}

TEST_F(OglExtensions, TheCommandLineTakesFeaturesAway) {
  const struct {
    const char* option;
    std::vector<int OGL_extensions::*> cleared;
  } rows[] = {
      {"--no_vbos", {&OGL_extensions::vbo_avail, &OGL_extensions::pbo_avail}},
      {"--no_pbos", {&OGL_extensions::pbo_avail}},
      {"--no_sprites", {&OGL_extensions::sprites_avail}},
      {"--no_pixel_counters", {&OGL_extensions::occlude_avail}},
      {"--no_aniso_filtering", {&OGL_extensions::aniso_avail}},
      {"--no_hw_mipmap", {&OGL_extensions::automini_avail}},
      {"--no_vshaders", {&OGL_extensions::vprog_avail}},
      {"--no_fshaders", {&OGL_extensions::fprog_avail}},
      {"--no_glsl", {&OGL_extensions::glsl_avail}},
      {"--no_fbos", {&OGL_extensions::framebuf_avail}},
      {"--no_sblend", {&OGL_extensions::sblend_avail}},
      {"--no_threaded_ogl", {}},
      {"--use_threaded_ogl", {}},
      {"--no_such_option", {}},
  };
  driver.version = "4.6";
  driver.extensions =
      "GL_ARB_vertex_program GL_ARB_fragment_program GL_EXT_texture_filter_anisotropic "
      "GL_EXT_geometry_shader4 GL_EXT_framebuffer_object GL_NV_fog_distance "
      "GL_EXT_blend_func_separate GL_EXT_blend_equation_separate";
  driver.floats = {{GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, 16.0f}};
  int OGL_extensions::*const flags[] = {
      &OGL_extensions::vbo_avail,     &OGL_extensions::pbo_avail,
      &OGL_extensions::sprites_avail, &OGL_extensions::occlude_avail,
      &OGL_extensions::aniso_avail,   &OGL_extensions::automini_avail,
      &OGL_extensions::vprog_avail,   &OGL_extensions::fprog_avail,
      &OGL_extensions::glsl_avail,    &OGL_extensions::framebuf_avail,
      &OGL_extensions::sblend_avail,  &OGL_extensions::tex_comp_avail,
      &OGL_extensions::gshader_avail};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.option);
    options(row.option);
    init();
    for (const auto flag : flags) {
      const bool cleared =
          std::find(row.cleared.begin(), row.cleared.end(), flag) != row.cleared.end();
      EXPECT_EQ(glExt.*flag, cleared ? 0 : 1);
    }
    EXPECT_FLOAT_EQ(ren.max_anisotropy,
                    std::string(row.option) == "--no_aniso_filtering" ? 1.0f : 16.0f);
    EXPECT_EQ(glExt.threaded_avail, 0) << "one context serves the program, whatever is asked";
  }
}

TEST_F(OglExtensions, TheLogHasEveryFlagInItsPlace) {
  driver.extensions = "GL_NV_fog_distance";
  const std::string log = init();
  const char* const labels[] = {"OpenGL Vendor    : Acme\n",
                                "OpenGL Render    : Acme Fast\n",
                                "OpenGL Version   : 2.1 build 7 (210)\n",
                                "OpenGL Extensions: GL_NV_fog_distance\n",
                                "tex_clamp_avail  : 1\n",
                                "add_env_avail    : 1\n",
                                "combine_avail    : 1\n",
                                "dis_fog_avail    : 1\n",
                                "tex_comp_avail   : 1\n",
                                "vbo_avail        : 1\n",
                                "pbo_avail        : 1\n",
                                "vprog_avail      : 0\n",
                                "fprog_avail      : 0\n",
                                "automini_avail   : 1\n",
                                "aniso_avail      : 0\n",
                                "fsaa_avail       : 1\n",
                                "sprites_avail    : 1\n",
                                "depth_tex_avail  : 1\n",
                                "occlude_avail    : 1\n",
                                "shad_objs_avail  : 1\n",
                                "vshader_avail    : 1 (",
                                "fshader_avail    : 1 (",
                                "gshader_avail    : 0\n",
                                "glsl_avail       : 1 (<null string>)\n",
                                "framebuf_avail   : 0\n",
                                "sblend_avail     : 0\n",
                                "threaded_avail   : 0\n",
                                "first-gen shaders: 0\n",
                                "max tex units    : 1 1 1\n",
                                "max iso filtering: 1",
                                "max texture size : ",
                                "max point size   : 1"};
  size_t at = 0;
  for (const char* label : labels) {
    const size_t found = log.find(label, at);
    ASSERT_NE(found, std::string::npos) << label << "\nin\n" << log;
    at = found;
  }
}

TEST_F(OglExtensions, TooOldHardwareIsFatalUnlessForced) {
  driver.version = "1.0 ancient";
  EXPECT_EXIT(init(), testing::ExitedWithCode(1),
              "Your graphics hardware cannot support Skyvane. Skyvane requires a graphics card "
              "with 16 MB of VRAM and multitexturing.");
  EXPECT_EXIT(init(), testing::ExitedWithCode(1),
              "If this does not help, check your graphics card specifications.");
  options("--force_run");
  EXPECT_NE(init().find("You have used the force-run command inline option to run Skyvane anyway, "
                        "but it may crash."),
            std::string::npos);
  options("");
  driver.version = "1.1";
  EXPECT_EQ(init().find("cannot support"), std::string::npos) << "version 1.1 is enough";
  driver.version = "1.0";
  driver.extensions = "GL_ARB_multitexture";
  EXPECT_EQ(init().find("cannot support"), std::string::npos) << "and so is multitexture";
}

TEST_F(OglExtensions, SoftwareRenderersAreToldOf) {
  const std::map<std::string, bool> rows = {
      {"GENERIC", true},
      {"Generic renderer", true},
      {"generic 1.1", true},
      {"Mesa GLX Indirect", true},
      {"Mesa GLX Indirect 2", false},
      {"A generic one", false},
      {"gENERIC", false},
      {"llvmpipe (LLVM 15.0.6, 256 bits)", false},
  };
  for (const auto& [renderer, told] : rows) {
    driver.renderer = renderer;
    EXPECT_EQ(init().find("I can not find a 3-D accelerator card") != std::string::npos, told)
        << renderer;
  }
}

TEST_F(OglExtensions, AFailedThreadContextIsToldOnce) {
  glExt = OGL_extensions();
  glExt.threaded_avail = 1;
  const std::string log = log_of([] {
    glExt.threaded_ogl_failed();
    glExt.threaded_ogl_failed();
  });
  EXPECT_EQ(glExt.threaded_avail, 0);
  const size_t first = log.find("There was a problem setting up OpenGL.");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(log.find("There was a problem", first + 1), std::string::npos);
}

// And the real driver, as the window finds it.
class OglDriver : public window_fixture {};

TEST_F(OglDriver, TheSoftwareDriverHasWhatTheToolkitUses) {
  EXPECT_GE(glExt.version, 210);
  EXPECT_EQ(glExt.tex_clamp_avail, 1);
  EXPECT_EQ(glExt.automini_avail, 1);
  EXPECT_GE(ren.max_units, 2);
  EXPECT_GE(ren.max_texture_size, 2048);
  EXPECT_NE(ren.renderer, "");
  EXPECT_EQ(glExt.vbo_avail, 1);
  EXPECT_NE(glExt.entry("glGenBuffersARB"), nullptr);
}

}  // namespace

// The texture manager: references, what becomes of a picture, the bind cache, and its alerts.

#include "corekit/GenC/hl_init.h"
#include "corekit/OOPS_cpp/oglp.h"
#include "corekit/OOPS_cpp/oglp_draw.h"
#include "corekit/OOPS_cpp/tman.h"
#include "corekit/TEX/TEX_utils.h"
#include "tests/unit/gl_fixture.h"

class Tman : public gl_fixture {};

namespace {

constexpr int spare_ref = 500;
constexpr int scratch_flags = tex_full_size | tex_rgba;

// A picture in scratch_array, every byte `value`.
void scratch(int dx, int dy, int value) {
  scratch_dx = dx;
  scratch_dy = dy;
  std::fill_n(scratch_array, dx * dy * 4, static_cast<unsigned char>(value));
}

void load(int ref, int flags) {
  tman.load_texture(tex_fail_fatal, ref, flags, tex_load_now, "scratch_array:test");
}

GLint bound() {
  GLint id = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &id);
  return id;
}

GLint parameter(GLenum name) {
  GLint value = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
  return value;
}

GLint level_width(int level) {
  GLint dx = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &dx);
  return dx;
}

int textures() {
  int alive = 0;
  for (unsigned id = 1; id < 100; ++id)
    alive += glIsTexture(id);
  return alive;
}

}  // namespace

TEST_F(Tman, PictureBecomesATexture) {
  scratch(64, 20, 200);
  std::fill_n(scratch_array + 64 * 20 * 4, 64 * 20 * 4, static_cast<unsigned char>(99));
  load(spare_ref, scratch_flags);
  const ref_dat_struct& dat = tman.record(spare_ref);
  EXPECT_EQ(dat.dx, 64);
  EXPECT_EQ(dat.dy, 32);
  EXPECT_EQ(dat.scale_s, 1.0f);
  EXPECT_EQ(dat.scale_t, 20.0f / 32);
  EXPECT_EQ(dat.bytes, 64 * 32 * 4);
  EXPECT_EQ(dat.format, GL_RGBA);
  EXPECT_EQ(dat.ref_count, -1);
  tman.bind_ref(spare_ref, 0, 0);
  std::vector<unsigned char> back(64 * 32 * 4);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
  EXPECT_EQ(back[64 * 20 * 4 - 1], 200);
  EXPECT_EQ(back[64 * 20 * 4], 0) << "the margin above the picture is empty";
  EXPECT_EQ(back.back(), 0);

  // The same size and flags fill the same texture; others make a new one and delete the old.
  const unsigned first = dat.gl_id;
  const int textures_before = textures();
  scratch(64, 20, 100);
  load(spare_ref, scratch_flags);
  EXPECT_EQ(dat.gl_id, first);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, back.data());
  EXPECT_EQ(back[0], 100);
  for (const auto& [dx, flags] : {std::pair{32, scratch_flags},
                                  {32, scratch_flags | tex_clamp},
                                  {32, tex_full_size | tex_rgb}}) {
    scratch(dx, 20, 50);
    load(spare_ref, flags);
    tman.bind_ref(spare_ref, 0, 0);
    EXPECT_EQ(bound(), static_cast<GLint>(dat.gl_id));
    EXPECT_EQ(level_width(0), dx);
    EXPECT_EQ(textures(), textures_before) << "the old one is deleted";
  }
  tman.unload_texture(spare_ref);
  EXPECT_EQ(dat.name, "un-inited");
  EXPECT_EQ(dat.load_time, tex_load_none);
  EXPECT_EQ(dat.gl_id, 0u);
}

TEST_F(Tman, FlagsSayHowItIsKept) {
  const struct {
    const char* label;
    int flags, wrap_s, wrap_t, min_filter, second_level, bytes;
  } rows[] = {
      {"repeats", scratch_flags, GL_REPEAT, GL_REPEAT, GL_LINEAR, 0, 16 * 16 * 4},
      {"clamped", scratch_flags | tex_clamp, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE, GL_LINEAR, 0,
       1024},
      {"clamped in s", scratch_flags | tex_clamp_s, GL_CLAMP_TO_EDGE, GL_REPEAT, GL_LINEAR, 0,
       1024},
      {"mipmaps", scratch_flags | tex_mipmaps, GL_REPEAT, GL_REPEAT, GL_LINEAR_MIPMAP_LINEAR, 8,
       1361},
      {"exact has no mipmaps", scratch_flags | tex_mipmaps | tex_exact_size, GL_REPEAT, GL_REPEAT,
       GL_LINEAR, 0, 1024},
      {"alpha alone", tex_full_size | tex_alpha, GL_REPEAT, GL_REPEAT, GL_LINEAR, 0, 256},
      {"eight bits", scratch_flags | tex_eight_bit, GL_REPEAT, GL_REPEAT, GL_LINEAR, 0, 1024},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    scratch(16, 16, 10);
    load(spare_ref, row.flags);
    tman.bind_ref(spare_ref, 0, 0);
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_S), row.wrap_s);
    EXPECT_EQ(parameter(GL_TEXTURE_WRAP_T), row.wrap_t);
    EXPECT_EQ(parameter(GL_TEXTURE_MIN_FILTER), row.min_filter);
    EXPECT_EQ(level_width(1), row.second_level);
    EXPECT_EQ(tman.record(spare_ref).bytes, row.bytes);
  }
}

TEST_F(Tman, MipmapsAverageTwoByTwo) {
  scratch(4, 2, 0);
  const unsigned char first[] = {10, 20, 100, 200, 30, 42, 0, 0};
  for (int i = 0; i < 8; ++i)
    scratch_array[i * 4] = first[i];
  load(spare_ref, scratch_flags | tex_mipmaps);
  tman.bind_ref(spare_ref, 0, 0);
  unsigned char level[8] = {};
  glGetTexImage(GL_TEXTURE_2D, 1, GL_RGBA, GL_UNSIGNED_BYTE, level);
  EXPECT_EQ(level[0], 26);  // 102 / 4, rounded
  EXPECT_EQ(level[4], 75);
  glGetTexImage(GL_TEXTURE_2D, 2, GL_RGBA, GL_UNSIGNED_BYTE, level);
  EXPECT_EQ(level[0], 51);
  EXPECT_EQ(scratch_array[8], 100) << "the picture stays for its loader to read";
}

TEST_F(Tman, BindCacheNeverNamesADeletedTexture) {
  scratch(8, 8, 255);
  load(spare_ref, scratch_flags);
  for (const int unit : {0, 1}) {
    tman.bind_ref(spare_ref, unit, 0);
    tman.unload_texture(spare_ref);
    scratch(16, 16, 255);
    load(spare_ref, scratch_flags);  // may get the same OpenGL name
    tman.bind_ref(spare_ref, unit, 0);
    OGL_active_unit(unit);
    EXPECT_EQ(bound(), static_cast<GLint>(tman.record(spare_ref).gl_id)) << unit;
    OGL_active_unit(0);
  }

  // Even if OpenGL gives that very name out again, to another unit than the loader binds to.
  tman.bind_ref(spare_ref, 1, 0);
  const unsigned name = tman.record(spare_ref).gl_id;
  tman.unload_texture(spare_ref);
  TEX_bind_ref(name, 1, 0);
  OGL_active_unit(1);
  EXPECT_EQ(bound(), static_cast<GLint>(name));
  OGL_active_unit(0);
  load(spare_ref, scratch_flags);
  tman.bind_ref(spare_ref, 0, 0);

  // The cache does not look, until it is told that something else has bound.
  glBindTexture(GL_TEXTURE_2D, 0);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(bound(), 0);
  tman.reset_bind();
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_NE(bound(), 0);

  const auto env = [] {
    GLint mode = 0;
    glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &mode);
    return mode;
  };
  tman.bind_ref(spare_ref, 0, GL_REPLACE);
  EXPECT_EQ(env(), GL_REPLACE);
  tman.bind_ref(spare_ref, 0, 25);
  EXPECT_EQ(env(), GL_REPLACE);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(env(), GL_MODULATE);
  tman.bind_ref(spare_ref, 1, 0);
  GLint unit = 0;
  glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
  EXPECT_EQ(unit, GL_TEXTURE0);
  tman.set_blend_level(1, 0.5f);
  tman.bind_ref(0, 0, 0);
  EXPECT_EQ(bound(), 0);
}

TEST_F(Tman, KilledTexturesLeaveTheInterface) {
  tman.load_texture(tex_fail_silent, spare_ref, scratch_flags, tex_load_now, "missing.png");
  scratch(8, 8, 255);
  load(spare_ref + 1, scratch_flags);
  gKillTex = 1;
  tman.bind_ref(spare_ref + 1, 0, 0);
  EXPECT_EQ(bound(), static_cast<GLint>(tman.record(t_blank_gray).gl_id));
  tman.bind_ref(t_interface, 0, 0);
  EXPECT_EQ(bound(), static_cast<GLint>(tman.record(t_interface).gl_id));
  // What is loaded meanwhile does not paint the blank over.
  scratch(4, 4, 77);
  load(spare_ref + 2, scratch_flags);
  gKillTex = 0;
  OGL_2dquad_d(t_blank_gray, 49, 1, 10, 10, 0, 0, 10, 10, 1, 1, 5);
  EXPECT_TRUE(pixel_is(15, 15, 128, 128, 128));
}

TEST_F(Tman, WithoutAContextARecordHoldsNoTexture) {
  OGL_load_entry_points(nullptr);
  ogl_inited = 0;
  scratch(16, 16, 1);
  load(spare_ref + 3, scratch_flags);
  EXPECT_EQ(tman.record(spare_ref + 3).gl_id, 0u);
  EXPECT_EQ(tman.record(spare_ref + 3).load_time, tex_load_now);
  tman.bind_ref(spare_ref + 3, 0, 0);
  tman.unload_texture(spare_ref + 3);
}

TEST_F(Tman, MissingPicturesDrawGray) {
  const struct {
    tex_fail_mode mode;
    int (tman_class::*failed)() const;
    void (tman_class::*reset)();
    void (tman_class::*mute)();
  } rows[] = {
      {tex_fail_scene, &tman_class::has_scene_load_fail, &tman_class::reset_scene_load_fail,
       &tman_class::mute_scene_load_fail},
      {tex_fail_plane, &tman_class::has_plane_load_fail, &tman_class::reset_plane_load_fail,
       &tman_class::mute_plane_load_fail},
      {tex_fail_installed, &tman_class::has_instl_load_fail, &tman_class::reset_instl_load_fail,
       &tman_class::mute_instl_load_fail},
  };
  const auto miss = [](tex_fail_mode mode) {
    tman.load_texture(mode, spare_ref, scratch_flags, tex_load_now, "missing.png");
  };
  for (const auto& row : rows) {
    (tman.*row.reset)();
    EXPECT_EQ((tman.*row.failed)(), 0);
    miss(tex_fail_silent);
    EXPECT_EQ((tman.*row.failed)(), 0);
    miss(row.mode);
    EXPECT_EQ((tman.*row.failed)(), 1);
    (tman.*row.mute)();
    miss(row.mode);
    EXPECT_EQ((tman.*row.failed)(), 0);
  }
  clear();
  OGL_2dquad_d(spare_ref, 49, 1, 10, 10, 0, 0, 10, 10, 1, 1, 5);
  EXPECT_TRUE(pixel_is(15, 15, 128, 128, 128));
  EXPECT_EQ(tman.record(spare_ref).bytes, 0);
  tman.unload_texture(spare_ref);
  EXPECT_TRUE(glIsTexture(tman.record(t_blank_gray).gl_id));

  // One that waits for its load shows the blank as well.
  tman.load_texture(tex_fail_fatal, spare_ref, scratch_flags, tex_load_scenery, "later.png");
  EXPECT_EQ(tman.record(spare_ref).load_time, tex_load_scenery);
  EXPECT_EQ(tman.record(spare_ref).format, 0);
  tman.bind_ref(spare_ref, 0, 0);
  EXPECT_EQ(bound(), static_cast<GLint>(tman.record(t_blank_gray).gl_id));
}

TEST(TmanTable, AutomaticReferencesAreShared) {
  const auto get = [](const char* name) {
    return tman.load_texture(tex_fail_silent, 0, scratch_flags, tex_load_now, name);
  };
  EXPECT_EQ(tman.load_texture(tex_fail_silent, 0, 0, tex_load_now, ""), 0);
  const int a = get("a.png"), b = get("b.png");
  EXPECT_GE(a, 1135);
  EXPECT_NE(a, b);
  EXPECT_EQ(get("a.png"), a);
  EXPECT_EQ(tman.record(a).ref_count, 2);
  tman.release_texture(a);
  tman.purge_unused_texes();
  EXPECT_EQ(tman.record(a).name, "a.png");
  tman.release_texture(a);
  EXPECT_EQ(tman.record(a).name, "a.png") << "nothing is freed before the purge";
  tman.purge_unused_texes();
  EXPECT_EQ(tman.record(a).name, "un-inited");
  EXPECT_EQ(tman.record(b).name, "b.png");
  EXPECT_EQ(get("c.png"), a) << "a free record is taken again";
  EXPECT_EQ(get("a.png") == a, false);
  // A manual reference of the same name leaves the automatic one alone.
  tman.load_texture(tex_fail_silent, spare_ref, scratch_flags, tex_load_now, "b.png");
  tman.unload_texture(spare_ref);
  EXPECT_EQ(get("b.png"), b);
}

TEST(TmanTable, SizesOfTextures) {
  const struct {
    const char* label;
    int flags, res, max, dx, dy, mode, out_dx, out_dy;
    float scale;
  } rows[] = {
      {"full", 0, 5, 2048, 512, 512, 0, 512, 512, 1},
      {"rounded up", 0, 5, 2048, 504, 70, 0, 512, 128, 1},
      {"exact", tex_exact_size, 5, 2048, 504, 70, 0, 504, 70, 1},
      {"half", 0, 4, 2048, 512, 256, 0, 256, 128, 0.5f},
      {"lowest", 0, 0, 2048, 512, 256, 0, 16, 8, 1 / 32.0f},
      {"doubled", tex_double_scale, 4, 2048, 512, 256, 0, 512, 256, 1},
      {"doubled stops at 1", tex_double_scale, 5, 2048, 512, 256, 0, 512, 256, 1},
      {"halved", tex_halve_scale, 5, 2048, 512, 256, 0, 256, 128, 0.5f},
      {"full whatever the setting", tex_full_size, 0, 2048, 512, 256, 0, 512, 256, 1},
      {"scratch whatever the setting", 0, 0, 2048, 512, 256, 1, 512, 256, 1},
      {"no side vanishes", 0, 0, 2048, 512, 8, 0, 64, 1, 1 / 8.0f},
      {"the driver's limit", 0, 5, 256, 1024, 512, 0, 256, 128, 0.25f},
      {"one pixel", 0, 0, 2048, 1, 1, 0, 1, 1, 1},
  };
  const ren_record before = ren;
  for (const auto& row : rows) {
    ren.tex_res = row.res;
    ren.max_texture_size = row.max;
    int dx = 0, dy = 0;
    EXPECT_FLOAT_EQ(TEX_get_scale(row.flags, row.dx, row.dy, &dx, &dy, row.mode), row.scale)
        << row.label;
    EXPECT_EQ(dx, row.out_dx) << row.label;
    EXPECT_EQ(dy, row.out_dy) << row.label;
  }
  ren = before;
  EXPECT_FLOAT_EQ(tman.scale_rat(), 1.0f);
}

TEST(TmanTable, MisuseIsFatal) {
  const auto try_load = [](int ref, int flags, int when, int dx) {
    scratch_dx = dx;
    scratch_dy = 16;
    tman.load_texture(tex_fail_fatal, ref, flags, static_cast<tex_load_time>(when),
                      "scratch_array:x");
  };
  const auto dies = testing::ExitedWithCode(1);
  EXPECT_EXIT(try_load(5, 2, 103, 16), dies, "Trying to create an invalid texture load_time!");
  EXPECT_EXIT(try_load(-1, 2, 100, 16), dies, "Trying to bind too low or high a manual_ref!");
  EXPECT_EXIT(try_load(1136, 2, 100, 16), dies, "value: 1136");
  EXPECT_EXIT(try_load(5, 16384, 100, 16), dies, "Trying to bind an invalid filter type!");
  EXPECT_EXIT(try_load(5, 256, 100, 16), dies, "BAD color enum for tman - see tman.h");
  EXPECT_EXIT(try_load(5, 256 | 7, 100, 16), dies, "BAD color enum");
  EXPECT_EXIT(try_load(5, 258, 100, 100), dies, "a texture that is not a power of 2!");
  EXPECT_EXIT(try_load(5, 258, 100, 0), dies, "size that cannot be used");
  EXPECT_EXIT(try_load(5, 258, 100, 1 << 22), dies, "size that cannot be used");
  EXPECT_EXIT(tman.release_texture(1134), dies, "manual texture - use unload_texture.");
  EXPECT_EXIT(tman.release_texture(99999), dies, "never reffed");
  EXPECT_EXIT(tman.unload_texture(1135), dies, "should be released, not unloaded.");
  EXPECT_EXIT(tman.bind_ref(77, 0, 0), dies, "missing non-scenery texture - how\\? ref=    77");
  EXPECT_EXIT(tman.bind_ref(99999, 0, 0), dies, "missing non-scenery texture - how\\?");
  EXPECT_EXIT(tman.load_texture(tex_fail_fatal, 5, 258, tex_load_now, "x.png"), dies,
              "Trying to load a texture that you do not have!");
  EXPECT_EXIT(
      {
        const int ref = tman.load_texture(tex_fail_silent, 0, 258, tex_load_now, "y.png");
        tman.release_texture(ref);
        tman.release_texture(ref);
      },
      dies, "Ref count went negative");
}
